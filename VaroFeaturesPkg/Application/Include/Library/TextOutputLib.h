/** @file
  TextOutputLib: prints text on the console, in lines of any length.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef TEXT_OUTPUT_LIB_H_
#define TEXT_OUTPUT_LIB_H_

#include <Base.h>

/**
  Discards pending text and clears OutputStopped. Called before each command.
**/
VOID
StartOutput (
  VOID
  );

/**
  Tells whether the console rejected a line, which it does when the user leaves a page early. Nothing is printed after
  that.
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
  Prints bytes, with \xHH for those that are not printable ASCII, or that are in AlsoEscaped.
**/
VOID
PutEscaped (
  IN CONST CHAR8  *Bytes,
  IN UINTN        Count,
  IN CONST CHAR8  *AlsoEscaped
  );

#endif
