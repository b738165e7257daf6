/** @file
  Tests of ValueEntries: entries of every type, and which values are read anew after a restore.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/DatabaseFixture.hpp"

namespace {

struct PlatformSetting {
  EFI_STATUS Status = EFI_SUCCESS;
  UINT64 Value = 0;
  UINT32 Asked = 0;
  UINT64 Size = 0;
} gSetting;

class ValueEntriesTest : public testing::Test {
 protected:
  ValueEntriesTest() {
    gSetting = {};
    settings.Read = [](SettingsProtocol*, UINT32 setting, const EFI_GUID*, UINT64* size, VOID* value) -> EFI_STATUS {
      gSetting.Asked = setting;
      gSetting.Size = *size;
      std::memcpy(value, &gSetting.Value, sizeof(gSetting.Value));
      return gSetting.Status;
    };
    writer.InitTableDescriptors();
    EXPECT_EQ(writer.AllocateTable(TABLE_VALUES), EFI_SUCCESS);
    EXPECT_EQ(database.AllocateStore(), EFI_SUCCESS);
  }
  Bytes Entry(const RecordSpec& spec, bool restored) {
    const UINT16 before = descriptors[TABLE_VALUES].Used;
    record = Put(database, spec);
    EXPECT_EQ(ValueEntries(&settings, restored).AppendValueEntry(writer, TABLE_VALUES, *record), EFI_SUCCESS);
    const Bytes all =
        BytesAt(reinterpret_cast<void*>(UINTN{descriptors[TABLE_VALUES].Data}), descriptors[TABLE_VALUES].Used);
    return Middle(all, before, 0);
  }

  FakeNotebook notebook;
  SettingsProtocol settings{};
  AttributeDatabase database;
  AttributeRecord* record = nullptr;
  std::array<TableDescriptor, TABLE_DESCRIPTOR_COUNT> descriptors{};
  TableWriter writer{descriptors.data()};
};

TEST_F(ValueEntriesTest, RestoredSettingsAreReadAnew) {
  const std::vector<UINT16> names = {16, 17, 18};
  const std::vector<UINT64> values = {1, 5, 5};
  struct Row {
    RecordSpec Spec;
    UINT64 Setting;
    EFI_STATUS Status;
    UINT64 Current;
  };
  const Row rows[] = {
      {{.Type = 0, .ValueSize = 1, .Token = 300, .Handles = names, .Values = values, .Current = 0}, 5, EFI_SUCCESS, 1},
      {{.Type = 0, .ValueSize = 1, .Token = 300, .Handles = names, .Values = values, .Current = 2}, 8, EFI_SUCCESS, 2},
      {{.Type = 0, .ValueSize = 1, .Token = 300, .Handles = names, .Values = values, .Current = 2},
       5,
       EFI_NOT_FOUND,
       2},
      // The low 32 bits count.
      {{.Type = 0, .ValueSize = 8, .Token = 300, .Handles = names, .Values = values}, 0x900000005, EFI_SUCCESS, 1},
      {{.Type = 0, .ValueSize = 9, .Token = 300, .Handles = names, .Values = values}, 5, EFI_SUCCESS, 0},
      {{.Type = 3, .ValueSize = 2, .Token = 302, .Current = 77}, 0x0123, EFI_SUCCESS, 0x23},
      {{.Type = 0x83, .ValueSize = 2, .Token = 1142, .Current = 7}, 0x59, EFI_SUCCESS, 59},
      {{.Type = 3, .ValueSize = 2, .Token = 1143, .Current = 7}, 0x07, EFI_SUCCESS, 7},
      {{.Type = 3, .ValueSize = 2, .Token = 1144, .Current = 7}, 0x59, EFI_SUCCESS, 0x59},
      {{.Type = 3, .ValueSize = 2, .Token = 302, .Current = 0x777}, 1, EFI_DEVICE_ERROR, 0x777},
      {{.Type = 3, .ValueSize = 9, .Token = 302, .Current = 0x777}, 1, EFI_SUCCESS, 0x777},
  };
  UINT16 handle = 16;
  for (const Row& row : rows) {
    gSetting = {.Status = row.Status, .Value = row.Setting};
    const bool enumeration = row.Spec.Type == 0;
    EXPECT_EQ(
        Entry(row.Spec, true),
        Join(handle, row.Spec.Type, enumeration ? Join(U8(1), static_cast<UINT8>(row.Current)) : Join(row.Current)))
        << handle;
    EXPECT_EQ(
        enumeration ? As<EnumerationRecord>(*record).CurrentIndex : UINT64{As<IntegerRecord>(*record).CurrentValue},
        row.Current);
    if (row.Spec.ValueSize <= 8) {
      EXPECT_EQ(gSetting.Asked, row.Spec.Token);
      EXPECT_EQ(gSetting.Size, row.Spec.ValueSize);
    }
    ++handle;
  }
}

TEST_F(ValueEntriesTest, TwoRestoredStringsAreFetchedFromThePlatform) {
  struct Row {
    UINT32 Token;
    std::optional<std::string> Stored;
    std::optional<std::string> Platform;
    bool Absent;
    std::string Written;
    std::optional<std::string> Left;
  };
  const Row rows[] = {
      {9752, "old", "ABC", false, "ABC", "old"},  {1559, "old", "ABC", false, "ABC", "old"},
      {9753, "old", "ABC", false, "old", "old"},  {9752, std::nullopt, "ABC", false, "", std::nullopt},
      {9752, "old", "", false, "", std::nullopt}, {9752, "old", std::nullopt, false, "old", "old"},
      {9752, "old", "ABC", true, "old", "old"},
  };
  UINT16 handle = 16;
  for (const Row& row : rows) {
    notebook.Uefi.Reboot();
    writer.InitTableDescriptors();
    ASSERT_EQ(writer.AllocateTable(TABLE_VALUES), EFI_SUCCESS);
    database = {};
    ASSERT_EQ(database.AllocateStore(), EFI_SUCCESS);
    notebook.PlatformStrings = {row.Platform, row.Platform};
    notebook.Absent.clear();
    if (row.Absent) {
      notebook.Absent.insert(gVaroAssetTagLengthProtocolGuid);
    }
    notebook.InstallProtocols();
    EXPECT_EQ(Entry({.Type = 1, .Token = row.Token, .Text = row.Stored}, true),
              Join(handle, U8(1), U16(static_cast<unsigned>(row.Written.size())), std::string_view(row.Written)));
    const CHAR8* const left = As<StringRecord>(*record).CurrentString;
    EXPECT_EQ(left == nullptr ? std::nullopt : std::optional<std::string>(left), row.Left);
  }
}

TEST_F(ValueEntriesTest, AnEntryIsRefusedByItsEstimateAndThenWrittenAsFarAsItGoes) {
  // Room for 8 bytes; a collection counts as 4 without its members, which then go up to the capacity or not at all.
  const Bytes filler(2044 - 8);
  ASSERT_EQ(writer.AppendTableBytes(TABLE_VALUES, Span(filler)), EFI_SUCCESS);
  AttributeRecord* const integer = Put(database, {.Type = 3});
  EXPECT_EQ(ValueEntries(&settings, false).AppendValueEntry(writer, TABLE_VALUES, *integer), EFI_BUFFER_TOO_SMALL);
  EXPECT_EQ(Entry({.Type = 1, .Text = "xyz"}, false), Join(U16(17), U8(1), U16(3), "xyz"));  // an exact fit
  EXPECT_EQ(writer.Room(TABLE_VALUES), 0U);
  AttributeRecord* const left = Put(database, {.Type = 6});
  EXPECT_EQ(ValueEntries(&settings, false).AppendValueEntry(writer, TABLE_VALUES, *left), EFI_BUFFER_TOO_SMALL);

  descriptors[TABLE_VALUES].Used = static_cast<UINT16>(2044 - 4);
  EXPECT_EQ(Entry({.Type = 5, .Handles = {1, 2, 3, 4}}, false), Join(U16(19), U8(5), U8(4)));
  EXPECT_EQ(descriptors[TABLE_VALUES].EntryCount, 2U);
}

}  // namespace
