/** @file
  The attribute access protocol, through which boot-time components query the platform's attribute service.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

/// Installs the protocol on the driver's image, in place of an earlier instance, and `unload` as the image's unload
/// handler. Called once from the entry point.
[[nodiscard]] EFI_STATUS InstallAttributeAccessProtocol(EFI_HANDLE imageHandle, EFI_IMAGE_UNLOAD unload);

/// What the image's unload handler has to do for the protocol.
[[nodiscard]] EFI_STATUS UnloadAttributeAccess(EFI_HANDLE imageHandle);
