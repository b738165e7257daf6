/** @file
  StringIndex: hash chains over the strings of one array.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/StringIndex.hpp"

size_t StringIndex::BucketOf(Ucs2View text) {
  UINT32 hash = 2166136261;  // FNV-1a, a character at a time
  for (const CHAR16 character : text) {
    hash = (hash ^ character) * 16777619;
  }
  return (hash >> 16 ^ hash) % kBucketCount;
}

bool StringIndex::Covers(UINT64 count) {
  if (chains_ == nullptr && count == 0) {
    chains_ = AllocateZeroed<Chains>().release();
    covered_ = 0;
  }
  return chains_ != nullptr && covered_ == count;
}

UINT16 StringIndex::Find(Ucs2View text, const VOID* const* strings) const {
  UINT16 found = 0;
  // A chain runs from the newest string to the oldest, so that the last match has the lowest handle.
  for (UINT16 handle = chains_->First[BucketOf(text)]; handle != 0; handle = chains_->Next[handle]) {
    if (Equal(ViewOf(static_cast<const CHAR16*>(strings[handle])), text)) {
      found = handle;
    }
  }
  return found;
}

void StringIndex::Release() {
  const PoolPtr<Chains> released{std::exchange(chains_, nullptr)};
}

void StringIndex::Add(Ucs2View text) {
  const auto handle = static_cast<UINT16>(covered_ + kFirstHandle);
  UINT16& first = chains_->First[BucketOf(text)];
  chains_->Next[handle] = first;
  first = handle;
  ++covered_;
}
