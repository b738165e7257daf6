/** @file
  Interning of names, display texts and help texts.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "sources/Interning.hpp"

namespace {

constexpr size_t kHelpTextLimit = 4096;  // characters; a help text is shorter

/// "*" followed by the text; `length`, in bytes, grows by the star.
PoolPtr<CHAR16[]> PrefixWithStar(const CHAR16* text, size_t& length) {
  PoolPtr<CHAR16[]> starred = AllocateZeroedArray<CHAR16>(length / sizeof(CHAR16) + 2);
  if (starred) {
    starred[0] = '*';
    CopyMem(&starred[1], text, length);
    length += sizeof(CHAR16);
  }
  return starred;
}

/// Interns a text of the driver's own. None is longer than a display text may be.
[[gnu::noinline]] StringHandle InternOwn(AttributeDatabase& database, const CHAR8* text, StringArray array) {
  std::array<CHAR16, kLongestDisplayText + 1> widened;
  size_t length = 0;
  for (; text[length] != 0 && length < kLongestDisplayText; ++length) {
    widened[length] = static_cast<UINT8>(text[length]);
  }
  widened[length] = 0;
  return array == StringArray::Names ? InternName(database, widened.data())
                                     : InternDisplayString(database, widened.data()).Handle;
}

}  // namespace

InternedString InternAttributeName(AttributeDatabase& database, const CHAR16* name) {
  const TextKey key(name);
  if (const StringHandle known = database.FindString(StringArray::Names, key); Raw(known) != 0) {
    return {known, true};
  }
  PoolPtr<CHAR16[]> cleaned = AllocateZeroedArray<CHAR16>(key.Length + 1);
  if (!cleaned) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: name \"%s\" dropped: out of memory\n", name));
    return {};
  }
  if (CleanString(cleaned.get(), name) > cleaned.get() + AttributeDatabase::kLongestString) {
    // The reason comes first: a text of this length fills the whole message.
    DEBUG((DEBUG_WARN, "CorvaneDxe: name of %d characters dropped: too long for the cache\n",
           static_cast<int>(key.Length)));
    return {};
  }
  return {database.AddString(StringArray::Names, std::move(cleaned), key.Hash), false};
}

InternedString InternDisplayString(AttributeDatabase& database, const CHAR16* text) {
  const TextKey key(text);
  if (key.Length > kLongestDisplayText) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: display text \"%s\" dropped: longer than %d characters\n", text,
           static_cast<int>(kLongestDisplayText)));
    return {};
  }
  if (const StringHandle known = database.FindString(StringArray::Display, key); Raw(known) != 0) {
    return {known, true};
  }
  PoolPtr<CHAR16[]> cleaned = AllocateZeroedArray<CHAR16>(key.Length + 1);
  if (!cleaned) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: display text \"%s\" dropped: out of memory\n", text));
    return {};
  }
  CleanString(cleaned.get(), text);
  return {database.AddString(StringArray::Display, std::move(cleaned), key.Hash), false};
}

InternedString InternDistinctDisplayString(AttributeDatabase& database, const CHAR16* text) {
  InternedString interned = InternDisplayString(database, text);
  const bool starred = interned.AlreadyPresent;
  PoolPtr<CHAR16[]> distinct;
  size_t length = StringLength(text) * sizeof(CHAR16);
  while (interned.AlreadyPresent) {  // ends when the text is new, or too long for the table
    distinct = PrefixWithStar(distinct ? distinct.get() : text, length);
    if (!distinct) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: display text \"%s\" dropped: out of memory\n", text));
      return {{}, starred};
    }
    interned = InternDisplayString(database, distinct.get());
  }
  return {interned.Handle, starred};
}

StringHandle InternOwnName(AttributeDatabase& database, const CHAR8* name) {
  return InternOwn(database, name, StringArray::Names);
}

InternedPair InternOwnTexts(AttributeDatabase& database, const CHAR8* name, const CHAR8* displayName) {
  return {.Name = InternOwnName(database, name), .Display = InternOwn(database, displayName, StringArray::Display)};
}

void SetHelpString(AttributeDatabase& database, const CHAR16* text, StringHandle displayHandle) {
  const Ucs2View whole = ViewOf(text);
  if (Raw(displayHandle) == 0 || whole.size() >= kHelpTextLimit) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: help text of %d characters dropped (display handle %d)\n",
           static_cast<int>(whole.size()), Raw(displayHandle)));
    return;
  }
  PoolPtr<CHAR16[]> copy = CopyUcs2(std::as_bytes(whole));
  if (!copy) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: help text dropped: out of memory (display handle %d)\n", Raw(displayHandle)));
    return;
  }
  database.PlaceHelp(std::move(copy), displayHandle);
}
