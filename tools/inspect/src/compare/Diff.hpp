/** @file
  `inspect diff`: what changed between two boots or firmware builds, by name and token.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "bytes/Style.hpp"
#include "capture/Catalog.hpp"

namespace corvane::inspect {

struct Difference {
  std::string Attribute;  // name without annotations; the newer name if it changed
  std::optional<std::uint32_t> Token;
  std::string What;  // stable, for programs
  std::optional<std::string> Old;
  std::optional<std::string> New;
  bool Breaking = false;  // scripts for the older build may fail with the newer one
};

// Ignores handles, because they depend on the order of creation. `values`: compares current values too.
std::vector<Difference> DiffCatalogs(const Catalog& older, const Catalog& newer, bool values);

std::string DiffAsText(const std::vector<Difference>& differences, const Style& style);
nlohmann::ordered_json DifferencesAsJson(const std::vector<Difference>& differences);

}  // namespace corvane::inspect
