/** @file
  The five published tables, entry by entry (DSP0247, and the display and help tables).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "capture/Tables.hpp"

#include "bytes/Text.hpp"
#include "capture/FieldReader.hpp"
#include "capture/Layout.hpp"
#include "bytes/Wire.hpp"

namespace corvane::inspect {
namespace {

static_assert(PLDM_BIOS_ATTRIBUTE_ENUMERATION == static_cast<int>(BaseType::Enumeration));
static_assert(PLDM_BIOS_ATTRIBUTE_CONFIG_SET == static_cast<int>(BaseType::ConfigurationSet));
static_assert(PLDM_BIOS_ATTRIBUTE_READ_ONLY == kReadOnly);

constexpr std::size_t kAlignment = 4;

// Entries are longer than a pad. Only value entries of unknown types are as short, and their type byte is not zero.
bool IsPad(Bytes rest) {
  return rest.size() < kAlignment && std::all_of(rest.begin(), rest.end(), [](std::uint8_t byte) { return byte == 0; });
}

// Checks the checksum at the end. Returns the entries and the pad.
Bytes OpenFrame(TableId id, Bytes content, TableFrame& frame, Findings& findings) {
  const char* name = KindOf(id).Name;
  frame.Content = content;
  if (content.size() < PLDM_BIOS_TABLE_CHECKSUM_SIZE) {
    frame.Sound = false;
    findings.Add("table-length", "the {} table has {} bytes, too few for its checksum", name, content.size());
    return {};
  }
  if (content.size() % kAlignment != 0) {
    findings.Add("table-length", "the {} table has {} bytes, not a multiple of 4", name, content.size());
  }
  const Bytes body = content.first(content.size() - PLDM_BIOS_TABLE_CHECKSUM_SIZE);
  frame.StoredCrc = ByteReader(content.last(PLDM_BIOS_TABLE_CHECKSUM_SIZE)).Read<std::uint32_t>();
  frame.ComputedCrc = Crc32(body);
  if (!frame.CrcOk()) {
    findings.Add("table-crc", "the {} table has the CRC {:08X}, its bytes give {:08X}", name, frame.StoredCrc,
                 frame.ComputedCrc);
  }
  return body;
}

template <typename Entry>
void ReadEntries(TableId id, ByteReader& reader, Table<Entry>& table, Findings& findings) {
  const char* name = KindOf(id).Name;
  while (!IsPad(reader.Rest())) {
    const std::size_t offset = reader.Offset();
    const std::size_t before = reader.Left();
    Entry entry;
    FieldReader fields(reader);
    Fields(fields, entry);
    if (!reader.Ok()) {
      table.Frame.Sound = false;
      findings.Add("table-malformed", "the {} table ends within entry {} at offset {}", name, table.Entries.size(),
                   offset);
      return;
    }
    table.Frame.LargestEntry = std::max(table.Frame.LargestEntry, before - reader.Left());
    if (!table.Entries.empty() && entry.Handle <= table.Entries.back().Handle) {
      findings.Add("handle-order", "the {} table has the handle {} after {}", name, entry.Handle,
                   table.Entries.back().Handle);
    }
    table.ByHandle.try_emplace(entry.Handle, table.Entries.size());
    table.Entries.push_back(std::move(entry));
  }
  table.Frame.Pad = reader.Left();
}

template <typename Entry>
Table<Entry> DecodeTable(TableId id, Bytes content, Findings& findings) {
  Table<Entry> table;
  ByteReader reader(OpenFrame(id, content, table.Frame, findings));
  ReadEntries(id, reader, table, findings);
  return table;
}

constexpr std::array<std::uint32_t, 256> MakeCrcTable() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t i = 0; i < table.size(); ++i) {
    std::uint32_t crc = i;
    for (int bit = 0; bit < 8; ++bit) {
      crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xEDB88320U : crc >> 1;
    }
    table[i] = crc;
  }
  return table;
}

}  // namespace

const std::array<TableKind, 5> kTableKinds = {{
    {TableId::Strings, "strings", TABLE_STRINGS, TRANSPORT_RECORD_STRINGS, 7680},
    {TableId::Attributes, "attributes", TABLE_ATTRIBUTES, TRANSPORT_RECORD_ATTRIBUTES, 3072},
    {TableId::Values, "values", TABLE_VALUES, TRANSPORT_RECORD_VALUES, 2048},
    {TableId::Display, "display", TABLE_DISPLAY, TRANSPORT_RECORD_DISPLAY, 10240},
    {TableId::Help, "help", TABLE_HELP, TRANSPORT_RECORD_HELP, 65535},
}};

std::string TypeName(std::uint8_t type) {
  static constexpr const char* kNames[] = {"enumeration",        "string",     "password",         "integer",
                                           "boot-configuration", "collection", "configuration-set"};
  const std::uint8_t base = BaseTypeOf(type);
  return base < std::size(kNames) ? kNames[base] : fmt::format("type-{}", base);
}

std::uint32_t Crc32(Bytes bytes) {
  static constexpr std::array<std::uint32_t, 256> kTable = MakeCrcTable();
  std::uint32_t crc = 0xFFFFFFFFU;
  for (const std::uint8_t byte : bytes) {
    crc = kTable[(crc ^ byte) & 0xFF] ^ (crc >> 8);
  }
  return ~crc;
}

void CloseTable(ByteWriter& table) {
  table.Reserved((kAlignment - table.Content.size() % kAlignment) % kAlignment);
  table.Put(Crc32(table.Content));
}

Bounds EmptyBounds(std::uint8_t type) {
  switch (BaseType{BaseTypeOf(type)}) {
    case BaseType::Enumeration:
      return EnumerationBounds{};
    case BaseType::String:
    case BaseType::Password:
      return LengthBounds{};
    case BaseType::Integer:
      return IntegerBounds{};
    case BaseType::BootConfiguration:
      return BootBounds{};
    case BaseType::Collection:
      return CollectionBounds{};
    case BaseType::ConfigurationSet:
      return ConfigurationSetBounds{};
  }
  return std::monostate{};
}

Value EmptyValue(std::uint8_t type) {
  switch (BaseType{BaseTypeOf(type)}) {
    case BaseType::Enumeration:
      return EnumerationValue{};
    case BaseType::String:
      return StringValue{};
    case BaseType::Password:
      return PasswordValue{};
    case BaseType::Integer:
      return IntegerValue{};
    case BaseType::BootConfiguration:
      return BootValue{};
    case BaseType::Collection:
      return CollectionValue{};
    case BaseType::ConfigurationSet:
      return ConfigurationSetValue{};
  }
  return std::monostate{};
}

Table<StringEntry> DecodeStringTable(Bytes content, Findings& findings) {
  return DecodeTable<StringEntry>(TableId::Strings, content, findings);
}

Table<AttributeEntry> DecodeAttributeTable(Bytes content, Findings& findings) {
  return DecodeTable<AttributeEntry>(TableId::Attributes, content, findings);
}

Table<ValueEntry> DecodeValueTable(Bytes content, Findings& findings) {
  return DecodeTable<ValueEntry>(TableId::Values, content, findings);
}

TextTable DecodeTextTable(TableId id, Bytes content, Findings& findings) {
  TextTable table;
  ByteReader reader(OpenFrame(id, content, table.Frame, findings));
  const auto length = reader.Read<std::uint16_t>();
  table.Language = Ucs2FromBytes(reader.Take(length));
  if (!reader.Ok()) {
    table.Frame.Sound = false;
    findings.Add("table-malformed", "the {} table ends within its language tag", KindOf(id).Name);
    return table;
  }
  if (table.Language != u"en-US") {
    findings.Add("table-language", "the {} table is tagged {}", KindOf(id).Name,
                 QuoteUtf8(Utf8FromUcs2(table.Language)));
  }
  ReadEntries(id, reader, table, findings);
  return table;
}

TableMeasure MeasureTable(TableId id, Bytes content) {
  Findings ignored;
  const auto measure = [](const auto& table) { return TableMeasure{table.Frame, table.Entries.size()}; };
  switch (id) {
    case TableId::Strings:
      return measure(DecodeStringTable(content, ignored));
    case TableId::Attributes:
      return measure(DecodeAttributeTable(content, ignored));
    case TableId::Values:
      return measure(DecodeValueTable(content, ignored));
    case TableId::Display:
    case TableId::Help:
      return measure(DecodeTextTable(id, content, ignored));
  }
  return {};
}

}  // namespace corvane::inspect
