/** @file
  Tests of attr's command lines: output, status, and the requests that are sent.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/attr/AttrFixture.hpp"

namespace {

using std::string_view_literals::operator""sv;
using Words = std::vector<std::u16string>;

class AttrCommandTest : public AttrFixture {
 protected:
  AttrCommandTest() {
    const Bytes collection = Join(U16(0), U8(0xFF), U8(0));
    Add(1, 2, "AdminPassword[RegEx:^y$]", Join(U8(0), U16(0), U16(32), U16(0)), Join(U16(0)));
    Add(16, 3, "Fan", Join(U64(10), U64(90), U32(5), U64(50)), Join(U64(60)));
    Add(17, 1, "Asset[RegEx:^x$]", Join(U8(1), U16(1), U16(6), U16(0)),
        Join(U16(4),
             "NB\x7F"
             "1"));
    const Bytes modes = Join(U8(2), Name("Auto"), Name("Silent[ForceIfNot:Fan=10][Note]"), U8(1), U8(0));
    Add(18, 0, "Mode[ForceIf:Fan=60]", modes, Join(U8(1), U8(1)));
    Add(19, 0x83, "Level", Join(U64(0), U64(UINT64_MAX), U32(0), U64(7)), Join(U64(UINT64_MAX)));
    Add(20, 0x85, "Setup", collection, Join(U8(2), U16(16), U16(99)));
    Install();
  }
  size_t Sets() const { return Sent(REQUEST_CLASS_ATTRIBUTES, REQUEST_SELECT_SET).size(); }
};

TEST_F(AttrCommandTest, EachSubcommand_PrintsTheServicesValues) {
  const struct {
    Words Line;
    std::string Result;
  } rows[] = {
      {{u"list"},
       "0 AdminPassword = hidden\nFan = 60\nAsset = NB\\x7F1\nMode = Silent\nLevel = 18446744073709551615\n"
       "Setup = Fan|?99\n"},
      {{u"list", u"-l"},
       "0 1 AdminPassword[RegEx:^y$] password = hidden (default length 0) {0..32}\n"
       "16 Fan integer = 60 (default 50) {10..90 step 5}\n"
       "17 Asset[RegEx:^x$] string = \"NB\\x7F1\" (default length 0) {1..6}\n"
       "18 Mode[ForceIf:Fan=60] enumeration = Silent[ForceIfNot:Fan=10][Note] (default Auto) "
       "{Auto|Silent[ForceIfNot:Fan=10][Note]}\n"
       "19 Level integer ro = 18446744073709551615 (default 7) {0..18446744073709551615 step 0}\n"
       "20 Setup collection ro = Fan|?99 (default -) {-}\n"},
      {{u"list", u"SE"}, "0 Asset = NB\\x7F1\nSetup = Fan|?99\n"},
      {{u"list", u"-b", u"*s?et"}, "0 Asset = NB\\x7F1\n"},
      {{u"list", u"s*p*x"}, "14 attr: no attribute has such a name\n"},
      {{u"export"},
       "0 AdminPassword=hidden\nFan=60\nAsset=NB\\x7F1\nMode=Silent\nLevel=18446744073709551615\nSetup=Fan|?99\n"},
      {{u"get", u"Mode"}, "0 Silent\n"},
      {{u"get", u"Mode[ForceIf:Fan=60]"}, "0 Silent\n"},
      {{u"get", u"Mode[ForceIf:Fan=61]"}, "14 attr: no attribute Mode[ForceIf:Fan=61]; did you mean Mode?\n"},
      {{u"get", u"mODE"}, "0 Silent\n"},
      {{u"get", u"mode[forceif:fan=60]"}, "0 Silent\n"},
      {{u"get", u"fn"}, "14 attr: no attribute fn; did you mean Fan?\n"},
      {{u"get", u"s"}, "14 attr: no attribute s; did you mean Setup?\n"},
      {{u"get", u"xyz"}, "14 attr: no attribute xyz\n"},
      {{u"info", u"Mode"},
       "0 Name:     Mode\nHandle:   18\nType:     enumeration\nValue:    Silent\nDefault:  Auto\n"
       "Values:   Auto|Silent\nDepends:  Mode is forced if Fan = 60\nDepends:  Silent is forced if Fan is not 10\n"},
      {{u"info", u"Fan"},
       "0 Name:     Fan\nHandle:   16\nType:     integer\nValue:    60\nDefault:  50\nBounds:   10..90 step 5\n"
       "Forces:   Mode is forced if Fan = 60\nForces:   Mode = Silent is forced if Fan is not 10\n"},
      {{u"info", u"Asset"},
       "0 Name:     Asset\nHandle:   17\nType:     string\nValue:    NB\\x7F1\nDefault:  length 0\nLength:   1..6\n"
       "Pattern:  ^x$\n"},
      {{}, "2 attr: a subcommand is missing: list, get, info, set or export; \"help attr\" says more\n"},
      {{u"show"}, "2 attr: subcommands are list, get, info, set and export, not show; \"help attr\" says more\n"},
      {{u"get"}, "2 attr: a name is missing; \"help attr\" says more\n"},
      {{u"get", u"Fan", u"-l"}, "2 attr: unknown option -l; \"help attr\" says more\n"},
      {{u"get", u"Fan", u"60"}, "2 attr: too many words, from 60; \"help attr\" says more\n"},
      {{u"set", u"Asset", u"\u00E9"},
       "2 attr: names and values are printable ASCII, not \xE9; \"help attr\" says more\n"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Run(row.Line), row.Result);
  }
  EXPECT_EQ(Sets(), 0U);
  EXPECT_EQ(prompted, "[pages][no pages]");
}

TEST_F(AttrCommandTest, Set_SendsOnlyValuesThatPassTheChecks) {
  const struct {
    Words Line;
    std::string Result;
    size_t Sets;
  } rows[] = {
      {{u"Fan", u"65"}, "0 Fan: 60 -> 65\n", 1},
      {{u"Fan", u"0x41"}, "0 Fan: 65 already, nothing sent\n", 0},
      {{u"Fan", u"0x5A"}, "0 Fan: 65 -> 90\n", 1},
      {{u"Fan", u"91"}, "2 attr: out of bounds, which are 10 to 90\n", 0},
      {{u"Fan", u"61"}, "2 attr: out of step: values go in steps of 5 from 10\n", 0},
      {{u"Fan", u" 65"}, "2 attr: not a number, decimal or 0x and hexadecimal\n", 0},
      {{u"Fan", u"18446744073709551626"}, "2 attr: not a number, decimal or 0x and hexadecimal\n", 0},
      {{u"Fan", u"-65"}, "2 attr: out of bounds, which are 10 to 90\n", 0},
      {{u"Fan", u"-6x"}, "2 attr: not a number, decimal or 0x and hexadecimal\n", 0},
      {{u"-65", u"Fan"}, "2 attr: unknown option -65; \"help attr\" says more\n", 0},
      {{u"Fan", u"0x"}, "2 attr: not a number, decimal or 0x and hexadecimal\n", 0},
      {{u"Asset", u"--", u"-b"}, "0 Asset: NB\\x7F1 -> -b\n", 1},
      {{u"Asset", u"-b"}, "2 attr: unknown option -b; \"help attr\" says more\n", 0},
      {{u"Asset", u"7654321"}, "2 attr: too long, 6 characters at most\n", 0},
      {{u"Asset", u""}, "2 attr: too short, 1 characters at least\n", 0},
      {{u"Asset", u"-5"}, "0 Asset: -b -> -5\n", 1},
      {{u"mode", u"AUTO"}, "0 attr: Mode is forced to Silent while Fan is not 10\nMode: Silent -> Auto\n", 1},
      {{u"Mode", u"1"}, "0 Mode: Auto -> Silent\n", 1},
      {{u"Mode", u"Silent"}, "0 Mode: Silent already, nothing sent\n", 0},
      {{u"Mode", u"2"}, "2 attr: no such value; there are 0 Auto 1 Silent\n", 0},
      {{u"Level", u"1"}, "8 attr: the attribute is read-only\n", 0},
      {{u"AdminPassword", u"new"}, "3 attr: an attribute of this type cannot be set\n", 0},
      {{u"Fam", u"65"}, "14 attr: no attribute Fam; did you mean Fan?\n", 0},
      {{u"Fan"}, "2 attr: a value is missing; \"help attr\" says more\n", 0},
  };
  for (auto row : rows) {
    const size_t before = Sets();
    row.Line.insert(row.Line.begin(), u"set");
    EXPECT_EQ(Run(row.Line), row.Result);
    EXPECT_EQ(Sets() - before, row.Sets) << row.Result;
  }
  EXPECT_EQ(values[16], Join(U64(90)));
  EXPECT_EQ(values[17], Join(U16(2), "-5"));
}

TEST_F(AttrCommandTest, Name_OfSeveralAttributes_AsksForTheHandle) {
  const Bytes bounds = Join(U64(0), U64(9), U32(0), U64(0));
  Add(21, 3, "Fan", bounds, Join(U64(1)));
  Add(22, 3, "Fan[Note]", bounds, Join(U64(2)));
  Add(23, 3, "24", bounds, Join(U64(3)));
  Add(24, 3, "Last", bounds, Join(U64(4)));
  const std::string several =
      "2 attr: several attributes are named Fan: 16 Fan, 21 Fan, 22 Fan[Note]; give the number in place of the name\n";
  const struct {
    Words Line;
    std::string Result;
    size_t Sets;
  } rows[] = {
      {{u"get", u"Fan"}, several, 0},
      {{u"get", u"-n", u"Fan"}, several, 0},
      {{u"info", u"Fan"}, several, 0},
      {{u"set", u"Fan", u"5"}, several, 0},
      {{u"set", u"-n", u"Fan", u"5"}, several, 0},
      {{u"get", u"Fan[Note]"}, "0 2\n", 0},
      {{u"get", u"16"}, "0 60\n", 0},
      {{u"set", u"0x15", u"5"}, "0 Fan: 1 -> 5\n", 1},
      {{u"set", u"-n", u"21", u"6"},
       "14 attr: no attribute 21; did you mean 24?\n",
       0},                            // the service would find another one of the name
      {{u"get", u"24"}, "0 3\n", 0},  // a name goes before a handle
      {{u"get", u"25"}, "14 attr: no attribute 25; did you mean 24?\n", 0},
  };
  for (const auto& row : rows) {
    const size_t before = Sets();
    EXPECT_EQ(Run(row.Line), row.Result);
    EXPECT_EQ(Sets() - before, row.Sets) << row.Result;
  }
  EXPECT_EQ(values[16], Join(U64(60)));
  EXPECT_EQ(values[21], Join(U64(5)));
}

TEST_F(AttrCommandTest, Name_InAnyCase_IsAcceptedIfUnique) {
  Add(21, 3, "FAN", Join(U64(0), U64(9), U32(0), U64(0)), Join(U64(1)));
  Add(22, 0, "Led", Join(U8(3), Name("On"), Name("ON"), Name("Off"), U8(0)), Join(U8(1), U8(2)));
  const struct {
    Words Line;
    std::string Result;
  } rows[] = {
      {{u"get", u"fan"},
       "2 attr: several attributes are named fan: 16 Fan, 21 FAN; give the number in place of the name\n"},
      {{u"get", u"FAN"}, "0 1\n"},
      {{u"set", u"Led", u"on"}, "2 attr: no such value; there are 0 On 1 ON 2 Off\n"},
      {{u"set", u"Led", u"ON"}, "0 Led: Off -> ON\n"},
      {{u"set", u"LED", u"OFF"}, "0 Led: ON -> Off\n"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Run(row.Line), row.Result);
  }
}

TEST_F(AttrCommandTest, Set_OfAForcedAttribute_PrintsCauseAndValue) {
  const Bytes bounds = Join(U64(0), U64(9), U32(0), U64(0));
  const Bytes states =
      Join(U8(3), Name("Off"), Name("On[ForceIf:Mode=Silent]"), Name("Half[ForceIfNot:Asset=X]"), U8(0));
  Add(21, 3, "Held[ForceIfNot:Fan=50][ForceIf:Fan=61][ForceIf:None=1][ForceIf:Setup=Fan]", bounds, Join(U64(1)));
  Add(22, 0, "Lamp", states, Join(U8(1), U8(0)));
  const struct {
    Words Line;
    std::string Result;
  } rows[] = {
      {{u"Held", u"2"}, "0 attr: Held is held at 1 while Fan is not 50\nHeld: 1 -> 2\n"},
      {{u"Held", u"2"}, "0 Held: 2 already, nothing sent\n"},
      {{u"Lamp", u"Half"}, "0 attr: Lamp is forced to On while Mode is Silent\nLamp: Off -> Half\n"},
      {{u"Lamp", u"Off"},
       "0 attr: Lamp is forced to On while Mode is Silent\nattr: Lamp is forced to Half while Asset is not X\n"
       "Lamp: Half -> Off\n"},
      {{u"Mode", u"Auto"},
       "0 attr: Mode is held at Silent while Fan is 60\nattr: Mode is forced to Silent while Fan is not 10\n"
       "Mode: Silent -> Auto\n"},
      {{u"Asset", u"X"}, "0 Asset: NB\\x7F1 -> X\n"},
      {{u"Fan", u"50"}, "0 Fan: 60 -> 50\n"},
      {{u"Lamp", u"On"}, "0 Lamp: Off -> On\n"},
      {{u"Held", u"1"}, "0 Held: 2 -> 1\n"},
  };
  for (auto row : rows) {
    row.Line.insert(row.Line.begin(), u"set");
    EXPECT_EQ(Run(row.Line), row.Result);
  }
}

TEST_F(AttrCommandTest, Set_WithN_SendsNameAndValueAsText) {
  const struct {
    Words Line;
    UINT16 Handle;
    Bytes Part;
    std::string Result;
    std::string_view Sent;
  } rows[] = {
      {{u"set", u"-n", u"Fan", u"0x0A"},
       16,
       Join(U64(10)),
       "0 Fan: 60 -> 10\n",
       "Fan\4\0\2\0"
       "10"sv},
      {{u"set", u"-n", u"Mode", u"0"}, 18, Join(U8(1), U8(0)), "0 Mode: Silent -> Auto\n", "60]\6\0\4\0Auto"sv},
      {{u"set", u"-n", u"Asset", u"a"}, 17, Join(U16(1), "a"), "0 Asset: NB\\x7F1 -> a\n", "^x$]\3\0\1\0a"sv},
  };
  for (const auto& row : rows) {
    namedHandle = row.Handle;
    namedPart = row.Part;
    EXPECT_EQ(Run(row.Line), row.Result);
    const Bytes sent = Sent(REQUEST_CLASS_ATTRIBUTES, REQUEST_SELECT_SET).back();
    EXPECT_THAT(std::string(sent.begin(), sent.end()), testing::HasSubstr(row.Sent));
  }
  namedValue = Join("two words");
  EXPECT_EQ(Run({u"get", u"-n", u"Fan"}), "0 two words\n");
  namedValue.clear();
  EXPECT_EQ(Run({u"get", u"-n", u"Fan"}), "0 \n");
}

TEST_F(AttrCommandTest, Set_WhenTheServiceRefuses_PrintsTheReason) {
  const struct {
    UINT8 Status;
    std::u16string Option;
    std::string Result;
  } rows[] = {
      {2, u"--", "15 attr: the service wants a password (-p) (Access Denied)\n"},
      {2, u"-p", "15 attr: the password is wrong, or not enough for this attribute (Access Denied)\n"},
      {3, u"--", "2 attr: the service refuses the value (Invalid Parameter)\n"},
      {1, u"--", "3 attr: the service does not know the attribute (Unsupported)\n"},
      {4, u"--", "5 attr: the service has no room for the value (Buffer Too Small)\n"},
      {9, u"--", "7 attr: the service did not handle the request (Aborted)\n"},
  };
  for (const auto& row : rows) {
    status = row.Status;
    keys = u"wrong\r";
    EXPECT_EQ(Run({u"set", row.Option, u"Fan", u"65"}), row.Result);
  }
  // The protocol does not report the refusal of a string; reading back shows it.
  EXPECT_EQ(Run({u"set", u"Asset", u"a"}),
            "27 attr: not taken, the value is still NB\\x7F1; a password may be wanted (-p)\n");
}

TEST_F(AttrCommandTest, Set_WithP_ReadsAHiddenPasswordAndSendsItsKey) {
  const struct {
    std::u16string Keys;
    std::string Result;
    UINT32 Key;
  } rows[] = {
      {u"sexx\b\bcret\r", "0 Fan: 60 -> 65\n", 0xC0DE000A},
      {u"Secret\r", "0 Fan: 65 -> 60\n", 0},
      {u"secret\x1B", "21 attr: cancelled, nothing sent\n", 1},
      {u"s\u00E9cret\r", "2 attr: not a password of up to 255 printable characters, nothing sent\n", 1},
      {std::u16string(256, u'x') + u"\r", "2 attr: not a password of up to 255 printable characters, nothing sent\n",
       1},
      {u"secret", "7 attr: no password can be read, nothing sent (Device Error)\n", 1},  // keyboard gone
  };
  passwords = {{10, "secret"}};
  std::u16string value = u"65";
  for (const auto& row : rows) {
    const size_t before = Sets();
    keys = row.Keys;
    prompted.clear();
    EXPECT_EQ(Run({u"set", u"Fan", value, u"-p"}), row.Result);
    EXPECT_EQ(prompted, "Password: \n");
    ASSERT_EQ(Sets() - before, row.Key == 1 ? 0U : 1U);
    if (row.Key != 1) {
      EXPECT_EQ(Middle(Sent(REQUEST_CLASS_ATTRIBUTES, REQUEST_SELECT_SET).back(), 8, kSize - 12), Join(row.Key));
    }
    value = u"60";
    values[16] = Join(U64(row.Key == 0 ? 65 : values[16][0]));
  }
}

TEST_F(AttrCommandTest, Command_WithoutDriverServiceOrValue_PrintsWhichIsMissing) {
  // No operation of an unloaded driver is called: each would crash here.
  const auto table = *protocol;
  *protocol = {};
  EXPECT_EQ(Run({u"list"}), "25 attr: the attribute driver is of another revision (Incompatible Version)\n");
  gBS->UninstallProtocolInterface(gImageHandle, &gEfiLoadedImageProtocolGuid, &uefi.LoadedImage);
  EXPECT_EQ(Run({u"list"}), "6 attr: the attribute driver has been unloaded (Not started)\n");
  uefi.Install(gEfiLoadedImageProtocolGuid, &uefi.LoadedImage, gImageHandle);
  *protocol = table;

  after = [](RequestBlock&) -> EFI_STATUS { return EFI_TIMEOUT; };
  EXPECT_EQ(Run({u"list"}), "6 attr: the attribute service does not answer (Not Ready)\n");
  EXPECT_EQ(Run({u"get", u"Fan"}), "6 attr: the attribute service does not answer (Not Ready)\n");
  after = nullptr;
  EXPECT_EQ(Run({u"get", u"Fan"}), "0 60\n");

  // Tables are there, values are not.
  after = [](RequestBlock& request) -> EFI_STATUS {
    request.Results[0] = request.Select == REQUEST_SELECT_VALUE ? 1 : 0;
    return EFI_SUCCESS;
  };
  EXPECT_EQ(Run({u"list", u"Fan"}), "0 Fan = ?\n");
  EXPECT_EQ(Run({u"list", u"-l", u"Fan"}), "0 16 Fan integer = ?\n");
  EXPECT_EQ(Run({u"set", u"Fan", u"65"}), "7 attr: the service did not handle the request (Aborted)\n");
  after = nullptr;

  linesTaken = 1;
  EXPECT_EQ(Run({u"list"}), "21 AdminPassword = hidden\nFan = 60\n");
  linesTaken = SIZE_MAX;
  breakPressed = true;
  EXPECT_EQ(Run({u"list"}), "21 ");
}

TEST_F(AttrCommandTest, List_WithAnUnknownType_PrintsThatTheRestIsHidden) {
  Add(21, 9, "Odd", {}, {});
  EXPECT_EQ(Run({u"list", u"Fan"}), "3 Fan = 60\nattr: an attribute of unknown type hides itself and all after it\n");
}

// Every pointer and count lies within the record. The sanitizer reports any other read.
TEST(AttrRecordTest, Parse_OfAnyRecord_StaysInIt) {
  for (unsigned type = 0; type < 9; ++type) {
    for (unsigned fill = 0; fill < 256; fill += 15) {
      for (size_t size = 0; size < 64; ++size) {
        Bytes record = Join(U32(type), U16(16), U16(16), Bytes(size, U8(fill)));
        Attribute attribute;
        ParseAttribute(reinterpret_cast<AttributeInfo*>(record.data()), record.size(), &attribute);
        if (attribute.HasParts) {
          ASSERT_LT(type, 7U);
          ASSERT_LE(attribute.ValueOffset, record.size());
          ASSERT_LE(attribute.CurrentCount * (type == 5 ? 2 : 1), record.size() - attribute.ValueOffset);
        }
      }
    }
  }
}

}  // namespace
