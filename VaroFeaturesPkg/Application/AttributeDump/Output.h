/** @file
  Output: text for the console, a line at a time, however long it is.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef OUTPUT_H_
#define OUTPUT_H_

#include <Base.h>

/**
  Prints ASCII text; a line feed ends the line.
**/
VOID
PutText (
  IN CONST CHAR8  *Text
  );

/**
  Prints a short formatted text.
**/
VOID
EFIAPI
PutFormat (
  IN CONST CHAR8  *Format,
  ...
  );

/**
  Prints bytes, with \xHH for those that are not printable ASCII or are among the given ones.
**/
VOID
PutEscaped (
  IN CONST CHAR8  *Bytes,
  IN UINTN        Count,
  IN CONST CHAR8  *AlsoEscaped
  );

#endif
