/** @file
  PhaseRecorder: takes the times that CorvaneDxe brackets with PERF_START and PERF_END.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PHASE_RECORDER_H_
#define PHASE_RECORDER_H_

#include <Uefi.h>
#include <Guid/PerformanceMeasurement.h>

typedef struct {
  CONST CHAR8    *Name;      ///< token of the measurement
  UINT64         Start;      ///< performance counter
  UINT64         Ticks;      ///< between the start and the end
  BOOLEAN        Finished;
} MeasuredPhase;

#define MEASURED_PHASE_COUNT  2

extern MeasuredPhase                           mMeasuredPhases[MEASURED_PHASE_COUNT];
extern EDKII_PERFORMANCE_MEASUREMENT_PROTOCOL  mPhaseRecorder;

#endif
