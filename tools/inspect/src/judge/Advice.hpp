/** @file
  Advice: what to do about a finding, by its code.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string_view>

namespace corvane::inspect {

const char* AdviceFor(std::string_view code);  // sentences

}  // namespace corvane::inspect
