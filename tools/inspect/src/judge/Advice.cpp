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
     "Shorten or drop names, texts or questions until the table fits: it is closed with a good checksum, and no "
     "reader can see what it lacks."},
    {"attribute-limit", "Make fewer questions attributes: what comes behind the limit is left out without a word."},
    {"handle-limit", "Make fewer questions attributes: readers that count in eight bits do not reach all of them."},
    {"name-empty", "Give the question's prompt a keyword in the language \"x-UEFI\"."},
    {"name-prompt",
     "Give each prompt a keyword in the language \"x-UEFI\": a prompt changes with the language of the platform."},
    {"name-duplicate", "Give each question a keyword of its own: by name, only one of them can be meant."},
    {"value-duplicate", "Give each option a keyword of its own: by name, only one of them can be chosen."},
    {"keyword-long",
     "Shorten the keyword: one of more than 50 characters before its annotations keeps \"PidDepList\" from "
     "being written."},
    {"dependency-list", "Depend on fewer questions: \"PidDepList\" holds 50 of them."},
    {"dependency-differs", "Boot from the setup's form sets again, so that the list is written anew."},
    {"annotation-malformed",
     "Write \"[ForceIf:NAME=VALUE]\", \"[ForceIfNot:NAME=VALUE]\" or \"[RegEx:EXPRESSION]\", without "
     "blanks, directly behind the name."},
    {"annotation-dangling", "Correct the name or value in the annotation, or take it out: as it is, it is never true."},
    {"dependency-cycle", "Break the chain: whoever sets one of these values sets off all of them."},
    {"dependency-contradiction", "Change one of the annotations: nobody can satisfy both."},
    {"dependency-unmet",
     "Nothing, if the platform lets it be; otherwise set the attribute to the value that is forced."},
    {"expression-invalid", "Correct the expression: brackets are the octal escapes 133 and 135, backslashes doubled."},
    {"value-expression", "Set a value that matches, or correct the expression."},
    {"value-bounds", "Set a value inside the bounds, or correct these in the form."},
    {"default-bounds", "Correct the default or the bounds: a reset to defaults leads to a value that cannot be set."},
    {"bounds-empty", "Correct the bounds in the form: no value lies within them."},
    {"value-above-byte",
     "Expect it: a boot from the cache reads the setting again and keeps its low byte. Rely on this value "
     "in boots that gather from the form sets alone."},
    {"cache-limit", "Raise the limit for one variable in the platform (PcdMaxVariableSize), or shorten the texts."},
    {"cache-", "See \"inspect cache\" for what the next boot does about it."},
    {"other-boot", "Give the flash image that this very boot left behind."},
    {"texts-unpaired", "Nothing, if texts are not needed: what cannot be proven is not paired."},
    {"type-unknown", "Have the firmware's builder write one of the seven types: readers cannot go beyond this entry."},
    {"",
     "Take the capture anew. If it comes out alike, the firmware that sent it is at fault: \"inspect validate\" shows "
     "where."},
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
