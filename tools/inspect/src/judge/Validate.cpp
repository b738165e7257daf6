/** @file
  `inspect validate`: checks the structure of an image, also for readers that know common types only.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "judge/Validate.hpp"

#include <nlohmann/json.hpp>

#include "bytes/Text.hpp"
#include "capture/Describe.hpp"

namespace corvane::inspect {
namespace {

using Json = nlohmann::ordered_json;

bool IsCommon(std::uint8_t type) {
  const BaseType base{BaseTypeOf(type)};
  return base == BaseType::Enumeration || base == BaseType::String || base == BaseType::Integer;
}

template <typename Entry>
void ListUncommon(TableId id, const Table<Entry>& table, Validation& validation) {
  bool first = true;
  for (std::size_t i = 0; i < table.Entries.size(); ++i) {
    const Entry& entry = table.Entries[i];
    if (IsCommon(entry.Type)) {
      continue;
    }
    if (first) {
      validation.Problems.Add("profile-stop",
                              "a reader that knows only enumerations, strings and integers stops at entry {} of the {} "
                              "table (handle {}, {}) and misses the {} after it",
                              i, KindOf(id).Name, entry.Handle, TypeName(entry.Type), table.Entries.size() - i - 1);
      first = false;
    }
    validation.Uncommon.push_back({id, i, entry.Handle, entry.Type});
  }
}

}  // namespace

Validation Validate(const Image& image, bool commonProfile) {
  Validation validation;
  validation.Problems.Append(image.Findings);
  if (commonProfile) {
    ListUncommon(TableId::Attributes, image.Attributes, validation);
    ListUncommon(TableId::Values, image.Values, validation);
  }
  return validation;
}

std::string ValidationAsText(const Image& image, const Validation& validation, const Style& style) {
  std::string out;
  for (const Finding& finding : validation.Problems.List()) {
    out += fmt::format("{} {}: {}\n", style.Bad("finding:"), finding.Code, finding.Text);
  }
  for (const UncommonEntry& entry : validation.Uncommon) {
    out += fmt::format("    {} {}: {} {}, {}\n", KindOf(entry.Table).Name, entry.Number, entry.Handle,
                       DescribeMember(image, entry.Handle), TypeName(entry.Type));
  }
  const std::size_t count = validation.Problems.List().size();
  return out + (count == 0 ? style.Strong("valid") + '\n' : CountOf(count, "finding") + '\n');
}

std::string ValidationAsJson(const Image& image, const Validation& validation) {
  Json findings = Json::array();
  for (const Finding& finding : validation.Problems.List()) {
    findings.push_back({{"code", finding.Code}, {"text", finding.Text}});
  }
  Json uncommon = Json::array();
  for (const UncommonEntry& entry : validation.Uncommon) {
    uncommon.push_back({{"table", KindOf(entry.Table).Name},
                        {"entry", entry.Number},
                        {"handle", entry.Handle},
                        {"name", DescribeMember(image, entry.Handle)},
                        {"type", TypeName(entry.Type)}});
  }
  const bool valid = validation.Problems.List().empty();
  return Json{{"valid", valid}, {"findings", std::move(findings)}, {"uncommon", std::move(uncommon)}}.dump(2) + '\n';
}

}  // namespace corvane::inspect
