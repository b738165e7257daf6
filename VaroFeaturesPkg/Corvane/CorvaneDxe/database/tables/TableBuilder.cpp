/** @file
  TableBuilder: the five tables built from the database.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/tables/TableBuilder.hpp"

namespace {

constexpr UINT16 kMostAttributeEntries = 256;
constexpr CHAR16 kTableLanguage[] = {'e', 'n', '-', 'U', 'S'};

/// What an attribute's entry is made of: the head of every record, bytes of the record that its type adds, and the
/// names that they count.
struct AttributeEntry {
  static constexpr size_t kHeadSize = sizeof(PLDM_BIOS_ATTRIBUTE_ENTRY);
  static_assert(offsetof(AttributeRecord, ValueSize) == kHeadSize);

  std::span<const std::byte> Bounds;
  std::span<const std::byte> Names;
};

AttributeEntry EntryOf(const AttributeRecord& record) {
  switch (BaseType(record)) {
    case AttributeType::Enumeration:
    case AttributeType::BootConfiguration:
    case AttributeType::ConfigurationSet: {
      const RecordShape& shape = ShapeOf(record);
      const auto count = std::to_integer<size_t>(*RecordBytes(record, shape.Count, shape.Size).data());
      return {RecordBytes(record, sizeof(AttributeRecord), shape.FixedEnd),
              ArrayBytes(PointerAt<UINT16>(record, shape.Handles), count)};
    }
    case AttributeType::String:
    case AttributeType::Password:
      // No default text follows its length: readers of this table count on twelve-byte entries.
      return {RecordBytes(record, offsetof(StringRecord, StringType), offsetof(StringRecord, CurrentString)), {}};
    case AttributeType::Integer:
      return {RecordBytes(record, offsetof(IntegerRecord, LowerBound), offsetof(IntegerRecord, CurrentValue)), {}};
    case AttributeType::Collection:
      return {RecordBytes(record, offsetof(CollectionRecord, CollectionInfo), offsetof(CollectionRecord, ItemCount)),
              {}};
  }
  return {};
}

/// What follows the names of an enumeration: one default.
using EnumerationDefault = std::array<UINT8, 2>;

size_t AttributeEntrySize(const AttributeRecord& record, const AttributeEntry& entry) {
  const bool isEnumeration = BaseType(record) == AttributeType::Enumeration;
  return AttributeEntry::kHeadSize + entry.Bounds.size() + entry.Names.size() +
         (isEnumeration ? sizeof(EnumerationDefault) : 0);
}

/// Number of attributes after `slot`.
[[maybe_unused]] int CountAfter(const AttributeDatabase& database, UINT16 slot) {
  int count = 0;
  while (database.NextAttribute(slot) != nullptr) {
    ++count;
  }
  return count;
}

void WarnCut([[maybe_unused]] const AttributeDatabase& database, [[maybe_unused]] const CHAR8* table,
             [[maybe_unused]] const AttributeRecord& first, [[maybe_unused]] UINT16 slot) {
  DEBUG((DEBUG_WARN, "CorvaneDxe: %a table cut before handle %d: %d attributes are left out, from \"%s\"\n", table,
         first.Handle, 1 + CountAfter(database, slot), database.GetNameString(StringHandle{first.NameHandle})));
}

std::byte* Put(std::byte* place, std::span<const std::byte> bytes) {
  CopyMem(place, bytes.data(), bytes.size());
  return place + bytes.size();
}

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
  AppendTexts(TABLE_STRINGS, StringArray::Names);
  return writer_.FinishTable(TABLE_STRINGS);
}

EFI_STATUS TableBuilder::AppendAttributeEntry(TableDescriptor& table, const AttributeRecord& record) {
  if (table.EntryCount >= kMostAttributeEntries) {
    return EFI_BUFFER_TOO_SMALL;
  }
  const AttributeEntry entry = EntryOf(record);
  const size_t size = AttributeEntrySize(record, entry);
  // Kept for compatibility: an entry that would fill the table exactly is rejected.
  std::byte* place = TableWriter::Room(table) == size ? nullptr : TableWriter::AddEntry(table, size);
  if (place == nullptr) {
    return EFI_BUFFER_TOO_SMALL;
  }
  place = Put(place, RecordBytes(record, 0, AttributeEntry::kHeadSize));
  place = Put(place, entry.Bounds);
  place = Put(place, entry.Names);
  if (BaseType(record) == AttributeType::Enumeration) {
    const EnumerationDefault one{1, As<EnumerationRecord>(record).DefaultIndex};
    __builtin_memcpy(place, &one, sizeof(one));
  }
  return EFI_SUCCESS;
}

EFI_STATUS TableBuilder::BuildAttributeTable() {
  if (const EFI_STATUS status = writer_.AllocateTable(TABLE_ATTRIBUTES); EFI_ERROR(status)) {
    return status;
  }
  TableDescriptor& table = *writer_.Filling(TABLE_ATTRIBUTES);
  UINT16 slot = 0;
  while (const AttributeRecord* const record = database_.NextAttribute(slot)) {
    if (EFI_ERROR(AppendAttributeEntry(table, *record))) {
      WarnCut(database_, "attribute", *record, slot);
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
      WarnCut(database_, "value", *record, slot);
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

void TableBuilder::AppendTexts(UINT32 index, StringArray array) {
  TableDescriptor& table = *writer_.Filling(index);
  database_.ForEachText(array, [this, &table, array](UINT16 handle, const CHAR16* text) {
    const bool narrow = array == StringArray::Names;
    const Ucs2View shown = ViewOf(array == StringArray::Display ? AttributeDatabase::WithoutStars(text) : text);
    const size_t size = narrow ? shown.size() : shown.size_bytes();
    const PLDM_BIOS_STRING_ENTRY head{handle, static_cast<UINT16>(size)};
    std::byte* const entry = TableWriter::AddEntry(table, sizeof(head) + size);
    if (entry == nullptr) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: text table %d cut before handle %d: %d texts are left out, from \"%s\"\n",
             table.TableType, handle, database_.StringLimit(array) - handle, text));
      return false;
    }
    __builtin_memcpy(entry, &head, sizeof(head));
    if (narrow) {
      TableWriter::AppendAsciiFromUcs2(entry + sizeof(head), shown);
    } else {
      CopyMem(entry + sizeof(head), shown.data(), size);
    }
    return true;
  });
}

EFI_STATUS TableBuilder::BuildDisplayTable() {
  if (const EFI_STATUS status = StartTextTable(TABLE_DISPLAY); EFI_ERROR(status)) {
    return status;
  }
  AppendTexts(TABLE_DISPLAY, StringArray::Display);
  return writer_.FinishTable(TABLE_DISPLAY);
}

EFI_STATUS TableBuilder::BuildHelpTable() {
  if (const EFI_STATUS status = StartTextTable(TABLE_HELP); EFI_ERROR(status)) {
    return status;
  }
  AppendTexts(TABLE_HELP, StringArray::Help);
  return writer_.FinishTable(TABLE_HELP);
}
