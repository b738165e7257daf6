/** @file
  What the driver does once every form set of the setup is published.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

/// Reads the platform's modes and language, gathers the attributes or leaves them to the cache, and waits for the
/// tables to be wanted. A failure means that nothing is published in this boot.
EFI_STATUS EFIAPI CallbackOnAllFormSetsUpdated(EFI_HANDLE imageHandle, EFI_SYSTEM_TABLE* systemTable);
