/** @file
  `inspect report`: everything about a boot on one page of HTML that needs nothing else.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "Image.hpp"

namespace corvane::inspect {

struct ReportFinding {
  std::string Code;
  std::string Text;
  std::string Advice;  // may be empty
};

struct ReportInput {
  std::string Name;  // as the page calls it
  const inspect::Image& Image;
};

// What the page shows. `older` may be null.
nlohmann::ordered_json ReportData(const ReportInput& input, const std::vector<ReportFinding>& findings,
                                  const ReportInput* older);

std::string ReportPage(const nlohmann::ordered_json& data);

}  // namespace corvane::inspect
