/** @file
  CacheVariables: names of the cache's variables and which array of the store each string list keeps.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/AttributeDatabase.hpp"
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

/// What DeleteCache deletes. The status variable stays: others write it.
inline constexpr std::array kCacheVariables = {kBiosVersionVariable, kAttributesDataVariable, kAttributesCountVariable,
                                               kNamesVariable,       kDisplayStringsVariable, kHelpStringsVariable};

/// Boot configuration settings are read anew in every boot; unknown types are nobody's.
inline bool IsCached(const AttributeRecord& record) {
  return HasKnownType(record) && BaseType(record) != AttributeType::BootConfiguration;
}

struct CachedStrings {
  const CHAR16* Variable;
  StringArray Array;
};

/// The string lists in the order in which they are written and restored.
inline constexpr std::array kCachedStrings = {CachedStrings{kNamesVariable, StringArray::Names},
                                              CachedStrings{kDisplayStringsVariable, StringArray::Display},
                                              CachedStrings{kHelpStringsVariable, StringArray::Help}};
