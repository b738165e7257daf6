/** @file
  What an attribute's type says of its entry and of its value.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "access/service/AttributeParts.hpp"

namespace {

/// Bytes, then a count, then that many elements.
struct PartShape {
  UINT8 Fixed;
  UINT8 CountSize;
  UINT8 ElementSize;
};

constexpr std::array<PartShape, 7> kAttributeParts = {{
    {0, 1, 2},   // enumeration: possible values; the defaults follow in the same form, a byte each
    {5, 2, 1},   // string
    {5, 2, 1},   // password
    {28, 0, 0},  // integer
    {4, 1, 2},   // boot configuration
    {4, 0, 0},   // collection
    {0, 1, 2},   // configuration set
}};

constexpr PartShape kEnumerationDefaults{0, 1, 1};

constexpr std::array<PartShape, 7> kValueParts = {{
    {0, 1, 1},  // enumeration
    {0, 2, 1},  // string
    {0, 2, 1},  // password
    {8, 0, 0},  // integer
    {2, 1, 1},  // boot configuration
    {0, 1, 2},  // collection
    {1, 0, 0},  // configuration set
}};

/// Bytes of a part; the reader goes past them, or fails.
size_t SizeOf(const PartShape& shape, ByteReader& reader) {
  reader.Take(shape.Fixed);
  const size_t count = reader.ReadUnsigned(shape.CountSize);
  reader.Take(count * shape.ElementSize);
  return shape.Fixed + shape.CountSize + count * shape.ElementSize;
}

}  // namespace

size_t AttributePartSize(UINT8 type, ByteReader part) {
  if (!IsKnownType(type)) {
    return 0;
  }
  const UINT8 base = PLDM_BIOS_ATTRIBUTE_BASE_TYPE(type);
  size_t size = SizeOf(kAttributeParts[base], part);
  if (base == PLDM_BIOS_ATTRIBUTE_ENUMERATION) {
    size += SizeOf(kEnumerationDefaults, part);
  }
  return size;
}

size_t ValuePartSize(UINT8 type, ByteReader value) {
  return IsKnownType(type) ? SizeOf(kValueParts[PLDM_BIOS_ATTRIBUTE_BASE_TYPE(type)], value) : 0;
}
