/** @file
  TableWriter: the table descriptors, and tables laid out in the buffers that they describe (DSP0247).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/tables/Crc32.hpp"
#include "uefi/Pool.hpp"
#include "uefi/Status.hpp"
#include "uefi/Text.hpp"

extern "C" {
#include <Corvane/TableDescriptor.h>
}

static_assert(sizeof(TableDescriptor) == 28 && offsetof(TableDescriptor, Limit) == 13);
static_assert(offsetof(TableDescriptor, Checksum) == 21);

/// The eleven tables by number. Every operation refuses a finished or unallocated table with EFI_INVALID_PARAMETER.
class TableWriter {
 public:
  /// `descriptors` are TABLE_DESCRIPTOR_COUNT, or null: then every operation fails.
  explicit TableWriter(TableDescriptor* descriptors) : descriptors_(descriptors) {}

  /// Prepares the checksum and the descriptors of the tables that are built, and leaves the others zero.
  void InitTableDescriptors();

  [[nodiscard]] EFI_STATUS AllocateTable(UINT32 index);

  /// Appends bytes up to the table's capacity. EFI_OUT_OF_RESOURCES, and nothing written, when they do not fit.
  EFI_STATUS AppendTableBytes(UINT32 index, std::span<const std::byte> bytes);

  template <typename T>
  requires std::is_trivially_copyable_v<T> EFI_STATUS AppendValue(UINT32 index, const T& value) {
    std::byte* const place = Extend(index, sizeof(value));
    if (place == nullptr) {
      return Refusal(index);
    }
    __builtin_memcpy(place, &value, sizeof(value));
    return EFI_SUCCESS;
  }

  /// Writes the low byte of each character to the entry's place, without terminator.
  static void AppendAsciiFromUcs2(std::byte* place, Ucs2View text);

  EFI_STATUS CountTableEntry(UINT32 index);

  /// Returns the descriptor of a table that is being filled, or null. Builders look it up once per table.
  [[nodiscard]] TableDescriptor* Filling(UINT32 index) const {
    TableDescriptor* const table = descriptors_ + index;
    return descriptors_ == nullptr || table->Finished != 0 || table->Data == 0 ? nullptr : table;
  }

  /// Counts an entry of `size` bytes and returns the place to write them, or null if they do not fit.
  [[nodiscard]] static std::byte* AddEntry(TableDescriptor& table, size_t size);

  /// Pads to four bytes, appends the CRC-32 and locks the table in a buffer of its exact length.
  EFI_STATUS FinishTable(UINT32 index);

  /// Bytes left for entries.
  [[nodiscard]] size_t Room(UINT32 index) const;
  [[nodiscard]] static size_t Room(const TableDescriptor& table) {
    return table.Used > table.Limit ? 0 : static_cast<size_t>(table.Limit - table.Used);
  }

 private:
  void InitTableDescriptor(UINT32 index);

  /// Takes bytes at the end of a table that has them, and gives their place.
  static std::byte* Extend(TableDescriptor& table, size_t size) {
    std::byte* const place = reinterpret_cast<std::byte*>(static_cast<UINTN>(table.Data)) + table.Used;
    table.Used = static_cast<UINT16>(table.Used + size);
    return place;
  }
  /// The same of a table that is being filled, or null when they do not fit.
  [[nodiscard]] std::byte* Extend(UINT32 index, size_t size);
  [[nodiscard]] EFI_STATUS Refusal(UINT32 index) const;

  TableDescriptor* descriptors_;
  Crc32 crc32_;
};
