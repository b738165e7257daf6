/** @file
  A setup for the form walk.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Bench/FormWalk.hpp"

#include <cstring>
#include <deque>

#include "sources/FormSets.hpp"
#include "uefi/Status.hpp"

extern "C" {
#include <Protocol/HiiString.h>
#include <Uefi/UefiInternalFormRepresentation.h>
}

namespace {

using Text = std::basic_string<CHAR16>;

constexpr size_t kQuestionsPerFormSet = 20;
constexpr CHAR8 kLanguages[] = "en-US;x-UEFI";

/// A string of the package list: its text, and the keyword that it has in "x-UEFI".
struct HiiEntry {
  Text English;
  Text Keyword;
};

class WalkedSetup {
 public:
  explicit WalkedSetup(const AttributeDatabase& model) {
    UINT16 slot = 0;
    UINT16 display = kFirstHandle;
    while (const AttributeRecord* const record = model.NextAttribute(slot)) {
      if (BaseType(*record) == AttributeType::Enumeration) {
        AddQuestion(model, As<EnumerationRecord>(*record), StringHandle{display++});
      }
    }
    for (size_t i = 0; i < questions_.size(); ++i) {
      if (i % kQuestionsPerFormSet == 0) {
        const Text title{'F', 'o', 'r', 'm', ' ', static_cast<CHAR16>('A' + i / kQuestionsPerFormSet)};
        formSets_.push_back({{0x1000, static_cast<UINT16>(i), 0, {}}, this, Add(title, {})});
        first_.push_back(&questions_[i]);
      } else {
        questions_[i - 1].Next = &questions_[i];
      }
    }
  }

  [[nodiscard]] const std::deque<FormSetRecord>& FormSets() const { return formSets_; }
  [[nodiscard]] QuestionRecord* QuestionsOf(const FormSetRecord* formSet) {
    for (size_t i = 0; i < formSets_.size(); ++i) {
      if (&formSets_[i] == formSet) {
        return first_[i];
      }
    }
    return nullptr;
  }
  [[nodiscard]] const HiiEntry* StringOf(EFI_STRING_ID id) const {
    return id != 0 && id <= strings_.size() ? &strings_[id - 1] : nullptr;
  }

 private:
  EFI_STRING_ID Add(const Text& english, const Text& keyword) {
    strings_.push_back({english, keyword});
    return static_cast<EFI_STRING_ID>(strings_.size());
  }

  void AddQuestion(const AttributeDatabase& model, const EnumerationRecord& record, StringHandle display) {
    static constexpr EFI_IFR_OP_HEADER kIfr{EFI_IFR_ONE_OF_OP, sizeof(EFI_IFR_ONE_OF), 1};
    std::vector<QuestionOption>& options = options_.emplace_back();
    for (UINT8 i = 0; i < record.PossibleValueCount; ++i) {
      const Text name = model.GetNameString(StringHandle{record.PossibleValueNames[i]});
      options.push_back({record.PossibleValues[i], Add(name, name)});
    }
    QuestionRecord& question = questions_.emplace_back();
    question.Ifr = &kIfr;
    question.Identifier = record.Head.Token;
    question.Opcode = EFI_IFR_ONE_OF_OP;
    question.Eligible = 1;
    question.ValueSize = 1;
    question.Prompt = Add(model.GetDisplayString(display), model.GetNameString(StringHandle{record.Head.NameHandle}));
    question.Help = Add(model.GetHelpString(display), {});
    question.HiiHandle = this;
    question.OptionCount = static_cast<UINT32>(options.size());
    question.Options = options.data();
  }

  std::deque<HiiEntry> strings_;
  std::deque<std::vector<QuestionOption>> options_;
  std::deque<QuestionRecord> questions_;
  std::deque<FormSetRecord> formSets_;
  std::vector<QuestionRecord*> first_;
};

WalkedSetup* gSetup = nullptr;

EFI_STATUS EFIAPI GetString(const EFI_HII_STRING_PROTOCOL*, const CHAR8* language, EFI_HII_HANDLE, EFI_STRING_ID id,
                            EFI_STRING text, UINTN* size, EFI_FONT_INFO**) {
  const CountPause pause;
  const HiiEntry* const entry = gSetup->StringOf(id);
  if (entry == nullptr) {
    return EFI_NOT_FOUND;
  }
  const Text& found = std::strcmp(language, "x-UEFI") == 0 ? entry->Keyword : entry->English;
  if (found.empty()) {
    return EFI_NOT_FOUND;
  }
  const UINTN room = std::exchange(*size, (found.size() + 1) * sizeof(CHAR16));
  if (room < *size) {
    return EFI_BUFFER_TOO_SMALL;
  }
  std::memcpy(text, found.c_str(), *size);
  return EFI_SUCCESS;
}

EFI_STATUS EFIAPI GetLanguages(const EFI_HII_STRING_PROTOCOL*, EFI_HII_HANDLE, CHAR8* languages, UINTN* size) {
  const CountPause pause;
  const UINTN room = std::exchange(*size, sizeof(kLanguages));
  if (room < *size) {
    return EFI_BUFFER_TOO_SMALL;
  }
  std::memcpy(languages, kLanguages, sizeof(kLanguages));
  return EFI_SUCCESS;
}

EFI_STATUS EFIAPI ListFormSets(FormBrowserDataProtocol*, const EFI_GUID*, const FormSetRecord*** formSets) {
  const CountPause pause;
  const std::deque<FormSetRecord>& all = gSetup->FormSets();
  auto** const list = static_cast<const FormSetRecord**>(AllocateZeroedBytes(all.size() + 1, sizeof(FormSetRecord*)));
  std::ranges::transform(all, list, [](const FormSetRecord& formSet) { return &formSet; });
  *formSets = list;
  return EFI_SUCCESS;
}

EFI_STATUS EFIAPI ParseFormSet(FormBrowserDataProtocol*, const FormSetRecord* formSet, QuestionRecord** questions) {
  const CountPause pause;
  *questions = gSetup->QuestionsOf(formSet);
  return EFI_SUCCESS;
}

EFI_STATUS EFIAPI ReleaseQuestions(FormBrowserDataProtocol*, QuestionRecord*) {
  return EFI_SUCCESS;
}

}  // namespace

size_t MeasureFormWalk(const AttributeDatabase& model, AttributeDatabase& database, const std::string& what) {
  WalkedSetup setup(model);
  gSetup = &setup;
  EFI_HII_STRING_PROTOCOL hii{};
  hii.GetString = GetString;
  hii.GetLanguages = GetLanguages;
  FormBrowserDataProtocol browser{};
  browser.ListFormSets = ListFormSets;
  browser.ParseFormSet = ParseFormSet;
  browser.ReleaseQuestions = ReleaseQuestions;
  BenchUefi::Current().HiiString = &hii;
  Count(what, [&] {
    HiiStrings strings(nullptr);
    Dependencies dependencies;
    SetupSummary summary;
    FormSets walk(database, strings, dependencies, summary,
                  {.FactoryMode = false, .PlatformSetting = true, .FormFilter = true});
    IgnoreStatus(walk.Walk(&browser));
    IgnoreStatus(dependencies.BuildPidDepList());
    database.ReleaseIndexes();
  });
  BenchUefi::Current().HiiString = nullptr;
  gSetup = nullptr;
  return database.GetAttributeCount();
}
