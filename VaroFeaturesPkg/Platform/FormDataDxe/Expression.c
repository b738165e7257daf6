/** @file
  Expression: evaluates IFR expressions that come to a number or a truth value.

  Not evaluated are texts, maps, rules, values of other form sets, stores that no question names, and who is logged in.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include "Expression.h"

#define EXPRESSION_DEPTH  32

typedef struct {
  Operand    Entries[EXPRESSION_DEPTH];
  UINTN      Count;
  UINT8      Culprit;   ///< an opcode that is not understood, or for which the stack does not work out
} OperandStack;

STATIC
Operand
Known (
  IN UINT64  Value
  )
{
  Operand  Result;

  Result.Known   = TRUE;
  Result.Culprit = NO_OPCODE;
  Result.Value   = Value;
  return Result;
}

STATIC
Operand
Unknown (
  IN UINT8  Culprit
  )
{
  Operand  Result;

  Result.Known   = FALSE;
  Result.Culprit = Culprit;
  Result.Value   = 0;
  return Result;
}

STATIC
VOID
Fail (
  IN OUT OperandStack  *Stack,
  IN     UINT8         Opcode
  )
{
  if (Stack->Culprit == NO_OPCODE) {
    Stack->Culprit = Opcode;
  }
}

STATIC
VOID
Push (
  IN OUT OperandStack  *Stack,
  IN     UINT8         Opcode,
  IN     Operand       Value
  )
{
  if (Stack->Count == EXPRESSION_DEPTH) {
    Fail (Stack, Opcode);
    return;
  }

  Stack->Entries[Stack->Count] = Value;
  Stack->Count++;
}

STATIC
Operand
Pop (
  IN OUT OperandStack  *Stack,
  IN     UINT8         Opcode
  )
{
  if (Stack->Count == 0) {
    Fail (Stack, Opcode);
    return Unknown (Opcode);
  }

  Stack->Count--;
  return Stack->Entries[Stack->Count];
}

/**
  Gives a question's value as an operand.

  @param[in]  Opcode  That asks for it.
**/
STATIC
Operand
ValueOf (
  IN CONST FormQuestion  *Question OPTIONAL,
  IN UINT8               Opcode
  )
{
  if ((Question == NULL) || !Question->IsNumber || Question->Computed || EFI_ERROR (Question->Status)) {
    return Unknown (Opcode);
  }

  return Known (Question->Record.CurrentValue);
}

STATIC
Operand
NumberOf (
  IN CONST FormModel  *Model,
  IN EFI_QUESTION_ID  Id,
  IN UINT8            Opcode
  )
{
  return ValueOf (FindFormQuestion (Model, Id), Opcode);
}

/**
  Combines two numbers that are known.
**/
STATIC
Operand
Combine (
  IN UINT8   Opcode,
  IN UINT64  Left,
  IN UINT64  Right
  )
{
  switch (Opcode) {
    case EFI_IFR_EQUAL_OP:
      return Known (Left == Right);
    case EFI_IFR_NOT_EQUAL_OP:
      return Known (Left != Right);
    case EFI_IFR_GREATER_THAN_OP:
      return Known (Left > Right);
    case EFI_IFR_GREATER_EQUAL_OP:
      return Known (Left >= Right);
    case EFI_IFR_LESS_THAN_OP:
      return Known (Left < Right);
    case EFI_IFR_LESS_EQUAL_OP:
      return Known (Left <= Right);
    case EFI_IFR_BITWISE_AND_OP:
      return Known (Left & Right);
    case EFI_IFR_BITWISE_OR_OP:
      return Known (Left | Right);
    case EFI_IFR_SHIFT_LEFT_OP:
      return Known ((Right < 64) ? LShiftU64 (Left, (UINTN)Right) : 0);
    case EFI_IFR_SHIFT_RIGHT_OP:
      return Known ((Right < 64) ? RShiftU64 (Left, (UINTN)Right) : 0);
    case EFI_IFR_ADD_OP:
      return Known (Left + Right);
    case EFI_IFR_SUBTRACT_OP:
      return Known (Left - Right);
    case EFI_IFR_MULTIPLY_OP:
      return Known (MultU64x64 (Left, Right));
    case EFI_IFR_DIVIDE_OP:
      return (Right == 0) ? Unknown (Opcode) : Known (DivU64x64Remainder (Left, Right, NULL));
    default:
      if (Right == 0) {
        return Unknown (Opcode);
      }

      DivU64x64Remainder (Left, Right, &Left);
      return Known (Left);
  }
}

STATIC
VOID
PushCombined (
  IN OUT OperandStack  *Stack,
  IN     UINT8         Opcode
  )
{
  Operand  Right;
  Operand  Left;

  Right = Pop (Stack, Opcode);
  Left  = Pop (Stack, Opcode);
  Push (Stack, Opcode, !Left.Known ? Left : !Right.Known ? Right : Combine (Opcode, Left.Value, Right.Value));
}

/**
  AND and OR of truth values, either of which may be unknown: one side can decide alone.
**/
STATIC
VOID
PushLogical (
  IN OUT OperandStack  *Stack,
  IN     UINT8         Opcode
  )
{
  Operand  Right;
  Operand  Left;
  BOOLEAN  Decisive;

  Decisive = (BOOLEAN)(Opcode == EFI_IFR_OR_OP);
  Right    = Pop (Stack, Opcode);
  Left     = Pop (Stack, Opcode);
  if ((Left.Known && ((Left.Value != 0) == Decisive)) || (Right.Known && ((Right.Value != 0) == Decisive))) {
    Push (Stack, Opcode, Known (Decisive));
  } else {
    Push (Stack, Opcode, !Left.Known ? Left : !Right.Known ? Right : Known (!Decisive));
  }
}

/**
  The third value from the top chooses: the top when it is true, else the one below.
**/
STATIC
VOID
PushConditional (
  IN OUT OperandStack  *Stack
  )
{
  Operand  Condition;
  Operand  Then;
  Operand  Otherwise;

  Then      = Pop (Stack, EFI_IFR_CONDITIONAL_OP);
  Otherwise = Pop (Stack, EFI_IFR_CONDITIONAL_OP);
  Condition = Pop (Stack, EFI_IFR_CONDITIONAL_OP);
  Push (
    Stack,
    EFI_IFR_CONDITIONAL_OP,
    !Condition.Known ? Condition : (Condition.Value != 0) ? Then : Otherwise
    );
}

STATIC
Operand
Membership (
  IN CONST EFI_IFR_EQ_ID_VAL_LIST  *List,
  IN CONST FormModel               *Model
  )
{
  Operand  Question;
  BOOLEAN  Found;
  UINTN    Index;

  if ((List->Header.Length < OFFSET_OF (EFI_IFR_EQ_ID_VAL_LIST, ValueList)) ||
      ((List->Header.Length - OFFSET_OF (EFI_IFR_EQ_ID_VAL_LIST, ValueList)) / sizeof (UINT16) < List->ListLength))
  {
    return Unknown (EFI_IFR_EQ_ID_VAL_LIST_OP);
  }

  Question = NumberOf (Model, List->QuestionId, EFI_IFR_EQ_ID_VAL_LIST_OP);
  for (Found = FALSE, Index = 0; Index < List->ListLength; Index++) {
    Found |= (BOOLEAN)(ReadUnaligned16 (&List->ValueList[Index]) == Question.Value);
  }

  return Question.Known ? Known (Found) : Question;
}

/**
  The value of a question whose number is on the stack: of this form set, or of the one that the opcode names.
**/
STATIC
Operand
ReferredValue (
  IN OUT OperandStack             *Stack,
  IN     CONST EFI_IFR_OP_HEADER  *Opcode,
  IN     CONST FormModel          *Model
  )
{
  CONST EFI_IFR_QUESTION_REF3_3  *Reference;
  Operand                        Id;

  Id = Pop (Stack, Opcode->OpCode);
  if (!Id.Known) {
    return Id;
  }

  Reference = (CONST EFI_IFR_QUESTION_REF3_3 *)Opcode;
  if ((Opcode->Length >= sizeof (*Reference)) && !CompareGuid (&Reference->Guid, &Model->Guid)) {
    return Unknown (Opcode->OpCode);
  }

  return NumberOf (Model, (EFI_QUESTION_ID)Id.Value, Opcode->OpCode);
}

/**
  Gives what opcodes without operands of their own come to.

  @param[in]  Length  Bytes that the opcode must have for what is read out of it.
**/
STATIC
Operand
Constant (
  IN CONST EFI_IFR_OP_HEADER  *Opcode,
  IN UINTN                    Width
  )
{
  if (Opcode->Length < sizeof (*Opcode) + Width) {
    return Unknown (Opcode->OpCode);
  }

  return Known (ReadLittleEndian ((CONST UINT8 *)(Opcode + 1), Width));
}

/**
  Compares a question with a number or with another question.
**/
STATIC
Operand
Equality (
  IN CONST EFI_IFR_OP_HEADER  *Opcode,
  IN CONST FormModel          *Model
  )
{
  CONST EFI_IFR_EQ_ID_VAL  *EqualsValue;
  CONST EFI_IFR_EQ_ID_ID   *EqualsQuestion;
  Operand                  Left;
  Operand                  Right;

  STATIC_ASSERT (sizeof (EFI_IFR_EQ_ID_VAL) == sizeof (EFI_IFR_EQ_ID_ID), "one check of the length");
  if (Opcode->Length < sizeof (EFI_IFR_EQ_ID_VAL)) {
    return Unknown (Opcode->OpCode);
  }

  if (Opcode->OpCode == EFI_IFR_EQ_ID_VAL_OP) {
    EqualsValue = (CONST EFI_IFR_EQ_ID_VAL *)Opcode;
    Left        = NumberOf (Model, EqualsValue->QuestionId, Opcode->OpCode);
    Right       = Known (EqualsValue->Value);
  } else {
    EqualsQuestion = (CONST EFI_IFR_EQ_ID_ID *)Opcode;
    Left           = NumberOf (Model, EqualsQuestion->QuestionId1, Opcode->OpCode);
    Right          = NumberOf (Model, EqualsQuestion->QuestionId2, Opcode->OpCode);
  }

  return !Left.Known ? Left : !Right.Known ? Right : Known (Left.Value == Right.Value);
}

/**
  Takes one operator with one operand.
**/
STATIC
Operand
Unary (
  IN OUT OperandStack  *Stack,
  IN     UINT8         Opcode
  )
{
  Operand  Value;

  Value = Pop (Stack, Opcode);
  if (!Value.Known) {
    return Value;
  }

  switch (Opcode) {
    case EFI_IFR_NOT_OP:
      return Known (Value.Value == 0);
    case EFI_IFR_BITWISE_NOT_OP:
      return Known (~Value.Value);
    case EFI_IFR_TO_BOOLEAN_OP:
      return Known (Value.Value != 0);
    default:
      return Value;   // EFI_IFR_TO_UINT_OP of a number
  }
}

STATIC
VOID
Evaluate (
  IN OUT OperandStack             *Stack,
  IN     CONST EFI_IFR_OP_HEADER  *Opcode,
  IN     CONST FormModel          *Model,
  IN     CONST FormQuestion       *Question OPTIONAL
  )
{
  Operand  Result;

  switch (Opcode->OpCode) {
    case EFI_IFR_TRUE_OP:
    case EFI_IFR_ONE_OP:
      Result = Known (1);
      break;
    case EFI_IFR_FALSE_OP:
    case EFI_IFR_ZERO_OP:
      Result = Known (0);
      break;
    case EFI_IFR_ONES_OP:
      Result = Known (MAX_UINT64);
      break;
    case EFI_IFR_VERSION_OP:
      Result = Known (gST->Hdr.Revision >> 16);
      break;
    case EFI_IFR_UINT8_OP:
      Result = Constant (Opcode, sizeof (UINT8));
      break;
    case EFI_IFR_UINT16_OP:
      Result = Constant (Opcode, sizeof (UINT16));
      break;
    case EFI_IFR_UINT32_OP:
      Result = Constant (Opcode, sizeof (UINT32));
      break;
    case EFI_IFR_UINT64_OP:
      Result = Constant (Opcode, sizeof (UINT64));
      break;
    case EFI_IFR_THIS_OP:
      Result = ValueOf (Question, Opcode->OpCode);
      break;
    case EFI_IFR_DUP_OP:
      Result = Pop (Stack, Opcode->OpCode);
      Push (Stack, Opcode->OpCode, Result);
      break;
    case EFI_IFR_NOT_OP:
    case EFI_IFR_BITWISE_NOT_OP:
    case EFI_IFR_TO_BOOLEAN_OP:
    case EFI_IFR_TO_UINT_OP:
      Result = Unary (Stack, Opcode->OpCode);
      break;
    case EFI_IFR_AND_OP:
    case EFI_IFR_OR_OP:
      PushLogical (Stack, Opcode->OpCode);
      return;
    case EFI_IFR_EQUAL_OP:
    case EFI_IFR_NOT_EQUAL_OP:
    case EFI_IFR_GREATER_THAN_OP:
    case EFI_IFR_GREATER_EQUAL_OP:
    case EFI_IFR_LESS_THAN_OP:
    case EFI_IFR_LESS_EQUAL_OP:
    case EFI_IFR_BITWISE_AND_OP:
    case EFI_IFR_BITWISE_OR_OP:
    case EFI_IFR_SHIFT_LEFT_OP:
    case EFI_IFR_SHIFT_RIGHT_OP:
    case EFI_IFR_ADD_OP:
    case EFI_IFR_SUBTRACT_OP:
    case EFI_IFR_MULTIPLY_OP:
    case EFI_IFR_DIVIDE_OP:
    case EFI_IFR_MODULO_OP:
      PushCombined (Stack, Opcode->OpCode);
      return;
    case EFI_IFR_CONDITIONAL_OP:
      PushConditional (Stack);
      return;
    case EFI_IFR_QUESTION_REF1_OP:
      Result = Constant (Opcode, sizeof (EFI_QUESTION_ID));
      Result = Result.Known ? NumberOf (Model, (EFI_QUESTION_ID)Result.Value, Opcode->OpCode) : Result;
      break;
    case EFI_IFR_QUESTION_REF2_OP:
    case EFI_IFR_QUESTION_REF3_OP:
      Result = ReferredValue (Stack, Opcode, Model);
      break;
    case EFI_IFR_EQ_ID_VAL_OP:
    case EFI_IFR_EQ_ID_ID_OP:
      Result = Equality (Opcode, Model);
      break;
    case EFI_IFR_EQ_ID_VAL_LIST_OP:
      Result = Membership ((CONST EFI_IFR_EQ_ID_VAL_LIST *)Opcode, Model);
      break;
    case EFI_IFR_SECURITY_OP:
      Result = Unknown (Opcode->OpCode);   // alone or with operators beside it, the rest still counts
      break;
    default:
      Fail (Stack, Opcode->OpCode);
      return;
  }

  Push (Stack, Opcode->OpCode, Result);
}

Operand
EvaluateExpression (
  IN OUT IfrReader           *Reader,
  IN     CONST FormModel     *Model,
  IN     CONST FormQuestion  *Question OPTIONAL
  )
{
  CONST EFI_IFR_OP_HEADER  *Opcode;
  OperandStack             Stack;
  BOOLEAN                  Scoped;
  UINT8                    Last;

  Stack.Count   = 0;
  Stack.Culprit = NO_OPCODE;
  Last          = NO_OPCODE;
  Opcode        = NextOpcode (Reader);
  Scoped        = (BOOLEAN)((Opcode != NULL) && Opcode->Scope);
  while ((Opcode != NULL) && (Opcode->OpCode != EFI_IFR_END_OP)) {
    Last = Opcode->OpCode;
    Evaluate (&Stack, Opcode, Model, Question);
    if (!Scoped) {
      break;
    }

    Opcode = NextOpcode (Reader);
    if ((Opcode != NULL) && Opcode->Scope) {
      Fail (&Stack, Opcode->OpCode);   // a list inside the expression, as MAP has
      SkipScope (Reader);
    }
  }

  if (Opcode == NULL) {
    Reader->Broken = TRUE;
  }

  if ((Stack.Culprit == NO_OPCODE) && (Stack.Count != 1)) {
    Stack.Culprit = Last;
  }

  return (Stack.Culprit != NO_OPCODE) ? Unknown (Stack.Culprit) : Stack.Entries[0];
}
