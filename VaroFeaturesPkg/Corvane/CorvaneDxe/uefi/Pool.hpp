/** @file
  Boot-services pool with an owner: zero-filled blocks that free themselves unless given away.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include <memory>

#include "uefi/Text.hpp"

/// Frees a block of pool, or nothing for null. Out of line: nearly every path of the driver ends in one of these.
void FreeBlock(const void* block);

struct PoolDeleter {
  template <typename T>
  void operator()(T* block) const {
    static_assert(std::is_trivially_destructible_v<T>, "pool memory is freed, not destroyed");
    FreeBlock(block);
  }
};

template <typename T>
using PoolPtr = std::unique_ptr<T, PoolDeleter>;

/// Upper limit for one allocation. A larger size is rejected before any arithmetic with it, so a size from outside
/// cannot overflow.
constexpr size_t kLargestBlock = size_t{1} << 24;

/// Returns a zero-filled block of `count` elements and a few `spare` ones, of `size` bytes each, or null. The block has
/// at least one byte. Only `count` may come from outside. The caller frees the block with gBS->FreePool.
[[nodiscard]] void* AllocateZeroedBytes(size_t count, size_t size = 1, size_t spare = 0);

/// One zero-filled T, or null.
template <typename T>
[[nodiscard]] PoolPtr<T> AllocateZeroed() {
  return PoolPtr<T>{static_cast<T*>(AllocateZeroedBytes(sizeof(T)))};
}

/// Returns an array of `count` zero-filled T and a few `spare` ones, or null.
template <typename T>
[[nodiscard]] PoolPtr<T[]> AllocateZeroedArray(size_t count, size_t spare = 0) {
  static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);
  return PoolPtr<T[]>{static_cast<T*>(AllocateZeroedBytes(count, sizeof(T), spare))};
}

/// Returns a copy of `size` bytes followed by `zeros` zero bytes, or null. The caller frees the copy with
/// gBS->FreePool.
[[nodiscard]] void* CopyBytes(const void* source, size_t size, size_t zeros = 0);

/// A copy of an ASCII text with its terminator, or null.
[[nodiscard]] PoolPtr<CHAR8[]> CopyAscii(const CHAR8* text);

/// Returns a terminated copy of the bytes of a UCS-2 text, or null.
[[nodiscard]] inline PoolPtr<CHAR16[]> CopyUcs2(std::span<const std::byte> text) {
  // Two terminators: one is whole even after an odd number of bytes.
  return PoolPtr<CHAR16[]>{static_cast<CHAR16*>(CopyBytes(text.data(), text.size(), 2 * sizeof(CHAR16)))};
}
