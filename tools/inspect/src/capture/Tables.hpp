/** @file
  The five published tables, entry by entry (DSP0247, and the display and help tables).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

#include "bytes/ByteReader.hpp"
#include "bytes/ByteWriter.hpp"
#include "bytes/Findings.hpp"

namespace corvane::inspect {

enum class TableId { Strings, Attributes, Values, Display, Help };

struct TableKind {
  TableId Id;
  const char* Name;
  std::size_t Descriptor;  // its index among the table descriptors
  std::size_t Record;      // the type of the transport record that carries it
  std::size_t Capacity;    // bytes that the driver allocates, checksum included
};

extern const std::array<TableKind, 5> kTableKinds;  // in the order of TableId

inline const TableKind& KindOf(TableId id) {
  return kTableKinds[static_cast<std::size_t>(id)];
}

enum class BaseType : std::uint8_t {
  Enumeration,
  String,
  Password,
  Integer,
  BootConfiguration,
  Collection,
  ConfigurationSet,
};

inline constexpr std::uint8_t kReadOnly = 0x80;

inline std::uint8_t BaseTypeOf(std::uint8_t type) {
  return type & static_cast<std::uint8_t>(~kReadOnly);
}
std::string TypeName(std::uint8_t type);  // of the base type

// Checksum and pad of a table, and what is needed to measure its fill.
struct TableFrame {
  Bytes Content;                 // all of it
  std::size_t Pad = 0;           // zero bytes between the last entry and the checksum
  std::size_t LargestEntry = 0;  // bytes
  std::uint32_t StoredCrc = 0;
  std::uint32_t ComputedCrc = 0;
  bool Sound = true;  // every entry was complete

  bool CrcOk() const { return StoredCrc == ComputedCrc; }
};

// Entries in table order and the first entry of each handle.
template <typename Entry>
struct Table {
  TableFrame Frame;
  std::vector<Entry> Entries;
  std::unordered_map<std::uint16_t, std::size_t> ByHandle;

  const Entry* Find(std::uint16_t handle) const {
    const auto found = ByHandle.find(handle);
    return found == ByHandle.end() ? nullptr : &Entries[found->second];
  }
};

struct StringEntry {
  std::uint16_t Handle = 0;
  std::string Text;  // 8-bit characters
};

struct TextEntry {
  std::uint16_t Handle = 0;
  std::u16string Text;
};

struct TextTable : Table<TextEntry> {
  std::u16string Language;
};

// The values that an attribute may have. Names are string handles.
struct EnumerationBounds {
  std::vector<std::uint16_t> Names;
  std::vector<std::uint8_t> Defaults;  // indices of Names; the driver writes one
  bool operator==(const EnumerationBounds&) const = default;
};
struct LengthBounds {  // of a string or a password
  std::uint8_t Subtype = 0;
  std::uint16_t Minimum = 0;
  std::uint16_t Maximum = 0;
  std::uint16_t DefaultLength = 0;
  bool operator==(const LengthBounds&) const = default;
};
struct IntegerBounds {
  std::uint64_t Lower = 0;
  std::uint64_t Upper = 0;
  std::uint32_t Step = 0;
  std::uint64_t Default = 0;
  bool operator==(const IntegerBounds&) const = default;
};
struct BootBounds {
  std::uint8_t ConfigType = 0;
  std::uint8_t Modes = 0;
  std::uint8_t MinimumSources = 0;
  std::uint8_t MaximumSources = 0;
  std::vector<std::uint16_t> Sources;
  bool operator==(const BootBounds&) const = default;
};
struct CollectionBounds {
  std::array<std::uint8_t, 4> Info{};
  bool operator==(const CollectionBounds&) const = default;
};
struct ConfigurationSetBounds {
  std::vector<std::uint16_t> Names;
  bool operator==(const ConfigurationSetBounds&) const = default;
};
using Bounds = std::variant<std::monostate, EnumerationBounds, LengthBounds, IntegerBounds, BootBounds,
                            CollectionBounds, ConfigurationSetBounds>;

struct AttributeEntry {
  std::uint16_t Handle = 0;
  std::uint8_t Type = 0;
  std::uint16_t NameHandle = 0;
  inspect::Bounds Bounds;

  bool IsReadOnly() const { return (Type & kReadOnly) != 0; }
  bool operator==(const AttributeEntry&) const = default;
};

// The current value of an attribute.
struct EnumerationValue {
  std::vector<std::uint8_t> Indices;  // the driver writes one
  bool operator==(const EnumerationValue&) const = default;
};
struct StringValue {
  std::string Text;
  bool operator==(const StringValue&) const = default;
};
struct PasswordValue {
  std::string Text;  // the driver writes none
  bool operator==(const PasswordValue&) const = default;
};
struct IntegerValue {
  std::uint64_t Value = 0;
  bool operator==(const IntegerValue&) const = default;
};
struct BootValue {
  std::uint8_t ConfigType = 0;
  std::uint8_t Mode = 0;
  std::vector<std::uint8_t> Order;  // positions among the possible sources
  bool operator==(const BootValue&) const = default;
};
struct CollectionValue {
  std::vector<std::uint16_t> Members;  // attribute handles
  bool operator==(const CollectionValue&) const = default;
};
struct ConfigurationSetValue {
  std::uint8_t Index = 0;
  bool operator==(const ConfigurationSetValue&) const = default;
};
using Value = std::variant<std::monostate, EnumerationValue, StringValue, PasswordValue, IntegerValue, BootValue,
                           CollectionValue, ConfigurationSetValue>;

struct ValueEntry {
  std::uint16_t Handle = 0;
  std::uint8_t Type = 0;
  inspect::Value Value;
  bool operator==(const ValueEntry&) const = default;
};

// Each decodes as many entries as are readable, and adds errors to the findings.
Table<StringEntry> DecodeStringTable(Bytes content, Findings& findings);
Table<AttributeEntry> DecodeAttributeTable(Bytes content, Findings& findings);
Table<ValueEntry> DecodeValueTable(Bytes content, Findings& findings);
TextTable DecodeTextTable(TableId id, Bytes content, Findings& findings);

struct TableMeasure {
  TableFrame Frame;
  std::size_t Entries = 0;
};
TableMeasure MeasureTable(TableId id, Bytes content);

std::uint32_t Crc32(Bytes bytes);
void CloseTable(ByteWriter& table);  // adds the pad and the checksum

// Reads `count` little-endian integers. If fewer are left, the reader fails and the result is empty.
template <typename T>
std::vector<T> ReadMany(ByteReader& reader, std::size_t count) {
  std::vector<T> values;
  ByteReader array(reader.Take(count * sizeof(T)));
  while (array.Left() >= sizeof(T)) {
    values.push_back(array.Read<T>());
  }
  return values;
}

inline std::string ReadText(ByteReader& reader, std::size_t length) {
  const Bytes bytes = reader.Take(length);
  return std::string(bytes.begin(), bytes.end());
}

// Reads text up to and including a zero byte. The reader fails if there is no zero byte.
inline std::string ReadTerminated(ByteReader& reader) {
  const Bytes rest = reader.Rest();
  const auto end = std::find(rest.begin(), rest.end(), std::uint8_t{0});
  const Bytes text = reader.Take(static_cast<std::size_t>(end - rest.begin()));
  reader.Take(1);
  return std::string(text.begin(), text.end());
}

}  // namespace corvane::inspect
