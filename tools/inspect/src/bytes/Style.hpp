/** @file
  Style: emphasis on terminals, plain text elsewhere.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <string_view>

namespace corvane::inspect {

class Style {
 public:
  explicit Style(bool colour) : colour_(colour) {}

  std::string Strong(std::string_view text) const { return Wrap("1", text); }
  std::string Bad(std::string_view text) const { return Wrap("1;31", text); }

 private:
  std::string Wrap(std::string_view code, std::string_view text) const {
    if (!colour_) {
      return std::string(text);
    }
    return std::string("\x1b[").append(code).append("m").append(text).append("\x1b[0m");
  }

  bool colour_;
};

}  // namespace corvane::inspect
