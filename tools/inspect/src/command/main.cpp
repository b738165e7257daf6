/** @file
  inspect, the host command line that reads what CorvaneDxe leaves behind.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <cstdlib>
#include <iostream>
#include <string_view>

#include <unistd.h>

#include "command/CommandLine.hpp"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  const auto variable = [](const char* name) {
    const char* value = std::getenv(name);
    return std::string_view(value != nullptr ? value : "");
  };
  const bool terminal = isatty(STDOUT_FILENO) != 0;
  const bool colour = terminal && variable("NO_COLOR").empty() && variable("TERM") != "dumb";
  return corvane::inspect::RunCommandLine(argc, argv, {.Terminal = terminal, .Colour = colour}, std::cout, std::cerr);
}
