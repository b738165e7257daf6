/** @file
  CallingInterface: what the notebook says of its calling interface in SMBIOS.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CALLING_INTERFACE_H_
#define CALLING_INTERFACE_H_

#include <Uefi/UefiBaseType.h>

/**
  Adds the structures of type 218 to the SMBIOS table.

  @param[out]  IoAddress  At which requests are taken.
**/
EFI_STATUS
PublishCallingInterface (
  OUT UINT16  *IoAddress
  );

#endif
