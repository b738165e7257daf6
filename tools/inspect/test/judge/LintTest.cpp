/** @file
  Tests of the findings of lint on setups with one fault each.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "judge/Lint.hpp"
#include "test/TestBoot.hpp"

namespace corvane::inspect {
namespace {

using ::testing::HasSubstr;

std::string CodesOf(const std::vector<LintFinding>& findings) {
  std::string codes;
  for (const LintFinding& finding : findings) {
    codes += (codes.empty() ? "" : " ") + finding.Code + (finding.IsNote ? "?" : "");
    EXPECT_NE(finding.Advice, "");
  }
  return codes;
}

TEST(LintTest, Lint_FindsEachKindOfFaultInASetup) {
  using Form = FakeFormSet&;
  const auto onOff = [](Form form, UINT32 id, const char16_t* name, const char16_t* off, const char16_t* on) {
    form.OneOf(id, name, name).Option(0, off, off).Option(1, on, on).Value(0);
  };
  const std::tuple<std::function<void(Form)>, std::string, std::string> rows[] = {
      {[](Form) {}, "", ""},
      {[&](Form f) { onOff(f, 400, u"A", u"Off[ForceIf:Nobody=On]", u"On"); }, "annotation-dangling", "\"Nobody\""},
      {[&](Form f) { onOff(f, 400, u"A[ForceIf:Lamp=Blue]", u"Off", u"On"); }, "annotation-dangling", "\"Blue\""},
      {[&](Form f) {
         f.Numeric(401, u"Hour", u"Hour").Bounds(0, 23).Value(3);
         onOff(f, 400, u"A", u"Off[ForceIf:Hour=7]", u"On");
       },
       "", ""},
      {[&](Form f) { onOff(f, 400, u"A", u"Off[ForceIf Lamp=Enabled]", u"On"); }, "annotation-malformed",
       "of an unknown kind"},
      {[&](Form f) {
         onOff(f, 400, u"A", u"Off[ForceIf:B=On]", u"On");
         onOff(f, 401, u"B", u"Out", u"On[ForceIf:A=Off]");
       },
       "dependency-unmet? dependency-cycle", "A=Off forces B=On forces A=Off"},
      {[&](Form f) {
         onOff(f, 400, u"A[ForceIf:B=On]", u"Off", u"On");
         onOff(f, 401, u"B[ForceIf:A=On]", u"Off", u"On");
       },
       "dependency-cycle", "A holds B holds A"},
      {[&](Form f) { onOff(f, 400, u"A", u"Off[ForceIf:Lamp=Enabled]", u"On[ForceIfNot:Mode=Enabled]"); },
       "dependency-contradiction", "are forced at once"},
      {[&](Form f) {
         onOff(f, 400, u"A", u"Off[ForceIf:B=Up]", u"On");
         onOff(f, 401, u"B", u"Down", u"Up[ForceIf:A=On]");
       },
       "dependency-contradiction", "\"A=On\" forces values that lead to \"A=Off\""},
      {[&](Form f) { onOff(f, 400, u"A", u"Off", u"On[ForceIf:Lamp=Disabled]"); }, "dependency-unmet?",
       "value is \"A=Off\""},
      {[&](Form f) { onOff(f, 400, u"Lamp", u"Off", u"On"); }, "name-duplicate", "2 attributes"},
      {[&](Form f) { onOff(f, 400, u"A", u"Off", u"Off"); }, "value-duplicate", "twice"},
      {[](Form f) { f.Numeric(400, u"", u"?").Bounds(0, 9); }, "name-empty", "empty name"},
      {[](Form f) { f.Numeric(400, u"A", u"A").Bounds(0, 9).Value(12); }, "value-bounds", "0 to 9"},
      {[](Form f) { f.Numeric(400, u"A", u"A").Bounds(0, 9, 3).Value(4); }, "value-bounds", "steps of 3"},
      {[](Form f) { f.Numeric(400, u"A", u"A").Bounds(5, 9).Value(5); }, "default-bounds", "default 0"},
      {[](Form f) { f.Numeric(400, u"A", u"A").Bounds(9, 5); }, "bounds-empty", "9 to 5"},
      {[](Form f) { f.Numeric(400, u"A", u"A").Bounds(0, 900).Value(300, 2); }, "value-above-byte?", "reads as 44"},
      {[](Form f) { f.Numeric(450, u"A", u"A").Bounds(0, 900).Value(44, 2); }, "value-above-byte?",
       "of its default 300"},
      {[](Form f) { f.Numeric(400, u"Wake up", u"Wake up").Bounds(0, 9); }, "name-prompt?", "\"Wake up\""},
      {[](Form f) { f.String(400, u"A", u"A").Bounds(2, 3).Text("abcd"); }, "value-bounds", "4 characters"},
      {[](Form f) { f.String(400, u"A[RegEx:^x$]", u"A").Bounds(0, 9).Text("abcd"); }, "value-expression",
       "does not match"},
      {[](Form f) { f.String(400, u"A[RegEx:x(]", u"A").Bounds(0, 9).Text("x"); }, "expression-invalid",
       "does not compile"},
      {[](Form f) { f.Numeric(400, std::u16string(51, u'k') + u"[ForceIf:Lamp=Enabled]", u"A").Bounds(0, 9); },
       "keyword-long", "51 characters"},
  };
  for (const auto& [add, codes, text] : rows) {
    const Boot boot([&add](FakeNotebook& notebook) {
      Ordinary(notebook);
      notebook.Defaults[450] = 300;
      add(notebook.AddFormSet(u"More"));
    });
    const CacheReport report = ReportCache(boot.Flash, {});
    const std::vector<LintFinding> findings = Lint(boot.Decode(), &report, {});
    EXPECT_EQ(CodesOf(findings), codes);
    EXPECT_THAT(findings.empty() ? "" : findings.front().Text + findings.back().Text, HasSubstr(text));
    EXPECT_EQ(IsClean(findings), codes.empty() || codes.ends_with("?"));
  }
}

TEST(LintTest, Lint_NamesLostEntriesFromTheCacheOfTheBoot) {
  const auto arrange = [](FakeNotebook& notebook) {
    Ordinary(notebook);
    FakeFormSet& form = notebook.AddFormSet(u"More");
    for (char16_t i = 0; i < 60; ++i) {
      form.Numeric(400U + i, std::u16string(140, static_cast<char16_t>(u'A' + i)),
                   std::u16string(1, static_cast<char16_t>(u'A' + i)))
          .Bounds(0, 9);
    }
  };
  const Boot boot(arrange);
  const Image image = boot.Decode();
  const std::vector<TableCut> alone = FindCuts(image, nullptr);
  ASSERT_EQ(alone.size(), 1u);
  EXPECT_EQ(alone[0].Id, TableId::Strings);
  EXPECT_TRUE(alone[0].Known.empty());

  const CacheReport report = ReportCache(boot.Flash, {});
  const std::vector<TableCut> cuts = FindCuts(image, &report.Content);
  ASSERT_EQ(cuts.size(), 1u);
  EXPECT_EQ(cuts[0].Known.size(), cuts[0].Lost);
  EXPECT_EQ(cuts[0].Known.front().Handle, *cuts[0].FirstLost);
  EXPECT_EQ(cuts[0].Known.back().Text, "Varo:HDD:0001");
  // Each of the names takes 4 bytes more than its text, and the whole a multiple of 4 and a checksum.
  std::size_t size = 0;
  for (const std::u16string& name : report.Content.Texts.Names) {
    size += 4 + name.size();
  }
  EXPECT_EQ(cuts[0].BytesOver, (size + 3) / 4 * 4 + 4 - 7680);
  // The cache alone foretells the same cut, and the cache of another notebook says nothing of this one.
  const std::vector<TableCut> foretold = FindCuts(ImageOfCache(report.Content), &report.Content);
  EXPECT_EQ(foretold.front().FirstLost, cuts[0].FirstLost);
  const Boot another(Ordinary);
  const CacheReport other = ReportCache(another.Flash, {});
  EXPECT_THAT(CodesOf(Lint(image, &other, {})), HasSubstr("other-boot table-cut"));
}

}  // namespace
}  // namespace corvane::inspect
