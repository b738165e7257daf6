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

void* AllocateZeroedBytes(size_t count, size_t size, size_t spare) {
  if (count > kLargestBlock / size) {
    return nullptr;
  }
  const size_t bytes = std::max<size_t>((count + spare) * size, 1);
  void* block = nullptr;
  if (EFI_ERROR(gBS->AllocatePool(EfiBootServicesData, bytes, &block))) {
    return nullptr;
  }
  ZeroMem(block, bytes);
  return block;
}

void* CopyBytes(const void* source, size_t size, size_t zeros) {
  void* const copy = AllocateZeroedBytes(size, 1, zeros);
  if (copy != nullptr) {
    CopyMem(copy, source, size);
  }
  return copy;
}

PoolPtr<CHAR8[]> CopyAscii(const CHAR8* text) {
  return PoolPtr<CHAR8[]>{static_cast<CHAR8*>(CopyBytes(text, AsciiLength(text), 1))};
}
