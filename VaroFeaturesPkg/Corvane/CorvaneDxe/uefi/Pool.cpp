/** @file
  Allocation of zero-filled boot-services pool.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "uefi/Pool.hpp"

[[gnu::noinline]] void FreeBlock(const void* block) {
  if (block != nullptr) {
    gBS->FreePool(const_cast<void*>(block));
  }
}

void* AllocateZeroedBytes(size_t size) {
  size = std::max<size_t>(size, 1);
  void* block = nullptr;
  if (EFI_ERROR(gBS->AllocatePool(EfiBootServicesData, size, &block))) {
    return nullptr;
  }
  ZeroMem(block, size);
  return block;
}

PoolPtr<CHAR8[]> CopyAscii(const CHAR8* text) {
  const size_t length = AsciiLength(text);
  PoolPtr<CHAR8[]> copy = AllocateZeroedArray<CHAR8>(length + 1);
  if (copy) {
    CopyMem(copy.get(), text, length);
  }
  return copy;
}
