/** @file
  UEFI variables: reads, writes, deletion.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Pool.hpp"
#include "uefi/Status.hpp"

constexpr UINT32 kNonVolatile = EFI_VARIABLE_NON_VOLATILE | EFI_VARIABLE_BOOTSERVICE_ACCESS;
constexpr UINT32 kNonVolatileRuntime = kNonVolatile | EFI_VARIABLE_RUNTIME_ACCESS;
constexpr UINT32 kAnyAttributes = 0;

/// The content of a variable. Two zero bytes follow the content in memory, so text is always terminated.
struct VariableContent {
  PoolPtr<std::byte[]> Data;
  size_t Size = 0;

  [[nodiscard]] std::span<const std::byte> Bytes() const { return {Data.get(), Size}; }
};

/// Reads a whole variable with the two-call pattern. An empty variable is EFI_NOT_FOUND. So is a variable with other
/// attributes than the given ones, unless `attributes` is kAnyAttributes.
[[nodiscard]] Result<VariableContent> ReadVariable(const CHAR16* name, EFI_GUID& vendor,
                                                   UINT32 attributes = kAnyAttributes);

/// Reads a variable of exactly the size of `value`. `attributes` returns its attributes; a variable service that does
/// not report them leaves the caller's value.
[[nodiscard]] EFI_STATUS ReadVariable(const CHAR16* name, EFI_GUID& vendor, std::span<std::byte> value,
                                      UINT32& attributes);

/// Writes a variable. No bytes delete it, as do attributes without access.
[[nodiscard]] EFI_STATUS WriteVariable(const CHAR16* name, EFI_GUID& vendor, UINT32 attributes,
                                       std::span<const std::byte> bytes);
