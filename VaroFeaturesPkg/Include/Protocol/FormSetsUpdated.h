/** @file
  FormSetsUpdatedGuid: the platform installs this protocol, without an interface, on exactly one handle when every setup
  form set has been published. The driver then gathers its attributes.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_FORM_SETS_UPDATED_H_
#define PROTOCOL_FORM_SETS_UPDATED_H_

#include <Uefi/UefiBaseType.h>

#define VARO_FORM_SETS_UPDATED_PROTOCOL_GUID \
  { 0x618C92CD, 0xEAAF, 0x48F7, { 0x96, 0x26, 0x77, 0x3D, 0x90, 0xFE, 0x1D, 0xEF } }

extern EFI_GUID  gVaroFormSetsUpdatedProtocolGuid;

#endif
