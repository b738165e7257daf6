/** @file
  Attributes of the MIPI cameras.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/store/AttributeDatabase.hpp"

/// Builds a read-only string attribute for each of the first four cameras that has an identifier. EFI_UNSUPPORTED when
/// the platform does not know its cameras.
EFI_STATUS BuildCameras(AttributeDatabase& database);
