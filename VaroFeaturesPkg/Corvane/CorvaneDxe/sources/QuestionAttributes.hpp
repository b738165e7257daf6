/** @file
  QuestionAttributes: one setup question made into one attribute.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/store/AttributeDatabase.hpp"
#include "sources/HiiStrings.hpp"
#include "sources/Interning.hpp"

extern "C" {
#include <Protocol/FormBrowserData.h>
#include <Protocol/SettingDefaults.h>
}

class QuestionAttributes {
 public:
  /// `defaults` is null when the platform offers none. `allValuesAtDefault` is cleared by the first question whose
  /// current value is not its default.
  QuestionAttributes(AttributeDatabase& database, HiiStrings& strings, SettingDefaultsProtocol* defaults,
                     bool& allValuesAtDefault)
      : database_(database), strings_(strings), defaults_(defaults), allValuesAtDefault_(allValuesAtDefault) {}

  [[nodiscard]] bool HasDefaults() const { return defaults_ != nullptr; }

  /// Makes the attribute of a one-of, checkbox, numeric or string question and interns its name and texts. Returns null
  /// for any other question, without memory, or if the name gets no handle.
  [[nodiscard]] OwnedRecord<AttributeRecord> Build(const QuestionRecord& question, const CHAR16* keyword);

 private:
  /// Returns false if the name gets no handle. No other text of the question is then interned.
  [[nodiscard]] bool FillHead(AttributeRecord& head, const QuestionRecord& question, const CHAR16* keyword);
  [[nodiscard]] StringHandle InternQuestionName(UINT32 identifier, const CHAR16* keyword);
  [[nodiscard]] InternedString InternPrompt(const QuestionRecord& question);
  [[nodiscard]] UINT16 InternOption(const QuestionRecord& question, const QuestionOption& option);
  [[nodiscard]] OwnedRecord<AttributeRecord> BuildOneOf(const QuestionRecord& question, const CHAR16* keyword);
  [[nodiscard]] OwnedRecord<AttributeRecord> BuildSwitchAttribute(const QuestionRecord& question,
                                                                  const CHAR16* keyword);
  [[nodiscard]] OwnedRecord<AttributeRecord> BuildNumeric(const QuestionRecord& question, const CHAR16* keyword);
  [[nodiscard]] OwnedRecord<AttributeRecord> BuildString(const QuestionRecord& question, const CHAR16* keyword);

  /// The name that an option's text became.
  struct OptionName {
    EFI_STRING_ID Text;
    UINT16 Name;
  };

  AttributeDatabase& database_;
  HiiStrings& strings_;
  SettingDefaultsProtocol* defaults_;
  bool& allValuesAtDefault_;
  EFI_HII_HANDLE optionNamesOf_ = nullptr;
  // The options of a form set share their texts, and a read takes EDK II longer than all else that is done with an
  // option. A text's identifier gives its place here.
  std::array<OptionName, 64> optionNames_{};
};
