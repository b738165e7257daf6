/** @file
  Findings: errors in an input that is still readable, and the exception for an unreadable input.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace corvane::inspect {

struct Finding {
  std::string Code;  // stable, for programs
  std::string Text;  // one sentence, for people
};

class Findings {
 public:
  template <typename... Args>
  void Add(std::string code, fmt::format_string<Args...> text, Args&&... args) {
    list_.push_back({std::move(code), fmt::format(text, std::forward<Args>(args)...)});
  }
  void Append(const Findings& others) { list_.insert(list_.end(), others.list_.begin(), others.list_.end()); }
  const std::vector<Finding>& List() const { return list_; }

 private:
  std::vector<Finding> list_;
};

// The input is unreadable, or the request has no answer. The text is one line with the reason.
class UnusableInput : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Calls read(). Puts the path at the start of the message of an UnusableInput.
template <typename Read>
auto WithPath(const std::string& path, Read read) {
  try {
    return read();
  } catch (const UnusableInput& unusable) {
    throw UnusableInput(path + ": " + unusable.what());
  }
}

}  // namespace corvane::inspect
