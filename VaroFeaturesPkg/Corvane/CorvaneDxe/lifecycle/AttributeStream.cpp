/** @file
  The attribute stream.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "lifecycle/AttributeStream.hpp"

extern "C" {
#include <Corvane/TransportRecord.h>
}

namespace {

constexpr UINT16 kStreamSlotLimit = 256;                      // readers count slots in eight bits
constexpr size_t kUnknownTypeSize = sizeof(AttributeRecord);  // announced for a record that the stream leaves out

void EncodeAttribute(ByteWriter& stream, const AttributeRecord& record) {
  PutRecord(stream, record, TextForm::Terminated);
}

/// Walks the slots and gives the bytes announced for records that are left out.
size_t EncodeSlots(ByteWriter& stream, const AttributeDatabase& database) {
  size_t leftOut = 0;
  const UINT16 limit = std::min(database.AttributeLimit(), kStreamSlotLimit);
  for (UINT16 slot = 0; slot < limit && stream.Ok(); ++slot) {
    const AttributeRecord* const record = database.AttributeAt(slot);
    if (record == nullptr) {
      stream.PutValue(UINT8{ATTRIBUTE_STREAM_EMPTY_SLOT});
    } else if (HasKnownType(*record)) {
      EncodeAttribute(stream, *record);
    } else {
      leftOut += kUnknownTypeSize;
    }
  }
  return leftOut;
}

}  // namespace

UINT32 AttributeStreamSize(const AttributeDatabase& database) {
  ByteWriter counter;
  const size_t leftOut = EncodeSlots(counter, database);
  if (database.AttributeLimit() > kStreamSlotLimit) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: attribute stream cut before handle %d: %d slots are left out\n", kStreamSlotLimit,
           database.AttributeLimit() - kStreamSlotLimit));
  }
  return static_cast<UINT32>(counter.Used() + leftOut);
}

void EncodeAttributes(const AttributeDatabase& database, std::span<std::byte> room) {
  ByteWriter stream{room};
  EncodeSlots(stream, database);
}
