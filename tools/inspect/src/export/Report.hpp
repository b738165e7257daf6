/** @file
  `inspect report`: everything about a boot on one page of HTML that needs nothing else.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "judge/Lint.hpp"

namespace corvane::inspect {

struct ReportInput {
  std::string Name;  // as the page calls it
  const inspect::Image& Image;
};

struct ReportOlder {
  std::string Name;
  const inspect::Image* Image = nullptr;  // null = there is nothing to compare with
};

// What the page shows.
nlohmann::ordered_json ReportData(const ReportInput& input, const std::vector<LintFinding>& findings,
                                  const ReportOlder& older);

std::string ReportPage(const nlohmann::ordered_json& data);

}  // namespace corvane::inspect
