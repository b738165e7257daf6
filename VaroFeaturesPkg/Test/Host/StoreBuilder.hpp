/** @file
  Builds records and strings straight into an AttributeDatabase, without the rules of the sources.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include <optional>
#include <string>

#include "FakeUefi/FakeUefi.hpp"
#include "database/store/AttributeDatabase.hpp"

/// One record in readable form. `Handles` and `Values` are what the type's arrays hold.
struct RecordSpec {
  UINT16 Handle = 0;  ///< 0 = the next one
  UINT8 Type = 0;
  UINT16 Name = 0;
  UINT16 ValueSize = 0;
  UINT32 Token = 0;
  std::vector<UINT16> Handles{};  ///< value names, boot sources, members or configurations
  std::vector<UINT64> Values{};
  UINT64 Default = 0;  ///< index or value
  UINT64 Current = 0;
  UINT64 Lower = 0;
  UINT64 Upper = 0;
  UINT32 Step = 1;
  UINT8 SubType = 1;  ///< of a string, a password, a boot configuration
  UINT16 MinLength = 0;
  UINT16 MaxLength = 0;
  UINT16 DefaultLength = 0;
  std::optional<std::string> Text{};
  UINT8 Installed = 0;
  UINT8 Modes = 3;
  Bytes Order{};  ///< of a boot configuration's current sources
};

/// Adds or places the record. A record of a type above 6 is only a head.
AttributeRecord* Put(AttributeDatabase& database, const RecordSpec& spec);

StringHandle PutText(AttributeDatabase& database, StringArray array, std::u16string_view text);
void PutHelp(AttributeDatabase& database, UINT16 displayHandle, std::u16string_view text);

/// Frees a store, which may be null, and all that it holds.
inline void FreeStore(AttributeStore* store) {
  for (size_t slot = 0; store != nullptr && slot < ATTRIBUTE_STORE_SLOT_COUNT; ++slot) {
    const bool isRecord = slot < ATTRIBUTE_STORE_HANDLE_LIMIT;
    isRecord ? FreeRecord(static_cast<AttributeRecord*>(store->Slots[slot])) : FreeBlock(store->Slots[slot]);
  }
  FreeBlock(store);
}

/// A text of the store, narrowed; it must be ASCII.
std::string TextOf(const AttributeDatabase& database, StringArray array, UINT16 handle);
