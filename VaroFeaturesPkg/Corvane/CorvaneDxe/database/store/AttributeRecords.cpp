/** @file
  AttributeRecord: the shapes of the records, their serialized form, and freeing.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/store/AttributeRecords.hpp"

#include "uefi/Text.hpp"

namespace {

constexpr std::array<RecordShape, 7> kShapes = {{
    {.Size = sizeof(EnumerationRecord),
     .FixedEnd = offsetof(EnumerationRecord, PossibleValueNames),
     .Count = offsetof(EnumerationRecord, PossibleValueCount),
     .Handles = offsetof(EnumerationRecord, PossibleValueNames),
     .Values = offsetof(EnumerationRecord, PossibleValues),
     .Text = 0,
     .TailBegin = offsetof(EnumerationRecord, DefaultIndex)},
    {.Size = sizeof(StringRecord),
     .FixedEnd = offsetof(StringRecord, CurrentString),
     .Count = 0,
     .Handles = 0,
     .Values = 0,
     .Text = offsetof(StringRecord, CurrentString),
     .TailBegin = sizeof(StringRecord)},
    {.Size = sizeof(PasswordRecord),
     .FixedEnd = sizeof(PasswordRecord),
     .Count = 0,
     .Handles = 0,
     .Values = 0,
     .Text = 0,
     .TailBegin = sizeof(PasswordRecord)},
    {.Size = sizeof(IntegerRecord),
     .FixedEnd = sizeof(IntegerRecord),
     .Count = 0,
     .Handles = 0,
     .Values = 0,
     .Text = 0,
     .TailBegin = sizeof(IntegerRecord)},
    {.Size = sizeof(BootConfigurationRecord),
     .FixedEnd = offsetof(BootConfigurationRecord, PossibleSourceNames),
     .Count = offsetof(BootConfigurationRecord, PossibleSourceCount),
     .Handles = offsetof(BootConfigurationRecord, PossibleSourceNames),
     .Values = 0,
     .Text = 0,
     .TailBegin = offsetof(BootConfigurationRecord, CurrentBootConfigType)},
    {.Size = sizeof(CollectionRecord),
     .FixedEnd = offsetof(CollectionRecord, Items),
     .Count = offsetof(CollectionRecord, ItemCount),
     .Handles = offsetof(CollectionRecord, Items),
     .Values = 0,
     .Text = 0,
     .TailBegin = sizeof(CollectionRecord)},
    {.Size = sizeof(ConfigurationSetRecord),
     .FixedEnd = offsetof(ConfigurationSetRecord, ConfigNames),
     .Count = offsetof(ConfigurationSetRecord, ConfigCount),
     .Handles = offsetof(ConfigurationSetRecord, ConfigNames),
     .Values = 0,
     .Text = 0,
     .TailBegin = offsetof(ConfigurationSetRecord, CurrentConfig)},
}};

void PutText(ByteWriter& writer, const CHAR8* text, TextForm form) {
  const auto length = static_cast<UINT16>(text != nullptr ? AsciiLength(text) : 0);
  if (form == TextForm::Counted) {
    writer.PutValue(length);
  }
  writer.Put(ArrayBytes(text, length));
  if (form == TextForm::Terminated && text != nullptr) {
    writer.PutValue(CHAR8{0});
  } else if (form == TextForm::Terminated) {
    writer.Skip(1);  // a null text has the room of a terminator, which is not written
  }
}

}  // namespace

const RecordShape& ShapeOf(const AttributeRecord& record) {
  return kShapes[static_cast<size_t>(BaseType(record))];
}

void PutRecord(ByteWriter& writer, const AttributeRecord& record, TextForm textForm) {
  const RecordShape& shape = ShapeOf(record);
  writer.Put(RecordBytes(record, 0, shape.FixedEnd));
  const auto count = std::to_integer<size_t>(*RecordBytes(record, shape.Count, shape.Size).data());
  if (shape.Handles != 0) {
    writer.Put(ArrayBytes(PointerAt<UINT16>(record, shape.Handles), count));
  }
  if (shape.Values != 0) {
    writer.Put(ArrayBytes(PointerAt<UINT64>(record, shape.Values), count));
  }
  if (shape.Text != 0) {
    PutText(writer, PointerAt<CHAR8>(record, shape.Text), textForm);
  }
  writer.Put(RecordBytes(record, shape.TailBegin, shape.Size));
}

OwnedRecord<AttributeRecord> MakeAttribute(const AttributeRecord& head) {
  OwnedRecord<AttributeRecord> record{static_cast<AttributeRecord*>(AllocateZeroedBytes(ShapeOf(head).Size))};
  if (record) {
    *record = head;
  }
  return record;
}

OwnedRecord<EnumerationRecord> MakeEnumeration(UINT8 count, bool readOnly) {
  OwnedRecord<EnumerationRecord> record = MakeRecord<EnumerationRecord>(readOnly);
  if (record) {
    record->PossibleValueCount = count;
    record->PossibleValueNames = AllocateZeroedArray<UINT16>(count).release();
    record->PossibleValues = AllocateZeroedArray<UINT64>(count).release();
    if (record->PossibleValueNames == nullptr || record->PossibleValues == nullptr) {
      record.reset();
    }
  }
  return record;
}

[[gnu::noinline]] void FreeRecord(AttributeRecord* record) {
  if (record == nullptr) {
    return;
  }
  if (HasKnownType(*record)) {
    const RecordShape& shape = ShapeOf(*record);
    for (const UINT8 pointer : {shape.Handles, shape.Values, shape.Text}) {
      if (pointer != 0) {
        FreeBlock(PointerAt<void>(*record, pointer));
      }
    }
  }
  FreeBlock(record);
}
