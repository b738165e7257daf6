/** @file
  StringIndex: finds a text among the strings of one array without comparing it with each of them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/store/Handles.hpp"
#include "uefi/Pool.hpp"
#include "uefi/Text.hpp"

/// Hash chains over the handles of one string array, in pool while strings are gathered. It answers only while it
/// covers every string of its array; otherwise the array is searched from its start.
class StringIndex {
 public:
  /// True while the index covers handles 16 to count + 15. An index of nothing is set up on the way; without memory
  /// there is none.
  [[nodiscard]] bool Covers(UINT64 count) {
    return (chains_ != nullptr && covered_ == count) || (count == 0 && SetUp());
  }

  /// The lowest handle whose string matches, or 0.
  [[nodiscard]] UINT16 Find(const TextKey& key, const VOID* const* strings) const;

  /// Takes in the string that is stored at the handle after the last one covered, by the hash of its key.
  void Add(UINT32 hash);

  /// Frees the chains; the index then covers nothing until its array is empty again.
  void Release();

 private:
  [[nodiscard]] bool SetUp();

  static constexpr size_t kBucketCount = 1024;

  struct Chains {
    UINT16 First[kBucketCount];
    UINT16 Next[ATTRIBUTE_STORE_STRING_LIMIT];
  };

  [[nodiscard]] static size_t BucketOf(UINT32 hash) { return (hash >> 9 ^ hash) % kBucketCount; }

  Chains* chains_ = nullptr;  // freed by Release: the index is part of the module's state, which nothing destroys
  UINT64 covered_ = 0;
};
