/** @file
  IfrReader: steps over IFR opcodes within their package, and evaluates the conditions among them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef IFR_READER_H_
#define IFR_READER_H_

#include "FormModel.h"

typedef struct {
  CONST UINT8    *Next;
  UINTN          Left;     ///< bytes from Next to the end
  BOOLEAN        Broken;   ///< an opcode did not fit; nothing more is read
} IfrReader;

/**
  Reads the next opcode.

  @return  The opcode, all of its Length within the package; NULL at the end, or when Broken gets set.
**/
CONST EFI_IFR_OP_HEADER *
NextOpcode (
  IN OUT IfrReader  *Reader
  );

/**
  Skips what is in the scope that the opcode just read has opened, its end included.
**/
VOID
SkipScope (
  IN OUT IfrReader  *Reader
  );

/**
  Evaluates the expression that follows: one opcode, or the scope that its first opcode opens.

  @param[in,out]  Reader  Stands before the expression; behind it afterwards.
  @param[in]      Model   The questions that the expression may name.

  @return  TRUE when the condition is met for certain; one that cannot be told counts as not met.
**/
BOOLEAN
ConditionIsMet (
  IN OUT IfrReader        *Reader,
  IN     CONST FormModel  *Model
  );

#endif
