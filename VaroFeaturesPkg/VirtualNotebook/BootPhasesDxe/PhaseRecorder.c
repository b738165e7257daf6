/** @file
  PhaseRecorder: EDK II's performance measurement protocol, for two phases alone.

  The performance library of a driver hands every measurement to this protocol. What is not looked for returns at once,
  so that measuring costs next to nothing.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Library/BaseLib.h>
#include <Library/TimerLib.h>
#include "PhaseRecorder.h"

MeasuredPhase  mMeasuredPhases[MEASURED_PHASE_COUNT] = {
  { "CallbackOnAllFormSetsUpdated" },
  { "BuildBiosAttributesData"      }
};

STATIC
EFI_STATUS
EFIAPI
TakeMeasurement (
  IN CONST VOID                        *CallerIdentifier  OPTIONAL,
  IN CONST VOID                        *Guid      OPTIONAL,
  IN CONST CHAR8                       *String    OPTIONAL,
  IN       UINT64                      TimeStamp  OPTIONAL,
  IN       UINT64                      Address    OPTIONAL,
  IN       UINT32                      Identifier,
  IN       PERF_MEASUREMENT_ATTRIBUTE  Attribute
  )
{
  UINT64         Now;
  MeasuredPhase  *Phase;

  Now = GetPerformanceCounter ();
  if ((Attribute == PerfEntry) || (String == NULL)) {
    return EFI_SUCCESS;
  }

  for (Phase = mMeasuredPhases; Phase < mMeasuredPhases + MEASURED_PHASE_COUNT; Phase++) {
    if (AsciiStrCmp (String, Phase->Name) != 0) {
      continue;
    }

    if (Attribute == PerfStartEntry) {
      Phase->Start = GetPerformanceCounter ();
    } else {
      Phase->Ticks    = Now - Phase->Start;
      Phase->Finished = TRUE;
    }
  }

  return EFI_SUCCESS;
}

EDKII_PERFORMANCE_MEASUREMENT_PROTOCOL  mPhaseRecorder = { TakeMeasurement };
