/** @file
  The attribute stream: the driver's records. Only the stream has numbers and values of platform settings.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "capture/Stream.hpp"

#include "capture/FieldReader.hpp"
#include "capture/Layout.hpp"
#include "bytes/Wire.hpp"

namespace corvane::inspect {
namespace {

constexpr std::uint64_t kSlotLimit = 256;  // the stream visits no slot above 255

// A slot of an unknown type has no byte in the stream, so the handle of a record may be above the counted slot.
bool IsRecordOf(const AttributeRecord& head, std::uint64_t slot, std::uint64_t slots) {
  return head.Handle >= slot && head.Handle < slots &&
         BaseTypeOf(head.Type) <= static_cast<std::uint8_t>(BaseType::ConfigurationSet);
}

bool ReadSlots(ByteReader& reader, std::uint64_t slots, Stream& stream) {
  for (std::uint64_t slot = 0; slot < slots; ++slot) {
    // The low byte of handle 255 equals the mark of an empty slot. Slot 255 is the last: a whole head means a record.
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
  StreamRecord record;
  FieldReader fields(reader, form);
  Fields(fields, record);
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

  // Guard against overflow: the counter is untrusted.
  const std::uint64_t slots = stream.AttributeCount < kSlotLimit - ATTRIBUTE_STORE_FIRST_HANDLE
                                  ? stream.AttributeCount + ATTRIBUTE_STORE_FIRST_HANDLE
                                  : kSlotLimit;
  stream.Sound = ReadSlots(reader, slots, stream);
  // Records of unknown types leave zeros at the end.
  const Bytes rest = reader.Rest();
  if (!stream.Sound) {
    findings.Add("stream-malformed", "the attribute stream cannot be read beyond offset {}, after {} records",
                 reader.Ok() ? reader.Offset() : payload.size(), stream.Records.size());
  } else if (!rest.empty()) {
    findings.Add("stream-unknown", "the attribute stream leaves {} bytes unused at its end", rest.size());
  }
  return stream;
}

}  // namespace corvane::inspect
