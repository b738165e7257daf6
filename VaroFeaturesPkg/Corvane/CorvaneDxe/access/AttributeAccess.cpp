/** @file
  The attribute access protocol: not offered by this version of the driver.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "access/AttributeAccess.hpp"

EFI_STATUS InstallAttributeAccessProtocol(EFI_HANDLE, EFI_SYSTEM_TABLE*) {
  return EFI_UNSUPPORTED;
}
