/** @file
  TextOutputLib: text for the console, a line at a time, however long it is.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef TEXT_OUTPUT_LIB_H_
#define TEXT_OUTPUT_LIB_H_

#include <Base.h>

/**
  Begins anew after a command whose output was cut off.
**/
VOID
StartOutput (
  VOID
  );

/**
  Says whether the console has refused a line, as it does when its reader leaves a page early. Nothing is printed from
  then on.
**/
BOOLEAN
OutputStopped (
  VOID
  );

/**
  Prints ASCII text; a line feed ends the line.
**/
VOID
PutText (
  IN CONST CHAR8  *Text
  );

/**
  Prints UCS-2 text; a line feed ends the line and carriage returns are left out.
**/
VOID
PutWideText (
  IN CONST CHAR16  *Text
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
