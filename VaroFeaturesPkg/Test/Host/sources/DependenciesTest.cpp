/** @file
  Tests of the dependency list made from annotated keywords.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <cstdlib>

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

TEST_F(DependenciesTest, List_HasTheQuestionsThatAnnotationsName) {
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
      // The name is the text between the next ":" and the next "=", wherever they are.
      {{u"^x$]", u"X[RegEx:^x$]=", u"A", u"Y[RegEx:^x$]"}, {1}},
      {{u"A", u"X[ForceIf:A]", u"Y[ForceIf"}, {0}},
      {{u"A", u"X[ForceIf A=1][ForceIf:B=1]", u"B"}, {3}},
      {{u"", u"X[ForceIf:=1]"}, {1}},
      {{fifty, u"X[ForceIf:" + fifty + u"=1]"}, {1}},
      // A keyword is cut at "[" only with an annotation, known or not.
      {{u"A[x]", u"X[ForceIf:A=1]"}, {0}},
      {{u"A[x:y]", u"X[ForceIf:A=1]"}, {0}},
      {{u"A[x]", u"X[ForceIf:A[x]=1]"}, {1}},
      {{u"X[ForceIf:B=1]", u"A[ForceIf:B=1]", u"Y[ForceIf:A=1]"}, {2}},
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

TEST_F(DependenciesTest, List_EndsAt50AndCandidatesAt257) {
  std::vector<std::u16string> keywords(60, u"A");
  keywords.push_back(u"X[ForceIf:A=1]");
  const std::vector<UINT32> list = Evaluate(keywords);
  EXPECT_EQ(list.size(), 50U);
  EXPECT_EQ(list.back(), 50U);

  keywords.assign(260, u"-");
  keywords[0] = u"X[ForceIf:A=1]";
  keywords[256] = keywords[257] = u"A";
  EXPECT_EQ(Evaluate(keywords), std::vector<UINT32>{257});
  EXPECT_EQ(notebook.Uefi.Warnings("from question 258 on: the list is full"), 1U);
  EXPECT_EQ(notebook.Uefi.Warnings("candidates dropped"), 1U);
}

/// The plain evaluation of one keyword: the names in its annotations and, with one, its text before the first "[".
struct PlainKeyword {
  std::u16string Bare;
  std::vector<std::u16string> Names;

  explicit PlainKeyword(const std::u16string& keyword) : Bare(keyword) {
    size_t place = keyword.find(u'[');
    while (place != keyword.npos) {
      const size_t colon = keyword.find(u':', place);
      const size_t equals = colon == keyword.npos ? colon : keyword.find(u'=', colon);
      if (equals == keyword.npos) {
        return;
      }
      Bare = keyword.substr(0, keyword.find(u'['));
      const std::u16string name = keyword.substr(colon + 1, equals - colon - 1);
      if (std::find(Names.begin(), Names.end(), name) != Names.end()) {
        return;
      }
      Names.push_back(name);
      place = keyword.find(u'[', equals + 1);
    }
  }
};

TEST_F(DependenciesTest, EveryShortKeyword_AgreesWithAPlainEvaluation) {
  // Pool and variables without the fake's book-keeping: there are two million evaluations.
  gBS->AllocatePool = [](EFI_MEMORY_TYPE, UINTN size, VOID** block) -> EFI_STATUS {
    *block = std::malloc(size);
    return EFI_SUCCESS;
  };
  gBS->FreePool = [](VOID* block) -> EFI_STATUS {
    std::free(block);
    return EFI_SUCCESS;
  };
  static std::vector<UINT32> written;
  gRT->SetVariable = [](CHAR16*, EFI_GUID*, UINT32, UINTN size, VOID* data) -> EFI_STATUS {
    written.resize(size / sizeof(UINT32));
    std::memcpy(written.data(), data, size);
    return EFI_SUCCESS;
  };
  const auto record = [](Dependencies& dependencies, UINT32 identifier, const std::u16string& keyword) {
    dependencies.RecordDependencyCandidate(identifier, CopyUcs2(std::as_bytes(std::span(keyword))));
  };
  constexpr std::u16string_view kAlphabet = u"A[]:=F";
  constexpr size_t kLongest = 8;
  size_t keywords = 0;
  size_t annotated = 0;
  std::array<size_t, kLongest> digits{};
  for (size_t length = 0; length <= kLongest; ++length) {
    digits.fill(0);
    for (bool more = true; more;) {
      std::u16string keyword;
      for (size_t i = 0; i < length; ++i) {
        keyword += kAlphabet[digits[i]];
      }
      const PlainKeyword plain(keyword);
      // The keyword itself, its names, and texts that look like names.
      std::vector<std::u16string> others = plain.Names;
      others.insert(others.end(), {u"A", u"F", u"", keyword.substr(0, keyword.find(u'['))});
      std::vector<UINT32> expected;
      for (const std::u16string& name : plain.Names) {
        if (name == plain.Bare) {
          expected.push_back(1);
        }
        for (UINT32 other = 0; other < others.size(); ++other) {
          if (others[other] == name) {
            expected.push_back(other + 2);
          }
        }
      }
      written.clear();
      Dependencies dependencies;
      record(dependencies, 1, keyword);
      for (UINT32 other = 0; other < others.size(); ++other) {
        const bool annotatedToo =
            others[other].find(u'[') != std::u16string::npos && !PlainKeyword(others[other]).Names.empty();
        record(dependencies, other + 2, annotatedToo ? u"?" : others[other]);
        if (annotatedToo) {
          std::erase(expected, other + 2);
        }
      }
      ASSERT_EQ(dependencies.BuildPidDepList(), EFI_SUCCESS);
      ASSERT_EQ(written, expected) << testing::PrintToString(keyword);
      ++keywords;
      annotated += plain.Names.empty() ? 0 : 1;
      more = false;
      for (size_t i = 0; i < length && !more; ++i) {
        digits[i] = (digits[i] + 1) % kAlphabet.size();
        more = digits[i] != 0;
      }
    }
  }
  EXPECT_EQ(keywords, 2015539U);  // the sum of 6^0 to 6^8
  std::printf("%zu keywords, %zu with annotations\n", keywords, annotated);
}

TEST_F(DependenciesTest, List_WhenNothingIsFound_KeepsTheEarlierOne) {
  Evaluate({u"A", u"X[ForceIf:A=1]"});
  Dependencies nothing;
  EXPECT_EQ(nothing.BuildPidDepList(), EFI_SUCCESS);
  EXPECT_EQ(notebook.Variable(u"PidDepList")->Data, Join(U32(1)));
}

TEST_F(DependenciesTest, List_IsWrittenOnlyOutsideFactoryModeWithThePlatformSetting) {
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
