/** @file
  The command line of inspect: subcommands, options, exit statuses.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <ostream>

namespace corvane::inspect {

enum ExitStatus : int { kClean = 0, kFindings = 1, kUnusable = 2 };

// Never throws: whatever goes wrong is one line on `err`.
int RunCommandLine(int argc, const char* const* argv, bool colour, std::ostream& out, std::ostream& err);

}  // namespace corvane::inspect
