/** @file
  Fixture of tests on an AttributeDatabase and the tables built from it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeUefi/FakeNotebook.hpp"
#include "FakeUefi/ReferenceCompression.hpp"
#include "Host/StoreBuilder.hpp"
#include "Host/TestBytes.hpp"
#include "database/cache/Cache.hpp"
#include "database/tables/TableBuilder.hpp"
#include "lifecycle/AttributeStream.hpp"

/// Builds all tables of a doubtful database, so that the sanitizers check every access.
inline void BuildTablesOf(AttributeDatabase& database) {
  std::array<TableDescriptor, TABLE_DESCRIPTOR_COUNT> descriptors{};
  TableWriter writer{descriptors.data()};
  ValueEntries values{nullptr, true};
  EXPECT_EQ(TableBuilder(database, writer, values).BuildTables(), EFI_SUCCESS);
}

class DatabaseFixture : public testing::Test {
 protected:
  DatabaseFixture() { EXPECT_EQ(database.AllocateStore(), EFI_SUCCESS); }

  void PutNames(std::initializer_list<std::u16string_view> names) {
    for (const std::u16string_view name : names) {
      PutText(database, StringArray::Names, name);
    }
  }
  void BuildTables(bool restored = false) {
    ValueEntries values{settings, restored};
    EXPECT_EQ(TableBuilder(database, writer, values).BuildTables(), EFI_SUCCESS);
  }
  [[nodiscard]] Bytes Table(size_t index) const {
    return BytesAt(reinterpret_cast<const void*>(UINTN{descriptors[index].Data}), descriptors[index].Limit);
  }
  /// The entries of a finished table, pad and checksum cut off.
  [[nodiscard]] Bytes Entries(size_t index) const {
    return Middle(Table(index), 0, size_t{descriptors[index].PadLength} + 4);
  }

  /// The attribute stream, with `unwritten` where nothing is written.
  [[nodiscard]] Bytes Stream(UINT8 unwritten = 0) const {
    Bytes stream(AttributeStreamSize(database), unwritten);
    EncodeAttributes(database, std::as_writable_bytes(std::span(stream)));
    return stream;
  }
  void WriteOut() {
    const FirmwareVersionData version{"1"};
    FirmwareVersionProtocol protocol{&version};
    uefi.Install(gVaroFirmwareVersionProtocolGuid, &protocol);
    EXPECT_EQ(WriteCache(database), EFI_SUCCESS);
  }
  [[nodiscard]] Bytes Cached(std::u16string_view name) {
    return uefi.Variables[{Ucs2(name), gVaroAttributeVariableGuid}].Data;
  }

  FakeUefi uefi;
  SettingsProtocol* settings = nullptr;
  AttributeDatabase database;
  std::array<TableDescriptor, TABLE_DESCRIPTOR_COUNT> descriptors{};
  TableWriter writer{descriptors.data()};
};
