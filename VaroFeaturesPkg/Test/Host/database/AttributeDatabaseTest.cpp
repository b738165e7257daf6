/** @file
  Tests of AttributeDatabase: handles, limits, look-ups.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/DatabaseFixture.hpp"

namespace {

using AttributeDatabaseTest = DatabaseFixture;

TEST_F(AttributeDatabaseTest, AddAttribute_AfterHandle271_FreesTheRecord) {
  const VOID* const* const slots = database.Store()->Slots;
  for (UINT16 handle = 16; handle < 272; ++handle) {
    const AttributeRecord* const record = Put(database, {.Type = 0x80, .Handles = {1}, .Values = {2}});
    ASSERT_EQ(record->Handle, handle);
    ASSERT_EQ(slots[handle], record);
  }
  const size_t blocks = uefi.LivePoolBlocks();
  EXPECT_EQ(Raw(database.AddAttribute(AsAttribute(MakeRecord<IntegerRecord>()))), 0);
  EXPECT_EQ(database.GetAttributeCount(), 256U);
  EXPECT_EQ(uefi.LivePoolBlocks(), blocks);
  EXPECT_EQ(uefi.Warnings("full"), 1U);
}

TEST_F(AttributeDatabaseTest, AddString_AfterHandle5119_GivesNoHandle) {
  const size_t blocks = uefi.LivePoolBlocks();
  for (const StringArray array : {StringArray::Names, StringArray::Display}) {
    for (int i = 16; i < 5120; ++i) {
      ASSERT_EQ(Raw(PutText(database, array, u"t")), i);
    }
    EXPECT_EQ(Raw(PutText(database, array, u"t")), 0);
    EXPECT_EQ(TextOf(database, array, 5119), "t");
  }
  EXPECT_EQ(database.Store()->Header.NameCount, 5104U);
  EXPECT_EQ(database.Store()->Header.DisplayCount, 5104U);
  database.ReleaseIndexes();
  EXPECT_EQ(uefi.LivePoolBlocks(), blocks + size_t{2} * 5104);
}

TEST_F(AttributeDatabaseTest, PlaceAttribute_FreesTheEarlierRecord) {
  const size_t blocks = uefi.LivePoolBlocks();
  Put(database, {.Handle = 3, .Type = 1, .Text = "text"});
  Put(database, {.Handle = 3, .Type = 7});
  Put(database, {.Handle = 3, .Type = 2});
  EXPECT_EQ(uefi.LivePoolBlocks(), blocks + 1);
  EXPECT_EQ(database.AttributeAt(3)->Handle, 3);
  database.PlaceAttribute(nullptr, AttributeHandle{3});
  EXPECT_EQ(uefi.LivePoolBlocks(), blocks);
  EXPECT_EQ(database.AttributeAt(3), nullptr);
  EXPECT_EQ(database.GetAttributeCount(), 0U);
}

TEST_F(AttributeDatabaseTest, FindAttributeByToken_SearchesCountedRecords) {
  Put(database, {.Handle = 1, .Type = 2, .Token = 7});
  EXPECT_EQ(database.FindAttributeByToken(0), nullptr);
  EXPECT_EQ(database.FindAttributeByToken(7), nullptr);
  const AttributeRecord* const zero = Put(database, {.Type = 5});
  const AttributeRecord* const first = Put(database, {.Type = 3, .Token = 7});
  Put(database, {.Type = 3, .Token = 7});
  const AttributeRecord* const other = Put(database, {.Type = 3, .Token = 8});
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(database.FindAttributeByToken(7), first);
    EXPECT_EQ(database.FindAttributeByToken(7), first);
    EXPECT_EQ(database.FindAttributeByToken(8), other);
    EXPECT_EQ(database.FindAttributeByToken(9), nullptr);
    EXPECT_EQ(database.FindAttributeByToken(0x100 + 8), nullptr);  // has the low byte of another token
    EXPECT_EQ(database.FindAttributeByToken(0), zero);
  }
}

TEST_F(AttributeDatabaseTest, GetString_OfAHandleThatIsNotLive_IsEmpty) {
  PutNames({u"name"});
  PutText(database, StringArray::Display, u"*starred");
  PutText(database, StringArray::Display, u"plain");
  PutHelp(database, 17, u"help");
  for (const UINT16 handle : std::initializer_list<UINT16>{0, 15, 18, 5120, 0xFFFF}) {
    EXPECT_EQ(*database.GetNameString(StringHandle{handle}), 0);
    EXPECT_EQ(*database.GetDisplayString(StringHandle{handle}), 0);
    EXPECT_EQ(*database.GetHelpString(StringHandle{handle}), 0);
  }
  EXPECT_EQ(*database.GetHelpString(StringHandle{16}), 0);
  // Help handles are live up to those of the display texts, even if few help texts exist.
  EXPECT_EQ(*database.GetHelpString(StringHandle{17}), 'h');
  EXPECT_EQ(Ucs2String(database.GetDisplayString(StringHandle{16})), Ucs2(u"starred"));
}

TEST_F(AttributeDatabaseTest, FindString_WithAndWithoutTheIndex_FindsTheSame) {
  PutNames({u"Enabled", u"enabled", u"Disabled"});
  for (int i = 0; i < 600; ++i) {  // more than there are hash chains
    const std::string text = "n" + std::to_string(i);
    PutText(database, StringArray::Names, std::u16string(text.begin(), text.end()));
  }
  const auto find = [&](std::u16string_view text) {
    return Raw(database.FindString(StringArray::Names, TextKey(Ucs2(text).c_str())));
  };
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(find(u"Enabled"), 16);
    EXPECT_EQ(find(u"enabled"), 17);
    EXPECT_EQ(find(u"n599"), 618);
    EXPECT_EQ(find(u"n600"), 0);
    EXPECT_EQ(find(u"Enable"), 0);
    database.ReleaseIndexes();
  }
  EXPECT_EQ(Raw(PutText(database, StringArray::Names, u"late")), 619);
  EXPECT_EQ(find(u"late"), 619);
}

}  // namespace
