/** @file
  The two kinds of handles of DSP0247, which must never be mixed.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

extern "C" {
#include <Corvane/AttributeStore.h>
}

enum class StringHandle : UINT16 {};     // index into one of the store's string arrays; 0 = no string
enum class AttributeHandle : UINT16 {};  // slot of an AttributeRecord; 0 = no attribute

constexpr UINT16 kFirstHandle = ATTRIBUTE_STORE_FIRST_HANDLE;

template <typename Handle>
requires std::is_enum_v<Handle>
constexpr UINT16 Raw(Handle handle) {
  return static_cast<UINT16>(handle);
}
