/** @file
  Building of the TableDirectory.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "lifecycle/TableDirectory.hpp"

static_assert(sizeof(TableDirectory) == TABLE_DIRECTORY_SIZE && sizeof(TableDirectoryEntry) == 16);
static_assert(offsetof(TableDirectory, Checksum) == 22 && offsetof(TableDirectory, Entries) == 24);
static_assert(offsetof(TableDirectoryEntry, TableId) == 7 && offsetof(TableDirectoryEntry, AddressLow) == 12);

namespace {

TableDirectoryEntry EntryOf(UINT32 index, UINT8 number, const TableDescriptor& table) {
  TableDirectoryEntry entry{};
  const bool isText = index == TABLE_DISPLAY || index == TABLE_HELP;
  entry.TableType = isText ? TABLE_DIRECTORY_TYPE_TEXT : static_cast<UINT8>(index);
  entry.SubType = index == TABLE_DISPLAY ? 1 : 0;
  entry.Format = isText ? 4 : index == TABLE_STRINGS ? 1 : 0;
  entry.TableId = number;
  entry.Length = table.Limit;
  entry.AddressLow = static_cast<UINT32>(table.Data);
  return entry;
}

/// The byte that makes the first `length` bytes sum to 0 modulo 256.
UINT8 ChecksumOf(const TableDirectory& directory, size_t length) {
  UINT8 sum = 0;
  for (const std::byte byte : std::as_bytes(std::span(&directory, 1)).first(length)) {
    sum = static_cast<UINT8>(sum + std::to_integer<UINT8>(byte));
  }
  return static_cast<UINT8>(-sum);
}

}  // namespace

TableDirectory* BuildTableDirectory(const TableDescriptor* descriptors) {
  PoolPtr<TableDirectory> directory = AllocateZeroed<TableDirectory>();
  if (!directory) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: table directory dropped: out of memory\n"));
    return nullptr;
  }
  CopyMem(directory->Signature, "$ACI", sizeof(directory->Signature));
  directory->Version = 1;
  CopyMem(directory->Content, "PLDM", sizeof(directory->Content));
  for (const UINT32 index : kPublishedTables) {
    directory->Entries[directory->EntryCount] = EntryOf(index, directory->EntryCount, descriptors[index]);
    ++directory->EntryCount;
  }
  const size_t length = offsetof(TableDirectory, Entries) + directory->EntryCount * sizeof(TableDirectoryEntry);
  directory->Length = static_cast<UINT16>(length);
  directory->Checksum = ChecksumOf(*directory, length);
  return directory.release();
}
