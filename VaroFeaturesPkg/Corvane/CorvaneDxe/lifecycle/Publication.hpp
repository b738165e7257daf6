/** @file
  Publication of the finished tables: the protocol, then the transport records.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "lifecycle/DriverState.hpp"
#include "sources/BootConfiguration.hpp"

/// Installs the published-tables interface and sends the eight records. Without a transport the status of the
/// installation, else that of the last record; the others are sent whatever became of those before them.
EFI_STATUS PublishTables(DriverState& state, const BootConfigurationState& bootConfiguration);
