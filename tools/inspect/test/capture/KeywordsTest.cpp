/** @file
  Tests of names taken apart into a keyword and its annotations.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "capture/Keywords.hpp"

namespace corvane::inspect {
namespace {

using ::testing::HasSubstr;

TEST(KeywordsTest, Names_AreSplitIntoTextAndAnnotations) {
  struct Row {
    const char* Name;
    const char* Bare;
    std::size_t Annotations;
    const char* Problem;
  };
  const Row rows[] = {
      {"Plain", "Plain", 0, ""},
      {"A[ForceIf:B=C][ForceIfNot:D=E]", "A", 2, ""},
      {"A[RegEx:^\\\\133\\\\x20\\\\135$]", "A", 1, ""},
      {"A[ForceIf:B]", "A", 1, "does not name an attribute and its value"},
      {"A[ForceIf:B =C]", "A", 1, "contains a blank"},
      {"A[Force:B=C]", "A", 1, "is of an unknown kind"},
      {"A[ForceIf:B=C", "A", 0, "has no closing bracket"},
      {"A[ForceIf:B=C]tail", "A", 1, "stands outside the brackets"},
      {"A[RegEx:]", "A", 1, "has no expression"},
  };
  for (const Row& row : rows) {
    const Keyword keyword = ParseKeyword(row.Name);
    EXPECT_EQ(keyword.Bare, row.Bare);
    EXPECT_EQ(keyword.Annotations.size(), row.Annotations) << row.Name;
    EXPECT_THAT(keyword.Problem, HasSubstr(row.Problem)) << row.Name;
    EXPECT_EQ(keyword.Problem.empty(), *row.Problem == '\0') << row.Name;
  }
  EXPECT_EQ(UnescapeExpression("^\\\\133\\\\x20-\\x7e\\\\135{0,32}\\\\.\\\\101$"), "^[\\x20-\\x7e]{0,32}\\.\\x41$");
}

}  // namespace
}  // namespace corvane::inspect
