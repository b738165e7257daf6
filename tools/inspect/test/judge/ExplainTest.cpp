/** @file
  Tests of the chains that explain follows.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "judge/Explain.hpp"
#include "test/TestBoot.hpp"

namespace corvane::inspect {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

TEST(ExplainTest, Explain_FollowsAChainToItsEnd) {
  const Boot boot([](FakeNotebook& notebook) {
    FakeFormSet& form = notebook.AddFormSet(u"Setup");
    const auto add = [&form](UINT32 id, const char16_t* name, const char16_t* off, const char16_t* on) {
      form.OneOf(id, name, name).Option(0, off, off).Option(1, on, on).Value(0);
    };
    add(400, u"A", u"Off", u"On");
    add(401, u"B", u"Off", u"Up[ForceIf:A=On]");
    add(402, u"C", u"Off", u"Set[ForceIf:B=Up]");
    add(403, u"D[ForceIf:C=Set]", u"Off", u"On");
    add(404, u"E[ForceIfNot:A=On]", u"Off", u"On");
    form.Numeric(405, u"Hour", u"Hour").Bounds(0, 23).Value(3);
    add(406, u"Wake", u"Never", u"Early[ForceIf:Hour=7]");
  });
  const Image image = boot.Decode();
  const Catalog catalog = MakeCatalog(image);
  const Dependencies dependencies(catalog);
  const std::vector<std::uint32_t> list{402, 400};
  const auto explain = [&](const char* name, const Plan& plan) {
    const Explanation explanation = Explain(catalog, dependencies, *dependencies.Find(name), plan, &list);
    return ExplanationAsText(catalog, dependencies, explanation, Style(false));
  };
  EXPECT_THAT(explain("A", {}),
              AllOf(HasSubstr("  forces\n    sets B=Up while A is On (A=Off: not now)\n    holds E while A is not On "
                              "(A=Off: acts now)\n"),
                    HasSubstr("setting A=On\n    sets B=Up, because of A=On and [ForceIf:A=On]\n"
                              "    sets C=Set, because of B=Up and [ForceIf:B=Up]\n"
                              "    holds D, because of C=Set and [ForceIf:C=Set]\n"
                              "    frees E, because of A=On and [ForceIfNot:A=On]\n"),
                    HasSubstr("\"PidDepList\" has it, and keywords of other questions name it\n")));
  EXPECT_THAT(explain("Hour", {{*dependencies.Find("Hour"), 7}}),
              AllOf(HasSubstr("\n  is Hour=3\n"), HasSubstr("sets Wake=Early while Hour is 7 (Hour=3: not now)\n"),
                    HasSubstr("setting Hour=7\n    sets Wake=Early, because of Hour=7 and [ForceIf:Hour=7]\n")));
  const Plan both{{*dependencies.Find("A"), 1}, {*dependencies.Find("B"), 0}};
  EXPECT_THAT(explain("B", both), HasSubstr("conflicts with B=Off, because of A=On"));
}

}  // namespace
}  // namespace corvane::inspect
