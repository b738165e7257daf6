/** @file
  Tests of the limits of expressions.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <gtest/gtest.h>

#include "judge/Expression.hpp"

namespace corvane::inspect {
namespace {

TEST(ExpressionTest, Expression_CompilesAndMatchesWithinLimits) {
  EXPECT_TRUE(Expression("^[\\x20-\\x7e]{0,3}$").Matches("abc"));
  EXPECT_FALSE(Expression("^[\\x20-\\x7e]{0,3}$").Matches("abcd"));
  EXPECT_EQ(Expression("^[a-z{0,32}$").Problem(), "missing terminating ] for character class at offset 12");
  EXPECT_NE(Expression(std::string(60000, '(')).Problem(), "");
  EXPECT_FALSE(Expression("(a+)+(a+)+(a+)+$").Matches(std::string(400, 'a') + 'b'));
}

}  // namespace
}  // namespace corvane::inspect
