/** @file
  ValueEntries: one attribute's entry of a value table.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/tables/ValueEntries.hpp"

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
  PoolPtr<CHAR8[]> text = AllocateZeroedArray<CHAR8>(size, 1);  // 1 for the terminator
  if (!text || EFI_ERROR(strings->GetString(selector, 0, &size, text.get()))) {
    return nullptr;
  }
  return text;
}

/// The bytes of an entry that have a fixed number.
class ValueEntryBytes {
 public:
  template <std::unsigned_integral T>
  void Put(T value) {
    __builtin_memcpy(bytes_ + size_, &value, sizeof(value));
    size_ += sizeof(value);
  }
  /// Bytes [Offset, End) of a record. A copy of a constant size is compiled without a call of memcpy, which a DXE image
  /// does not have.
  template <size_t Offset, size_t End>
  [[gnu::always_inline]] void PutBytes(const AttributeRecord& record) {
    __builtin_memcpy(bytes_ + size_, RecordBytes(record, Offset, End).data(), End - Offset);
    size_ += End - Offset;
  }
  [[nodiscard]] std::span<const std::byte> Bytes() const { return {bytes_, size_}; }

 private:
  std::byte bytes_[sizeof(PLDM_BIOS_ATTRIBUTE_VALUE_ENTRY) + sizeof(UINT64)];
  size_t size_ = 0;
};

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

EFI_STATUS ValueEntries::AppendValueEntry(TableWriter& writer, UINT32 index, AttributeRecord& record) const {
  if (BaseType(record) == AttributeType::Password && As<PasswordRecord>(record).PasswordInstalled == 0) {
    return EFI_SUCCESS;
  }
  if (writer.Room(index) < ValueEntrySize(record)) {
    return EFI_BUFFER_TOO_SMALL;
  }
  // Most entries are a few bytes: they are put together here and appended at once. `rest` follows them.
  ValueEntryBytes entry;
  entry.PutBytes<0, sizeof(PLDM_BIOS_ATTRIBUTE_VALUE_ENTRY)>(record);
  std::span<const std::byte> rest;
  PoolPtr<CHAR8[]> fetched;
  static_assert(offsetof(AttributeRecord, NameHandle) == sizeof(PLDM_BIOS_ATTRIBUTE_VALUE_ENTRY));
  switch (BaseType(record)) {
    case AttributeType::Enumeration: {
      auto& enumeration = As<EnumerationRecord>(record);
      if (restored_) {
        RefreshEnumeration(enumeration);
      }
      entry.Put(UINT8{1});  // number of current values
      entry.PutBytes<offsetof(EnumerationRecord, CurrentIndex), sizeof(EnumerationRecord)>(record);
      break;
    }
    case AttributeType::String: {
      auto& string = As<StringRecord>(record);
      if (restored_) {
        fetched = FetchPlatformString(string);
      }
      // A record without a string has length 0, even if a string was fetched.
      const CHAR8* const current = string.CurrentString;
      const CHAR8* const text = current != nullptr && fetched ? fetched.get() : current;
      const auto length = static_cast<UINT16>(text != nullptr ? AsciiLength(text) : 0);
      entry.Put(length);
      rest = ArrayBytes(text, length);
      break;
    }
    case AttributeType::Password:
      entry.Put(UINT16{0});  // no password leaves the firmware
      break;
    case AttributeType::Integer: {
      if (restored_) {
        RefreshInteger(As<IntegerRecord>(record));
      }
      entry.PutBytes<offsetof(IntegerRecord, CurrentValue), sizeof(IntegerRecord)>(record);
      break;
    }
    case AttributeType::BootConfiguration: {
      constexpr size_t kCurrent = offsetof(BootConfigurationRecord, CurrentBootConfigType);
      rest = RecordBytes(record, kCurrent, kCurrent + 3 + As<BootConfigurationRecord>(record).CurrentSourceCount);
      break;
    }
    case AttributeType::Collection: {
      // Members that do not fit are left out; the count stays.
      const auto& collection = As<CollectionRecord>(record);
      entry.Put(UINT8{collection.ItemCount});
      rest = ArrayBytes(collection.Items, collection.ItemCount);
      break;
    }
    case AttributeType::ConfigurationSet:
      entry.PutBytes<offsetof(ConfigurationSetRecord, CurrentConfig), sizeof(ConfigurationSetRecord)>(record);
      break;
  }
  writer.AppendTableBytes(index, entry.Bytes());
  if (!rest.empty()) {
    writer.AppendTableBytes(index, rest);
  }
  writer.CountTableEntry(index);
  return EFI_SUCCESS;
}
