/** @file
  What an attribute's type says of its entry and of its value.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/ByteReader.hpp"

extern "C" {
#include <IndustryStandard/PldmBios.h>
#include <Protocol/AttributeAccess.h>
}

/// True for the types of DSP0247, read-only or not.
[[nodiscard]] constexpr bool IsKnownType(UINT8 type) {
  return PLDM_BIOS_ATTRIBUTE_BASE_TYPE(type) <= PLDM_BIOS_ATTRIBUTE_CONFIG_SET;
}

/// The type itself, or ATTRIBUTE_INFO_UNKNOWN_TYPE.
[[nodiscard]] constexpr UINT32 NormaliseType(UINT8 type) {
  return IsKnownType(type) ? type : UINT32{ATTRIBUTE_INFO_UNKNOWN_TYPE};
}

/// Bytes of the attribute part that `part` begins with: 0 for an unknown type, more than there are when it is cut
/// short.
[[nodiscard]] size_t AttributePartSize(UINT8 type, ByteReader part);

/// The same of a value part.
[[nodiscard]] size_t ValuePartSize(UINT8 type, ByteReader value);
