/** @file
  Tests of interning: cleaning, de-duplication, limits.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/DatabaseFixture.hpp"
#include "sources/Interning.hpp"

namespace {

class InterningTest : public DatabaseFixture {
 protected:
  using Interned = std::pair<UINT16, bool>;
  Interned Name(std::u16string_view text) {
    const InternedString interned = InternAttributeName(database, Ucs2(text).c_str());
    return {Raw(interned.Handle), interned.AlreadyPresent};
  }
  Interned Display(std::u16string_view text) {
    const InternedString interned = InternDisplayString(database, Ucs2(text).c_str());
    return {Raw(interned.Handle), interned.AlreadyPresent};
  }
  Ucs2String Stored(StringArray array, UINT16 handle) { return database.StoredText(array, StringHandle{handle}); }
};

TEST_F(InterningTest, EqualCleanedTexts_ShareAHandle) {
  for (const bool display : {false, true}) {
    const auto intern = [&](std::u16string_view text) { return display ? Display(text) : Name(text); };
    EXPECT_EQ(intern(u"  Enabled"), Interned(16, false));
    EXPECT_EQ(intern(u"Enabled"), Interned(16, true));
    EXPECT_EQ(intern(u"enabled"), Interned(17, false));
    EXPECT_EQ(intern(u"Enabled "), Interned(18, false));  // only leading blanks go
    EXPECT_EQ(intern(u"\tEnabled"), Interned(19, false));
    EXPECT_EQ(intern(u"   "), Interned(20, false));
    EXPECT_EQ(intern(u""), Interned(20, true));
    // Bit 7 of the character decides: U+0080 and U+00E9 go, U+0100 and U+0142 stay.
    EXPECT_EQ(intern(u"a\u0080b\u00e9c\u0100d\u0142"), Interned(21, false));
    EXPECT_EQ(Stored(display ? StringArray::Display : StringArray::Names, 21), Ucs2(u"abc\u0100d\u0142"));
  }
}

TEST_F(InterningTest, DisplayText_Above174Characters_IsDropped) {
  const std::u16string longest(174, u'x');
  EXPECT_EQ(Display(longest + u"x"), Interned(0, false));
  EXPECT_EQ(Display(u" " + longest), Interned(0, false));  // measured before cleaning
  EXPECT_EQ(database.Store()->Header.DisplayCount, 0U);
  EXPECT_EQ(Display(longest), Interned(16, false));
  EXPECT_EQ(Stored(StringArray::Display, 16), Ucs2(longest));
}

TEST_F(InterningTest, EqualDisplayTexts_AreKeptApartByStars) {
  const auto distinct = [&](std::u16string_view text) {
    const InternedString interned = InternDistinctDisplayString(database, Ucs2(text).c_str());
    return Interned(Raw(interned.Handle), interned.AlreadyPresent);
  };
  EXPECT_EQ(distinct(u"Mode"), Interned(16, false));
  EXPECT_EQ(distinct(u"Mode"), Interned(17, true));
  EXPECT_EQ(distinct(u"Mode"), Interned(18, true));
  EXPECT_EQ(Stored(StringArray::Display, 18), Ucs2(u"**Mode"));
  EXPECT_EQ(Ucs2String(database.GetDisplayString(StringHandle{18})), Ucs2(u"Mode"));
  const std::u16string longest(174, u'x');
  EXPECT_EQ(distinct(longest), Interned(19, false));
  EXPECT_EQ(distinct(longest), Interned(0, true));  // there is no room for a star
}

TEST_F(InterningTest, HelpText_From4096Characters_IsDropped) {
  Display(u"one");
  Display(u"two");
  const auto set = [&](const std::u16string& text, UINT16 handle) {
    SetHelpString(database, Ucs2(text).c_str(), StringHandle{handle});
  };
  set(std::u16string(4096, u'h'), 16);
  set(u"no display text", 0);
  EXPECT_EQ(database.Store()->Header.HelpCount, 0U);
  set(std::u16string(4095, u'h'), 16);
  set(u"", 17);
  EXPECT_EQ(Stored(StringArray::Help, 16).size(), 4095U);
  EXPECT_NE(database.StoredText(StringArray::Help, StringHandle{17}), nullptr);
  EXPECT_EQ(database.Store()->Header.HelpCount, 2U);
}

}  // namespace
