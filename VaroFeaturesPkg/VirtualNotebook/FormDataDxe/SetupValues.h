/** @file
  SetupValues: the questions of all form sets by identifier, behind SetupValuesProtocol.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef SETUP_VALUES_H_
#define SETUP_VALUES_H_

#include <Protocol/SetupValues.h>
#include <Protocol/FormBrowserData.h>

extern SetupValuesProtocol  mSetupValues;

/**
  Lists the setup's form sets; see FORM_BROWSER_LIST_FORM_SETS.
**/
EFI_STATUS
FindFormSets (
  OUT CONST FormSetRecord   ***FormSets
  );

#endif
