/** @file
  Identifiers: numbers that tell all questions of a boot apart, as CorvaneDxe takes equal numbers for one question.

  A form set that PcdVaroSharedNumbering lists, by its own GUID or by a class, keeps the numbers of its IFR. Any other
  question gets a number above 0xFFFF out of its form set's GUID, the form set's instance and its number in the IFR, so
  that it stays the same from boot to boot, whatever else is in the firmware.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef IDENTIFIERS_H_
#define IDENTIFIERS_H_

#include "FormModel.h"

/**
  Gives the questions of a form set their identifiers.

  Instances of a form set are told apart by the device path of their package list, and, where that is the same, by the
  order of their package lists.
**/
VOID
NumberQuestions (
  IN OUT FormModel               *Model,
  IN     CONST EFI_IFR_FORM_SET  *Head
  );

#endif
