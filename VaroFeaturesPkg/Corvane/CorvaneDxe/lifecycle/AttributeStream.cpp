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

constexpr UINT16 kStreamSlotLimit = 256;  // readers count slots in eight bits
constexpr size_t kUnknownTypeSize = sizeof(AttributeRecord);  // announced for a record that the stream leaves out

void EncodeAttribute(ByteWriter& stream, const AttributeRecord& record) {
  switch (BaseType(record)) {
    case AttributeType::Enumeration: {
      const auto& enumeration = As<EnumerationRecord>(record);
      const UINT8 count = enumeration.PossibleValueCount;
      stream.Put(RecordBytes(record, 0, offsetof(EnumerationRecord, PossibleValueNames)));
      stream.Put(ArrayBytes(enumeration.PossibleValueNames, count));
      stream.Put(ArrayBytes(enumeration.PossibleValues, count));
      stream.Put(RecordBytes(record, offsetof(EnumerationRecord, DefaultIndex), sizeof(enumeration)));
      break;
    }
    case AttributeType::String: {
      constexpr CHAR8 kNoText = 0;
      const CHAR8* const current = As<StringRecord>(record).CurrentString;
      stream.Put(RecordBytes(record, 0, offsetof(StringRecord, CurrentString)));
      const CHAR8* const text = current != nullptr ? current : &kNoText;
      stream.Put(ArrayBytes(text, static_cast<UINT16>(AsciiLength(text)) + size_t{1}));
      break;
    }
    case AttributeType::Password:
      stream.Put(RecordBytes(record, 0, sizeof(PasswordRecord)));
      break;
    case AttributeType::Integer:
      stream.Put(RecordBytes(record, 0, sizeof(IntegerRecord)));
      break;
    case AttributeType::BootConfiguration: {
      const auto& boot = As<BootConfigurationRecord>(record);
      stream.Put(RecordBytes(record, 0, offsetof(BootConfigurationRecord, PossibleSourceNames)));
      stream.Put(ArrayBytes(boot.PossibleSourceNames, boot.PossibleSourceCount));
      stream.Put(RecordBytes(record, offsetof(BootConfigurationRecord, CurrentBootConfigType), sizeof(boot)));
      break;
    }
    case AttributeType::Collection: {
      const auto& collection = As<CollectionRecord>(record);
      stream.Put(RecordBytes(record, 0, offsetof(CollectionRecord, Items)));
      stream.Put(ArrayBytes(collection.Items, collection.ItemCount));
      break;
    }
    case AttributeType::ConfigurationSet: {
      const auto& set = As<ConfigurationSetRecord>(record);
      stream.Put(RecordBytes(record, 0, offsetof(ConfigurationSetRecord, ConfigNames)));
      stream.Put(ArrayBytes(set.ConfigNames, set.ConfigCount));
      stream.PutValue(UINT8{set.CurrentConfig});
      break;
    }
  }
}

bool HasKnownType(const AttributeRecord& record) { return BaseType(record) <= AttributeType::ConfigurationSet; }

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
  return static_cast<UINT32>(counter.Used() + leftOut);
}

void EncodeAttributes(const AttributeDatabase& database, std::span<std::byte> room) {
  ByteWriter stream{room};
  EncodeSlots(stream, database);
}
