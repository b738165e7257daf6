/** @file
  The boot options and the attribute "System boot configuration".

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/store/AttributeDatabase.hpp"

extern "C" {
#include <Corvane/BootConfigurationState.h>
#include <Protocol/BootOptionSource.h>
}

/// Reads the boot options into `state`, whose views lead into `block`. EFI_UNSUPPORTED for more than 16 options,
/// EFI_COMPROMISED_DATA for a block that ends before its options; `state` is then all zero.
[[nodiscard]] EFI_STATUS ReadBootOptions(BootConfigurationState& state, PoolPtr<BootOptionBlock>& block);

/// Places the attribute at its reserved handle.
void BuildBootConfiguration(AttributeDatabase& database, const BootConfigurationState& state);
