/** @file
  Questions: takes a question's head, options and default out of its IFR opcodes, and reads and writes its value.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef QUESTIONS_H_
#define QUESTIONS_H_

#include "FormModel.h"

/**
  Tells whether an opcode is a question.
**/
BOOLEAN
IsQuestion (
  IN UINT8  Opcode
  );

/**
  Tells whether an opcode is a question of a kind that becomes an attribute.
**/
BOOLEAN
IsAttributeKind (
  IN UINT8  Opcode
  );

/**
  Adds a store that the form set declares. Declarations too old to be of use are left out.
**/
EFI_STATUS
AddStore (
  IN OUT FormModel                *Model,
  IN     CONST EFI_IFR_OP_HEADER  *Opcode
  );

/**
  Adds a question at the end of the model's list, without its value.

  @param[in]  BitField  The question's offset and width count bits.
**/
EFI_STATUS
AddQuestion (
  IN OUT FormModel                *Model,
  IN     CONST EFI_IFR_OP_HEADER  *Opcode,
  IN     BOOLEAN                  BitField
  );

/**
  Adds an option to a one-of question.
**/
EFI_STATUS
AddOption (
  IN OUT FormQuestion                 *Question,
  IN     CONST EFI_IFR_ONE_OF_OPTION  *Opcode
  );

/**
  Takes the standard default that a statement gives as a value; those of other classes do not count.
**/
EFI_STATUS
AddDefault (
  IN OUT FormQuestion          *Question,
  IN     CONST EFI_IFR_DEFAULT *Opcode
  );

/**
  Takes a question's default, unless it has one of the same kind or of a later kind.
**/
VOID
SetDefault (
  IN OUT FormQuestion  *Question,
  IN     DEFAULT_KIND  Kind,
  IN     UINT64        Value
  );

/**
  Reads the current value into the question's record.

  @return  Question->Status.
**/
EFI_STATUS
LoadValue (
  IN OUT FormQuestion  *Question
  );

/**
  Reads the current value.

  @param[out]  Value  Record.ValueSize bytes.
**/
EFI_STATUS
ReadQuestion (
  IN  CONST FormQuestion  *Question,
  OUT VOID                *Value
  );

/**
  Changes the value at once, and reads it back.

  @param[in]  Value  Record.ValueSize bytes.

  @retval EFI_INVALID_PARAMETER  The value has more bits than the question keeps.
**/
EFI_STATUS
WriteQuestion (
  IN CONST FormQuestion  *Question,
  IN CONST VOID          *Value
  );

/**
  Puts a value into a copy of the question's storage.

  @param[in,out]  Data   The question's Width bytes at its offset.
  @param[in]      Value  Record.ValueSize bytes.

  @retval EFI_INVALID_PARAMETER  The value has more bits than the question keeps.
**/
EFI_STATUS
PlaceValue (
  IN     CONST FormQuestion  *Question,
  IN OUT UINT8               *Data,
  IN     CONST VOID          *Value
  );

#endif
