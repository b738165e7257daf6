/** @file
  What the frame of the stress form set, a VFR source, and the code that fills it have in common.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef STRESS_FORMS_H_
#define STRESS_FORMS_H_

#define STRESS_FORM_SET_GUID \
  { 0x9F75D608, 0x7E1F, 0x4F4F, { 0xAD, 0xB5, 0xB1, 0x1A, 0xBF, 0x9C, 0x82, 0x46 } }

#define STRESS_FORM       1
#define STRESS_LABEL      0x5354
#define STRESS_STORE      0x5354
#define STRESS_VALUES     4096   ///< bytes of the variable

#endif
