/** @file
  Tests of ValueEntries: entries of every type, and which values are read again after a restore.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/DatabaseFixture.hpp"

namespace {

class ValueEntriesTest : public testing::Test {
 protected:
  ValueEntriesTest() { Begin(); }

  /// Empties the database and the value table.
  void Begin() {
    notebook.Reboot();
    notebook.InstallProtocols();
    database = {};
    EXPECT_EQ(database.AllocateStore(), EFI_SUCCESS);
    writer.InitTableDescriptors();
    EXPECT_EQ(writer.AllocateTable(TABLE_VALUES), EFI_SUCCESS);
  }
  EFI_STATUS Append(const RecordSpec& spec, bool restored) {
    record = Put(database, spec);
    ValueEntries values(notebook.Uefi.Find<SettingsProtocol>(gVaroSettingsProtocolGuid), restored);
    return values.AppendValueEntry(writer, TABLE_VALUES, *record);
  }
  /// The bytes of the entry after handle and type.
  Bytes Entry(const RecordSpec& spec, bool restored) {
    const size_t before = descriptors[TABLE_VALUES].Used;
    EXPECT_EQ(Append(spec, restored), EFI_SUCCESS);
    const auto* const data = reinterpret_cast<const void*>(UINTN{descriptors[TABLE_VALUES].Data});
    return Middle(BytesAt(data, descriptors[TABLE_VALUES].Used), before + 3, 0);
  }

  FakeNotebook notebook;
  AttributeDatabase database;
  AttributeRecord* record = nullptr;
  std::array<TableDescriptor, TABLE_DESCRIPTOR_COUNT> descriptors{};
  TableWriter writer{descriptors.data()};
};

TEST_F(ValueEntriesTest, RestoredSettings_AreReadAgain) {
  // Type, bytes and number of the setting; the record's value before; the setting; the value after.
  const std::tuple<UINT8, UINT16, UINT32, UINT64, FakeSetting, UINT64> rows[] = {
      {0, 1, 300, 0, {5}, 1},                 // the index of the first value that is equal
      {0, 1, 300, 2, {8}, 2},                 // none is
      {0, 1, 300, 2, {5, EFI_NOT_FOUND}, 2},  //
      {0, 8, 300, 0, {0x900000005}, 1},       // the low 32 bits count
      {0, 9, 300, 0, {5}, 0},                 // not read
      {3, 2, 302, 77, {0x0123}, 0x23},        // one byte counts
      {0x83, 2, 1142, 7, {0x59}, 59},         // hours and minutes are BCD
      {3, 2, 1143, 7, {0x07}, 7},             //
      {3, 2, 1144, 7, {0x59}, 0x59},          //
      {3, 2, 302, 0x777, {1, EFI_DEVICE_ERROR}, 0x777},
      {3, 9, 302, 0x777, {1}, 0x777},
  };
  for (const auto& [type, size, token, before, setting, after] : rows) {
    notebook.Settings[token] = setting;
    notebook.SettingsRead.clear();
    const Bytes entry = Entry({.Type = type,
                               .ValueSize = size,
                               .Token = token,
                               .Handles = {16, 17, 18},
                               .Values = {1, 5, 5},
                               .Current = before},
                              true);
    const bool isInteger = type != 0;
    EXPECT_EQ(entry, isInteger ? Join(after) : Join(U8(1), U8(after)));
    EXPECT_EQ(isInteger ? UINT64{As<IntegerRecord>(*record).CurrentValue} : As<EnumerationRecord>(*record).CurrentIndex,
              after);
    if (size <= 8) {
      EXPECT_THAT(notebook.SettingsRead, testing::ElementsAre(std::pair(token, UINT64{size})));
    }
  }
}

TEST_F(ValueEntriesTest, RestoredStrings_OfTwoTokens_AreFetchedFromThePlatform) {
  const std::tuple<UINT32, std::optional<std::string>, std::optional<std::string>, bool, std::string,
                   std::optional<std::string>>
      rows[] = {
          {9752, "old", "ABC", false, "ABC", "old"},  {1559, "old", "ABC", false, "ABC", "old"},
          {9753, "old", "ABC", false, "old", "old"},  {9752, std::nullopt, "ABC", false, "", std::nullopt},
          {9752, "old", "", false, "", std::nullopt}, {9752, "old", std::nullopt, false, "old", "old"},
          {9752, "old", "ABC", true, "old", "old"},
      };
  for (const auto& [token, stored, platform, absent, written, stays] : rows) {
    notebook.PlatformStrings = {platform, platform};
    notebook.Absent.clear();
    if (absent) {
      notebook.Absent.insert(gVaroAssetTagLengthProtocolGuid);
    }
    Begin();
    EXPECT_EQ(Entry({.Type = 1, .Token = token, .Text = stored}, true),
              Join(U16(written.size()), std::string_view(written)));
    const CHAR8* const left = As<StringRecord>(*record).CurrentString;
    EXPECT_EQ(left == nullptr ? std::nullopt : std::optional<std::string>(left), stays);
  }
}

TEST_F(ValueEntriesTest, Entry_IsRejectedByItsEstimateAndElseCutAtTheCapacity) {
  // Room for 8 bytes; a collection counts as 4 without its members, which then go up to the capacity or not at all.
  ASSERT_EQ(writer.AppendTableBytes(TABLE_VALUES, Span(Bytes(2044 - 8))), EFI_SUCCESS);
  EXPECT_EQ(Append({.Type = 3}, false), EFI_BUFFER_TOO_SMALL);
  EXPECT_EQ(Entry({.Type = 1, .Text = "xyz"}, false), Join(U16(3), "xyz"));  // an exact fit
  EXPECT_EQ(writer.Room(TABLE_VALUES), 0U);
  EXPECT_EQ(Append({.Type = 6}, false), EFI_BUFFER_TOO_SMALL);

  descriptors[TABLE_VALUES].Used = 2044 - 4;
  EXPECT_EQ(Entry({.Type = 5, .Handles = {1, 2, 3, 4}}, false), Bytes{4});
  EXPECT_EQ(descriptors[TABLE_VALUES].EntryCount, 2U);
}

}  // namespace
