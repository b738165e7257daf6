/** @file
  Pairs the items of two lists, and finds the pairs that changed places.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <algorithm>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace corvane::inspect {

using Partner = std::optional<std::size_t>;

// For each item, the position of its partner in the other list.
struct Pairs {
  std::vector<Partner> Old;
  std::vector<Partner> New;

  Pairs(std::size_t oldCount, std::size_t newCount) : Old(oldCount), New(newCount) {}
};

// Pairs items without a partner by a key. keyOf returns an optional, empty if an item has no key. Items with equal keys
// are paired in order or, with `unique`, not at all.
template <typename Items, typename KeyOf>
void PairBy(const Items& older, const Items& newer, KeyOf keyOf, bool unique, Pairs& pairs) {
  using Key = std::decay_t<decltype(*keyOf(*older.begin()))>;
  std::map<Key, std::pair<std::vector<std::size_t>, std::vector<std::size_t>>> byKey;
  for (std::size_t i = 0; i < older.size(); ++i) {
    if (const auto key = keyOf(older[i]); key && !pairs.Old[i]) {
      byKey[*key].first.push_back(i);
    }
  }
  for (std::size_t i = 0; i < newer.size(); ++i) {
    if (const auto key = keyOf(newer[i]); key && !pairs.New[i]) {
      byKey[*key].second.push_back(i);
    }
  }
  for (const auto& [key, sides] : byKey) {
    if (unique && (sides.first.size() != 1 || sides.second.size() != 1)) {
      continue;
    }
    for (std::size_t i = 0; i < std::min(sides.first.size(), sides.second.size()); ++i) {
      pairs.Old[sides.first[i]] = sides.second[i];
      pairs.New[sides.second[i]] = sides.first[i];
    }
  }
}

// The positions outside a longest ascending run: the smallest set to move so that the rest ascends.
inline std::vector<std::size_t> FindMoved(const std::vector<std::size_t>& order) {
  constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  std::vector<std::size_t> ends;  // position at which the best run of each length ends
  std::vector<std::size_t> before(order.size(), kNone);
  for (std::size_t i = 0; i < order.size(); ++i) {
    const auto place = std::lower_bound(ends.begin(), ends.end(), order[i],
                                        [&order](std::size_t end, std::size_t value) { return order[end] < value; });
    before[i] = place == ends.begin() ? kNone : *(place - 1);
    if (place == ends.end()) {
      ends.push_back(i);
    } else {
      *place = i;
    }
  }
  std::vector<bool> stays(order.size(), false);
  for (std::size_t i = ends.empty() ? kNone : ends.back(); i != kNone; i = before[i]) {
    stays[i] = true;
  }
  std::vector<std::size_t> moved;
  for (std::size_t i = 0; i < order.size(); ++i) {
    if (!stays[i]) {
      moved.push_back(i);
    }
  }
  return moved;
}

}  // namespace corvane::inspect
