/** @file
  FormSets: the walk over the setup's form sets, question by question.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "sources/Dependencies.hpp"
#include "sources/QuestionAttributes.hpp"

/// What the walk finds out about the setup as a whole.
struct SetupSummary {
  bool AllValuesAtDefault = true;
  bool AttributeLimitReached = false;
};

class FormSets {
 public:
  struct Gates {
    bool FactoryMode;      // questions of the factory are eligible
    bool PlatformSetting;  // dependencies are recorded
    bool FormFilter;       // a question's own eligibility counts
  };

  FormSets(AttributeDatabase& database, HiiStrings& strings, Dependencies& dependencies, SetupSummary& summary,
           const Gates& gates);

  /// Makes every eligible question of every form set an attribute, and each form set a collection of its attributes.
  /// Fails only when the form sets cannot be listed; a form set that cannot be parsed is left out.
  [[nodiscard]] EFI_STATUS Walk(FormBrowserDataProtocol* browser);

 private:
  void WalkFormSet(const FormSetRecord& formSet, const QuestionRecord* questions);
  void TakeQuestion(const QuestionRecord& question);
  [[nodiscard]] bool IsEligible(UINT32 identifier, const CHAR16* keyword);
  void AddQuestion(const QuestionRecord& question, const CHAR16* keyword);
  void AddCollection(const FormSetRecord& formSet, UINT64 attributesBefore);

  AttributeDatabase& database_;
  HiiStrings& strings_;
  Dependencies& dependencies_;
  SetupSummary& summary_;
  Gates gates_;
  QuestionAttributes builder_;
  UINT32 countedQuestions_ = 0;  // one-of and checkbox questions met
};
