/** @file
  AttributeDatabase: records and strings of the boot's AttributeStore.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/store/AttributeDatabase.hpp"

namespace {

constexpr UINT32 kReadOnlyToken = 0x955D;  // this setting may be seen but never changed by management software

/// First handle after `count` live ones, never beyond `limit`: a restored counter proves nothing.
constexpr UINT16 LimitOf(UINT64 count, UINT16 limit) {
  return count >= static_cast<UINT64>(limit - kFirstHandle) ? limit : static_cast<UINT16>(count + kFirstHandle);
}

}  // namespace

EFI_STATUS AttributeDatabase::AllocateStore() {
  store_ = AllocateZeroed<AttributeStore>().release();  // to the end of boot services
  return store_ != nullptr ? EFI_SUCCESS : EFI_OUT_OF_RESOURCES;
}

void AttributeDatabase::PutRecord(OwnedRecord<AttributeRecord>&& record, UINT16 slot) {
  VOID*& place = store_->Slots[ATTRIBUTE_STORE_ATTRIBUTES + slot];
  const OwnedRecord<AttributeRecord> replaced{static_cast<AttributeRecord*>(place)};
  if (record) {
    const UINT32 token = record->Token;
    tokensSeen_[token / 32 % tokensSeen_.size()] |= UINT32{1} << token % 32;
  }
  place = record.release();  // to the store
}

AttributeHandle AttributeDatabase::AddAttribute(OwnedRecord<AttributeRecord>&& record) {
  const UINT16 handle = AttributeLimit();
  if (handle >= ATTRIBUTE_STORE_HANDLE_LIMIT) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: attribute \"%s\" dropped: the store is full\n",
           GetNameString(StringHandle{record->NameHandle})));
    return {};
  }
  if (record->Token == kReadOnlyToken) {
    record->Type |= PLDM_BIOS_ATTRIBUTE_READ_ONLY;
  }
  record->Handle = handle;
  PutRecord(std::move(record), handle);
  ++store_->Header.AttributeCount;
  return AttributeHandle{handle};
}

void AttributeDatabase::PlaceAttribute(OwnedRecord<AttributeRecord>&& record, AttributeHandle handle) {
  if (record) {
    record->Handle = Raw(handle);
  }
  PutRecord(std::move(record), Raw(handle));
}

bool AttributeDatabase::RestoreAttribute(OwnedRecord<AttributeRecord>&& record, UINT16 slot, bool counted) {
  if (slot == 0 || slot >= ATTRIBUTE_STORE_HANDLE_LIMIT) {
    return false;
  }
  if (counted && store_->Slots[ATTRIBUTE_STORE_ATTRIBUTES + slot] == nullptr &&
      store_->Header.AttributeCount < kMostAttributes) {
    ++store_->Header.AttributeCount;
  }
  PutRecord(std::move(record), slot);
  return true;
}

AttributeRecord* AttributeDatabase::AttributeAt(UINT16 slot) const {
  return slot < AttributeLimit() ? static_cast<AttributeRecord*>(store_->Slots[ATTRIBUTE_STORE_ATTRIBUTES + slot])
                                 : nullptr;
}

AttributeRecord* AttributeDatabase::FindAttributeByToken(UINT32 token) {
  if (lastSlot_ != 0 && lastToken_ == token) {
    return AttributeAt(lastSlot_);
  }
  if ((tokensSeen_[token / 32 % tokensSeen_.size()] >> token % 32 & 1) == 0) {
    return nullptr;
  }
  const UINT16 limit = AttributeLimit();
  VOID* const* const records = store_->Slots + ATTRIBUTE_STORE_ATTRIBUTES;
  for (UINT16 slot = kFirstHandle; slot < limit; ++slot) {
    auto* const record = static_cast<AttributeRecord*>(records[slot]);
    if (record == nullptr) {
      return nullptr;  // counted slots have no gaps: the first empty one is the end
    }
    if (record->Token == token) {
      lastToken_ = token;
      lastSlot_ = slot;
      return record;
    }
  }
  return nullptr;
}

AttributeRecord* AttributeDatabase::NextAttribute(UINT16& slot) const {
  const UINT16 limit = AttributeLimit();
  while (++slot < limit) {
    if (void* const record = store_->Slots[ATTRIBUTE_STORE_ATTRIBUTES + slot]; record != nullptr) {
      return static_cast<AttributeRecord*>(record);
    }
  }
  return nullptr;
}

UINT16 AttributeDatabase::AttributeLimit() const {
  return LimitOf(store_->Header.AttributeCount, ATTRIBUTE_STORE_HANDLE_LIMIT);
}

VOID** AttributeDatabase::StringsOf(StringArray array) const {
  constexpr auto startOf = [](StringArray of) {
    return ATTRIBUTE_STORE_NAMES + static_cast<size_t>(of) * ATTRIBUTE_STORE_STRING_LIMIT;
  };
  static_assert(startOf(StringArray::Display) == ATTRIBUTE_STORE_DISPLAY_STRINGS &&
                startOf(StringArray::Help) == ATTRIBUTE_STORE_HELP_STRINGS);
  return store_->Slots + startOf(array);
}

UINT64 AttributeDatabase::CountOf(StringArray array) const {
  return array == StringArray::Names ? store_->Header.NameCount : store_->Header.DisplayCount;
}

void AttributeDatabase::Count(StringArray array) {
  switch (array) {
    case StringArray::Names:
      ++store_->Header.NameCount;
      break;
    case StringArray::Display:
      ++store_->Header.DisplayCount;
      break;
    case StringArray::Help:
      ++store_->Header.HelpCount;
      break;
  }
}

UINT16 AttributeDatabase::StringLimit(StringArray array) const {
  return LimitOf(CountOf(array), ATTRIBUTE_STORE_STRING_LIMIT);
}

const CHAR16* AttributeDatabase::StoredText(StringArray array, StringHandle handle) const {
  const bool live = Raw(handle) >= kFirstHandle && Raw(handle) < StringLimit(array);
  return live ? static_cast<const CHAR16*>(StringsOf(array)[Raw(handle)]) : nullptr;
}

const CHAR16* AttributeDatabase::TextAt(StringArray array, StringHandle handle) const {
  const CHAR16* const text = StoredText(array, handle);
  return text != nullptr ? text : kEmptyText;
}

const CHAR16* AttributeDatabase::WithoutStars(const CHAR16* stored) {
  const CHAR16* text = stored;
  while (*text == '*') {
    ++text;
  }
  return text == stored ? stored : SkipBlanks(text);
}

StringHandle AttributeDatabase::FindString(StringArray array, const TextKey& key) {
  VOID* const* const strings = StringsOf(array);
  StringIndex& index = array == StringArray::Names ? nameIndex_ : displayIndex_;
  if (index.Covers(CountOf(array))) {
    return StringHandle{index.Find(key, strings)};
  }
  StringHandle found{};
  ForEachText(array, [&](UINT16 handle, const CHAR16* text) {
    found = StringHandle{key.Matches(text) ? handle : UINT16{0}};
    return Raw(found) == 0;
  });
  return found;
}

void AttributeDatabase::PutString(StringArray array, PoolPtr<CHAR16[]>&& text, UINT16 handle) {
  VOID*& place = StringsOf(array)[handle];
  const PoolPtr<CHAR16[]> replaced{static_cast<CHAR16*>(place)};
  place = text.release();  // to the store
}

StringHandle AttributeDatabase::AddString(StringArray array, PoolPtr<CHAR16[]>&& text, UINT32 hash) {
  const UINT16 handle = StringLimit(array);
  if (handle >= ATTRIBUTE_STORE_STRING_LIMIT) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: text \"%s\" dropped: the store is full\n", text.get()));
    return {};
  }
  StringIndex& index = array == StringArray::Names ? nameIndex_ : displayIndex_;
  if (index.Covers(static_cast<UINT64>(handle - kFirstHandle))) {
    index.Add(hash);
  }
  PutString(array, std::move(text), handle);
  Count(array);
  return StringHandle{handle};
}

void AttributeDatabase::PlaceHelp(PoolPtr<CHAR16[]>&& text, StringHandle handle) {
  PutString(StringArray::Help, std::move(text), Raw(handle));
  Count(StringArray::Help);
}

void AttributeDatabase::RestoreString(StringArray array, PoolPtr<CHAR16[]>&& text, UINT16 handle) {
  if (array != StringArray::Help) {
    ReserveStrings(array, handle);
  } else if (text != nullptr && StringsOf(array)[handle] == nullptr) {
    Count(array);
  }
  PutString(array, std::move(text), handle);
}

[[gnu::noinline]] void AttributeDatabase::ReserveStrings(StringArray array, UINT64 last) {
  const UINT64 highest = std::min<UINT64>(last, ATTRIBUTE_STORE_STRING_LIMIT - 1);
  while (CountOf(array) + kFirstHandle <= highest) {
    Count(array);
  }
}

void AttributeDatabase::ReleaseIndexes() {
  nameIndex_.Release();
  displayIndex_.Release();
}
