/** @file
  Expression: a compiled regular expression of the Perl dialect, with limits on matching time.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "judge/Expression.hpp"

#include <cstdint>

#include <fmt/format.h>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

namespace corvane::inspect {
namespace {

constexpr std::uint32_t kMatchLimit = 100000;  // steps; names and values need far fewer

PCRE2_SPTR UnitsOf(std::string_view text) {
  return reinterpret_cast<PCRE2_SPTR>(text.data());
}

}  // namespace

Expression::Expression(std::string_view text) {
  int error = 0;
  PCRE2_SIZE offset = 0;
  code_.reset(pcre2_compile(UnitsOf(text), text.size(), 0, &error, &offset, nullptr),
              [](void* code) { pcre2_code_free(static_cast<pcre2_code*>(code)); });
  if (code_ == nullptr) {
    PCRE2_UCHAR message[128] = {};
    pcre2_get_error_message(error, message, sizeof(message));
    problem_ = fmt::format("{} at offset {}", reinterpret_cast<const char*>(message), offset);
  }
}

bool Expression::Matches(std::string_view text) const {
  const auto* code = static_cast<const pcre2_code*>(code_.get());
  if (code == nullptr) {
    return false;
  }
  const std::unique_ptr<pcre2_match_context, void (*)(pcre2_match_context*)> limits(pcre2_match_context_create(nullptr),
                                                                                    pcre2_match_context_free);
  const std::unique_ptr<pcre2_match_data, void (*)(pcre2_match_data*)> match(pcre2_match_data_create(1, nullptr),
                                                                             pcre2_match_data_free);
  pcre2_set_match_limit(limits.get(), kMatchLimit);
  return pcre2_match(code, UnitsOf(text), text.size(), 0, 0, match.get(), limits.get()) >= 0;
}

}  // namespace corvane::inspect
