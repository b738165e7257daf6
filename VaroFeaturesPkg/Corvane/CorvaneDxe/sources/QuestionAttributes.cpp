/** @file
  QuestionAttributes: one setup question made into one attribute.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "sources/QuestionAttributes.hpp"

#include <optional>

extern "C" {
#include <Uefi/UefiInternalFormRepresentation.h>
}

namespace {

constexpr UINT32 kBootListQuestion = 1163;

// Wake-up days are known by their day within the setup page, and need more of a name outside it.
constexpr UINT32 kFirstAutoOnDay = 1249;
constexpr size_t kAutoOnPrefixLength = 8;
constexpr std::array kAutoOnNames = {"Auto On Sunday",   "Auto On Monday", "Auto On Tuesday", "Auto On Wednesday",
                                     "Auto On Thursday", "Auto On Friday", "Auto On Saturday"};

bool IsText(const CHAR16* text, const CHAR8* own) {
  while (*text == static_cast<UINT8>(*own) && *own != 0) {
    ++text;
    ++own;
  }
  return *text == static_cast<UINT8>(*own);
}

constexpr std::array<UINT16, 5> kSwitchQuestions = {1568, 1569, 1578, 1655, 1656};
bool IsSwitchQuestion(UINT32 identifier) {
  for (const UINT16 question : kSwitchQuestions) {
    if (question == identifier) {
      return true;
    }
  }
  return false;
}
constexpr CHAR16 kSwitchSuffix[] = {' ', 'S', 'w', 'i', 't', 'c', 'h'};

/// Names of a checkbox's two values.
struct SwitchNames {
  UINT32 Identifier;
  const CHAR8* Off;
  const CHAR8* On;
};

// Checkboxes whose one value forces other settings, or is forced by them.
constexpr std::array kAnnotatedSwitches = {
    SwitchNames{1414, "Disabled", "Enabled[ForceIf:BiosRcvrFrmHdd=Enabled]"},
    SwitchNames{1137,
                "Disabled[ForceIf:TpmSecurity=Disabled][ForceIf:Virtualization=Disabled]"
                "[ForceIf:VtForDirectIo=Disabled][ForceIfNot:CpuCore=CoresAll]",
                "Enabled"},
    SwitchNames{1052, "Disabled[ForceIf:SecureBoot=Enabled]", "Enabled"},
};
constexpr SwitchNames kPlainSwitch{0, "Disabled", "Enabled"};

const SwitchNames& SwitchNamesOf(UINT32 identifier) {
  for (const SwitchNames& names : kAnnotatedSwitches) {
    if (names.Identifier == identifier) {
      return names;
    }
  }
  return kPlainSwitch;
}

/// Numerics whose range is fixed here, whatever the form says.
struct FixedBounds {
  UINT16 Identifier;
  UINT8 LowerBound;
  UINT8 UpperBound;
  bool OneByte;
};

constexpr std::array kFixedBounds = {
    FixedBounds{1809, 50, 95, false}, FixedBounds{1812, 50, 95, false}, FixedBounds{1810, 55, 100, true},
    FixedBounds{1813, 55, 100, true}, FixedBounds{1142, 0, 23, false},
};

/// A question's default in `size` bytes, or nothing when the source has none.
std::optional<UINT64> ReadDefault(SettingDefaultsProtocol* defaults, UINT32 identifier, UINT64 size) {
  UINT64 value = 0;
  if (defaults == nullptr || EFI_ERROR(defaults->GetDefault(identifier, &gVaroSettingsNamespaceGuid, &size, &value)) ||
      size == 0) {
    return std::nullopt;
  }
  return value;
}

void WarnOutOfMemory([[maybe_unused]] const CHAR16* keyword) {
  DEBUG((DEBUG_WARN, "CorvaneDxe: attribute \"%s\" dropped: out of memory\n", keyword));
}

}  // namespace

OwnedRecord<AttributeRecord> QuestionAttributes::Build(const QuestionRecord& question, const CHAR16* keyword) {
  switch (question.Opcode) {
    case EFI_IFR_ONE_OF_OP:
      return BuildOneOf(question, keyword);
    case EFI_IFR_CHECKBOX_OP:
      return BuildSwitchAttribute(question, keyword);
    case EFI_IFR_NUMERIC_OP:
      return BuildNumeric(question, keyword);
    case EFI_IFR_STRING_OP:
      return BuildString(question, keyword);
    default:
      return nullptr;
  }
}

StringHandle QuestionAttributes::InternQuestionName(UINT32 identifier, const CHAR16* keyword) {
  if (identifier >= kFirstAutoOnDay && identifier < kFirstAutoOnDay + kAutoOnNames.size()) {
    const CHAR8* const name = kAutoOnNames[identifier - kFirstAutoOnDay];
    if (IsText(keyword, name + kAutoOnPrefixLength)) {
      return InternOwnName(database_, name);
    }
  }
  return InternName(database_, identifier == kBootListQuestion && *keyword == 0 ? u"Boot List"_ucs2 : keyword);
}

InternedString QuestionAttributes::InternPrompt(const QuestionRecord& question) {
  const CHAR16* const prompt = strings_.GetHiiString(question.HiiHandle, question.Prompt).Text;
  if (!IsSwitchQuestion(question.Identifier)) {
    return InternDistinctDisplayString(database_, prompt);
  }
  const size_t length = StringLength(prompt);
  const PoolPtr<CHAR16[]> text = AllocateZeroedArray<CHAR16>(length + std::size(kSwitchSuffix) + 1);
  if (!text) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: display text \"%s\" dropped: out of memory\n", prompt));
    return {};
  }
  CopyMem(text.get(), prompt, length * sizeof(CHAR16));
  CopyMem(text.get() + length, kSwitchSuffix, sizeof(kSwitchSuffix));
  return InternDistinctDisplayString(database_, text.get());
}

bool QuestionAttributes::FillHead(AttributeRecord& head, const QuestionRecord& question, const CHAR16* keyword) {
  head.Token = question.Identifier;
  head.ValueSize = question.ValueSize;
  head.NameHandle = Raw(InternQuestionName(question.Identifier, keyword));
  if (head.NameHandle == 0) {
    return false;  // the name was reported
  }
  const InternedString display = InternPrompt(question);
  if (display.AlreadyPresent) {
    if (question.Help != 0) {
      DEBUG(
          (DEBUG_INFO, "CorvaneDxe: help text of \"%s\" left out: an earlier text is equal to its prompt\n", keyword));
    }
  } else if (Raw(display.Handle) != 0) {
    SetHelpString(database_, strings_.GetHiiString(question.HiiHandle, question.Help).Text, display.Handle);
  }
  return true;
}

UINT16 QuestionAttributes::InternOption(const QuestionRecord& question, const QuestionOption& option) {
  if (question.HiiHandle != optionNamesOf_) {
    optionNamesOf_ = question.HiiHandle;
    ZeroMem(optionNames_.data(), sizeof(optionNames_));
  }
  OptionName& known = optionNames_[option.Text % optionNames_.size()];
  if (known.Text == option.Text && known.Name != 0) {
    return known.Name;
  }
  const HiiText keyword = strings_.GetHiiString(question.HiiHandle, option.Text, kKeywordLanguage);
  const InternedString name = InternAttributeName(database_, keyword.Text);
  if (keyword.Status == EFI_SUCCESS) {  // a text that cannot be read now may be readable the next time
    known = {option.Text, Raw(name.Handle)};
  }
  if (!name.AlreadyPresent) {
    InternDistinctDisplayString(database_, strings_.GetHiiString(question.HiiHandle, option.Text).Text);
  }
  return Raw(name.Handle);
}

OwnedRecord<AttributeRecord> QuestionAttributes::BuildOneOf(const QuestionRecord& question, const CHAR16* keyword) {
  const auto count = static_cast<UINT8>(question.Options != nullptr ? question.OptionCount : 0);
  OwnedRecord<EnumerationRecord> record = MakeEnumeration(count);
  if (!record) {
    WarnOutOfMemory(keyword);
    return nullptr;
  }
  if (question.OptionCount > count) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: attribute \"%s\" cut: %d of its options are kept\n", keyword, count));
  }
  if (!FillHead(record->Head, question, keyword)) {
    return nullptr;
  }
  // One byte: an option whose value is above 255 is never the default.
  const UINT64 defaultValue = ReadDefault(defaults_, question.Identifier, 1).value_or(0) & 0xFF;
  for (UINT8 i = 0; i < count; ++i) {
    const QuestionOption& option = question.Options[i];
    record->PossibleValueNames[i] = InternOption(question, option);
    record->PossibleValues[i] = option.Value;
    if (option.Value == question.CurrentValue) {
      record->CurrentIndex = i;
    }
    if (option.Value == defaultValue) {
      record->DefaultIndex = i;
    }
  }
  if (record->CurrentIndex != record->DefaultIndex) {
    allValuesAtDefault_ = false;
  }
  return AsAttribute(std::move(record));
}

OwnedRecord<AttributeRecord> QuestionAttributes::BuildSwitchAttribute(const QuestionRecord& question,
                                                                      const CHAR16* keyword) {
  constexpr UINT8 kCount = 2;
  OwnedRecord<EnumerationRecord> record = MakeEnumeration(kCount);
  if (!record) {
    WarnOutOfMemory(keyword);
    return nullptr;
  }
  if (!FillHead(record->Head, question, keyword)) {
    return nullptr;
  }
  const SwitchNames& texts = SwitchNamesOf(question.Identifier);
  record->PossibleValueNames[0] = Raw(InternOwnTexts(database_, texts.Off, texts.Off).Name);
  record->PossibleValueNames[1] = Raw(InternOwnTexts(database_, texts.On, texts.On).Name);
  record->PossibleValues[1] = 1;
  if (const std::optional<UINT64> defaultValue = ReadDefault(defaults_, question.Identifier, 1);
      defaultValue.has_value() && (*defaultValue & 0xFF) == record->PossibleValues[1]) {
    record->DefaultIndex = 1;
  }
  record->CurrentIndex =
      question.CurrentValue < kCount ? static_cast<UINT8>(question.CurrentValue) : record->DefaultIndex;
  if (record->CurrentIndex != record->DefaultIndex) {
    allValuesAtDefault_ = false;
  }
  return AsAttribute(std::move(record));
}

OwnedRecord<AttributeRecord> QuestionAttributes::BuildNumeric(const QuestionRecord& question, const CHAR16* keyword) {
  OwnedRecord<IntegerRecord> record = MakeRecord<IntegerRecord>();
  if (!record) {
    WarnOutOfMemory(keyword);
    return nullptr;
  }
  if (!FillHead(record->Head, question, keyword)) {
    return nullptr;
  }
  record->LowerBound = question.Minimum;
  record->UpperBound = question.Maximum;
  record->ScalarIncrement = static_cast<UINT32>(question.Step);
  for (const FixedBounds& fixed : kFixedBounds) {
    if (fixed.Identifier == question.Identifier) {
      record->LowerBound = fixed.LowerBound;
      record->UpperBound = fixed.UpperBound;
      if (fixed.OneByte) {
        record->Head.ValueSize = 1;
      }
    }
  }
  record->DefaultValue = ReadDefault(defaults_, question.Identifier, sizeof(UINT64)).value_or(0);
  record->CurrentValue = question.CurrentValue;
  if (record->CurrentValue != record->DefaultValue) {
    allValuesAtDefault_ = false;
  }
  return AsAttribute(std::move(record));
}

OwnedRecord<AttributeRecord> QuestionAttributes::BuildString(const QuestionRecord& question, const CHAR16* keyword) {
  OwnedRecord<StringRecord> record = MakeRecord<StringRecord>();
  PoolPtr<CHAR8[]> current = question.CurrentString != nullptr ? CopyAscii(question.CurrentString) : nullptr;
  if (!record || (question.CurrentString != nullptr && !current)) {
    WarnOutOfMemory(keyword);
    return nullptr;
  }
  if (!FillHead(record->Head, question, keyword)) {
    return nullptr;
  }
  record->StringType = PLDM_BIOS_STRING_TYPE_ASCII;
  record->MinLength = static_cast<UINT16>(question.Minimum);
  record->MaxLength = static_cast<UINT16>(question.Maximum);
  record->CurrentString = current.release();
  return AsAttribute(std::move(record));
}
