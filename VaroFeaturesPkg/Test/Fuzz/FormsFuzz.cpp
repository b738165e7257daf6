/** @file
  Fuzz target of the setup's form data: whatever the form sets, their texts and options are, and whichever call fails, a
  cold boot publishes sound tables and its dependency list names questions; and the boot from its cache publishes the
  same names, attributes and texts.

  Input: a byte of switches, the call that fails, then form sets and questions. A byte selects each kind.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Fuzz/FuzzInput.hpp"
#include "Fuzz/PublishedTables.hpp"
#include "lifecycle/DriverState.hpp"

extern "C" {
#include <Uefi/UefiInternalFormRepresentation.h>
}

namespace {

constexpr UINT8 kOpcodes[] = {EFI_IFR_ONE_OF_OP, EFI_IFR_CHECKBOX_OP, EFI_IFR_NUMERIC_OP, EFI_IFR_STRING_OP,
                              EFI_IFR_TEXT_OP};
/// Identifiers that the driver treats specially.
constexpr UINT32 kKnownQuestions[] = {9346, 1216, 9902, 1163, 1276, 50860, 1336, 1249, 1255, 1568,
                                      1656, 1414, 1137, 1052, 1809, 1812,  1810, 1813, 1142, 1143,
                                      9752, 1559, 1174, 1175, 3732, 38237, 1843, 1340, 1874, 1621};
constexpr std::optional<std::string_view> kLanguages[] = {"en-US", "x-UEFI", "fr-FR", std::nullopt};
constexpr EFI_STATUS kStatuses[] = {EFI_OUT_OF_RESOURCES, EFI_NOT_FOUND, EFI_DEVICE_ERROR, EFI_BUFFER_TOO_SMALL,
                                    EFI_WARN_STALE_DATA};
constexpr std::uint8_t kNewFormSet = 0xFF;

void AddFormSet(FuzzInput& input, FakeNotebook& notebook) {
  const auto kind = input.Take();
  FakeFormSet& formSet = notebook.AddFormSet(input.Text());
  if (kind % 8 == 7) {
    formSet.ParseStatus = EFI_DEVICE_ERROR;
  } else if (kind % 8 == 6) {
    formSet.Guid = kind < 128 ? gVaroSetupFormSetsGuid : gVaroSetupHiddenFormSetGuid;
  }
}

void AddQuestion(std::uint8_t kind, FuzzInput& input, FakeNotebook& notebook) {
  const auto opcode = kOpcodes[kind % std::size(kOpcodes)];
  const auto number = input.Take<std::uint16_t>();
  const UINT32 identifier = (kind & 8) != 0 ? kKnownQuestions[number % std::size(kKnownQuestions)] : number;
  const std::u16string keyword = input.Text();
  const std::u16string prompt = input.Text();
  FakeQuestion question(opcode, identifier, keyword, prompt);
  question.Help(input.Text());
  const auto switches = input.Take();
  question.Value(input.Take<std::uint32_t>(), switches & 0x0F);
  if ((switches & 0x10) != 0) {
    question.Ineligible();
  }
  if ((switches & 0x20) != 0) {
    question.WithoutIfr();
  }
  if ((switches & 0x40) != 0) {
    question.WithoutKeyword();
  }
  if (opcode == EFI_IFR_STRING_OP) {
    question.Text((switches & 0x80) != 0 ? std::optional(input.Ascii()) : std::nullopt);
  }
  if (opcode == EFI_IFR_NUMERIC_OP || opcode == EFI_IFR_STRING_OP) {
    const auto lowest = input.Take<std::uint16_t>();
    const auto highest = input.Take<std::uint32_t>();
    question.Bounds(lowest, highest, input.Take());
  }
  for (auto options = opcode == EFI_IFR_ONE_OF_OP ? input.Take() << (kind >> 5 & 1) : 0; options > 0; --options) {
    const auto value = input.Take<std::uint16_t>();
    const std::u16string name = input.Text();
    question.Option(value, name, input.Text());
  }
  FakeFormSet& formSet = notebook.FormSets.empty() ? notebook.AddFormSet(u"Setup") : notebook.FormSets.back();
  formSet.Questions.push_back(question);
  // Repeats the questions with other identifiers, so that the setup fills tables and store.
  for (UINT32 again = (kind & 0x10) != 0 ? input.Take() : 0U; again > 0; --again) {
    FakeQuestion& copy = formSet.Questions.emplace_back(question);
    copy.Rename(identifier + again, keyword + static_cast<char16_t>(u'0' + again), prompt);
  }
}

/// Names, attributes, display and help texts.
std::vector<Bytes> LastingTables() {
  std::vector<Bytes> tables;
  for (const UINT32 index : {TABLE_STRINGS, TABLE_ATTRIBUTES, TABLE_DISPLAY, TABLE_HELP}) {
    const TableDescriptor& table = mState.Descriptors[index];
    tables.push_back(BytesAt(reinterpret_cast<const void*>(UINTN{table.Data}), table.Limit));
  }
  return tables;
}

void RequireSoundDependencies(const FakeNotebook& notebook) {
  const FakeUefi::Variable* const list = notebook.Variable(u"PidDepList");
  if (list == nullptr) {
    return;
  }
  std::set<UINT32> identifiers;
  for (const FakeFormSet& formSet : notebook.FormSets) {
    for (const FakeQuestion& question : formSet.Questions) {
      identifiers.insert(question.Identifier);
    }
  }
  FuzzInput entries(list->Data.data(), list->Data.size());
  Require(list->Data.size() % 4 == 0 && list->Data.size() <= 4 * ATTRIBUTE_DEPENDENCY_LIST_CAPACITY, "PidDepList");
  while (entries.More()) {
    Require(identifiers.contains(entries.Take<std::uint32_t>()), "PidDepList names no question");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  FuzzInput input(data, size);
  FakeNotebook notebook;
  const auto switches = input.Take();
  notebook.FactoryMode = (switches & 1) != 0;
  notebook.Settings[0x2618].Status = (switches & 2) != 0 ? EFI_NOT_FOUND : EFI_SUCCESS;
  if ((switches & 4) != 0) {
    notebook.Absent.insert(gEfiHiiStringProtocolGuid);
  }
  notebook.PlatformLanguage = kLanguages[switches >> 3 & 3];
  const auto failing = input.Take();
  const auto nth = input.Take<std::uint16_t>();
  size_t questions = 0;
  while (input.More() && questions < 150) {
    if (const auto kind = input.Take(); kind == kNewFormSet) {
      AddFormSet(input, notebook);
    } else {
      AddQuestion(kind, input, notebook);
      ++questions;
    }
  }
  const bool fails = nth != 0;
  if (fails) {
    notebook.Uefi.Fail(static_cast<Service>(failing % 7), nth, kStatuses[failing / 7 % std::size(kStatuses)],
                       failing >= 128 ? FakeUefi::Later::Fail : FakeUefi::Later::Succeed);
  }
  notebook.Boot();
  RequireSoundTables(notebook);
  RequireSoundDependencies(notebook);
  const bool published = notebook.Published() != nullptr;
  Require(published || fails, "nothing is published");
  const std::vector<Bytes> cold = published ? LastingTables() : std::vector<Bytes>();
  RequireNothingLeft(notebook);

  notebook.Reboot();
  notebook.Boot();
  Require(notebook.Published() != nullptr, "nothing is published by the boot after it");
  RequireSoundTables(notebook);
  if (notebook.FormSetsParsed == 0 && !fails && !Warned(notebook.Uefi, "CorvaneDxe: cache variable ")) {
    Require(LastingTables() == cold, "the cache changes the tables");
  }
  RequireNothingLeft(notebook);
  return 0;
}
