/** @file
  Tests of TableBuilder: entries of every type, and where full tables are cut.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/DatabaseFixture.hpp"

namespace {

using TableBuilderTest = DatabaseFixture;

TEST_F(TableBuilderTest, AttributeEntriesByType) {
  struct Row {
    RecordSpec Spec;
    Bytes Body;
  };
  const Row rows[] = {
      {{.Type = 0, .Name = 16, .Handles = {17, 0x1234}, .Values = {7, 9}, .Default = 1, .Current = 0},
       Join(U8(2), U16(17), U16(0x1234), U8(1), U8(1))},
      {{.Type = 0x80, .Name = 16}, Join(U8(0), U8(1), U8(0))},
      {{.Type = 1, .Name = 17, .SubType = 1, .MinLength = 2, .MaxLength = 0x102, .DefaultLength = 3, .Text = "text"},
       Join(U8(1), U16(2), U16(0x102), U16(3))},
      {{.Type = 2, .Name = 18, .SubType = 0, .MinLength = 1, .MaxLength = 32, .Installed = 1},
       Join(U8(0), U16(1), U16(32), U16(0))},
      {{.Type = 0x83, .Name = 19, .Default = 5, .Current = 6, .Lower = 1, .Upper = 0x1122334455667788, .Step = 2},
       Join(U64(1), U64(0x1122334455667788), U32(2), U64(5))},
      {{.Handle = 6, .Type = 4, .Name = 20, .Handles = {21, 22}, .SubType = 2, .Order = {1}},
       Join(U8(2), U8(3), U8(1), U8(2), U8(2), U16(21), U16(22))},
      {{.Type = 0x85, .Name = 0x0117, .Handles = {16, 17}}, Join(U16(0x0117), U8(255), U8(0))},
      {{.Type = 6, .Name = 24, .Handles = {25}, .Current = 1}, Join(U8(1), U16(25))},
      {{.Type = 0x87, .Name = 26}, {}},
  };
  Bytes expected;
  Bytes placed;
  UINT16 next = 16;
  for (const Row& row : rows) {
    Put(database, row.Spec);
    const UINT16 handle = row.Spec.Handle != 0 ? row.Spec.Handle : next++;
    Append(row.Spec.Handle != 0 ? placed : expected, Join(handle, row.Spec.Type, row.Spec.Name, row.Body));
  }
  BuildTables();
  EXPECT_EQ(Entries(TABLE_ATTRIBUTES), Join(placed, expected));
  EXPECT_EQ(descriptors[TABLE_ATTRIBUTES].EntryCount, std::size(rows));
}

TEST_F(TableBuilderTest, StringTablesHoldHandleLengthAndText) {
  PutNames({u"ABC", u"", u"\u0142\u00e9"});  // characters lose their high byte
  PutText(database, StringArray::Display, u"**  Two stars");
  PutText(database, StringArray::Display, u"x\u0142");
  PutHelp(database, 17, u"Help");
  BuildTables();
  const Bytes language = Join(U16(10), u"en-US");
  EXPECT_EQ(Entries(TABLE_STRINGS), Join(U16(16), U16(3), "ABC", U16(17), U16(0), U16(18), U16(2), Bytes{0x42, 0xE9}));
  EXPECT_EQ(Entries(TABLE_DISPLAY), Join(language, U16(16), U16(18), u"Two stars", U16(17), U16(4), u"x\u0142"));
  EXPECT_EQ(Entries(TABLE_HELP), Join(language, U16(16), U16(0), U16(17), U16(8), u"Help"));
  EXPECT_EQ(descriptors[TABLE_HELP].EntryCount, 2U);
  EXPECT_EQ(Table(TABLE_VALUES), Bytes(4));
}

TEST_F(TableBuilderTest, FullTablesAreCutAtAnEntry) {
  // The string table takes 7676 bytes of entries: 12 of 639 bytes, and one more that fits exactly.
  for (const size_t length : {635, 635, 635, 635, 635, 635, 635, 635, 635, 635, 635, 635, 4}) {
    PutText(database, StringArray::Names, std::u16string(length, u'n'));
  }
  PutNames({u""});
  for (int i = 0; i < 30; ++i) {  // the display table takes 10236: 12 of language, 29 of 352
    PutText(database, StringArray::Display, std::u16string(174, u'd'));
  }
  BuildTables();
  EXPECT_EQ(descriptors[TABLE_STRINGS].EntryCount, 13U);
  EXPECT_EQ(descriptors[TABLE_STRINGS].Limit, 7680U);
  EXPECT_EQ(descriptors[TABLE_DISPLAY].EntryCount, 29U);
  EXPECT_EQ(descriptors[TABLE_HELP].EntryCount, 30U);
  EXPECT_EQ(uefi.Warnings("cut"), 2U);
}

TEST_F(TableBuilderTest, TheAttributeTableRefusesAnExactFit) {
  // 3068 bytes of room: 92 integers of 33 bytes leave 32.
  struct Row {
    std::vector<UINT16> Last;
    unsigned Entries;
  };
  const Row rows[] = {{std::vector<UINT16>(11, 16), 93}, {std::vector<UINT16>(12, 16), 92}};  // 30 and 32 bytes
  for (const Row& row : rows) {
    AttributeDatabase own;
    ASSERT_EQ(own.AllocateStore(), EFI_SUCCESS);
    for (int i = 0; i < 92; ++i) {
      Put(own, {.Type = 3});
    }
    Put(own, {.Type = 0, .Handles = row.Last, .Values = std::vector<UINT64>(row.Last.size())});
    ValueEntries values{nullptr, false};
    TableBuilder(own, writer, values).BuildTables();
    EXPECT_EQ(descriptors[TABLE_ATTRIBUTES].EntryCount, row.Entries);
  }
}

TEST_F(TableBuilderTest, TheAttributeTableHoldsAtMost256Entries) {
  for (UINT16 handle = 1; handle < 16; ++handle) {
    Put(database, {.Handle = handle, .Type = 7});
  }
  for (int i = 0; i < 250; ++i) {
    Put(database, {.Type = 0x80});
  }
  BuildTables();
  EXPECT_EQ(descriptors[TABLE_ATTRIBUTES].EntryCount, 256U);
  EXPECT_EQ(descriptors[TABLE_ATTRIBUTES].Limit, 15 * 5 + 241 * 8 + 1 + 4);
}

}  // namespace
