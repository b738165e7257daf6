/** @file
  The fields of each wire structure in wire order. Reading and writing of bytes and of JSON share this description.

  An archive has Number, Flag (a byte), List (a byte with the count first), Array (a count known beforehand), Padded (a
  count, then a fixed number of bytes), Text (UINT16 length, 8-bit characters), Terminated (8-bit characters and a
zero), WideText (UINT16 length in bytes, UCS-2) and Reserved (zeros). kWrites tells writers from readers.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include "bytes/Overloaded.hpp"
#include "capture/Directory.hpp"
#include "capture/Stream.hpp"
#include "capture/Tables.hpp"

namespace corvane::inspect {

// The empty alternative for a type byte. Bounds and values of an unknown type have no bytes.
Bounds EmptyBounds(std::uint8_t type);
Value EmptyValue(std::uint8_t type);

// Capacity of the source list of a boot configuration in the attribute stream.
inline constexpr std::size_t kStreamSources = 20;

template <typename Archive>
void Fields(Archive& archive, StringEntry& entry) {
  archive.Number("handle", entry.Handle);
  archive.Text("text", entry.Text);
}

template <typename Archive>
void Fields(Archive& archive, TextEntry& entry) {
  archive.Number("handle", entry.Handle);
  archive.WideText("text", entry.Text);
}

template <typename Archive>
void BoundsFields(Archive&, std::monostate&) {}

template <typename Archive>
void BoundsFields(Archive& archive, EnumerationBounds& bounds) {
  archive.List("possible", bounds.Names);
  archive.List("defaultIndices", bounds.Defaults);
}

template <typename Archive>
void BoundsFields(Archive& archive, LengthBounds& bounds) {
  archive.Number("subtype", bounds.Subtype);
  archive.Number("minLength", bounds.Minimum);
  archive.Number("maxLength", bounds.Maximum);
  archive.Number("defaultLength", bounds.DefaultLength);
}

template <typename Archive>
void BoundsFields(Archive& archive, IntegerBounds& bounds) {
  archive.Number("lower", bounds.Lower);
  archive.Number("upper", bounds.Upper);
  archive.Number("step", bounds.Step);
  archive.Number("default", bounds.Default);
}

template <typename Archive>
void BoundsFields(Archive& archive, BootBounds& bounds) {
  archive.Number("bootConfigType", bounds.ConfigType);
  archive.Number("supportedModes", bounds.Modes);
  archive.Number("minSources", bounds.MinimumSources);
  archive.Number("maxSources", bounds.MaximumSources);
  archive.List("possible", bounds.Sources);
}

template <typename Archive>
void BoundsFields(Archive& archive, CollectionBounds& bounds) {
  for (std::size_t i = 0; i < bounds.Info.size(); ++i) {
    static constexpr const char* kNames[] = {"information0", "information1", "information2", "information3"};
    archive.Number(kNames[i], bounds.Info[i]);
  }
}

template <typename Archive>
void BoundsFields(Archive& archive, ConfigurationSetBounds& bounds) {
  archive.List("possible", bounds.Names);
}

template <typename Archive>
void Fields(Archive& archive, AttributeEntry& entry) {
  archive.Number("handle", entry.Handle);
  archive.Number("type", entry.Type);
  archive.Number("nameHandle", entry.NameHandle);
  if constexpr (!Archive::kWrites) {
    entry.Bounds = EmptyBounds(entry.Type);
  }
  std::visit([&](auto& bounds) { BoundsFields(archive, bounds); }, entry.Bounds);
}

template <typename Archive>
void ValueFields(Archive& archive, Value& any) {
  std::visit(Overloaded{
                 [](std::monostate&) {},
                 [&](EnumerationValue& value) { archive.List("indices", value.Indices); },
                 [&](StringValue& value) { archive.Text("text", value.Text); },
                 [&](PasswordValue& value) { archive.Text("text", value.Text); },
                 [&](IntegerValue& value) { archive.Number("value", value.Value); },
                 [&](BootValue& value) {
                   archive.Number("bootConfigType", value.ConfigType);
                   archive.Number("mode", value.Mode);
                   archive.List("order", value.Order);
                 },
                 [&](CollectionValue& value) { archive.List("members", value.Members); },
                 [&](ConfigurationSetValue& value) { archive.Number("index", value.Index); },
             },
             any);
}

template <typename Archive>
void Fields(Archive& archive, ValueEntry& entry) {
  archive.Number("handle", entry.Handle);
  archive.Number("type", entry.Type);
  if constexpr (!Archive::kWrites) {
    entry.Value = EmptyValue(entry.Type);
  }
  ValueFields(archive, entry.Value);
}

template <typename Archive>
void BodyFields(Archive&, StreamRecord&, std::monostate&) {}

template <typename Archive>
void BodyFields(Archive& archive, StreamRecord& record, EnumerationBounds& bounds) {
  archive.List("possible", bounds.Names);
  archive.Array("settings", record.PlatformValues, bounds.Names.size());
  bounds.Defaults.resize(1);
  archive.Number("defaultIndex", bounds.Defaults.front());
  auto& indices = std::get<EnumerationValue>(record.Value).Indices;
  indices.resize(1);
  archive.Number("index", indices.front());
}

template <typename Archive>
void BodyFields(Archive& archive, StreamRecord& record, LengthBounds& bounds) {
  BoundsFields(archive, bounds);
  if (auto* text = std::get_if<StringValue>(&record.Value)) {
    archive.Terminated("text", text->Text);
  } else {
    archive.Flag("installed", record.PasswordInstalled);
  }
}

template <typename Archive>
void BodyFields(Archive& archive, StreamRecord& record, IntegerBounds& bounds) {
  BoundsFields(archive, bounds);
  archive.Number("value", std::get<IntegerValue>(record.Value).Value);
}

template <typename Archive>
void BodyFields(Archive& archive, StreamRecord& record, BootBounds& bounds) {
  BoundsFields(archive, bounds);
  auto& value = std::get<BootValue>(record.Value);
  archive.Number("currentBootConfigType", value.ConfigType);
  archive.Number("mode", value.Mode);
  archive.Padded("order", value.Order, kStreamSources);
}

template <typename Archive>
void BodyFields(Archive& archive, StreamRecord& record, CollectionBounds& bounds) {
  BoundsFields(archive, bounds);
  archive.List("members", std::get<CollectionValue>(record.Value).Members);
}

template <typename Archive>
void BodyFields(Archive& archive, StreamRecord& record, ConfigurationSetBounds& bounds) {
  BoundsFields(archive, bounds);
  archive.Number("index", std::get<ConfigurationSetValue>(record.Value).Index);
}

template <typename Archive>
void Fields(Archive& archive, StreamRecord& record) {
  archive.Number("handle", record.Attribute.Handle);
  archive.Number("type", record.Attribute.Type);
  archive.Number("nameHandle", record.Attribute.NameHandle);
  archive.Number("settingSize", record.ValueSize);
  archive.Number("token", record.Token);
  if constexpr (!Archive::kWrites) {
    record.Attribute.Bounds = EmptyBounds(record.Attribute.Type);
    record.Value = EmptyValue(record.Attribute.Type);
  }
  std::visit([&](auto& bounds) { BodyFields(archive, record, bounds); }, record.Attribute.Bounds);
}

template <typename Archive>
void Fields(Archive& archive, DirectoryEntry& entry) {
  archive.Number("tableType", entry.TableType);
  archive.Number("subType", entry.SubType);
  archive.Number("format", entry.Format);
  archive.Reserved(4);
  archive.Number("tableId", entry.TableId);
  archive.Number("length", entry.Length);
  archive.Reserved(2);
  archive.Number("addressLow", entry.AddressLow);
}

template <typename Archive>
void Fields(Archive& archive, Descriptor& descriptor) {
  archive.Number("data", descriptor.Data);
  archive.Number("tableType", descriptor.TableType);
  archive.Number("tableIndex", descriptor.TableIndex);
  archive.Number("limit", descriptor.Limit);
  archive.Number("capacity", descriptor.Capacity);
  archive.Number("used", descriptor.Used);
  archive.Number("entryCount", descriptor.EntryCount);
  archive.Number("checksum", descriptor.Checksum);
  archive.Number("padLength", descriptor.PadLength);
  archive.Number("finished", descriptor.Finished);
  archive.Number("reserved", descriptor.Reserved);
}

}  // namespace corvane::inspect
