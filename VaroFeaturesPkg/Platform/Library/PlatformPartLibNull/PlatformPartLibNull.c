/** @file
  PlatformPartLib of a platform that has every part it is built with.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Library/PlatformPartLib.h>

BOOLEAN
EFIAPI
PlatformHasPart (
  IN CONST CHAR8  *Part
  )
{
  return TRUE;
}
