/** @file
  AttributeDatabase: the boot's AttributeStore with the rules by which records and strings enter and are found.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/store/AttributeRecords.hpp"
#include "database/store/Handles.hpp"
#include "database/store/StringIndex.hpp"
#include "uefi/Text.hpp"

static_assert(sizeof(AttributeStore) == 124960 && offsetof(AttributeStore, Header) == 124928);
static_assert(sizeof(AttributeStoreHeader) == 32);

/// The three string arrays of the store. Help texts share the handles of the display texts.
enum class StringArray : UINT8 { Names, Display, Help };

class AttributeDatabase {
 public:
  /// Upper limits of the counters: the handles of strings, and the attributes that readers of the stream can address.
  static constexpr UINT16 kMostStrings = ATTRIBUTE_STORE_STRING_LIMIT - kFirstHandle;
  static constexpr UINT16 kMostAttributes = ATTRIBUTE_STORE_HANDLE_LIMIT - kFirstHandle;

  /// Most characters that a stored string may have, so that its byte size fits the 16 bits of the cache's lists.
  static constexpr size_t kLongestString = 0x7FFE;

  /// Allocates the store, zero-filled. Nothing else may be called before.
  [[nodiscard]] EFI_STATUS AllocateStore();
  [[nodiscard]] AttributeStore* Store() const { return store_; }

  // Records.

  /// Gives the record the next handle and keeps it. Beyond handle 271 it is freed instead and the handle is 0.
  AttributeHandle AddAttribute(OwnedRecord<AttributeRecord>&& record);

  /// Keeps the record at a reserved handle, in place of any record there; a null record empties the slot.
  void PlaceAttribute(OwnedRecord<AttributeRecord>&& record, AttributeHandle handle);

  /// Keeps a restored record at `slot`, counted or not. A null record, for which there was no memory, leaves the slot
  /// empty but counts. Returns false and frees the record if `slot` is outside the store.
  [[nodiscard]] bool RestoreAttribute(OwnedRecord<AttributeRecord>&& record, UINT16 slot, bool counted);

  [[nodiscard]] AttributeRecord* AttributeAt(UINT16 slot) const;
  [[nodiscard]] AttributeRecord* FindAttributeByToken(UINT32 token);

  /// The record in the next live slot after `slot`, or null past the end. Begin with slot 0. The walk goes by slots,
  /// not by the records' own handles, so that no cached record can make it go round in circles.
  [[nodiscard]] AttributeRecord* NextAttribute(UINT16& slot) const;

  /// First attribute handle that is not live.
  [[nodiscard]] UINT16 AttributeLimit() const;
  [[nodiscard]] UINT64 GetAttributeCount() const { return store_->Header.AttributeCount; }
  [[nodiscard]] UINT64 GetNameCount() const { return store_->Header.NameCount; }

  // Strings.

  /// The text at a handle, empty for a handle that is not live.
  [[nodiscard]] const CHAR16* GetNameString(StringHandle handle) const { return TextAt(StringArray::Names, handle); }
  [[nodiscard]] const CHAR16* GetHelpString(StringHandle handle) const { return TextAt(StringArray::Help, handle); }
  [[nodiscard]] const CHAR16* GetDisplayString(StringHandle handle) const {
    return WithoutStars(TextAt(StringArray::Display, handle));
  }

  /// A display text as readers see it: without the stars that kept it apart from an equal one.
  [[nodiscard]] static const CHAR16* WithoutStars(const CHAR16* stored);

  /// Calls `visit(handle, text)` for each live handle of an array until it gives false; an absent text is empty.
  template <typename Visit>
  void ForEachText(StringArray array, Visit visit) const {
    const UINT16 limit = StringLimit(array);
    const VOID* const* const texts = StringsOf(array);
    for (UINT16 handle = kFirstHandle; handle < limit; ++handle) {
      const auto* const text = static_cast<const CHAR16*>(texts[handle]);
      if (!visit(handle, text != nullptr ? text : kEmptyText)) {
        return;
      }
    }
  }

  /// The text at a handle, or null when there is none.
  [[nodiscard]] const CHAR16* StoredText(StringArray array, StringHandle handle) const;

  /// First handle of `array` that is not live; the help array goes by the display texts.
  [[nodiscard]] UINT16 StringLimit(StringArray array) const;

  /// The lowest handle whose text matches, or 0.
  [[nodiscard]] StringHandle FindString(StringArray array, const TextKey& key);

  /// Keeps a name or display text of up to kLongestString characters under the next handle. Without room the handle is
  /// 0. `hash` is that of the text's key.
  [[nodiscard]] StringHandle AddString(StringArray array, PoolPtr<CHAR16[]>&& text, UINT32 hash);

  /// Keeps a help text at a display text's handle and counts it.
  void PlaceHelp(PoolPtr<CHAR16[]>&& text, StringHandle handle);

  /// Keeps a restored string at `handle`, which is in the string range, and all handles up to `handle` from later
  /// strings. A null help text is not counted.
  void RestoreString(StringArray array, PoolPtr<CHAR16[]>&& text, UINT16 handle);

  /// Keeps the handles up to `last`, as far as there are so many, from later strings. A handle without a text reads as
  /// an empty string.
  void ReserveStrings(StringArray array, UINT64 last);

  /// Gives back what only made gathering fast.
  void ReleaseIndexes();

 private:
  static constexpr CHAR16 kEmptyText[] = {0};

  [[nodiscard]] const CHAR16* TextAt(StringArray array, StringHandle handle) const;
  [[nodiscard]] VOID** StringsOf(StringArray array) const;
  [[nodiscard]] UINT64 CountOf(StringArray array) const;
  void Count(StringArray array);
  void PutRecord(OwnedRecord<AttributeRecord>&& record, UINT16 slot);
  void PutString(StringArray array, PoolPtr<CHAR16[]>&& text, UINT16 handle);

  AttributeStore* store_ = nullptr;  // kept until boot services end: the published interface leads to it
  StringIndex nameIndex_;
  StringIndex displayIndex_;
  std::array<UINT32, 8> tokensSeen_{};  // a bit for each value of a token's low byte; most look-ups are for new tokens
  UINT32 lastToken_ = 0;                // one-entry cache of FindAttributeByToken
  UINT16 lastSlot_ = 0;                 // 0 = the cache is empty
};
