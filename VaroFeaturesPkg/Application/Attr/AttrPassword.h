/** @file
  AttrPassword: asks for a password without showing it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef ATTR_PASSWORD_H_
#define ATTR_PASSWORD_H_

#include <Uefi/UefiBaseType.h>

//
// Longer than any the service can have: it tells its limit in one byte.
//
#define PASSWORD_CAPACITY  256

/**
  Asks for a password at the keyboard. Printable ASCII, Backspace, Enter; Escape gives up.

  @param[out]  Password  Room for PASSWORD_CAPACITY bytes, which the caller wipes with WipeBytes once it is used.
                         Nothing is left in it unless EFI_SUCCESS.

  @retval EFI_SUCCESS       Password is terminated.
  @retval EFI_ABORTED       Escape.
  @retval EFI_UNSUPPORTED   It holds other characters, or too many.
  @retval others            The keyboard could not be read.
**/
EFI_STATUS
AskPassword (
  OUT CHAR8  *Password
  );

/**
  Overwrites bytes with zero, even where nobody reads them any more.
**/
VOID
WipeBytes (
  OUT VOID   *Bytes,
  IN  UINTN  Count
  );

#endif
