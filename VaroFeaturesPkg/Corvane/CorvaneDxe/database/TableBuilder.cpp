/** @file
  TableBuilder: the five tables built from the database.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/TableBuilder.hpp"

#include "uefi/ByteWriter.hpp"

namespace {

constexpr UINT16 kMostAttributeEntries = 256;
constexpr CHAR16 kTableLanguage[] = {'e', 'n', '-', 'U', 'S'};

/// The part of an attribute-table entry that its type adds to the head.
void PutAttributeBody(ByteWriter& entry, const AttributeRecord& record) {
  switch (BaseType(record)) {
    case AttributeType::Enumeration: {
      constexpr UINT8 kDefaultCount = 1;
      const auto& enumeration = As<EnumerationRecord>(record);
      entry.PutValue(UINT8{enumeration.PossibleValueCount});
      entry.Put(ArrayBytes(enumeration.PossibleValueNames, enumeration.PossibleValueCount));
      entry.PutValue(kDefaultCount);
      entry.PutValue(UINT8{enumeration.DefaultIndex});
      break;
    }
    case AttributeType::String:
    case AttributeType::Password:
      // No default text follows its length: readers of this table count on twelve-byte entries.
      entry.Put(RecordBytes(record, offsetof(StringRecord, StringType), offsetof(StringRecord, CurrentString)));
      break;
    case AttributeType::Integer:
      entry.Put(RecordBytes(record, offsetof(IntegerRecord, LowerBound), offsetof(IntegerRecord, CurrentValue)));
      break;
    case AttributeType::BootConfiguration: {
      const auto& boot = As<BootConfigurationRecord>(record);
      entry.Put(RecordBytes(record, offsetof(BootConfigurationRecord, BootConfigType),
                            offsetof(BootConfigurationRecord, PossibleSourceNames)));
      entry.Put(ArrayBytes(boot.PossibleSourceNames, boot.PossibleSourceCount));
      break;
    }
    case AttributeType::Collection:
      entry.Put(RecordBytes(record, offsetof(CollectionRecord, CollectionInfo), offsetof(CollectionRecord, ItemCount)));
      break;
    case AttributeType::ConfigurationSet: {
      const auto& set = As<ConfigurationSetRecord>(record);
      entry.PutValue(UINT8{set.ConfigCount});
      entry.Put(ArrayBytes(set.ConfigNames, set.ConfigCount));
      break;
    }
  }
}

/// The five bytes that every attribute-table entry begins with are those that every record begins with.
constexpr size_t kAttributeHeadSize = offsetof(AttributeRecord, ValueSize);
static_assert(kAttributeHeadSize == sizeof(PLDM_BIOS_ATTRIBUTE_ENTRY));

void PutAttributeEntry(ByteWriter& entry, const AttributeRecord& record) {
  entry.Put(RecordBytes(record, 0, kAttributeHeadSize));
  PutAttributeBody(entry, record);
}

size_t AttributeEntrySize(const AttributeRecord& record) {
  ByteWriter counter;
  PutAttributeEntry(counter, record);
  return counter.Used();
}

/// Largest entry: an enumeration or configuration set of 255 names.
constexpr size_t kLargestAttributeEntry = 2 * 255 + 10;

}  // namespace

EFI_STATUS TableBuilder::BuildTables() {
  writer_.InitTableDescriptors();
  // Each table stands for itself: one that cannot be built leaves the others.
  IgnoreStatus(BuildStringTable());
  IgnoreStatus(BuildAttributeTable());
  IgnoreStatus(BuildValueTable());
  IgnoreStatus(BuildDisplayTable());
  return BuildHelpTable();
}

EFI_STATUS TableBuilder::BuildStringTable() {
  if (const EFI_STATUS status = writer_.AllocateTable(TABLE_STRINGS); EFI_ERROR(status)) {
    return status;
  }
  for (UINT16 handle = kFirstHandle; handle < database_.StringLimit(StringArray::Names); ++handle) {
    const Ucs2View name = ViewOf(database_.GetNameString(StringHandle{handle}));
    if (name.size() + sizeof(PLDM_BIOS_STRING_ENTRY) > writer_.Room(TABLE_STRINGS)) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: string table cut before handle %d \"%s\"\n", handle, name.data()));
      break;
    }
    const PLDM_BIOS_STRING_ENTRY entry{handle, static_cast<UINT16>(name.size())};
    writer_.AppendValue(TABLE_STRINGS, entry);
    writer_.AppendAsciiFromUcs2(TABLE_STRINGS, name);
    writer_.CountTableEntry(TABLE_STRINGS);
  }
  return writer_.FinishTable(TABLE_STRINGS);
}

EFI_STATUS TableBuilder::AppendAttributeEntry(const AttributeRecord& record) {
  if (writer_.EntryCount(TABLE_ATTRIBUTES) >= kMostAttributeEntries) {
    return EFI_BUFFER_TOO_SMALL;
  }
  // An exact fit is refused: readers of this table never met a full one.
  if (writer_.Room(TABLE_ATTRIBUTES) <= AttributeEntrySize(record)) {
    return EFI_BUFFER_TOO_SMALL;
  }
  std::array<std::byte, kLargestAttributeEntry> bytes;
  ByteWriter entry{bytes};
  PutAttributeEntry(entry, record);
  writer_.AppendTableBytes(TABLE_ATTRIBUTES, std::span(bytes).first(entry.Used()));
  writer_.CountTableEntry(TABLE_ATTRIBUTES);
  return EFI_SUCCESS;
}

EFI_STATUS TableBuilder::BuildAttributeTable() {
  if (const EFI_STATUS status = writer_.AllocateTable(TABLE_ATTRIBUTES); EFI_ERROR(status)) {
    return status;
  }
  UINT16 slot = 0;
  while (const AttributeRecord* const record = database_.NextAttribute(slot)) {
    if (EFI_ERROR(AppendAttributeEntry(*record))) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: attribute table cut before handle %d \"%s\"\n", record->Handle,
             database_.GetNameString(StringHandle{record->NameHandle})));
      break;
    }
  }
  return writer_.FinishTable(TABLE_ATTRIBUTES);
}

EFI_STATUS TableBuilder::BuildValueTable() {
  if (const EFI_STATUS status = writer_.AllocateTable(TABLE_VALUES); EFI_ERROR(status)) {
    return status;
  }
  UINT16 slot = 0;
  while (AttributeRecord* const record = database_.NextAttribute(slot)) {
    if (EFI_ERROR(values_.AppendValueEntry(writer_, TABLE_VALUES, *record))) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: value table cut before handle %d \"%s\"\n", record->Handle,
             database_.GetNameString(StringHandle{record->NameHandle})));
      break;
    }
  }
  return writer_.FinishTable(TABLE_VALUES);
}

EFI_STATUS TableBuilder::StartTextTable(UINT32 index) {
  if (const EFI_STATUS status = writer_.AllocateTable(index); EFI_ERROR(status)) {
    return status;
  }
  writer_.AppendValue(index, UINT16{sizeof(kTableLanguage)});
  return writer_.AppendTableBytes(index, std::as_bytes(std::span(kTableLanguage)));
}

bool TableBuilder::AppendText(UINT32 index, StringHandle handle, Ucs2View text) {
  const size_t size = text.size() * sizeof(CHAR16);
  const PLDM_BIOS_STRING_ENTRY entry{Raw(handle), static_cast<UINT16>(size)};
  if (size + sizeof(entry) > writer_.Room(index)) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: text table %d cut before handle %d\n", index, Raw(handle)));
    return false;
  }
  writer_.AppendValue(index, entry);
  writer_.AppendTableBytes(index, std::as_bytes(text));
  writer_.CountTableEntry(index);
  return true;
}

EFI_STATUS TableBuilder::BuildDisplayTable() {
  if (const EFI_STATUS status = StartTextTable(TABLE_DISPLAY); EFI_ERROR(status)) {
    return status;
  }
  for (UINT16 handle = kFirstHandle; handle < database_.StringLimit(StringArray::Display); ++handle) {
    const DisplayText text = database_.GetDisplayString(StringHandle{handle});
    if (!AppendText(TABLE_DISPLAY, StringHandle{handle}, ViewOf(text.Text))) {
      break;
    }
  }
  return writer_.FinishTable(TABLE_DISPLAY);
}

EFI_STATUS TableBuilder::BuildHelpTable() {
  if (const EFI_STATUS status = StartTextTable(TABLE_HELP); EFI_ERROR(status)) {
    return status;
  }
  // One entry for every display text, with or without help.
  for (UINT16 handle = kFirstHandle; handle < database_.StringLimit(StringArray::Help); ++handle) {
    if (!AppendText(TABLE_HELP, StringHandle{handle}, ViewOf(database_.GetHelpString(StringHandle{handle})))) {
      break;
    }
  }
  return writer_.FinishTable(TABLE_HELP);
}
