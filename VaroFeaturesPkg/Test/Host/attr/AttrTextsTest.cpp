/** @file
  Tests of the texts that attr prints of an attribute: they come from the driver's constants, or from the setup question
  that the published store and the form data lead to.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/attr/AttrFixture.hpp"

extern "C" {
#include <Corvane/AttributeRecord.h>
#include <Guid/GlobalVariable.h>
#include <Protocol/FormBrowserData.h>
#include <Protocol/PublishedTables.h>
}

namespace {

using Texts = std::map<std::string, std::u16string>;

class AttrTextsTest : public AttrFixture {
 protected:
  AttrTextsTest() {
    self_ = this;
    published_.Store = store_.get();
    browser_.ListFormSets = [](FormBrowserDataProtocol*, const EFI_GUID* kind, const FormSetRecord*** list) {
      EXPECT_TRUE(SameGuid(*kind, gVaroSetupFormSetsGuid));
      *list = static_cast<const FormSetRecord**>(self_->uefi.GivePool((self_->formSets_.size() + 1) * sizeof(void*)));
      const FormSetRecord** next = *list;
      for (const FormSet& formSet : self_->formSets_) {
        *next++ = &formSet.Record;
      }
      *next = nullptr;
      return EFI_STATUS{EFI_SUCCESS};
    };
    browser_.ParseFormSet = [](FormBrowserDataProtocol*, const FormSetRecord* record, QuestionRecord** questions) {
      for (FormSet& formSet : self_->formSets_) {
        if (&formSet.Record == record) {
          *questions = formSet.Questions.empty() ? nullptr : &formSet.Questions.front();
        }
      }
      ++self_->questionListsOut_;
      return EFI_STATUS{EFI_SUCCESS};
    };
    browser_.ReleaseQuestions = [](FormBrowserDataProtocol*, QuestionRecord*) {
      --self_->questionListsOut_;
      return EFI_STATUS{EFI_SUCCESS};
    };
  }

  /// Adds an attribute to the service's tables and to the published store.
  void AddAttribute(UINT16 handle, std::string_view name, UINT32 token, unsigned type = 3) {
    const bool collection = type == 0x85;
    Add(handle, type, name, collection ? Bytes(4) : Join(U64(0), U64(9), U32(0), U64(0)),
        collection ? Bytes(1) : Join(U64(1)));
    AddRecord(handle, name, token);
  }
  void AddRecord(UINT16 handle, std::string_view name, UINT32 token) {
    const UINT16 nameHandle = Name(name);
    Ucs2String& text = names_.emplace_back(name.begin(), name.end());
    store_->Slots[ATTRIBUTE_STORE_ATTRIBUTES + handle] =
        &records_.emplace_back(AttributeRecord{handle, 3, nameHandle, 1, token});
    store_->Slots[ATTRIBUTE_STORE_NAMES + nameHandle] = text.data();
  }
  void AddFormSet(const std::u16string& title, const EFI_GUID& guid = {}) {
    const EFI_HII_HANDLE package = uefi.AddPackageList();
    formSets_.push_back({{guid, package, uefi.AddString(package, {{"en-US", title}})}, {}});
  }
  QuestionRecord& AddQuestion(UINT32 identifier, const Texts& prompt, const Texts& help) {
    static constexpr EFI_IFR_OP_HEADER kIfr{};
    FormSet& formSet = formSets_.back();
    QuestionRecord& question = formSet.Questions.emplace_back();
    question.Ifr = &kIfr;
    question.Identifier = identifier;
    question.HiiHandle = formSet.Record.HiiHandle;
    question.Prompt = uefi.AddString(question.HiiHandle, prompt);
    question.Help = help.empty() ? EFI_STRING_ID{0} : uefi.AddString(question.HiiHandle, help);
    if (formSet.Questions.size() > 1) {
      formSet.Questions[formSet.Questions.size() - 2].Next = &question;
    }
    return question;
  }
  void SetUp() override {
    Install();
    uefi.Install(gEfiHiiStringProtocolGuid, &uefi.HiiString);
    uefi.Install(gVaroFormBrowserDataProtocolGuid, &browser_);
    uefi.Install(gVaroPublishedTablesProtocolGuid, &published_);
    AddAttribute(1, "AdminPassword[RegEx:^\\\\133\\\\x20-\\\\x7e\\\\135{0,32}$]", 0);
    AddAttribute(16, "Start", 300);
    AddAttribute(17, "Tag[Note]", 301);
    AddAttribute(18, "FrontFan", 1879);
    AddAttribute(19, "PowerSetup", 0, 0x85);
    AddAttribute(20, "Twice", 302);
    AddAttribute(21, "Gone", 303);
    AddAttribute(22, "NoToken", 0);
    Add(23, 3, "NoRecord", Join(U64(0), U64(9), U32(0), U64(0)), Join(U64(1)));
    Add(24, 3, "Renamed", Join(U64(0), U64(9), U32(0), U64(0)), Join(U64(1)));
    AddRecord(24, "Start", 300);
    AddAttribute(25, "Same", 0, 0x85);
    AddAttribute(26, "FrontFan", 1879);
    AddAttribute(27, "ChargePowerLimitFactoryFlag", 12054);
    AddAttribute(28, "Late", 304);

    AddFormSet(u"Power Setup\u00E9");
    AddQuestion(300, {{"en-US", u"Start of charging"}, {"fr-FR", u"D\u00E9but"}}, {{"en-US", u"When it starts."}});
    AddQuestion(301, {{"en-US", u"Tag"}}, {});
    AddQuestion(1879, {{"en-US", u"Fan in front"}}, {});
    AddQuestion(302, {{"en-US", u"First"}}, {});
    AddQuestion(300, {{"en-US", u"No question"}}, {}).Ifr = nullptr;
    AddFormSet(u"Same");
    AddQuestion(302, {{"en-US", u"Second"}}, {});
    AddQuestion(304, {{"en-US", u"Later"}}, {{"en-US", u""}});
    AddFormSet(u"Sa me");
    AddFormSet(u"Hidden", gVaroSetupHiddenFormSetGuid);
    AddQuestion(300, {{"en-US", u"Hidden"}}, {});
    AddFormSet(u"Setup", gVaroSetupFormSetsGuid);
    AddQuestion(300, {{"en-US", u"Setup"}}, {});
  }
  void TearDown() override { EXPECT_EQ(questionListsOut_, 0); }

  /// What `info` prints of an attribute after its value: "display|help".
  std::string TextsOf(const std::u16string& name) {
    const std::string printed = Run({u"info", name});
    std::string texts;
    for (const std::string_view label : {"Display:  ", "Help:     "}) {
      if (const size_t at = printed.find(label); at != std::string::npos) {
        const size_t start = at + label.size();
        texts += (texts.empty() ? "" : "|") + printed.substr(start, printed.find('\n', at) - start);
      }
    }
    return texts;
  }
  void SetLanguage(std::string_view language) {
    uefi.Variables[{Ucs2(u"PlatformLang"), gEfiGlobalVariableGuid}] = {EFI_VARIABLE_BOOTSERVICE_ACCESS, Join(language)};
  }

  PublishedTablesInterface published_{};

 private:
  struct FormSet {
    FormSetRecord Record;
    std::deque<QuestionRecord> Questions;
  };
  inline static AttrTextsTest* self_ = nullptr;
  FormBrowserDataProtocol browser_{};
  std::unique_ptr<AttributeStore> store_ = std::make_unique<AttributeStore>();
  std::deque<AttributeRecord> records_;
  std::deque<Ucs2String> names_;
  std::deque<FormSet> formSets_;
  int questionListsOut_ = 0;
};

struct Expected {
  std::u16string Name;
  std::string Texts;
};

TEST_F(AttrTextsTest, Texts_ComeFromQuestionOrDriver_AndAreLeftOutIfUncertain) {
  const Expected rows[] = {
      {u"AdminPassword", "Admin Password"},
      {u"Start", "Start of charging|When it starts."},
      {u"Tag", "Tag"},
      {u"18", "Fan in front"},  // a setup question of the name of a platform attribute
      {u"PowerSetup", "Power Setup\xE9"},
      {u"Twice", ""},     // two questions have its token
      {u"Gone", ""},      // no question has its token
      {u"NoToken", ""},   // tokens of 0 do not fit each other
      {u"NoRecord", ""},  // not in the published store
      {u"Renamed", ""},   // another attribute in the published store
      {u"Same", ""},      // the titles of two form sets become this name
      {u"26", "Front Fan"},
      {u"ChargePowerLimitFactoryFlag",
       "Charge Power Limit Factory Flag|A flag to configure charging performance limitation for EU products."},
      {u"Late", "Later"},
  };
  for (const auto& [name, texts] : rows) {
    EXPECT_EQ(TextsOf(name), texts) << testing::PrintToString(name);
  }
}

TEST_F(AttrTextsTest, Texts_AreInThePlatformsLanguage) {
  SetLanguage("fr-FR");
  EXPECT_EQ(TextsOf(u"Start"),
            "D\xE9"
            "but");
  EXPECT_EQ(TextsOf(u"PowerSetup"), "");
  SetLanguage(std::string(100, 'x'));
  EXPECT_EQ(TextsOf(u"Start"), "Start of charging|When it starts.");
}

TEST_F(AttrTextsTest, Texts_WithoutStoreOrForms_AreOnlyTheDriversOwn) {
  published_.Store = nullptr;
  EXPECT_EQ(TextsOf(u"Start"), "");
  EXPECT_EQ(TextsOf(u"26"), "Front Fan");
  for (const EFI_GUID* guid :
       {&gVaroPublishedTablesProtocolGuid, &gVaroFormBrowserDataProtocolGuid, &gEfiHiiStringProtocolGuid}) {
    uefi.LookupStatus[*guid] = EFI_NOT_FOUND;
    EXPECT_EQ(TextsOf(u"Start"), "");
    EXPECT_EQ(TextsOf(u"26"), "Front Fan");
    uefi.LookupStatus.clear();
  }
  // A list that is cut does not show where the setup's attributes end.
  Add(29, 9, "Odd", {}, {});
  Forget();
  EXPECT_EQ(TextsOf(u"26"), "");
}

TEST_F(AttrTextsTest, Texts_WhenACallFails_AreMissingButNeverWrong) {
  const std::string whole = TextsOf(u"Start");
  for (const Service service : {Service::Allocation, Service::HiiString}) {
    const size_t before = uefi.Calls(service);
    ASSERT_EQ(TextsOf(u"Start"), whole);
    for (size_t nth = uefi.Calls(service) - before; nth > 0; --nth) {
      uefi.Fail(service, nth, EFI_OUT_OF_RESOURCES);
      const std::string texts = TextsOf(u"Start");
      EXPECT_TRUE(texts == whole || texts.empty() || texts == "Start of charging" || texts == "When it starts.")
          << texts;
    }
  }
}

}  // namespace
