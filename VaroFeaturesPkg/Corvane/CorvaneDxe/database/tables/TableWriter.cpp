/** @file
  TableWriter: tables laid out in the buffers that their descriptors describe.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/tables/TableWriter.hpp"

extern "C" {
#include <IndustryStandard/PldmBios.h>
}

namespace {

struct CatalogueEntry {
  UINT32 Type;
  UINT16 Capacity;
};

constexpr std::array<CatalogueEntry, TABLE_DESCRIPTOR_COUNT> kCatalogue = {{
    {0, 7680},  // "StringsTable"
    {1, 3072},  // "AttributeTable"
    {2, 2048},  // "CurrentValueTable"
    {3, 2048},  // "PendingValueTable"
    {4, 4096},  // "Handle To Property ID translation Table"
    {5, 2048},  // "Accepted Attributes Table"
    {6, 2048},  // "Current/Pending passwords Table"
    {7, 1024},  // "Temporary (scratch pad) Table"
    {8, 1024},
    {9, 10240},   // display strings
    {10, 65535},  // help strings
}};

constexpr std::array<UINT32, 5> kBuiltTables = {TABLE_STRINGS, TABLE_ATTRIBUTES, TABLE_VALUES, TABLE_DISPLAY,
                                                TABLE_HELP};

std::byte* DataOf(const TableDescriptor& table) {
  return reinterpret_cast<std::byte*>(static_cast<UINTN>(table.Data));
}

}  // namespace

void TableWriter::InitTableDescriptors() {
  crc32_.Prepare();
  if (descriptors_ != nullptr) {
    for (const UINT32 index : kBuiltTables) {
      InitTableDescriptor(index);
    }
  }
}

void TableWriter::InitTableDescriptor(UINT32 index) {
  TableDescriptor& table = descriptors_[index];
  table = {};
  table.TableType = static_cast<UINT8>(kCatalogue[index].Type);
  table.TableIndex = index;
  table.Capacity = kCatalogue[index].Capacity;
  table.Limit = static_cast<UINT16>(table.Capacity - PLDM_BIOS_TABLE_CHECKSUM_SIZE);
}

size_t TableWriter::Room(UINT32 index) const {
  const TableDescriptor* const table = Filling(index);
  return table == nullptr ? 0 : Room(*table);
}

EFI_STATUS TableWriter::AllocateTable(UINT32 index) {
  if (descriptors_ == nullptr || descriptors_[index].Finished != 0 || descriptors_[index].Data != 0) {
    return EFI_INVALID_PARAMETER;
  }
  TableDescriptor& table = descriptors_[index];
  std::byte* const data = AllocateZeroedArray<std::byte>(table.Capacity).release();  // to the descriptor
  if (data == nullptr) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: table %d dropped: out of memory\n", index));
    table.Limit = 0;  // published with length 0
    return EFI_OUT_OF_RESOURCES;
  }
  table.Data = reinterpret_cast<UINTN>(data);
  return EFI_SUCCESS;
}

std::byte* TableWriter::Extend(UINT32 index, size_t size) {
  TableDescriptor* const table = Filling(index);
  if (table == nullptr || size > static_cast<size_t>(table->Capacity - table->Used)) {
    return nullptr;
  }
  return Extend(*table, size);
}

EFI_STATUS TableWriter::Refusal(UINT32 index) const {
  if (Filling(index) == nullptr) {
    return EFI_INVALID_PARAMETER;
  }
  DEBUG((DEBUG_WARN, "CorvaneDxe: table %d: bytes dropped: the table is full\n", index));
  return EFI_OUT_OF_RESOURCES;
}

EFI_STATUS TableWriter::AppendTableBytes(UINT32 index, std::span<const std::byte> bytes) {
  std::byte* const place = Extend(index, bytes.size());
  if (place == nullptr) {
    return Refusal(index);
  }
  CopyMem(place, bytes.data(), bytes.size());
  return EFI_SUCCESS;
}

void TableWriter::AppendAsciiFromUcs2(std::byte* place, Ucs2View text) {
  const CHAR16* next = text.data();
  const CHAR16* const end = next + text.size();
  for (; end - next >= 4; next += 4, place += 4) {
    UINT64 four;
    __builtin_memcpy(&four, next, sizeof(four));
    four &= 0x00FF00FF00FF00FF;
    four = (four | four >> 8) & 0x0000FFFF0000FFFF;
    const auto narrow = static_cast<UINT32>(four | four >> 16);
    __builtin_memcpy(place, &narrow, sizeof(narrow));
  }
  while (next < end) {
    *place++ = static_cast<std::byte>(*next++);
  }
}

std::byte* TableWriter::AddEntry(TableDescriptor& table, size_t size) {
  if (table.Used + size > table.Limit) {
    return nullptr;
  }
  ++table.EntryCount;
  return Extend(table, size);
}

EFI_STATUS TableWriter::CountTableEntry(UINT32 index) {
  TableDescriptor* const table = Filling(index);
  if (table == nullptr) {
    return EFI_INVALID_PARAMETER;
  }
  table->EntryCount = static_cast<UINT16>(table->EntryCount + 1);
  return EFI_SUCCESS;
}

EFI_STATUS TableWriter::FinishTable(UINT32 index) {
  TableDescriptor* const table = Filling(index);
  if (table == nullptr) {
    return EFI_INVALID_PARAMETER;
  }
  if (const UINT16 excess = table->Used % 4; excess != 0) {
    constexpr std::array<std::byte, 3> kPad{};
    const auto pad = static_cast<UINT8>(4 - excess);
    IgnoreStatus(AppendTableBytes(index, std::span(kPad).first(pad)));  // a full table is sealed as it is
    table->PadLength = pad;
  }
  table->Limit = table->Capacity;
  const UINT32 checksum = crc32_.Of({DataOf(*table), table->Used});
  table->Checksum = checksum;
  IgnoreStatus(AppendValue(index, checksum));

  PoolPtr<std::byte[]> sealed = AllocateZeroedArray<std::byte>(table->Used);
  if (sealed) {
    CopyMem(sealed.get(), DataOf(*table), table->Used);
    const PoolPtr<std::byte[]> building{DataOf(*table)};
    table->Data = reinterpret_cast<UINTN>(sealed.release());
  }  // without memory the table stays complete in the buffer that it was built in
  table->Limit = table->Used;
  table->Used = 0;
  table->Finished = 1;
  return EFI_SUCCESS;
}
