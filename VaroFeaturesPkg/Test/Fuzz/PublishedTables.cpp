/** @file
  Invariants of a booted driver's tables and records, for any input.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Fuzz/PublishedTables.hpp"

#include <algorithm>
#include <numeric>

#include "FakeUefi/KeptBlocks.hpp"
#include "Fuzz/FuzzInput.hpp"
#include "lifecycle/DriverState.hpp"
#include "uefi/ByteReader.hpp"

extern "C" {
#include <Library/BaseLib.h>
}

namespace {

/// Reads one entry of a table. A wrong entry fails the reader or the run.
void PassText(ByteReader& reader) {
  reader.Read<UINT16>();
  reader.Take(reader.Read<UINT16>());
}

void PassAttribute(ByteReader& reader) {
  const auto head = reader.ReadStruct<PLDM_BIOS_ATTRIBUTE_ENTRY>();
  switch (PLDM_BIOS_ATTRIBUTE_BASE_TYPE(head.AttributeType)) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      reader.Take(reader.Read<UINT8>() * sizeof(UINT16));
      reader.Take(reader.Read<UINT8>());
      break;
    case PLDM_BIOS_ATTRIBUTE_STRING:
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:
      reader.Take(7);
      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      reader.Take(28);
      break;
    case PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING:
      reader.Take(4);
      reader.Take(reader.Read<UINT8>() * sizeof(UINT16));
      break;
    case PLDM_BIOS_ATTRIBUTE_COLLECTION:
      reader.Take(4);
      break;
    case PLDM_BIOS_ATTRIBUTE_CONFIG_SET:
      reader.Take(reader.Read<UINT8>() * sizeof(UINT16));
      break;
    default:
      Require(false, "an unknown type in the attribute table");
  }
}

void PassValue(ByteReader& reader) {
  const auto head = reader.ReadStruct<PLDM_BIOS_ATTRIBUTE_VALUE_ENTRY>();
  switch (PLDM_BIOS_ATTRIBUTE_BASE_TYPE(head.AttributeType)) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      reader.Take(reader.Read<UINT8>());
      break;
    case PLDM_BIOS_ATTRIBUTE_STRING:
      reader.Take(reader.Read<UINT16>());
      break;
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:
      Require(reader.Read<UINT16>() == 0, "a password in the value table");
      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      reader.Take(8);
      break;
    case PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING:
      reader.Take(2);
      reader.Take(reader.Read<UINT8>());
      break;
    case PLDM_BIOS_ATTRIBUTE_COLLECTION:
      reader.Take(reader.Read<UINT8>() * sizeof(UINT16));
      break;
    case PLDM_BIOS_ATTRIBUTE_CONFIG_SET:
      reader.Take(1);
      break;
    default:
      Require(false, "an unknown type in the value table");
  }
}

constexpr struct {
  UINT32 Index;
  void (*Pass)(ByteReader&);
} kTables[] = {{TABLE_STRINGS, PassText},
               {TABLE_ATTRIBUTES, PassAttribute},
               {TABLE_VALUES, PassValue},
               {TABLE_DISPLAY, PassText},
               {TABLE_HELP, PassText}};

std::span<const std::byte> Content(const TableDescriptor& table) {
  return {reinterpret_cast<const std::byte*>(UINTN{table.Data}), table.Limit};
}

void RequireSoundTable(const FakeUefi& uefi, const TableDescriptor& table, void (*pass)(ByteReader&)) {
  if (table.Data == 0) {
    Require(table.Limit == 0 && table.Finished == 0, "a table without memory has a length");
    return;
  }
  Require(table.Finished == 1 && table.Used == 0 && table.Limit <= table.Capacity, "a table is not sealed");
  const auto block = uefi.PoolBlocks().find(Content(table).data());
  Require(block != uefi.PoolBlocks().end() && block->second >= table.Limit, "a table is longer than its block");
  const bool overrun = Warned(uefi, "CorvaneDxe: table " + std::to_string(table.TableIndex) + ": ");
  Require(!overrun || table.TableIndex == TABLE_VALUES ||
              (table.TableIndex == TABLE_HELP && table.Capacity - table.Limit < 8),
          "a table is overrun");
  if (overrun) {
    return;
  }
  constexpr size_t kCrcSize = sizeof(UINT32);
  Require(table.Limit % 4 == 0 && table.Limit >= kCrcSize + table.PadLength, "a table's length");
  const auto crc = CalculateCrc32(const_cast<std::byte*>(Content(table).data()), table.Limit - kCrcSize);
  ByteReader stored(Content(table).last(kCrcSize));
  Require(crc == table.Checksum && crc == stored.Read<UINT32>(), "a table's checksum");
  ByteReader reader(Content(table).first(table.Limit - kCrcSize - table.PadLength));
  if (table.TableIndex >= TABLE_DISPLAY) {
    reader.Take(reader.Read<UINT16>());
  }
  for (UINT16 entry = 0; entry < table.EntryCount; ++entry) {
    pass(reader);
  }
  Require(reader.Ok() && reader.AtEnd(), "a table's entries");
}

/// The record as the stream has it.
void AppendRecord(Bytes& stream, const AttributeRecord& record) {
  const auto bytes = [&](size_t from, size_t to) {
    Append(stream, BytesAt(reinterpret_cast<const std::uint8_t*>(&record) + from, to - from));
  };
  const auto array = [&](const void* elements, size_t size) {
    Append(stream, elements == nullptr ? Bytes() : BytesAt(elements, size));
  };
  switch (PLDM_BIOS_ATTRIBUTE_BASE_TYPE(record.Type)) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION: {
      const auto& body = As<EnumerationRecord>(record);
      bytes(0, 12);
      array(body.PossibleValueNames, body.PossibleValueCount * sizeof(UINT16));
      array(body.PossibleValues, body.PossibleValueCount * sizeof(UINT64));
      return bytes(28, 30);
    }
    case PLDM_BIOS_ATTRIBUTE_STRING: {
      const char* const text = As<StringRecord>(record).CurrentString;
      bytes(0, 18);
      return array(text == nullptr ? "" : text, text == nullptr ? 1 : std::strlen(text) + 1);
    }
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:
      return bytes(0, 19);
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      return bytes(0, 47);
    case PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING: {
      const auto& body = As<BootConfigurationRecord>(record);
      bytes(0, 16);
      array(body.PossibleSourceNames, body.PossibleSourceCount * sizeof(UINT16));
      return bytes(24, 47);
    }
    case PLDM_BIOS_ATTRIBUTE_COLLECTION: {
      const auto& body = As<CollectionRecord>(record);
      bytes(0, 16);
      return array(body.Items, body.ItemCount * sizeof(UINT16));
    }
    case PLDM_BIOS_ATTRIBUTE_CONFIG_SET: {
      const auto& body = As<ConfigurationSetRecord>(record);
      bytes(0, 12);
      array(body.ConfigNames, body.ConfigCount * sizeof(UINT16));
      return bytes(20, 21);
    }
    default:
      Require(false, "an unknown type in the store");
  }
}

Bytes ExpectedStream(const AttributeStore& store) {
  const UINT64 slots = std::min<UINT64>(store.Header.AttributeCount, 240) + 16;
  Bytes stream;
  for (UINT64 slot = 0; slot < slots; ++slot) {
    const auto* const record = static_cast<const AttributeRecord*>(store.Slots[ATTRIBUTE_STORE_ATTRIBUTES + slot]);
    if (record == nullptr) {
      stream.push_back(0xFF);
    } else {
      AppendRecord(stream, *record);
    }
  }
  return Join(static_cast<UINT32>(stream.size()), BytesAt(&store.Header, sizeof(store.Header)), stream);
}

void RequireRecord(const Bytes& record) {
  const auto& header = reinterpret_cast<const TransportRecord&>(*record.data());
  const Bytes payload(record.begin() + sizeof(TransportRecord), record.end());
  Require(SameGuid(header.Guid, gVaroTransportRecordGuid) && header.PayloadLength == payload.size(), "a header");
  if (header.Type == TRANSPORT_RECORD_DIRECTORY) {
    const TableDirectory& directory = *mState.Directory;
    Require(payload == BytesAt(&directory, sizeof(directory)) &&
                std::accumulate(payload.begin(), payload.begin() + directory.Length, UINT8{0},
                                [](UINT8 sum, UINT8 byte) { return static_cast<UINT8>(sum + byte); }) == 0,
            "the directory");
    for (size_t i = 0; i < std::size(kTables); ++i) {
      Require(directory.Entries[i].Length == mState.Descriptors[kTables[i].Index].Limit, "a length in the directory");
    }
  } else if (header.Type == TRANSPORT_RECORD_DESCRIPTORS) {
    Require(payload == BytesAt(mState.Descriptors, TABLE_DESCRIPTOR_COUNT * sizeof(TableDescriptor)), "descriptors");
  } else if (header.Type == TRANSPORT_RECORD_STREAM) {
    Require(payload == ExpectedStream(*mState.Database.Store()), "the stream is not the store");
  } else {
    Require(header.Type - TRANSPORT_RECORD_STRINGS < static_cast<int>(std::size(kTables)), "a record's type");
    const auto content = Content(mState.Descriptors[kTables[header.Type - TRANSPORT_RECORD_STRINGS].Index]);
    Require(payload == BytesAt(content.data(), content.size()), "a record is not its table");
  }
}

}  // namespace

bool Warned(const FakeUefi& uefi, std::string_view start) {
  return std::any_of(uefi.DebugMessages.begin(), uefi.DebugMessages.end(),
                     [start](const FakeUefi::DebugMessage& message) {
                       return message.Level == DEBUG_WARN && message.Text.starts_with(start);
                     });
}

void RequireSoundTables(const FakeNotebook& notebook) {
  if (notebook.Published() == nullptr && notebook.Records.empty()) {
    return;
  }
  const AttributeStoreHeader& header = mState.Database.Store()->Header;
  Require(header.AttributeCount <= ATTRIBUTE_STORE_HANDLE_LIMIT && header.NameCount <= ATTRIBUTE_STORE_STRING_LIMIT &&
              header.DisplayCount <= ATTRIBUTE_STORE_STRING_LIMIT,
          "the store counts more than it has room for");
  for (const auto& [index, pass] : kTables) {
    RequireSoundTable(notebook.Uefi, mState.Descriptors[index], pass);
  }
  for (const Bytes& record : notebook.Records) {
    RequireRecord(record);
  }
}

void RequireNothingLeft(FakeNotebook& notebook) {
  Require(notebook.QuestionListsOut == 0, "a list of questions is not released");
  Require(BlocksLeftBehind(notebook).empty(), "a block was left");
}
