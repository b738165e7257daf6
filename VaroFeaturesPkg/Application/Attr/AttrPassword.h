/** @file
  AttrPassword: asks for a password without showing it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef ATTR_PASSWORD_H_
#define ATTR_PASSWORD_H_

#include <Uefi/UefiBaseType.h>

//
// The service reports its limit in one byte, so no password is longer.
//
#define PASSWORD_CAPACITY  256

/**
  Reads a password from the keyboard: printable ASCII, Backspace, Enter. Escape cancels.

  @param[out]  Password  Buffer of PASSWORD_CAPACITY bytes. The caller wipes it with WipeBytes after use. After an error
                         it holds zeros.

  @retval EFI_SUCCESS       Password is terminated.
  @retval EFI_ABORTED       Escape.
  @retval EFI_UNSUPPORTED   The password has other characters, or too many.
  @retval others            The keyboard could not be read.
**/
EFI_STATUS
AskPassword (
  OUT CHAR8  *Password
  );

/**
  Overwrites bytes with zeros. The compiler does not remove these writes.
**/
VOID
WipeBytes (
  OUT VOID   *Bytes,
  IN  UINTN  Count
  );

#endif
