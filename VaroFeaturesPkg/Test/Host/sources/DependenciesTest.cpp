/** @file
  Tests of the dependency list made from annotated keywords.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/NotebookFixture.hpp"
#include "sources/Dependencies.hpp"

namespace {

class DependenciesTest : public testing::Test {
 protected:
  /// Records keywords as the questions 1, 2, ... and evaluates them; the list that was written, or {0} for none.
  std::vector<UINT32> Evaluate(const std::vector<std::u16string>& keywords) {
    notebook.Uefi.Variables.clear();
    Dependencies dependencies;
    UINT32 identifier = 0;
    for (const std::u16string& keyword : keywords) {
      PoolPtr<CHAR16[]> copy;
      if (keyword != u"(null)") {
        copy = AllocateZeroedArray<CHAR16>(keyword.size() + 1);
        std::copy(keyword.begin(), keyword.end(), copy.get());
      }
      dependencies.RecordDependencyCandidate(++identifier, std::move(copy));
    }
    status = dependencies.BuildPidDepList();
    EXPECT_EQ(notebook.Uefi.LivePoolBlocks(), 0U);
    const FakeUefi::Variable* const list = notebook.Variable(u"PidDepList");
    if (list == nullptr) {
      return {0};
    }
    EXPECT_EQ(list->Attributes, 7U);
    std::vector<UINT32> identifiers(list->Data.size() / sizeof(UINT32));
    std::memcpy(identifiers.data(), list->Data.data(), list->Data.size());
    return identifiers;
  }
  FakeNotebook notebook;
  EFI_STATUS status = EFI_SUCCESS;
};

TEST_F(DependenciesTest, NamesInAnnotationsSelectTheirQuestions) {
  const std::u16string fifty(50, u'k');
  const std::u16string fiftyOne(51, u'k');
  const std::pair<std::vector<std::u16string>, std::vector<UINT32>> rows[] = {
      {{}, {0}},
      {{u"A", u"B"}, {0}},
      {{u"A", u"B[ForceIf:A=Enabled]"}, {1}},
      {{u"A[ForceIf:B=On]", u"B[ForceIfNot:A=Off]"}, {2, 1}},               // in the order of the names met
      {{u"C", u"A[ForceIf:B=On][ForceIf:C=On]", u"B", u"C"}, {3, 1, 4}},    // every question of a keyword
      {{u"A", u"B", u"X[ForceIf:A=1][ForceIfNot:A=2][ForceIf:B=3]"}, {1}},  // a repeat ends the entry
      {{u"A", u"B", u"X[ForceIf:A=1]", u"Y[ForceIf:A=1][ForceIf:B=1]", u"Z[ForceIf:B=1]"}, {1, 2}},
      {{u"a", u"X[ForceIf:A=1]"}, {0}},  // case counts
      {{u"(null)", u"", u"A", u"X[ForceIf:A=1]"}, {3}},
      // By the letter: the name stands between the next ":" and the next "=", wherever they are.
      {{u"^x$]", u"X[RegEx:^x$]=", u"A", u"Y[RegEx:^x$]"}, {1}},
      {{u"A", u"X[ForceIf:A]", u"Y[ForceIf"}, {0}},
      {{u"A", u"X[ForceIf A=1][ForceIf:B=1]", u"B"}, {3}},
      {{u"", u"X[ForceIf:=1]"}, {1}},
      {{fifty, u"X[ForceIf:" + fifty + u"=1]"}, {1}},
      {{fiftyOne, u"A", u"X[ForceIf:A=1]"}, {2}},  // not measured without an annotation
  };
  for (const auto& [keywords, list] : rows) {
    EXPECT_EQ(Evaluate(keywords), list) << testing::PrintToString(keywords.size());
    EXPECT_EQ(status, EFI_SUCCESS);
  }
  // Too long anywhere: nothing is written.
  EXPECT_EQ(Evaluate({u"A", u"X[ForceIf:A=1]", fiftyOne + u"[ForceIf:A=1]"}), (std::vector<UINT32>{0}));
  EXPECT_EQ(Evaluate({u"A", u"X[ForceIf:A=1][ForceIf:" + fiftyOne + u"=1]"}), (std::vector<UINT32>{0}));
}

TEST_F(DependenciesTest, TheListEndsAt50AndTheCandidatesAt257) {
  std::vector<std::u16string> keywords(60, u"A");
  keywords.push_back(u"X[ForceIf:A=1]");
  const std::vector<UINT32> list = Evaluate(keywords);
  EXPECT_EQ(list.size(), 50U);
  EXPECT_EQ(list.back(), 50U);

  keywords.assign(258, u"-");
  keywords[0] = u"X[ForceIf:A=1]";
  keywords[256] = keywords[257] = u"A";
  EXPECT_EQ(Evaluate(keywords), std::vector<UINT32>{257});
}

TEST_F(DependenciesTest, AnEarlierListStaysWhenNothingIsFound) {
  Evaluate({u"A", u"X[ForceIf:A=1]"});
  Dependencies nothing;
  EXPECT_EQ(nothing.BuildPidDepList(), EFI_SUCCESS);
  EXPECT_EQ(notebook.Variable(u"PidDepList")->Data, Join(U32(1)));
}

TEST_F(DependenciesTest, OnlyAnOrdinaryBootWithThePlatformSettingWritesTheList) {
  FakeFormSet& formSet = notebook.AddFormSet(u"Setup");
  formSet.Checkbox(301, u"SecureBoot", u"Secure Boot");
  formSet.Checkbox(302, u"BootMode[ForceIf:SecureBoot=Enabled]", u"Boot Mode").Ineligible();
  formSet.Checkbox(303, u"BootMode[ForceIf:SecureBoot=Enabled]", u"No question").WithoutIfr();
  const std::tuple<bool, EFI_STATUS, bool> rows[] = {
      {false, EFI_SUCCESS, true}, {true, EFI_SUCCESS, false}, {false, EFI_NOT_FOUND, false}};
  for (const auto& [factory, setting, written] : rows) {
    notebook.Uefi.Variables.clear();
    notebook.Reboot();
    notebook.FactoryMode = factory;
    notebook.Settings[0x2618].Status = setting;
    notebook.Start();
    notebook.SignalFormSetsUpdated();
    EXPECT_EQ(notebook.Variable(u"PidDepList") != nullptr, written);
  }
}

}  // namespace
