/** @file
  Tests of the walk over the form sets and of the attributes made of their questions.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/NotebookFixture.hpp"

namespace {

class FormSetsTest : public NotebookFixture {
 protected:
  FormSetsTest() {
    notebook.Settings[1843] = notebook.Settings[1340] = {0, EFI_NOT_FOUND};  // only what comes from form sets
  }
  FakeFormSet& setup = notebook.AddFormSet(u"System Setup");
};

TEST_F(FormSetsTest, Question_OfEveryKind_BecomesAnAttribute) {
  setup.OneOf(300, u"BootMode[ForceIf:SecureBoot=Enabled]", u"Boot Mode")
      .Help(u"How the system starts.")
      .Value(9)
      .Option(1, u"Uefi", u"UEFI")
      .Option(2, u"Legacy", u"Boot Mode")
      .Option(9, u"Both", u"Any");
  setup.Checkbox(301, u"SecureBoot", u"Secure Boot").Value(1);
  setup.Numeric(302, u"Volume", u"Volume").Bounds(2, 0x1122334455667788, 3).Value(77, 8);
  setup.String(303, u"Asset", u"Asset Tag").Bounds(1, 64).Text("tag 1").Value(0, 130);
  setup.String(304, u"Owner", u"Boot Mode").Help(u"Not kept").Text(std::nullopt);
  setup.Question(EFI_IFR_ACTION_OP, 305, u"Action", u"Action");
  setup.Checkbox(306, u"Hidden", u"Hidden").Ineligible();
  setup.Checkbox(307, u"Text", u"Text").WithoutIfr();
  FakeFormSet& other = notebook.AddFormSet(u"Empty Set");
  other.Checkbox(301, u"SecureBoot", u"Secure Boot");  // has its token already
  notebook.Defaults = {{300, 2}, {301, 1}, {302, 0x0102030405060708}};
  Gather();
  EXPECT_THAT(Attributes(),
              ElementsAre("16 BootMode[ForceIf:SecureBoot=Enabled] #300/1 enum Uefi=1|Legacy=2|Both=9 1,2",
                          "17 SecureBoot #301/1 enum Disabled=0|Enabled=1 1,1",
                          "18 Volume #302/8 int 2..1234605616436508552/3 72623859790382856,77",
                          "19 Asset #303/130 str 1..64 tag 1", "20 Owner #304/1 str 0..0 (null)",
                          "21 SystemSetup! #0/0 set 16 17 18 19 20", "22 EmptySet! #0/0 set"));
  EXPECT_THAT(Strings(StringArray::Display),
              ElementsAre("Boot Mode", "UEFI", "*Boot Mode", "Any", "Secure Boot", "Disabled", "Enabled", "Volume",
                          "Asset Tag", "**Boot Mode", "System Setup", "Empty Set"));
  Texts helps = Strings(StringArray::Help);
  EXPECT_EQ(helps.front(), "How the system starts.");
  helps.erase(helps.begin());
  // A question without help gets an empty one, unless its display text is shared. Options have no help.
  EXPECT_THAT(helps,
              ElementsAre("(none)", "(none)", "(none)", "", "(none)", "(none)", "", "", "(none)", "(none)", "(none)"));
  EXPECT_EQ(Database().Store()->Header.HelpCount, 4U);
  EXPECT_FALSE(mState.Setup.AllValuesAtDefault);
}

TEST_F(FormSetsTest, SpecialIdentifiers_GetTheirNamesValuesAndBounds) {
  struct Row {
    UINT32 Identifier;
    std::u16string Keyword;
    std::string Name;
    std::string Attribute = "/4 enum Disabled=0|Enabled=1 0,0";
    UINT8 Opcode = EFI_IFR_CHECKBOX_OP;
    bool Switch = false;
  };
  const std::string plain = Row().Attribute;
  const UINT8 numeric = EFI_IFR_NUMERIC_OP;
  const Row rows[] = {
      {1248, u"Sunday", "Sunday"},
      {1249, u"Sunday", "Auto On Sunday"},
      {1252, u"Wednesday", "Auto On Wednesday"},
      {1252, u"Monday", "Monday"},
      {1255, u"Saturday", "Auto On Saturday"},
      {1256, u"Saturday", "Saturday"},
      {1163, u"", "Boot List"},
      {1163, u"Given", "Given"},
      {1568, u"K", "K", plain, EFI_IFR_CHECKBOX_OP, true},
      {1569, u"K", "K", plain, EFI_IFR_CHECKBOX_OP, true},
      {1578, u"K", "K", plain, EFI_IFR_CHECKBOX_OP, true},
      {1655, u"K", "K", plain, EFI_IFR_CHECKBOX_OP, true},
      {1656, u"K", "K", plain, EFI_IFR_CHECKBOX_OP, true},
      {1657, u"K", "K"},
      {1414, u"K", "K", "/4 enum Disabled=0|Enabled[ForceIf:BiosRcvrFrmHdd=Enabled]=1 0,0"},
      {1137, u"K", "K",
       "/4 enum Disabled[ForceIf:TpmSecurity=Disabled][ForceIf:Virtualization=Disabled]"
       "[ForceIf:VtForDirectIo=Disabled][ForceIfNot:CpuCore=CoresAll]=0|Enabled=1 0,0"},
      {1052, u"K", "K", "/4 enum Disabled[ForceIf:SecureBoot=Enabled]=0|Enabled=1 0,0"},
      {38237, u"K", "K!"},
      {1809, u"K", "K", "/4 int 50..95/5 0,0", numeric},
      {1812, u"K", "K", "/4 int 50..95/5 0,0", numeric},
      {1810, u"K", "K", "/1 int 55..100/5 0,0", numeric},
      {1813, u"K", "K", "/1 int 55..100/5 0,0", numeric},
      {1142, u"K", "K", "/4 int 0..23/5 0,0", numeric},
      {1811, u"K", "K", "/4 int 1..9/5 0,0", numeric},
  };
  for (const Row& row : rows) {
    notebook.FactoryMode = row.Identifier == 38237;
    setup.Questions.clear();
    setup.Question(row.Opcode, row.Identifier, row.Keyword, u"P").Bounds(1, 9, 5).Value(0, 4);
    GatherAnew();
    EXPECT_EQ(Attribute(16), "16 " + row.Name + " #" + std::to_string(row.Identifier) + row.Attribute);
    EXPECT_EQ(Strings(StringArray::Display).front(), row.Switch ? "P Switch" : "P");
    if (row.Opcode != numeric) {  // the two values' texts are those of their names, annotations included
      const auto& body = As<EnumerationRecord>(*Database().AttributeAt(16));
      EXPECT_EQ(Strings(StringArray::Display).at(1),
                TextOf(Database(), StringArray::Names, body.PossibleValueNames[0]));
    }
  }
}

TEST_F(FormSetsTest, Identifiers_AreEligibleByListAndMode) {
  const std::tuple<std::vector<UINT32>, bool, bool> rows[] = {
      {{9346, 1216, 121, 377, 1099, 38237, 3727}, false, true},
      {{1163, 1, 2, 1275, 1337}, true, true},
      {{1276, 9781, 50860, 1797, 1798, 1377, 1376, 1228, 1262, 1263, 1264, 1265, 1266, 1267, 1268, 1336}, false, false},
  };
  for (const bool factory : {false, true}) {
    notebook.FactoryMode = factory;
    for (const auto& [identifiers, ordinary, inFactory] : rows) {
      setup.Questions.clear();
      for (const UINT32 identifier : identifiers) {
        setup.Numeric(identifier, u"K", u"P");
      }
      GatherAnew();
      for (const UINT32 identifier : identifiers) {
        EXPECT_EQ(!ByToken(identifier).empty(), factory ? inFactory : ordinary) << identifier << factory;
      }
    }
  }
  // One identifier may occur twice.
  notebook.FactoryMode = false;
  setup.Questions.clear();
  for (const UINT32 identifier : {1163, 1163, 300, 300}) {
    setup.Numeric(identifier, u"K", u"P");
  }
  GatherAnew();
  EXPECT_EQ(Attribute(19), "19 SystemSetup! #0/0 set 16 17 18");
}

TEST_F(FormSetsTest, DefaultAndCurrentValue_SelectTheirIndices) {
  const std::tuple<std::optional<UINT64>, UINT64, std::string, std::string, bool> rows[] = {
      {std::nullopt, 0, "1,1", "0,0", true},  // the one-of default byte is then 0
      {UINT64{1}, 1, "2,2", "1,1", true},     // the last match wins
      {UINT64{1}, 0, "2,1", "1,0", false},
      {UINT64{7}, 7, "0,0", "0,0", true},       // the checkbox falls back to its default
      {UINT64{0x101}, 1, "2,2", "1,1", true},   // one byte counts
      {std::nullopt, 300, "1,4", "0,0", false}  // and never equals a value above 255
  };
  for (const auto& [byDefault, current, oneOf, checked, atDefault] : rows) {
    notebook.Defaults.clear();
    if (byDefault) {
      notebook.Defaults = {{300, *byDefault}, {301, *byDefault}};
    }
    setup.Questions.clear();
    setup.OneOf(300, u"O", u"O").Value(current).Option(5, u"a", u"a").Option(0, u"b", u"b").Option(1, u"c", u"c");
    setup.Checkbox(301, u"C", u"C").Value(current);
    notebook.QuestionOf(300).Option(0x105, u"d", u"d").Option(300, u"e", u"e");
    GatherAnew();
    EXPECT_THAT(Attribute(16), testing::EndsWith(" " + oneOf));
    EXPECT_THAT(Attribute(17), testing::EndsWith(" " + checked));
    EXPECT_EQ(mState.Setup.AllValuesAtDefault, atDefault);
  }
  notebook.Absent.insert(gVaroSettingDefaultsProtocolGuid);
  GatherAnew();
  EXPECT_THAT(Attribute(16), testing::EndsWith("1,4"));
}

TEST_F(FormSetsTest, GetDefault_OfEachKind_AnnouncesItsWidth) {
  static std::map<UINT32, UINT64> widths;
  widths.clear();
  notebook.InstallProtocols();
  notebook.Uefi.Find<SettingDefaultsProtocol>(gVaroSettingDefaultsProtocolGuid)->GetDefault =
      [](UINT32 identifier, const EFI_GUID*, UINT64* size, VOID*) -> EFI_STATUS {
    widths[identifier] = *size;
    return EFI_NOT_FOUND;
  };
  setup.OneOf(300, u"O", u"O");
  setup.Checkbox(301, u"C", u"C");
  setup.Numeric(302, u"N", u"N");
  Gather();
  EXPECT_EQ(widths, (std::map<UINT32, UINT64>{{300, 1}, {301, 1}, {302, 8}}));
}

TEST_F(FormSetsTest, Walk_After241CountedQuestions_AddsOnlyCollections) {
  for (UINT32 i = 0; i < 241; ++i) {
    setup.Checkbox(2000 + i, u"K", u"P");
  }
  setup.Numeric(3000, u"Still", u"P");
  setup.Checkbox(3001, u"K", u"P");
  setup.Numeric(3002, u"NoMore", u"P");
  notebook.AddFormSet(u"Later").Numeric(3003, u"NoMore", u"P");
  Gather();
  EXPECT_EQ(Database().GetAttributeCount(), 244U);
  EXPECT_EQ(ByToken(3000), "257 Still #3000/1 int 0..0/0 0,0");
  EXPECT_EQ(ByToken(3002) + ByToken(3003), "");
  EXPECT_EQ(As<CollectionRecord>(*Database().AttributeAt(258)).ItemCount, 242);
  EXPECT_EQ(Attribute(259), "259 Later! #0/0 set");
  EXPECT_TRUE(mState.Setup.AttributeLimitReached);
}

TEST_F(FormSetsTest, Options_AreCountedInEightBits) {
  FakeQuestion& question = setup.OneOf(300, u"K", u"P");
  for (UINT64 i = 0; i < 258; ++i) {
    question.Option(i, u"o", u"o");
  }
  Gather();
  EXPECT_EQ(Attribute(16), "16 K #300/1 enum o=0|o=1 0,0");
  // An option whose name is known brings no display text.
  EXPECT_THAT(Strings(StringArray::Display), ElementsAre("P", "o", "System Setup"));
}

TEST_F(FormSetsTest, Walk_SkipsUnreadableAndHiddenFormSets) {
  setup.Checkbox(300, u"K", u"P");
  FakeFormSet& broken = notebook.AddFormSet(u"Broken");
  broken.ParseStatus = EFI_DEVICE_ERROR;
  notebook.AddFormSet(u"Hidden").Guid = gVaroSetupHiddenFormSetGuid;
  notebook.AddFormSet(u"Kind").Guid = gVaroSetupFormSetsGuid;
  notebook.AddFormSet(u"Last One");
  Gather();
  EXPECT_THAT(Attributes(), ElementsAre("16 K #300/1 enum Disabled=0|Enabled=1 0,0", "17 SystemSetup! #0/0 set 16",
                                        "18 LastOne! #0/0 set"));
  EXPECT_EQ(notebook.FormSetsParsed, 3U);

  notebook.FormSets.clear();
  GatherAnew();
  EXPECT_THAT(Attributes(), IsEmpty());
  notebook.SignalTablesRequested();
  EXPECT_NE(notebook.Published(), nullptr);  // a setup without form sets is not a failure
}

TEST_F(FormSetsTest, Texts_FollowThePlatformLanguage) {
  setup.Numeric(300, u"K", u"P").WithoutKeyword();
  setup.String(301, u"L", std::u16string(175, u'x')).Help(u"of a text that is too long");
  Gather();
  EXPECT_EQ(Attribute(16), "16 P #300/1 int 0..0/0 0,0");  // no keyword: the prompt
  EXPECT_EQ(Attribute(17), "17 L #301/1 str 0..0 (null)");
  EXPECT_EQ(Database().Store()->Header.HelpCount, 1U);
  notebook.PlatformLanguage = "fr-FR";
  GatherAnew();
  EXPECT_EQ(Attribute(16), "16  #300/1 int 0..0/0 0,0");
  EXPECT_EQ(Attribute(18), "18 ! #0/0 set 16 17");
  notebook.PlatformLanguage.reset();  // en-US
  GatherAnew();
  EXPECT_EQ(Attribute(16), "16 P #300/1 int 0..0/0 0,0");
}

TEST_F(FormSetsTest, Options_OfOneText_AreReadOnceInAFormSet) {
  const auto addQuestion = [&](FakeFormSet& formSet, UINT32 identifier, const std::u16string& name) {
    formSet.OneOf(identifier, name, name).Option(0, u"Off", u"Text off").Option(1, u"On", u"Text on");
  };
  const auto reads = [&] {
    GatherAnew();
    return notebook.Uefi.Calls(Service::HiiString);
  };
  addQuestion(setup, 300, u"A");
  const size_t ofOne = reads();
  addQuestion(setup, 301, u"B");
  const size_t ofTwo = reads();
  EXPECT_EQ(ofTwo, ofOne + 2);  // keyword and prompt of the question
  addQuestion(notebook.AddFormSet(u"Other"), 302, u"C");
  const size_t ofThree = reads();

  // A read that fails costs the text of that read alone.
  for (size_t failing = 1; failing <= ofThree; ++failing) {
    notebook.Reboot();
    notebook.Uefi.Fail(Service::HiiString, failing, EFI_OUT_OF_RESOURCES);
    Gather();
    size_t whole = 0;
    for (const std::string& attribute : Attributes()) {
      whole += attribute.find("enum Off=0|On=1") != std::string::npos ? 1 : 0;
    }
    EXPECT_GE(whole, 2U) << failing;
  }
}

TEST_F(FormSetsTest, Question_WhoseNameGetsNoHandle_IsDroppedWithItsTexts) {
  const std::u16string tooLong(0x8000, u'n');
  setup.Checkbox(300, tooLong, u"Long").Help(u"Help");
  setup.OneOf(301, tooLong, u"Long too").Option(1, u"One", u"First");
  setup.Numeric(302, u"Kept", u"Kept");
  notebook.AddFormSet(tooLong);
  Gather();
  EXPECT_THAT(Attributes(), ElementsAre("16 Kept #302/1 int 0..0/0 0,0", "17 SystemSetup! #0/0 set 16"));
  EXPECT_THAT(Strings(StringArray::Display), ElementsAre("Kept", "System Setup"));
  EXPECT_EQ(notebook.Uefi.Warnings("name of 32768 characters dropped"), 3U);
  EXPECT_EQ(notebook.Uefi.Warnings(), 3U + 2U);  // and the two platform attributes without a setting
}

TEST_F(FormSetsTest, LostQuestionsAndHelpTexts_AreReported) {
  setup.Checkbox(300, u"One", u"Same").Help(u"Kept");
  setup.Checkbox(301, u"Two", u"Same").Help(u"Lost");
  notebook.AddFormSet(u"Other").Checkbox(300, u"Three", u"Three");
  Gather();
  const auto reported = [this](std::string_view text) {
    return std::ranges::count_if(notebook.Uefi.DebugMessages,
                                 [&](const auto& message) { return message.Text.find(text) != std::string::npos; });
  };
  EXPECT_EQ(reported("help text of \"Two\" left out"), 1);
  EXPECT_EQ(reported("question 300 \"Three\" left out: attribute \"One\" has this identifier"), 1);
  EXPECT_EQ(reported("left out"), 2);
}

}  // namespace
