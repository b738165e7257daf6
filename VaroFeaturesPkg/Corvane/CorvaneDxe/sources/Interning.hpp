/** @file
  Interning of names, display texts and help texts: cleaned, de-duplicated, kept in the database.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/store/AttributeDatabase.hpp"

/// A handle, and whether its text was there before.
struct InternedString {
  StringHandle Handle{};
  bool AlreadyPresent = false;
};

/// Interns the name of an attribute or of one of its values. Without memory or room the handle is 0.
InternedString InternAttributeName(AttributeDatabase& database, const CHAR16* name);

inline StringHandle InternName(AttributeDatabase& database, const CHAR16* name) {
  return InternAttributeName(database, name).Handle;
}

/// Longest text, in characters, that the display table takes.
constexpr size_t kLongestDisplayText = 174;

/// Interns a display text. A text over kLongestDisplayText, counted before cleaning, yields handle 0.
InternedString InternDisplayString(AttributeDatabase& database, const CHAR16* text);

/// Interns a display text under a handle of its own: while an equal text is there, "*" is put in front of it, which
/// readers strip. AlreadyPresent tells whether that was needed.
InternedString InternDistinctDisplayString(AttributeDatabase& database, const CHAR16* text);

/// Handles of an attribute's or a value's name and display text.
struct InternedPair {
  StringHandle Name{};
  StringHandle Display{};
};

/// Interns texts of the driver's own, which it holds in ASCII: half the size of what they become.
StringHandle InternOwnName(AttributeDatabase& database, const CHAR8* name);
InternedPair InternOwnTexts(AttributeDatabase& database, const CHAR8* name, const CHAR8* displayName);

/// Keeps a help text of fewer than 4096 characters at the handle of its display text; other texts are dropped.
/// Handle 0 takes none.
void SetHelpString(AttributeDatabase& database, const CHAR16* text, StringHandle displayHandle);
