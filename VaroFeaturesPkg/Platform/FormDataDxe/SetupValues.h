/** @file
  SetupValues: the questions of all form sets by identifier, behind SetupValuesProtocol.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef FORM_DATA_SETUP_VALUES_H_
#define FORM_DATA_SETUP_VALUES_H_

#include <Protocol/SetupValues.h>

extern SetupValuesProtocol  mSetupValues;

/**
  Has the form sets read again as soon as the HII database's form packages have changed.
**/
VOID
WatchFormPackages (
  VOID
  );

/**
  Tells in a DEBUG build how many form sets and questions there are and which questions are left out, and why.
**/
VOID
ReportFormSets (
  VOID
  );

#endif
