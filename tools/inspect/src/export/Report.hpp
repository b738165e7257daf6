/** @file
  `inspect report`: one self-contained HTML page about a boot.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "judge/Lint.hpp"

namespace corvane::inspect {

struct ReportInput {
  std::string Name;  // shown on the page
  const inspect::Image& Image;
  std::optional<std::string> Firmware = std::nullopt;  // version of the firmware that wrote the cache of this boot
};

struct ReportOlder {
  std::string Name;
  const inspect::Image* Image = nullptr;  // null: no comparison
};

// The data of the page.
nlohmann::ordered_json ReportData(const ReportInput& input, const std::vector<LintFinding>& findings,
                                  const ReportOlder& older);

std::string ReportPage(const nlohmann::ordered_json& data);

}  // namespace corvane::inspect
