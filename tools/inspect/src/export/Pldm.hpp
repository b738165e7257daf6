/** @file
  `inspect export --pldm`: the tables as the PLDM daemon of a management controller keeps them (DMTF DSP0247).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include "export/Offer.hpp"

namespace corvane::inspect {

// The files stringTable, attributeTable and attributeValueTable. The entries have the lengths of the standard, and
// every handle in them resolves. `common`: without the types that readers of enumerations, strings and integers do not
// parse.
ExportResult ExportPldm(const Image& image, bool common);

}  // namespace corvane::inspect
