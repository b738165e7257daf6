/** @file
  The subcommands, each of which adds its options to the command line.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <functional>
#include <ostream>
#include <string>

#include <CLI/CLI.hpp>

#include "bytes/Style.hpp"
#include "capture/Image.hpp"
#include "command/CommandLine.hpp"

namespace corvane::inspect {

// The action of the chosen subcommand. Returns the exit status.
using Action = std::function<int(const Console& console, std::ostream& out, std::ostream& err)>;

void AddCache(CLI::App& app, Action& action);
void AddExplain(CLI::App& app, Action& action);
void AddExport(CLI::App& app, Action& action);
void AddImport(CLI::App& app, Action& action);
void AddLint(CLI::App& app, Action& action);
void AddReport(CLI::App& app, Action& action);
void AddValidate(CLI::App& app, Action& action);

// Prints findings and returns the exit status for them.
int ReportFindings(const Findings& findings, const Style& style, std::ostream& err);

// Notes the findings of an input. They may be the cause of a difference.
void NoteFindings(const std::string& path, const Image& image, std::ostream& err);

}  // namespace corvane::inspect
