/** @file
  ValueEntries: one attribute's entry of a value table.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/ValueEntries.hpp"

#include "uefi/Protocols.hpp"

extern "C" {
#include <Protocol/AssetTagLength.h>
}

namespace {

constexpr UINT32 kAssetTagToken = 9752;
constexpr UINT32 kSecondStringToken = 1559;
constexpr UINT32 kBcdTokens = 0x476;  // this one and the next: an hour and a minute

constexpr UINT8 FromBcd(UINT8 value) {
  return static_cast<UINT8>((value & 0x0F) + 10 * (value >> 4));
}

/// The platform's string behind `record`, or null; a string that the platform says is empty empties the record.
PoolPtr<CHAR8[]> FetchPlatformString(StringRecord& record) {
  const UINT32 token = record.Head.Token;
  if (token != kAssetTagToken && token != kSecondStringToken) {
    return nullptr;
  }
  const UINT32 selector = token == kAssetTagToken ? PLATFORM_STRING_ASSET_TAG : PLATFORM_STRING_SECOND;
  auto* const strings = FindProtocol<AssetTagLengthProtocol>(gVaroAssetTagLengthProtocolGuid);
  if (strings == nullptr) {
    return nullptr;
  }
  UINT64 size = 0;
  EFI_STATUS status = strings->GetString(selector, 0, &size, nullptr);
  if (status != EFI_BUFFER_TOO_SMALL) {
    if (!EFI_ERROR(status) && size == 0) {
      const PoolPtr<CHAR8[]> cleared{record.CurrentString};
      record.CurrentString = nullptr;
    }
    return nullptr;
  }
  // One more for the terminator; no size may come round to 0 with it, and so to a block shorter than announced.
  PoolPtr<CHAR8[]> text = AllocateZeroedArray<CHAR8>(size + (size != MAX_UINT64 ? 1 : 0));
  if (!text || EFI_ERROR(strings->GetString(selector, 0, &size, text.get()))) {
    return nullptr;
  }
  return text;
}

}  // namespace

size_t ValueEntries::ValueEntrySize(const AttributeRecord& record) {
  switch (BaseType(record)) {
    case AttributeType::Enumeration:
      return 5;
    case AttributeType::String: {
      const CHAR8* const current = As<StringRecord>(record).CurrentString;
      return 5 + (current != nullptr ? AsciiLength(current) : 0);
    }
    case AttributeType::Password:
      return As<PasswordRecord>(record).PasswordInstalled == 0 ? 0 : 5;
    case AttributeType::Integer:
      return 11;
    case AttributeType::BootConfiguration:
      return As<BootConfigurationRecord>(record).CurrentSourceCount + size_t{6};
    case AttributeType::Collection:
    case AttributeType::ConfigurationSet:
      return 4;
  }
  return 3;
}

void ValueEntries::RefreshEnumeration(EnumerationRecord& record) const {
  const Result<UINT64> setting = ReadSetting(settings_, record.Head.Token, record.Head.ValueSize);
  if (!setting.Ok()) {
    return;
  }
  const UINT64 value = setting.Value() & MAX_UINT32;
  const UINT64* const values = record.PossibleValues;
  for (UINT8 i = 0; i < record.PossibleValueCount; ++i) {
    if (values[i] == value) {
      record.CurrentIndex = i;
      return;
    }
  }
}

void ValueEntries::RefreshInteger(IntegerRecord& record) const {
  const Result<UINT64> setting = ReadSetting(settings_, record.Head.Token, record.Head.ValueSize);
  if (!setting.Ok()) {
    return;
  }
  // One byte of the setting is the value: readers of tables made from the cache depend on it.
  const auto value = static_cast<UINT8>(setting.Value());
  record.CurrentValue = (record.Head.Token & ~UINT32{1}) == kBcdTokens ? FromBcd(value) : value;
}

void ValueEntries::AppendString(TableWriter& writer, UINT32 index, StringRecord& record) const {
  const PoolPtr<CHAR8[]> fetched = restored_ ? FetchPlatformString(record) : nullptr;
  const CHAR8* const current = record.CurrentString;
  // A record without a string stays without one, whatever was fetched.
  const CHAR8* const text = current == nullptr ? nullptr : fetched ? fetched.get() : current;
  const auto length = static_cast<UINT16>(text != nullptr ? AsciiLength(text) : 0);
  writer.AppendValue(index, length);
  writer.AppendTableBytes(index, ArrayBytes(text, length));
}

EFI_STATUS ValueEntries::AppendValueEntry(TableWriter& writer, UINT32 index, AttributeRecord& record) const {
  if (BaseType(record) == AttributeType::Password && As<PasswordRecord>(record).PasswordInstalled == 0) {
    return EFI_SUCCESS;
  }
  if (writer.Room(index) < ValueEntrySize(record)) {
    return EFI_BUFFER_TOO_SMALL;
  }
  static_assert(offsetof(AttributeRecord, NameHandle) == sizeof(PLDM_BIOS_ATTRIBUTE_VALUE_ENTRY));
  writer.AppendTableBytes(index, RecordBytes(record, 0, sizeof(PLDM_BIOS_ATTRIBUTE_VALUE_ENTRY)));
  switch (BaseType(record)) {
    case AttributeType::Enumeration: {
      constexpr UINT8 kCurrentCount = 1;
      auto& enumeration = As<EnumerationRecord>(record);
      if (restored_) {
        RefreshEnumeration(enumeration);
      }
      writer.AppendValue(index, kCurrentCount);
      writer.AppendValue(index, UINT8{enumeration.CurrentIndex});
      break;
    }
    case AttributeType::String:
      AppendString(writer, index, As<StringRecord>(record));
      break;
    case AttributeType::Password:
      writer.AppendValue(index, UINT16{0});  // no password leaves the firmware
      break;
    case AttributeType::Integer: {
      auto& integer = As<IntegerRecord>(record);
      if (restored_) {
        RefreshInteger(integer);
      }
      writer.AppendValue(index, UINT64{integer.CurrentValue});
      break;
    }
    case AttributeType::BootConfiguration: {
      constexpr size_t kCurrent = offsetof(BootConfigurationRecord, CurrentBootConfigType);
      writer.AppendTableBytes(
          index, RecordBytes(record, kCurrent, kCurrent + 3 + As<BootConfigurationRecord>(record).CurrentSourceCount));
      break;
    }
    case AttributeType::Collection: {
      // Members that do not fit are left out; the count stays.
      const auto& collection = As<CollectionRecord>(record);
      writer.AppendValue(index, UINT8{collection.ItemCount});
      writer.AppendTableBytes(index, ArrayBytes(collection.Items, collection.ItemCount));
      break;
    }
    case AttributeType::ConfigurationSet:
      writer.AppendValue(index, UINT8{As<ConfigurationSetRecord>(record).CurrentConfig});
      break;
  }
  writer.CountTableEntry(index);
  return EFI_SUCCESS;
}
