/** @file
  The attribute access protocol, through which boot-time components query the platform's attribute service.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

/// Installs the protocol on the driver's image. Called once from the entry point.
EFI_STATUS InstallAttributeAccessProtocol(EFI_HANDLE imageHandle, EFI_SYSTEM_TABLE* systemTable);
