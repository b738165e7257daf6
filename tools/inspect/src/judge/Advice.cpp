/** @file
  Advice: what to do about a finding, by its code.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "judge/Advice.hpp"

#include <utility>

namespace corvane::inspect {
namespace {

// The first entry applies whose text is a prefix of the code.
constexpr std::pair<std::string_view, const char*> kAdvice[] = {
    {"table-cut",
     "Shorten or remove names, texts or questions until the table fits. Its checksum is good, so readers cannot see "
     "the loss."},
    {"attribute-limit", "Make fewer questions attributes. Readers cannot see that later questions are left out."},
    {"handle-limit", "Make fewer questions attributes. Readers with eight-bit handles cannot reach all of them."},
    {"name-empty", "Give the question's prompt a keyword in the language \"x-UEFI\"."},
    {"name-prompt",
     "Give each prompt a keyword in the language \"x-UEFI\": a prompt changes with the language of the platform."},
    {"name-duplicate", "Give each question its own keyword. A shared name selects only one of them."},
    {"value-duplicate", "Give each option its own keyword. A shared name selects only one of them."},
    {"keyword-long",
     "Shorten the keyword. With more than 50 characters before the annotations, \"PidDepList\" is not written."},
    {"dependency-list", "Depend on fewer questions. \"PidDepList\" holds 50."},
    {"dependency-differs", "Boot without a valid cache, so that the driver writes the list again."},
    {"annotation-malformed",
     "Write \"[ForceIf:NAME=VALUE]\", \"[ForceIfNot:NAME=VALUE]\" or \"[RegEx:EXPRESSION]\", without "
     "blanks, directly after the name."},
    {"annotation-dangling", "Correct or remove the annotation. Its condition is never true."},
    {"dependency-cycle", "Remove one of the annotations. Setting one of these values sets all of them."},
    {"dependency-contradiction", "Change one of the annotations. No setting satisfies both."},
    {"dependency-unmet", "Set the attribute to the forced value, unless the platform allows the difference."},
    {"expression-invalid",
     "Correct the expression. Brackets are written as octal escapes 133 and 135, backslashes are doubled."},
    {"value-expression", "Set a value that matches, or correct the expression."},
    {"value-bounds", "Set a value inside the bounds, or correct the bounds in the form."},
    {"default-bounds", "Correct the default or the bounds. A reset to defaults gives a value that cannot be set."},
    {"bounds-empty", "Correct the bounds in the form. No value is inside them."},
    {"value-above-byte",
     "Rely on this value only in boots that gather from the form sets. A boot from the cache keeps its low byte."},
    {"cache-limit", "Raise the limit for one variable in the platform (PcdMaxVariableSize), or shorten the texts."},
    {"cache-", "Run \"inspect cache\" to see what the next boot does."},
    {"other-boot", "Use the flash image that the same boot left."},
    {"texts-unpaired", "Do nothing unless texts are needed. A pairing that cannot be proven is not shown."},
    {"type-unknown", "Use one of the seven types. Readers cannot read beyond this entry."},
    {"",
     "Capture again. If the result is the same, the firmware sends wrong data. Run \"inspect validate\" to see where."},
};

}  // namespace

const char* AdviceFor(std::string_view code) {
  for (const auto& [prefix, advice] : kAdvice) {
    if (code.starts_with(prefix)) {
      return advice;
    }
  }
  return "";
}

}  // namespace corvane::inspect
