/** @file
  PlatformPartLib: which of the parts under Platform/ this boot has. One firmware image may serve models that differ; a
  part that is left out for good is left out of the build instead.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PLATFORM_PART_LIB_H_
#define PLATFORM_PART_LIB_H_

#include <Uefi/UefiBaseType.h>

/**
  Tells whether a part is to provide its protocol.

  @param[in]  Part  asset-tag, attribute-service, boot-options, calling-interface, defaults, firmware-version,
                    form-data, form-sets-updated, settings, tables-requested or transport.
**/
BOOLEAN
EFIAPI
PlatformHasPart (
  IN CONST CHAR8  *Part
  );

#endif
