/** @file
  ValueLint: values, defaults and bounds of an attribute that contradict each other.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "judge/ValueLint.hpp"

#include "bytes/Text.hpp"
#include "judge/Expression.hpp"

namespace corvane::inspect {
namespace {

class ValueLinter {
 public:
  explicit ValueLinter(const CatalogAttribute& attribute)
      : attribute_(attribute), name_(QuoteUtf8(attribute.Name.Text)) {}

  std::vector<Problem> Run() {
    if (const auto* bounds = std::get_if<IntegerBounds>(&attribute_.Entry->Bounds)) {
      LintInteger(*bounds);
    } else if (const auto* lengths = std::get_if<LengthBounds>(&attribute_.Entry->Bounds)) {
      LintLength(*lengths);
    } else if (const auto* boot = std::get_if<BootBounds>(&attribute_.Entry->Bounds)) {
      LintSources(*boot);
    }
    return std::move(problems_);
  }

 private:
  void Add(const char* code, std::string text, bool isNote = false) {
    problems_.push_back({code, std::move(text), isNote});
  }

  void LintInteger(const IntegerBounds& bounds) {
    if (bounds.Lower > bounds.Upper) {
      return Add("bounds-empty", fmt::format("{} has the bounds {} to {}.", name_, bounds.Lower, bounds.Upper));
    }
    const auto fits = [&bounds](std::uint64_t value) {
      return value >= bounds.Lower && value <= bounds.Upper &&
             (bounds.Step == 0 || (value - bounds.Lower) % bounds.Step == 0);
    };
    const std::string domain = fmt::format("{} to {} in steps of {}", bounds.Lower, bounds.Upper, bounds.Step);
    if (!fits(bounds.Default)) {
      Add("default-bounds", fmt::format("{} has the default {}, not one of {}.", name_, bounds.Default, domain));
    }
    if (attribute_.Value == nullptr) {
      return;
    }
    const std::uint64_t value = std::get<IntegerValue>(*attribute_.Value).Value;
    if (!fits(value)) {
      Add("value-bounds", fmt::format("{} is {}, not one of {}.", name_, value, domain));
    }
    if (attribute_.Token.value_or(0) != 0) {
      LintLowByte(value, bounds.Default);
    }
  }

  void LintLowByte(std::uint64_t value, std::uint64_t byDefault) {
    if (value > 0xFF) {
      Add("value-above-byte",
          fmt::format("{} is {}, which a boot from the cache reads as {}.", name_, value, value & 0xFF), true);
    } else if (byDefault > 0xFF && value == (byDefault & 0xFF)) {
      Add("value-above-byte",
          fmt::format("{} is {}, the low byte of its default {}: a boot from the cache reads the low byte alone.",
                      name_, value, byDefault),
          true);
    }
  }

  void LintLength(const LengthBounds& bounds) {
    if (bounds.Minimum > bounds.Maximum) {
      return Add("bounds-empty", fmt::format("{} has a length of {} to {}.", name_, bounds.Minimum, bounds.Maximum));
    }
    const auto* value = attribute_.Value != nullptr ? std::get_if<StringValue>(attribute_.Value) : nullptr;
    if (value == nullptr) {
      return;
    }
    const std::size_t length = value->Text.size();
    if (length < bounds.Minimum || length > bounds.Maximum) {
      Add("value-bounds",
          fmt::format("{} has a text of {} characters, not {} to {}.", name_, length, bounds.Minimum, bounds.Maximum));
    }
    const std::string* expression = attribute_.Name.Expression();
    if (expression == nullptr) {
      return;
    }
    const Expression compiled(*expression);
    if (compiled.Problem().empty() && !compiled.Matches(value->Text)) {
      Add("value-expression",
          fmt::format("{} is {}, which does not match {}.", name_, Quote(value->Text), QuoteUtf8(*expression)));
    }
  }

  void LintSources(const BootBounds& bounds) {
    if (attribute_.Value == nullptr || bounds.Sources.empty()) {
      return;
    }
    const std::size_t count = std::get<BootValue>(*attribute_.Value).Order.size();
    if (count < bounds.MinimumSources || count > bounds.MaximumSources) {
      Add("value-bounds", fmt::format("{} has {} boot sources, not {} to {}.", name_, count, bounds.MinimumSources,
                                      bounds.MaximumSources));
    }
  }

  const CatalogAttribute& attribute_;
  std::string name_;
  std::vector<Problem> problems_;
};

}  // namespace

std::vector<Problem> FindValueProblems(const CatalogAttribute& attribute) {
  return ValueLinter(attribute).Run();
}

}  // namespace corvane::inspect
