/** @file
  Tests of TableBuilder: entries of every type, and where full tables are cut.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/DatabaseFixture.hpp"

namespace {

using TableBuilderTest = DatabaseFixture;

TEST_F(TableBuilderTest, StringTables_HaveHandleLengthAndText) {
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

TEST_F(TableBuilderTest, FullTables_AreCutAtAnEntry) {
  // The string table takes 7676 bytes of entries: 12 of 639 bytes, and one more that fits exactly.
  for (const size_t length : {635, 635, 635, 635, 635, 635, 635, 635, 635, 635, 635, 635, 4}) {
    PutText(database, StringArray::Names, std::u16string(length, u'n'));
  }
  PutNames({u""});
  for (int i = 0; i < 30; ++i) {  // the display table takes 10236: 12 of language, 29 of 352
    PutText(database, StringArray::Display, std::u16string(174, u'd'));
  }
  for (UINT16 handle = 16; handle < 32; ++handle) {  // the help table takes 65531: 12 of language, 8 of 8186
    PutHelp(database, handle, std::u16string(4091, u'h'));
  }
  BuildTables();
  EXPECT_EQ(descriptors[TABLE_STRINGS].EntryCount, 13U);
  EXPECT_EQ(descriptors[TABLE_STRINGS].Limit, 7680U);
  EXPECT_EQ(descriptors[TABLE_DISPLAY].EntryCount, 29U);
  EXPECT_EQ(descriptors[TABLE_HELP].EntryCount, 8U);
  EXPECT_EQ(uefi.Warnings("text table 0 cut before handle 29: 1 texts are left out"), 1U);
  EXPECT_EQ(uefi.Warnings("text table 9 cut before handle 45: 1 texts are left out"), 1U);
  EXPECT_EQ(uefi.Warnings("text table 10 cut before handle 24: 22 texts are left out"), 1U);
}

TEST_F(TableBuilderTest, AttributeTable_RejectsAnExactFit) {
  // 3068 bytes of room: 92 integers of 33 bytes leave 32.
  const std::pair<std::vector<UINT16>, unsigned> rows[] = {{std::vector<UINT16>(11, 16), 93},
                                                           {std::vector<UINT16>(12, 16), 92}};  // 30 and 32 bytes
  for (const auto& [last, entries] : rows) {
    AttributeDatabase own;
    ASSERT_EQ(own.AllocateStore(), EFI_SUCCESS);
    for (int i = 0; i < 92; ++i) {
      Put(own, {.Type = 3});
    }
    Put(own, {.Type = 0, .Handles = last, .Values = std::vector<UINT64>(last.size())});
    ValueEntries values{nullptr, false};
    TableBuilder(own, writer, values).BuildTables();
    EXPECT_EQ(descriptors[TABLE_ATTRIBUTES].EntryCount, entries);
  }
  EXPECT_EQ(uefi.Warnings("attribute table cut before handle 108: 1 attributes are left out"), 1U);
}

TEST_F(TableBuilderTest, AttributeTable_HasAtMost256Entries) {
  for (UINT16 handle = 1; handle < 16; ++handle) {
    Put(database, {.Handle = handle, .Type = 7});
  }
  for (int i = 0; i < 250; ++i) {
    Put(database, {.Type = 0x80});
  }
  BuildTables();
  EXPECT_EQ(descriptors[TABLE_ATTRIBUTES].EntryCount, 256U);
  EXPECT_EQ(uefi.Warnings("attribute table cut before handle 257: 9 attributes are left out"), 1U);
  EXPECT_EQ(descriptors[TABLE_ATTRIBUTES].Limit, 15 * 5 + 241 * 8 + 1 + 4);
}

}  // namespace
