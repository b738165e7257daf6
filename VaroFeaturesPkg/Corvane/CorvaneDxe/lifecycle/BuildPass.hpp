/** @file
  The build pass: gathering the attributes, and building and publishing the tables from them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "lifecycle/DriverState.hpp"

/// Gathers the attributes into the database, or nothing when the cache is valid. Runs once, before the tables are
/// wanted; a failure means that nothing is published in this boot.
[[nodiscard]] EFI_STATUS BuildBiosAttributesData(DriverState& state);

/// Builds and publishes the tables when they are wanted. Runs once; later signals find the tables published.
EFI_STATUS EFIAPI BuildAndPublishTables(EFI_HANDLE imageHandle, EFI_SYSTEM_TABLE* systemTable);
