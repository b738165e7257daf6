/** @file
  StringIndex: hash chains over the strings of one array.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/store/StringIndex.hpp"

bool StringIndex::SetUp() {
  if (chains_ == nullptr) {
    void* block = nullptr;
    if (EFI_ERROR(gBS->AllocatePool(EfiBootServicesData, sizeof(Chains), &block))) {
      return false;
    }
    chains_ = static_cast<Chains*>(block);
    ZeroMem(chains_->First, sizeof(chains_->First));  // each `Next` is written before a chain leads to it
    covered_ = 0;
  }
  return covered_ == 0;
}

UINT16 StringIndex::Find(const TextKey& key, const VOID* const* strings) const {
  UINT16 found = 0;
  // A chain runs from the newest string to the oldest, so that the last match has the lowest handle.
  for (UINT16 handle = chains_->First[BucketOf(key.Hash)]; handle != 0; handle = chains_->Next[handle]) {
    if (key.Matches(static_cast<const CHAR16*>(strings[handle]))) {
      found = handle;
    }
  }
  return found;
}

void StringIndex::Release() {
  const PoolPtr<Chains> released{std::exchange(chains_, nullptr)};
}

void StringIndex::Add(UINT32 hash) {
  const auto handle = static_cast<UINT16>(covered_ + kFirstHandle);
  UINT16& first = chains_->First[BucketOf(hash)];
  chains_->Next[handle] = first;
  first = handle;
  ++covered_;
}
