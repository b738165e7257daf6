/** @file
  inspect, the host command line that reads what CorvaneDxe leaves behind.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <cstdlib>
#include <iostream>

#include <unistd.h>

#include "command/CommandLine.hpp"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  const char* noColour = std::getenv("NO_COLOR");
  const bool colour = (noColour == nullptr || *noColour == '\0') && isatty(STDOUT_FILENO) != 0;
  return corvane::inspect::RunCommandLine(argc, argv, colour, std::cout, std::cerr);
}
