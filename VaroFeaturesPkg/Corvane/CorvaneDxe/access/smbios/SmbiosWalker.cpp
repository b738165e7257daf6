/** @file
  Indexing of the SMBIOS table.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "access/smbios/SmbiosWalker.hpp"

extern "C" {
#include <Guid/SmBios.h>
#include <IndustryStandard/SmBios.h>
}

namespace {

/// Bytes of the structure that `rest` begins with, its strings and the two zero bytes after them included; 0 when it
/// does not end within the table.
size_t StructureSize(std::span<const std::byte> rest) {
  if (rest.size() <= offsetof(SMBIOS_STRUCTURE, Length)) {
    return 0;
  }
  // Counted in eight bits: the end of a structure of 254 or 255 formatted bytes is sought from its start on.
  const auto formatted = std::to_integer<UINT8>(rest[offsetof(SMBIOS_STRUCTURE, Length)]);
  size_t size = std::max<size_t>(static_cast<UINT8>(formatted + 2), 2);
  while (size <= rest.size() && (rest[size - 2] != std::byte{0} || rest[size - 1] != std::byte{0})) {
    ++size;
  }
  return size <= rest.size() ? size : 0;
}

/// Counts the structures and, where there is room for them, notes where they begin.
void IndexStructures(SmbiosWalker& walker, std::span<UINT16> offsets) {
  walker.Count = 0;
  size_t current = 0;
  while (const size_t size = StructureSize(walker.Table.subspan(current))) {
    if (walker.Count < offsets.size()) {
      offsets[walker.Count] = static_cast<UINT16>(current);
    }
    ++walker.Count;
    walker.LargestStructure = std::max(walker.LargestStructure, static_cast<UINT16>(size));
    current += size;
  }
}

/// The table that the 2.x entry point leads to; a platform with a 3.x one alone has no calling interface here.
std::span<const std::byte> FindSmbiosTable() {
  for (UINTN i = 0; i < gST->NumberOfTableEntries; ++i) {
    const EFI_CONFIGURATION_TABLE& entry = gST->ConfigurationTable[i];
    if (CompareGuid(&entry.VendorGuid, &gEfiSmbiosTableGuid) && entry.VendorTable != nullptr) {
      const auto* const entryPoint = static_cast<const SMBIOS_TABLE_ENTRY_POINT*>(entry.VendorTable);
      return {reinterpret_cast<const std::byte*>(static_cast<UINTN>(entryPoint->TableAddress)),
              entryPoint->TableLength};
    }
  }
  return {};
}

}  // namespace

SmbiosWalker* CreateSmbiosWalker() {
  const std::span<const std::byte> table = FindSmbiosTable();
  if (table.data() == nullptr) {
    return nullptr;
  }
  PoolPtr<SmbiosWalker> walker = AllocateZeroed<SmbiosWalker>();
  if (walker) {
    walker->Table = table;
    IndexStructures(*walker, {});
    walker->Offsets = AllocateZeroedArray<UINT16>(walker->Count).release();
    IndexStructures(*walker, {walker->Offsets, walker->Offsets == nullptr ? size_t{0} : walker->Count});
    if (walker->Offsets == nullptr) {
      walker->Count = 0;
    }
  }
  return walker.release();
}

void ReleaseSmbiosWalker(SmbiosWalker* walker) {
  if (walker != nullptr) {
    FreeBlock(walker->Offsets);
    FreeBlock(walker);
  }
}

std::span<const std::byte> StructureAt(const SmbiosWalker& walker, UINT32 index) {
  return index < walker.Count ? walker.Table.subspan(walker.Offsets[index]) : std::span<const std::byte>{};
}
