/** @file
  Expression: a compiled regular expression of the Perl dialect, with limits on matching time.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace corvane::inspect {

class Expression {
 public:
  explicit Expression(std::string_view text);  // 8-bit characters; unescaped

  const std::string& Problem() const { return problem_; }  // why it does not compile; empty if it does
  bool Matches(std::string_view text) const;               // false also if matching exceeds the limits

 private:
  std::shared_ptr<void> code_;
  std::string problem_;
};

}  // namespace corvane::inspect
