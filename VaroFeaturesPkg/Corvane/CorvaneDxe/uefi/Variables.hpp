/** @file
  UEFI variables: two-call reads, writes, deletion.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Pool.hpp"
#include "uefi/Status.hpp"

constexpr UINT32 kNonVolatile = EFI_VARIABLE_NON_VOLATILE | EFI_VARIABLE_BOOTSERVICE_ACCESS;
constexpr UINT32 kNonVolatileRuntime = kNonVolatile | EFI_VARIABLE_RUNTIME_ACCESS;

/// A variable's content. Two zero bytes follow it in memory, so that text in it is terminated.
struct VariableContent {
  PoolPtr<std::byte[]> Data;
  size_t Size = 0;

  [[nodiscard]] std::span<const std::byte> Bytes() const { return {Data.get(), Size}; }
};

/// Reads a whole variable, however long. An empty one is EFI_NOT_FOUND.
[[nodiscard]] Result<VariableContent> ReadVariable(const CHAR16* name, EFI_GUID& vendor);

/// Reads a variable of exactly the size of `value`.
template <typename T>
requires std::is_trivially_copyable_v<T>
[[nodiscard]] EFI_STATUS ReadVariable(const CHAR16* name, EFI_GUID& vendor, T& value) {
  UINTN size = sizeof(value);
  const EFI_STATUS status = gRT->GetVariable(const_cast<CHAR16*>(name), &vendor, nullptr, &size, &value);
  return EFI_ERROR(status) || size == sizeof(value) ? status : EFI_BAD_BUFFER_SIZE;
}

/// Writes a variable; no bytes delete it.
[[nodiscard]] EFI_STATUS WriteVariable(const CHAR16* name, EFI_GUID& vendor, UINT32 attributes,
                                       std::span<const std::byte> bytes);
