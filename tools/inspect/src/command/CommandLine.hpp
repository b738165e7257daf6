/** @file
  The command line of inspect: subcommands, options, exit statuses.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <ostream>

namespace corvane::inspect {

enum ExitStatus : int { kClean = 0, kFindings = 1, kUnusable = 2 };

// Properties of standard output.
struct Console {
  bool Terminal = false;
  bool Colour = false;  // the user wants emphasis, and the terminal supports it
};

// Never throws: every failure is one line on `err`. Output that cannot be written is a failure.
int RunCommandLine(int argc, const char* const* argv, const Console& console, std::ostream& out, std::ostream& err);

}  // namespace corvane::inspect
