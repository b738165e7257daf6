/** @file
  CacheVariables: names of the cache's variables, how they are read and deleted, and the seal over them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/store/AttributeDatabase.hpp"
#include "uefi/Variables.hpp"

extern "C" {
#include <Corvane/AttributeCache.h>
}

inline constexpr const CHAR16* kBiosVersionVariable = u"" ATTRIBUTE_CACHE_BIOS_VERSION u""_ucs2;
inline constexpr const CHAR16* kAttributesDataVariable = u"" ATTRIBUTE_CACHE_ATTRIBUTES_DATA u""_ucs2;
inline constexpr const CHAR16* kAttributesCountVariable = u"" ATTRIBUTE_CACHE_COUNTERS u""_ucs2;
inline constexpr const CHAR16* kNamesVariable = u"" ATTRIBUTE_CACHE_NAMES u""_ucs2;
inline constexpr const CHAR16* kDisplayStringsVariable = u"" ATTRIBUTE_CACHE_DISPLAY_STRINGS u""_ucs2;
inline constexpr const CHAR16* kHelpStringsVariable = u"" ATTRIBUTE_CACHE_HELP_STRINGS u""_ucs2;
inline constexpr const CHAR16* kCacheStatusVariable = u"" ATTRIBUTE_CACHE_STATUS u""_ucs2;

/// The six variables of the cache, in the order in which DeleteCache deletes them. The status variable is kept: others
/// write it.
inline constexpr std::array kCacheVariables = {kBiosVersionVariable, kAttributesDataVariable, kAttributesCountVariable,
                                               kNamesVariable,       kDisplayStringsVariable, kHelpStringsVariable};

/// The compressed contents, in the order in which they are written and restored.
enum class CachedContent : UINT8 { Names, DisplayStrings, HelpStrings, Attributes };
inline constexpr std::array kCachedContents = {CachedContent::Names, CachedContent::DisplayStrings,
                                               CachedContent::HelpStrings, CachedContent::Attributes};

inline const CHAR16* VariableOf(CachedContent content) {
  return kCacheVariables[content == CachedContent::Attributes ? 1 : 3 + static_cast<size_t>(content)];
}

/// The array of a string list.
constexpr StringArray ArrayOf(CachedContent list) {
  static_assert(static_cast<UINT8>(StringArray::Help) == static_cast<UINT8>(CachedContent::HelpStrings));
  return static_cast<StringArray>(list);
}

/// Returns true if records of this type are cached. Boot configuration settings are gathered in every boot.
inline bool IsCached(const AttributeRecord& record) {
  return HasKnownType(record) && BaseType(record) != AttributeType::BootConfiguration;
}

/// Reads one of the six variables. A variable with other attributes than the driver writes is EFI_NOT_FOUND: the
/// operating system may have created it.
[[nodiscard]] inline Result<VariableContent> ReadCacheVariable(const CHAR16* name) {
  return ReadVariable(name, gVaroAttributeVariableGuid, kNonVolatile);
}

[[nodiscard]] inline EFI_STATUS WriteCacheVariable(const CHAR16* name, std::span<const std::byte> bytes) {
  return WriteVariable(name, gVaroAttributeVariableGuid, kNonVolatile, bytes);
}

/// Deletes one of the six variables, with any attributes. An authenticated variable cannot be deleted.
EFI_STATUS DeleteCacheVariable(const CHAR16* name);

/// A firmware version of at least this length leaves room for the seal in "BiosVersion".
constexpr size_t kShortestSealedVersion = ATTRIBUTE_CACHE_SHORTEST_SEALED_VERSION;

/// Returns the CRC-32 over the stored contents of the five variables that the version commits, in the order of writing.
/// A missing variable is empty.
[[nodiscard]] UINT32 SealOfStoredCache();
