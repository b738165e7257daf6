/** @file
  FormSets: the walk over the setup's form sets.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "sources/FormSets.hpp"

#include "uefi/Protocols.hpp"
#include "uefi/Status.hpp"

namespace {

// Questions that only a factory may change.
constexpr std::array<UINT16, 8> kFactoryQuestions = {9346, 1216, 9902, 121, 377, 1099, 38237, 3727};
// Questions that become an attribute however often they occur.
constexpr std::array<UINT16, 1> kAlwaysQuestions = {1163};
// Questions that are no settings for management software.
constexpr std::array<UINT16, 16> kExcludedQuestions = {1276, 9781, 50860, 1797, 1798, 1377, 1376, 1228,
                                                       1262, 1263, 1264,  1265, 1266, 1267, 1268, 1336};

// One-of and checkbox questions that still enter; from the next one on no question does. Readers of the attribute
// stream count slots in eight bits.
constexpr UINT32 kCountedQuestionLimit = 241;

/// A plain loop: the lists are short, and the library's search is unrolled at each of its uses.
bool Contains(std::span<const UINT16> list, UINT32 identifier) {
  for (const UINT16 member : list) {
    if (member == identifier) {
      return true;
    }
  }
  return false;
}

void RemoveBlanks(CHAR16* text) {
  CHAR16* kept = text;
  for (; *text != 0; ++text) {
    if (*text != ' ') {
      *kept++ = *text;
    }
  }
  *kept = 0;
}

}  // namespace

FormSets::FormSets(AttributeDatabase& database, HiiStrings& strings, Dependencies& dependencies, SetupSummary& summary,
                   const Gates& gates)
    : database_(database),
      strings_(strings),
      dependencies_(dependencies),
      summary_(summary),
      gates_(gates),
      builder_(database, strings, FindProtocol<SettingDefaultsProtocol>(gVaroSettingDefaultsProtocolGuid),
               summary.AllValuesAtDefault) {}

EFI_STATUS FormSets::Walk(FormBrowserDataProtocol* browser) {
  if (!builder_.HasDefaults()) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: gVaroSettingDefaultsProtocolGuid not found: every default is 0\n"));
  }
  const FormSetRecord** list = nullptr;
  const EFI_STATUS status = browser->ListFormSets(browser, &gVaroSetupFormSetsGuid, &list);
  if (EFI_ERROR(status)) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: form sets cannot be listed: %r: nothing is published\n", status));
    return status;
  }
  const PoolPtr<const FormSetRecord* []> formSets { list };
  for (size_t i = 0; formSets && formSets[i] != nullptr; ++i) {
    const FormSetRecord& formSet = *formSets[i];
    if (CompareGuid(&formSet.Guid, &gVaroSetupFormSetsGuid) ||
        CompareGuid(&formSet.Guid, &gVaroSetupHiddenFormSetGuid)) {
      continue;
    }
    QuestionRecord* questions = nullptr;
    if (const EFI_STATUS parsed = browser->ParseFormSet(browser, &formSet, &questions); EFI_ERROR(parsed)) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: form set %g left out: %r\n", &formSet.Guid, parsed));
      continue;
    }
    WalkFormSet(formSet, questions);
    IgnoreStatus(browser->ReleaseQuestions(browser, questions));  // nothing here holds on to the list
  }
  return EFI_SUCCESS;
}

void FormSets::WalkFormSet(const FormSetRecord& formSet, const QuestionRecord* questions) {
  const UINT64 attributesBefore = database_.GetAttributeCount();
  for (const QuestionRecord* question = questions; question != nullptr; question = question->Next) {
    if (question->Ifr != nullptr) {
      TakeQuestion(*question);
    }
  }
  AddCollection(formSet, attributesBefore);
}

void FormSets::TakeQuestion(const QuestionRecord& question) {
  const bool passesFilter = !gates_.FormFilter || question.Eligible != 0;
  if (!passesFilter && !gates_.PlatformSetting) {
    return;
  }
  // The keyword is wanted by the attribute and by the dependencies: it is fetched and copied once.
  const HiiText fetched = strings_.GetHiiString(question.HiiHandle, question.Prompt, kKeywordLanguage);
  PoolPtr<CHAR16[]> keyword = CopyUcs2(std::as_bytes(ViewOf(fetched.Text)));
  if (!keyword) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: question %d dropped: out of memory\n", question.Identifier));
    return;
  }
  if (passesFilter && IsEligible(question.Identifier, keyword.get())) {
    AddQuestion(question, keyword.get());
  }
  if (gates_.PlatformSetting) {
    dependencies_.RecordDependencyCandidate(question.Identifier,
                                            EFI_ERROR(fetched.Status) ? nullptr : std::move(keyword));
  }
}

bool FormSets::IsEligible(UINT32 identifier, [[maybe_unused]] const CHAR16* keyword) {
  if (Contains(kFactoryQuestions, identifier)) {
    return gates_.FactoryMode;
  }
  if (Contains(kAlwaysQuestions, identifier)) {
    return true;
  }
  if (Contains(kExcludedQuestions, identifier)) {
    return false;
  }
  const AttributeRecord* const first = database_.FindAttributeByToken(identifier);
  if (first != nullptr) {
    DEBUG((DEBUG_INFO, "CorvaneDxe: question %d \"%s\" left out: attribute \"%s\" has this identifier\n", identifier,
           keyword, database_.GetNameString(StringHandle{first->NameHandle})));
  }
  return first == nullptr;
}

void FormSets::AddQuestion(const QuestionRecord& question, const CHAR16* keyword) {
  if (question.Opcode == EFI_IFR_ONE_OF_OP || question.Opcode == EFI_IFR_CHECKBOX_OP) {
    ++countedQuestions_;
  }
  OwnedRecord<AttributeRecord> record = builder_.Build(question, keyword);
  if (!record) {
    return;
  }
  if (countedQuestions_ > kCountedQuestionLimit) {
    summary_.AttributeLimitReached = true;
    DEBUG((DEBUG_WARN, "CorvaneDxe: attribute \"%s\" dropped: more than %d one-of and checkbox questions\n", keyword,
           kCountedQuestionLimit));
    return;
  }
  database_.AddAttribute(std::move(record));
}

void FormSets::AddCollection(const FormSetRecord& formSet, UINT64 attributesBefore) {
  const auto count = static_cast<UINT8>(database_.GetAttributeCount() - attributesBefore);
  const CHAR16* const title = strings_.GetHiiString(formSet.HiiHandle, formSet.Title).Text;
  const PoolPtr<CHAR16[]> name = CopyUcs2(std::as_bytes(ViewOf(title)));
  OwnedRecord<CollectionRecord> record = MakeRecord<CollectionRecord>(true);
  PoolPtr<UINT16[]> items = AllocateZeroedArray<UINT16>(count);
  if (!name || !record || !items) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: collection \"%s\" dropped: out of memory\n", title));
    return;
  }
  RemoveBlanks(name.get());
  const UINT16 nameHandle = Raw(InternName(database_, name.get()));
  if (nameHandle == 0) {
    return;  // the name was reported: without one there is no collection
  }
  InternDisplayString(database_, title);
  for (UINT8 i = 0; i < count; ++i) {
    items[i] = static_cast<UINT16>(attributesBefore + kFirstHandle + i);
  }
  record->Head.NameHandle = nameHandle;
  record->CollectionInfo[0] = static_cast<UINT8>(nameHandle);
  record->CollectionInfo[1] = static_cast<UINT8>(nameHandle >> 8);
  record->CollectionInfo[2] = 0xFF;
  record->ItemCount = count;
  record->Items = items.release();
  database_.AddAttribute(AsAttribute(std::move(record)));
}
