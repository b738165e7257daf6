/** @file
  Cross-checks of a decoded image: directory and descriptors against tables, tables against each other and the stream.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "capture/Check.hpp"

#include <set>

#include "bytes/Wire.hpp"

namespace corvane::inspect {
namespace {

void CheckDirectory(const Image& image, Findings& findings) {
  struct Expected {
    TableId Id;
    std::uint8_t Type;
    std::uint8_t SubType;
    std::uint8_t Format;
  };
  static constexpr Expected kExpected[] = {
      {TableId::Strings, TABLE_DIRECTORY_TYPE_STRINGS, 0, 1},
      {TableId::Attributes, TABLE_DIRECTORY_TYPE_ATTRIBUTES, 0, 0},
      {TableId::Values, TABLE_DIRECTORY_TYPE_VALUES, 0, 0},
      {TableId::Display, TABLE_DIRECTORY_TYPE_TEXT, 1, 4},
      {TableId::Help, TABLE_DIRECTORY_TYPE_TEXT, 0, 4},
  };
  const std::vector<DirectoryEntry>& entries = image.Directory->Entries;
  if (entries.size() != std::size(kExpected)) {
    findings.Add("directory-entry", "the directory lists {} tables, not {}", entries.size(), std::size(kExpected));
  }
  for (std::size_t i = 0; i < std::min(entries.size(), std::size(kExpected)); ++i) {
    const DirectoryEntry& entry = entries[i];
    const Expected& expected = kExpected[i];
    const char* name = KindOf(expected.Id).Name;
    if (entry.TableType != expected.Type || entry.SubType != expected.SubType || entry.Format != expected.Format ||
        entry.TableId != i) {
      findings.Add("directory-entry", "entry {} of the directory does not describe the {} table", i, name);
    }
    const TableFrame* frame = image.FrameOf(expected.Id);
    if (frame != nullptr && entry.Length != frame->Content.size()) {
      findings.Add("directory-entry", "the directory gives the {} table {} bytes, it has {}", name, entry.Length,
                   frame->Content.size());
    }
    if (image.Descriptors) {
      const std::uint64_t address = (*image.Descriptors)[KindOf(expected.Id).Descriptor].Data;
      if (entry.AddressLow != (address & 0xFFFFFFFF)) {
        findings.Add("directory-entry", "the directory and the descriptor of the {} table differ in its address", name);
      }
    }
  }
}

void CheckDescriptors(const Image& image, Findings& findings) {
  const std::vector<Descriptor>& descriptors = *image.Descriptors;
  std::set<std::size_t> unused;
  for (std::size_t i = 0; i < descriptors.size(); ++i) {
    unused.insert(i);
  }
  for (const TableKind& kind : kTableKinds) {
    unused.erase(kind.Descriptor);
    const TableFrame* frame = image.FrameOf(kind.Id);
    if (frame == nullptr) {
      continue;
    }
    const Descriptor& descriptor = descriptors[kind.Descriptor];
    const auto expect = [&](const char* field, std::uint64_t got, std::uint64_t expected) {
      if (got != expected) {
        findings.Add("descriptor", "the descriptor of the {} table has the {} {}, not {}", kind.Name, field, got,
                     expected);
      }
    };
    expect("type", descriptor.TableType, kind.Descriptor);
    expect("index", descriptor.TableIndex, kind.Descriptor);
    expect("length", descriptor.Limit, frame->Content.size());
    expect("capacity", descriptor.Capacity, kind.Capacity);
    expect("write position", descriptor.Used, 0);
    expect("checksum", descriptor.Checksum, frame->StoredCrc);
    expect("finished mark", descriptor.Finished, 1);
    if (frame->Sound) {
      expect("entry count", descriptor.EntryCount, image.EntryCountOf(kind.Id));
      expect("pad length", descriptor.PadLength, frame->Pad);
    }
  }
  for (const std::size_t index : unused) {
    if (!(descriptors[index] == Descriptor{})) {
      findings.Add("descriptor", "descriptor {} belongs to no table and is not zero", index);
    }
  }
}

// Calls check(string handle, kind of name) for every name that an attribute refers to.
template <typename Check>
void ForEachName(const AttributeEntry& attribute, Check check) {
  check(attribute.NameHandle, "name");
  const auto all = [&check](const std::vector<std::uint16_t>& handles, const char* what) {
    for (const std::uint16_t handle : handles) {
      check(handle, what);
    }
  };
  if (const auto* enumeration = std::get_if<EnumerationBounds>(&attribute.Bounds)) {
    all(enumeration->Names, "value name");
  } else if (const auto* boot = std::get_if<BootBounds>(&attribute.Bounds)) {
    all(boot->Sources, "source name");
  } else if (const auto* set = std::get_if<ConfigurationSetBounds>(&attribute.Bounds)) {
    all(set->Names, "set name");
  }
}

void CheckIndices(const AttributeEntry& attribute, const char* what, const std::vector<std::uint8_t>& indices,
                  std::size_t count, Findings& findings) {
  for (const std::uint8_t index : indices) {
    if (index >= count) {
      findings.Add("index-range", "attribute {} has the {} index {}, but {} possible values", attribute.Handle, what,
                   index, count);
    }
  }
}

void CheckValue(const Image& image, const AttributeEntry& attribute, const ValueEntry& value, Findings& findings) {
  if (value.Type != attribute.Type) {
    findings.Add("value-type", "attribute {} has the type {:#04x} and a value of the type {:#04x}", attribute.Handle,
                 attribute.Type, value.Type);
    return;
  }
  if (const auto* enumeration = std::get_if<EnumerationValue>(&value.Value)) {
    const auto& bounds = std::get<EnumerationBounds>(attribute.Bounds);
    CheckIndices(attribute, "current", enumeration->Indices, bounds.Names.size(), findings);
    if (enumeration->Indices.size() != 1 || bounds.Defaults.size() != 1) {
      findings.Add("index-count", "attribute {} has {} current and {} default values, not one each", attribute.Handle,
                   enumeration->Indices.size(), bounds.Defaults.size());
    }
  } else if (const auto* boot = std::get_if<BootValue>(&value.Value)) {
    CheckIndices(attribute, "source", boot->Order, std::get<BootBounds>(attribute.Bounds).Sources.size(), findings);
  } else if (const auto* set = std::get_if<ConfigurationSetValue>(&value.Value)) {
    CheckIndices(attribute, "current", {set->Index}, std::get<ConfigurationSetBounds>(attribute.Bounds).Names.size(),
                 findings);
  } else if (const auto* collection = std::get_if<CollectionValue>(&value.Value)) {
    for (const std::uint16_t member : collection->Members) {
      if (image.Attributes.Find(member) == nullptr) {
        findings.Add("member-dangling", "collection {} has the member {}, which the attribute table does not have",
                     attribute.Handle, member);
      }
    }
  }
}

void CheckAttributes(const Image& image, Findings& findings) {
  for (const AttributeEntry& attribute : image.Attributes.Entries) {
    ForEachName(attribute, [&](std::uint16_t handle, const char* what) {
      if (image.Strings.Find(handle) == nullptr) {
        findings.Add("name-dangling", "attribute {} has the {} {}, which the string table does not have",
                     attribute.Handle, what, handle);
      }
    });
    if (const auto* enumeration = std::get_if<EnumerationBounds>(&attribute.Bounds)) {
      CheckIndices(attribute, "default", enumeration->Defaults, enumeration->Names.size(), findings);
    }
    if (BaseTypeOf(attribute.Type) > static_cast<std::uint8_t>(BaseType::ConfigurationSet)) {
      findings.Add("type-unknown", "attribute {} has the unknown type {:#04x}", attribute.Handle, attribute.Type);
    }
    const ValueEntry* value = image.Values.Find(attribute.Handle);
    if (value != nullptr) {
      CheckValue(image, attribute, *value, findings);
    } else if (BaseType{BaseTypeOf(attribute.Type)} != BaseType::Password) {
      findings.Add("value-missing", "attribute {} has no current value", attribute.Handle);
    }
  }
  for (const ValueEntry& value : image.Values.Entries) {
    if (image.Attributes.Find(value.Handle) == nullptr) {
      findings.Add("value-dangling", "a value belongs to attribute {}, which the attribute table does not have",
                   value.Handle);
    }
  }
}

// Strings are not compared: the driver may read a string for the value table after it filled the record.
bool SameValue(const StreamRecord& record, const ValueEntry& value) {
  return std::holds_alternative<StringValue>(value.Value) || std::holds_alternative<PasswordValue>(value.Value) ||
         record.Value == value.Value;
}

void CheckStream(const Image& image, Findings& findings) {
  for (const StreamRecord& record : image.Stream->Records) {
    const std::uint16_t handle = record.Attribute.Handle;
    const AttributeEntry* attribute = image.Attributes.Find(handle);
    if (attribute != nullptr && !(*attribute == record.Attribute)) {
      findings.Add("stream-differs", "attribute {} differs between the attribute table and the attribute stream",
                   handle);
    }
    const ValueEntry* value = image.Values.Find(handle);
    const bool isPassword = BaseType{BaseTypeOf(record.Attribute.Type)} == BaseType::Password;
    if (value != nullptr && isPassword && !record.PasswordInstalled) {
      findings.Add("stream-differs", "password {} has a value, but is not installed in the attribute stream", handle);
    }
    if (value != nullptr && value->Type == record.Attribute.Type && !SameValue(record, *value)) {
      findings.Add("stream-differs",
                   "the value of attribute {} differs between the value table and the attribute stream", handle);
    }
  }
}

// Reports entries of a table that the driver's store does not have.
void CheckSurplus(const Image& image, Findings& findings) {
  const Stream& stream = *image.Stream;
  constexpr std::uint16_t kSlots = 256;  // number of slots in the stream
  for (const AttributeEntry& attribute : image.Attributes.Entries) {
    if (attribute.Handle < kSlots && stream.Find(attribute.Handle) == nullptr) {
      findings.Add("stream-differs", "attribute {} is not in the attribute stream", attribute.Handle);
    }
  }
  for (const TableId id : {TableId::Strings, TableId::Display, TableId::Help}) {
    const std::uint64_t count = id == TableId::Strings ? stream.NameCount : stream.DisplayCount;
    if (image.EntryCountOf(id) > count) {
      findings.Add("table-surplus", "the {} table has {} entries, but the driver counts {}", KindOf(id).Name,
                   image.EntryCountOf(id), count);
    }
  }
}

void CheckFill(const Image& image, Findings& findings) {
  for (const TableFill& fill : MeasureFill(image)) {
    const TableKind& kind = KindOf(fill.Id);
    if (fill.Used > kind.Capacity) {
      findings.Add(image.OfCache ? "table-overfull" : "table-length", "the {} table has {} bytes and a capacity of {}",
                   kind.Name, fill.Used, kind.Capacity);
    }
    if (fill.Lost.value_or(0) > 0) {
      const std::string first = fill.FirstLost ? fmt::format(", from handle {} on", *fill.FirstLost) : "";
      findings.Add("table-cut", "the {} table lacks {} entries that the driver has{}", kind.Name, *fill.Lost, first);
    }
  }
}

}  // namespace

void CheckImage(Image& image) {
  Findings& findings = image.Findings;
  if (image.Directory) {
    CheckDirectory(image, findings);
  }
  if (image.Descriptors) {
    CheckDescriptors(image, findings);
  }
  CheckAttributes(image, findings);
  if (image.Stream) {
    CheckStream(image, findings);
    if (image.Stream->Sound) {
      CheckSurplus(image, findings);
    }
  }
  CheckFill(image, findings);
}

}  // namespace corvane::inspect
