/** @file
  `inspect export --firmware-attributes`: the tree of a device of Linux's firmware-attributes class.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include "export/Offer.hpp"

namespace corvane::inspect {

// The class: sysfs-class-firmware-attributes in the kernel's Documentation/ABI/testing. `language` is of the texts.
ExportResult ExportFirmwareAttributes(const Catalog& catalog, const std::string& language);

}  // namespace corvane::inspect
