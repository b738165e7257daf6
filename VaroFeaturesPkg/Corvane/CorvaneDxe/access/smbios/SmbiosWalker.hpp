/** @file
  SmbiosWalker: the structures of the SMBIOS table, in their order.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Pool.hpp"

/// An index of the table's structures. It never reads outside of the table, nor before the start of a structure.
struct SmbiosWalker {
  std::span<const std::byte> Table;
  UINT16 LargestStructure;  // bytes, strings included
  UINT16 Count;
  UINT16* Offsets;  // of each structure within the table
};

/// The walker of the table behind the SMBIOS 2.x entry point, or null when there is none. Ends with
/// ReleaseSmbiosWalker.
[[nodiscard]] SmbiosWalker* CreateSmbiosWalker();
void ReleaseSmbiosWalker(SmbiosWalker* walker);

[[nodiscard]] inline UINT16 StructureCount(const SmbiosWalker& walker) {
  return walker.Count;
}

/// From the structure's start to the end of the table; empty for an index that is none.
[[nodiscard]] std::span<const std::byte> StructureAt(const SmbiosWalker& walker, UINT32 index);
