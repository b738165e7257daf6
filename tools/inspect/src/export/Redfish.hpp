/** @file
  `inspect export --redfish`: the attributes as an AttributeRegistry and a Bios resource (DMTF DSP0268, DSP8010).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "export/Offer.hpp"

namespace corvane::inspect {

// Properties of the registry that a capture does not have.
struct RedfishNames {
  std::string Id = "BiosAttributeRegistry.v1_0_0";
  std::string Version = "1.0.0";  // of the registry
  std::string Owner = "Corvane";
  std::string BiosUri = "/redfish/v1/Systems/1/Bios";
  std::string SettingsUri;      // where clients send changes; empty: nowhere
  std::string Language = "en";  // of the texts (RFC 5646)
};

struct RedfishExport {
  nlohmann::ordered_json Registry;
  nlohmann::ordered_json Bios;
  std::vector<LeftOut> Left;
};

RedfishExport ExportRedfish(const Catalog& catalog, const RedfishNames& names);

}  // namespace corvane::inspect
