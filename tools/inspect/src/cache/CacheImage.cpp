/** @file
  The image of a cache: the tables that the driver would publish if tables had no capacity limit.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "bytes/ByteWriter.hpp"
#include "cache/CacheContent.hpp"
#include "capture/Layout.hpp"
#include "capture/TextReplay.hpp"
#include "bytes/Wire.hpp"

namespace corvane::inspect {
namespace {

constexpr EFI_GUID kTransportRecordGuid = VARO_TRANSPORT_RECORD_GUID;
constexpr std::uint16_t kFirstHandle = 16;
constexpr std::size_t kStreamSlots = 256;
constexpr std::uint8_t kEmptySlot = 0xFF;
constexpr std::size_t kLongest = 0xFFFF / 2;  // characters; limit of a table entry, which a damaged store may exceed

ByteWriter EncodeNames(const std::vector<std::u16string>& names) {
  ByteWriter table;
  std::uint16_t handle = kFirstHandle;
  for (const std::u16string& name : names) {
    StringEntry entry{handle++, {}};
    for (const char16_t character : name.substr(0, kLongest)) {
      entry.Text.push_back(static_cast<char>(character));
    }
    Fields(table, entry);
  }
  CloseTable(table);
  return table;
}

ByteWriter EncodeTexts(const std::vector<std::u16string>& texts, std::size_t count) {
  ByteWriter table;
  table.WideText("language", u"en-US");
  for (std::size_t i = 0; i < count; ++i) {
    TextEntry entry{static_cast<std::uint16_t>(kFirstHandle + i), i < texts.size() ? texts[i] : std::u16string()};
    entry.Text.resize(std::min(entry.Text.size(), kLongest));
    Fields(table, entry);
  }
  CloseTable(table);
  return table;
}

ByteWriter EncodeStream(const CacheContent& cache) {
  ByteWriter slots;
  std::size_t slot = 0;
  for (StreamRecord record : cache.Records) {
    if (record.Attribute.Handle >= kStreamSlots) {
      break;
    }
    for (; slot < record.Attribute.Handle; ++slot) {
      slots.Put(kEmptySlot);
    }
    Fields(slots, record);
    ++slot;
  }
  const std::uint64_t attributes = cache.CountedRecords;
  for (; slot < std::min<std::uint64_t>(attributes, kStreamSlots - kFirstHandle) + kFirstHandle; ++slot) {
    slots.Put(kEmptySlot);
  }
  ByteWriter stream;
  stream.Put(static_cast<std::uint32_t>(slots.Content.size()));
  stream.Put(attributes);
  stream.Put(std::uint64_t{cache.Texts.Names.size()});
  stream.Put(std::uint64_t{cache.Texts.Display.size()});
  stream.Put(cache.HelpTexts);
  stream.Append(slots.Content);
  return stream;
}

}  // namespace

Image ImageOfCache(const CacheContent& cache) {
  if (!cache.Counters || (cache.Records.empty() && cache.Texts.Names.empty())) {
    throw UnusableInput("the variable store has no attribute cache that can be restored");
  }
  ByteWriter attributes;
  ByteWriter values;
  for (const StreamRecord& record : cache.Records) {
    AttributeEntry attribute = record.Attribute;
    Fields(attributes, attribute);
    const bool isPassword = BaseType{BaseTypeOf(attribute.Type)} == BaseType::Password;
    if (!isPassword || record.PasswordInstalled) {
      ValueEntry value{attribute.Handle, attribute.Type, isPassword ? Value{PasswordValue{}} : record.Value};
      Fields(values, value);
    }
  }
  CloseTable(attributes);
  CloseTable(values);
  // Leading stars make equal texts distinct. The published table has no stars.
  std::vector<std::u16string> display;
  for (const std::u16string& text : cache.Texts.Display) {
    const std::u16string bare = WithoutStars(text);
    const std::size_t blanks = bare.size() < text.size() ? std::min(bare.find_first_not_of(u' '), bare.size()) : 0;
    display.push_back(bare.substr(blanks));
  }

  const std::pair<std::uint8_t, ByteWriter> records[] = {
      {std::uint8_t{TRANSPORT_RECORD_STRINGS}, EncodeNames(cache.Texts.Names)},
      {std::uint8_t{TRANSPORT_RECORD_ATTRIBUTES}, std::move(attributes)},
      {std::uint8_t{TRANSPORT_RECORD_VALUES}, std::move(values)},
      {std::uint8_t{TRANSPORT_RECORD_DISPLAY}, EncodeTexts(display, display.size())},
      {std::uint8_t{TRANSPORT_RECORD_HELP}, EncodeTexts(cache.Texts.Help, display.size())},
      {std::uint8_t{TRANSPORT_RECORD_STREAM}, EncodeStream(cache)},
  };
  ByteWriter capture;
  for (const auto& [type, payload] : records) {
    capture.Put(kTransportRecordGuid);
    capture.Put(std::uint64_t{payload.Content.size()});
    capture.Put(type);
    capture.Append(payload.Content);
  }
  return DecodeImage(std::move(capture.Content), true);
}

}  // namespace corvane::inspect
