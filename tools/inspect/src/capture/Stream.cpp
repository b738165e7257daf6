/** @file
  The attribute stream: the driver's records with what no table has, platform setting numbers and values among it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "capture/Stream.hpp"

#include "bytes/Wire.hpp"

namespace corvane::inspect {
namespace {

constexpr std::uint64_t kSlotLimit = 256;  // the stream visits no slot above 255

std::string ReadTerminated(ByteReader& reader) {
  const Bytes rest = reader.Rest();
  const auto end = std::find(rest.begin(), rest.end(), std::uint8_t{0});
  const Bytes text = reader.Take(static_cast<std::size_t>(end - rest.begin()));
  reader.Take(1);  // fails where there is no terminator
  return std::string(text.begin(), text.end());
}

void ReadBody(ByteReader& reader, StreamRecord& record, TextForm form) {
  switch (BaseType{BaseTypeOf(record.Attribute.Type)}) {
    case BaseType::Enumeration: {
      EnumerationBounds bounds;
      const auto count = reader.Read<std::uint8_t>();
      bounds.Names = ReadMany<std::uint16_t>(reader, count);
      record.PlatformValues = ReadMany<std::uint64_t>(reader, count);
      bounds.Defaults = {reader.Read<std::uint8_t>()};
      record.Value = EnumerationValue{{reader.Read<std::uint8_t>()}};
      record.Attribute.Bounds = std::move(bounds);
      return;
    }
    case BaseType::String:
      record.Attribute.Bounds = ReadLengthBounds(reader);
      record.Value = StringValue{form == TextForm::Terminated ? ReadTerminated(reader)
                                                              : ReadText(reader, reader.Read<std::uint16_t>())};
      return;
    case BaseType::Password:
      record.Attribute.Bounds = ReadLengthBounds(reader);
      record.PasswordInstalled = reader.Read<std::uint8_t>() != 0;
      return;
    case BaseType::Integer:
      record.Attribute.Bounds = ReadIntegerBounds(reader);
      record.Value = IntegerValue{reader.Read<std::uint64_t>()};
      return;
    case BaseType::BootConfiguration: {
      record.Attribute.Bounds = ReadBootBounds(reader);
      BootValue value;
      value.ConfigType = reader.Read<std::uint8_t>();
      value.Mode = reader.Read<std::uint8_t>();
      const std::size_t count = reader.Read<std::uint8_t>();
      value.Order = ReadMany<std::uint8_t>(reader, BOOT_SOURCE_ORDER_CAPACITY);
      value.Order.resize(std::min(count, value.Order.size()));
      record.Value = std::move(value);
      return;
    }
    case BaseType::Collection:
      record.Attribute.Bounds = CollectionBounds{reader.Read<std::array<std::uint8_t, 4>>()};
      record.Value = CollectionValue{ReadMany<std::uint16_t>(reader, reader.Read<std::uint8_t>())};
      return;
    case BaseType::ConfigurationSet:
      record.Attribute.Bounds = ConfigurationSetBounds{ReadMany<std::uint16_t>(reader, reader.Read<std::uint8_t>())};
      record.Value = ConfigurationSetValue{reader.Read<std::uint8_t>()};
      return;
  }
}

// A slot of an unknown type leaves no byte in the stream, so a record may be ahead of the slots counted.
bool IsRecordOf(const AttributeRecord& head, std::uint64_t slot, std::uint64_t slots) {
  return head.Handle >= slot && head.Handle < slots &&
         BaseTypeOf(head.Type) <= static_cast<std::uint8_t>(BaseType::ConfigurationSet);
}

bool ReadSlots(ByteReader& reader, std::uint64_t slots, Stream& stream) {
  for (std::uint64_t slot = 0; slot < slots; ++slot) {
    // The low byte of handle 255 looks like an empty slot; that slot is the last, so a head tells them apart.
    const bool last = slot + 1 == kSlotLimit && reader.Left() >= sizeof(AttributeRecord);
    if (reader.Left() > 0 && reader.Rest().front() == ATTRIBUTE_STREAM_EMPTY_SLOT && !last) {
      reader.Take(1);
      continue;
    }
    const auto head = ByteReader(reader.Rest()).Read<AttributeRecord>();
    if (!IsRecordOf(head, slot, slots)) {
      return false;
    }
    StreamRecord record = ReadRecord(reader, TextForm::Terminated);
    if (!reader.Ok()) {
      return false;
    }
    slot = record.Attribute.Handle;
    stream.Records.push_back(std::move(record));
  }
  return true;
}

}  // namespace

StreamRecord ReadRecord(ByteReader& reader, TextForm form) {
  const auto head = reader.Read<AttributeRecord>();
  StreamRecord record;
  record.Attribute.Handle = head.Handle;
  record.Attribute.Type = head.Type;
  record.Attribute.NameHandle = head.NameHandle;
  record.ValueSize = head.ValueSize;
  record.Token = head.Token;
  ReadBody(reader, record, form);
  return record;
}

const StreamRecord* Stream::Find(std::uint16_t handle) const {
  const auto found = std::find_if(Records.begin(), Records.end(),
                                  [handle](const StreamRecord& record) { return record.Attribute.Handle == handle; });
  return found == Records.end() ? nullptr : &*found;
}

Stream DecodeStream(Bytes payload, Findings& findings) {
  Stream stream;
  ByteReader reader(payload);
  const auto header = reader.Read<AttributeStreamHeader>();
  if (!reader.Ok()) {
    findings.Add("stream-malformed", "the attribute stream has {} bytes, too few for its header", payload.size());
    return stream;
  }
  stream.Size = header.StreamSize;
  stream.AttributeCount = header.Counters.AttributeCount;
  stream.NameCount = header.Counters.NameCount;
  stream.DisplayCount = header.Counters.DisplayCount;
  stream.HelpCount = header.Counters.HelpCount;
  if (stream.Size != reader.Left()) {
    findings.Add("stream-length", "the attribute stream announces {} bytes and has {}", stream.Size, reader.Left());
  }

  // Compared before adding: the counter is untrusted.
  const std::uint64_t slots = stream.AttributeCount < kSlotLimit - ATTRIBUTE_STORE_FIRST_HANDLE
                                  ? stream.AttributeCount + ATTRIBUTE_STORE_FIRST_HANDLE
                                  : kSlotLimit;
  stream.Sound = ReadSlots(reader, slots, stream);
  // Zeros remain where records of unknown types were counted.
  const Bytes rest = reader.Rest();
  if (!stream.Sound) {
    findings.Add("stream-malformed", "the attribute stream cannot be followed beyond offset {}, after {} records",
                 reader.Ok() ? reader.Offset() : payload.size(), stream.Records.size());
  } else if (!rest.empty()) {
    findings.Add("stream-unknown", "the attribute stream leaves {} bytes unused at its end", rest.size());
  }
  return stream;
}

}  // namespace corvane::inspect
