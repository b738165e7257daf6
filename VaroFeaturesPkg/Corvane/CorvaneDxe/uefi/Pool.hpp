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

/// Bytes that no block of the driver comes near. A size from outside that is beyond is refused, before it is multiplied
/// and before it is filled.
constexpr size_t kLargestBlock = size_t{1} << 24;

/// A zero-filled block of `count` elements of `size` bytes each, at least one byte in all, or null. Whoever gets it
/// frees it with gBS->FreePool.
[[nodiscard]] void* AllocateZeroedBytes(size_t count, size_t size = 1);

/// One zero-filled T, or null.
template <typename T>
[[nodiscard]] PoolPtr<T> AllocateZeroed() {
  return PoolPtr<T>{static_cast<T*>(AllocateZeroedBytes(sizeof(T)))};
}

/// An array of `count` zero-filled T, or null.
template <typename T>
[[nodiscard]] PoolPtr<T[]> AllocateZeroedArray(size_t count) {
  static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);
  return PoolPtr<T[]>{static_cast<T*>(AllocateZeroedBytes(count, sizeof(T)))};
}

/// A copy of `size` bytes with `zeros` zero bytes behind it, or null. Whoever gets it frees it with gBS->FreePool.
[[nodiscard]] void* CopyBytes(const void* source, size_t size, size_t zeros = 0);

/// A copy of an ASCII text with its terminator, or null.
[[nodiscard]] PoolPtr<CHAR8[]> CopyAscii(const CHAR8* text);

/// The first `bytes` bytes of a UCS-2 text, terminated, or null.
[[nodiscard]] inline PoolPtr<CHAR16[]> CopyUcs2(const CHAR16* text, size_t bytes) {
  return PoolPtr<CHAR16[]>{static_cast<CHAR16*>(CopyBytes(text, bytes, 2 * sizeof(CHAR16)))};
}
