/** @file
  `inspect diff-tables`: which tables of two captures differ byte for byte, and which values.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "compare/DiffTables.hpp"

#include <algorithm>
#include <set>

#include <nlohmann/json.hpp>

#include "capture/Describe.hpp"

namespace corvane::inspect {
namespace {

std::string DescribeValue(const Image& image, std::uint16_t handle) {
  const AttributeEntry* attribute = image.Attributes.Find(handle);
  if (image.Values.Find(handle) == nullptr) {
    return "-";
  }
  return attribute != nullptr ? DescribeCurrent(image, *attribute) : "?";
}

std::vector<ValueDifference> DiffValues(const Image& older, const Image& newer) {
  std::set<std::uint16_t> handles;
  for (const Image* image : {&older, &newer}) {
    for (const ValueEntry& entry : image->Values.Entries) {
      handles.insert(entry.Handle);
    }
  }
  std::vector<ValueDifference> changes;
  for (const std::uint16_t handle : handles) {
    const ValueEntry* before = older.Values.Find(handle);
    const ValueEntry* after = newer.Values.Find(handle);
    if (before != nullptr && after != nullptr && *before == *after) {
      continue;
    }
    const Image& named = older.Attributes.Find(handle) != nullptr ? older : newer;
    changes.push_back(
        {handle, DescribeMember(named, handle), DescribeValue(older, handle), DescribeValue(newer, handle)});
  }
  return changes;
}

}  // namespace

std::vector<TableDifference> DiffTables(const Image& older, const Image& newer, const std::vector<TableId>& tables) {
  std::vector<TableDifference> differences;
  for (const TableId id : tables) {
    const TableFrame* before = older.FrameOf(id);
    const TableFrame* after = newer.FrameOf(id);
    const Bytes a = before != nullptr ? before->Content : Bytes{};
    const Bytes b = after != nullptr ? after->Content : Bytes{};
    TableDifference difference;
    difference.Id = id;
    difference.OldSize = a.size();
    difference.NewSize = b.size();
    difference.Equal = (before == nullptr) == (after == nullptr) && std::ranges::equal(a, b);
    if (!difference.Equal) {
      difference.FirstOffset = static_cast<std::size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
      if (id == TableId::Values) {
        difference.Changes = DiffValues(older, newer);
      }
    }
    differences.push_back(std::move(difference));
  }
  return differences;
}

std::string DifferencesAsText(const std::vector<TableDifference>& differences) {
  std::string text;
  for (const TableDifference& difference : differences) {
    const char* name = KindOf(difference.Id).Name;
    if (difference.Equal) {
      text += fmt::format("{}: equal\n", name);
      continue;
    }
    text += fmt::format("{}: differ from offset {} on ({} and {} bytes)\n", name, difference.FirstOffset,
                        difference.OldSize, difference.NewSize);
    for (const ValueDifference& change : difference.Changes) {
      text += fmt::format("  {} {}: {} -> {}\n", change.Handle, change.Name, change.Old, change.New);
    }
  }
  return text;
}

std::string DifferencesAsJson(const std::vector<TableDifference>& differences) {
  using Json = nlohmann::ordered_json;
  Json tables = Json::array();
  for (const TableDifference& difference : differences) {
    Json table{{"name", KindOf(difference.Id).Name},
               {"equal", difference.Equal},
               {"oldSize", difference.OldSize},
               {"newSize", difference.NewSize}};
    if (!difference.Equal) {
      table["firstOffset"] = difference.FirstOffset;
    }
    for (const ValueDifference& change : difference.Changes) {
      table["changes"].push_back(
          {{"handle", change.Handle}, {"name", change.Name}, {"old", change.Old}, {"new", change.New}});
    }
    tables.push_back(std::move(table));
  }
  return Json{{"tables", std::move(tables)}}.dump(2) + '\n';
}

}  // namespace corvane::inspect
