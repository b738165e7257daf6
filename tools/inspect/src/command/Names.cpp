/** @file
  Names from the command line: finds attributes, and near names for an unknown name.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "command/Names.hpp"

#include <cctype>
#include <charconv>
#include <numeric>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "bytes/Text.hpp"

namespace corvane::inspect {
namespace {

constexpr std::size_t kMostNearNames = 3;

std::string FoldCase(std::string_view text) {
  std::string folded(text);
  std::ranges::transform(folded, folded.begin(),
                         [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
  return folded;
}

// The number of characters to change, add or drop to turn one text into the other.
std::size_t Distance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (const char character : from) {
    std::size_t diagonal = row.front()++;
    for (std::size_t i = 0; i < to.size(); ++i) {
      const std::size_t changed = diagonal + (character == to[i] ? 0 : 1);
      diagonal = row[i + 1];
      row[i + 1] = std::min({changed, row[i] + 1, row[i + 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string DescribeNearNames(std::string_view wanted, const std::vector<std::string>& known) {
  const std::string folded = FoldCase(wanted);
  std::vector<std::pair<std::size_t, std::string>> near;
  for (const std::string& name : known) {
    const std::string other = FoldCase(name);
    const bool within = !folded.empty() && other.find(folded) != std::string::npos;
    const std::size_t distance = within ? 0 : Distance(folded, other);
    if (distance <= std::max<std::size_t>(folded.size() / 3, 1)) {
      near.emplace_back(distance, Quote(name));
    }
  }
  std::ranges::sort(near);
  near.erase(std::unique(near.begin(), near.end()), near.end());
  near.resize(std::min(near.size(), kMostNearNames));
  std::vector<std::string> names;
  std::ranges::transform(near, std::back_inserter(names), [](const auto& one) { return one.second; });
  return names.empty() ? "" : fmt::format(" (near: {})", fmt::join(names, ", "));
}

std::vector<const AttributeEntry*> FindAttributes(const Image& image, const std::string& name) {
  std::vector<const AttributeEntry*> found = image.FindByName(Latin1FromUtf8(name).value_or(name));
  std::uint16_t handle = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), handle);
  if (found.empty() && error == std::errc{} && end == name.data() + name.size()) {
    if (const AttributeEntry* attribute = image.Attributes.Find(handle)) {
      found.push_back(attribute);
    }
  }
  if (found.empty()) {
    std::vector<std::string> known;
    for (const AttributeEntry& attribute : image.Attributes.Entries) {
      if (const StringEntry* text = image.Strings.Find(attribute.NameHandle)) {
        known.emplace_back(WithoutAnnotations(text->Text));
      }
    }
    throw UnusableInput(
        fmt::format("no attribute has the name or handle {}{}", Quote(name), DescribeNearNames(name, known)));
  }
  return found;
}

std::size_t FindOneAttribute(const Image& image, const std::string& name) {
  const std::vector<const AttributeEntry*> found = FindAttributes(image, name);
  if (found.size() > 1) {
    std::vector<std::uint16_t> handles;
    std::ranges::transform(found, std::back_inserter(handles), &AttributeEntry::Handle);
    throw UnusableInput(fmt::format("{} attributes have the name {}: give one of the handles {}", found.size(),
                                    Quote(name), fmt::join(handles, ", ")));
  }
  return static_cast<std::size_t>(found.front() - image.Attributes.Entries.data());
}

}  // namespace corvane::inspect
