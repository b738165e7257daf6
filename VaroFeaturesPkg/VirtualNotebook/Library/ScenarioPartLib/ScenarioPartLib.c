/** @file
  PlatformPartLib of the virtual notebook: the scenario item "without" lists the parts that are missing.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Library/PlatformPartLib.h>
#include <Library/ScenarioLib.h>

BOOLEAN
EFIAPI
PlatformHasPart (
  IN CONST CHAR8  *Part
  )
{
  return (BOOLEAN)!ScenarioLists ("without", Part);
}
