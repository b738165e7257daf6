/** @file
  IfrReader: steps over IFR opcodes within their package, and evaluates the conditions among them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include "IfrReader.h"

#define EXPRESSION_DEPTH  16

typedef struct {
  BOOLEAN    Known;
  UINT64     Value;
} Operand;

typedef struct {
  Operand    Entries[EXPRESSION_DEPTH];
  UINTN      Count;
  BOOLEAN    Failed;   ///< an opcode that is not understood, or a stack that does not work out
} OperandStack;

CONST EFI_IFR_OP_HEADER *
NextOpcode (
  IN OUT IfrReader  *Reader
  )
{
  CONST EFI_IFR_OP_HEADER  *Opcode;

  if (Reader->Broken || (Reader->Left == 0)) {
    return NULL;
  }

  Opcode = (CONST EFI_IFR_OP_HEADER *)Reader->Next;
  if ((Reader->Left < sizeof (EFI_IFR_OP_HEADER)) ||
      (Opcode->Length < sizeof (EFI_IFR_OP_HEADER)) ||
      (Opcode->Length > Reader->Left))
  {
    Reader->Broken = TRUE;
    return NULL;
  }

  Reader->Next += Opcode->Length;
  Reader->Left -= Opcode->Length;
  return Opcode;
}

VOID
SkipScope (
  IN OUT IfrReader  *Reader
  )
{
  CONST EFI_IFR_OP_HEADER  *Opcode;
  UINTN                    Depth;

  for (Depth = 1; Depth > 0; ) {
    Opcode = NextOpcode (Reader);
    if (Opcode == NULL) {
      Reader->Broken = TRUE;   // the scope never ends
      return;
    }

    if (Opcode->OpCode == EFI_IFR_END_OP) {
      Depth--;
    } else if (Opcode->Scope) {
      Depth++;
    }
  }
}

STATIC
VOID
Push (
  IN OUT OperandStack  *Stack,
  IN     BOOLEAN       Known,
  IN     UINT64        Value
  )
{
  if (Stack->Count == EXPRESSION_DEPTH) {
    Stack->Failed = TRUE;
    return;
  }

  Stack->Entries[Stack->Count].Known = Known;
  Stack->Entries[Stack->Count].Value = Value;
  Stack->Count++;
}

STATIC
Operand
Pop (
  IN OUT OperandStack  *Stack
  )
{
  Operand  Unknown;

  if (Stack->Count == 0) {
    Stack->Failed = TRUE;
    Unknown.Known = FALSE;
    Unknown.Value = 0;
    return Unknown;
  }

  Stack->Count--;
  return Stack->Entries[Stack->Count];
}

STATIC
Operand
QuestionOperand (
  IN CONST FormModel  *Model,
  IN EFI_QUESTION_ID  Identifier
  )
{
  CONST FormQuestion  *Question;
  Operand             Result;

  Result.Value = 0;
  Question     = FindFormQuestion (Model, Identifier);
  Result.Known = (BOOLEAN)((Question != NULL) && CurrentNumber (Question, &Result.Value));
  return Result;
}

/**
  Pushes the constant that follows an opcode's head, as far as the opcode holds it.
**/
STATIC
VOID
PushConstant (
  IN OUT OperandStack             *Stack,
  IN     CONST EFI_IFR_OP_HEADER  *Opcode,
  IN     UINTN                    Width
  )
{
  CONST UINT8  *Bytes;
  UINT64       Value;
  UINTN        Index;

  if (Opcode->Length < sizeof (*Opcode) + Width) {
    Stack->Failed = TRUE;
    return;
  }

  Bytes = (CONST UINT8 *)(Opcode + 1);
  for (Value = 0, Index = 0; Index < Width; Index++) {
    Value |= LShiftU64 (Bytes[Index], 8 * Index);
  }

  Push (Stack, TRUE, Value);
}

STATIC
VOID
PushComparison (
  IN OUT OperandStack  *Stack,
  IN     UINT8         Opcode
  )
{
  Operand  Right;
  Operand  Left;
  BOOLEAN  Result;

  Right = Pop (Stack);
  Left  = Pop (Stack);
  switch (Opcode) {
    case EFI_IFR_EQUAL_OP:
      Result = (BOOLEAN)(Left.Value == Right.Value);
      break;
    case EFI_IFR_NOT_EQUAL_OP:
      Result = (BOOLEAN)(Left.Value != Right.Value);
      break;
    case EFI_IFR_GREATER_THAN_OP:
      Result = (BOOLEAN)(Left.Value > Right.Value);
      break;
    case EFI_IFR_GREATER_EQUAL_OP:
      Result = (BOOLEAN)(Left.Value >= Right.Value);
      break;
    case EFI_IFR_LESS_THAN_OP:
      Result = (BOOLEAN)(Left.Value < Right.Value);
      break;
    default:
      Result = (BOOLEAN)(Left.Value <= Right.Value);
      break;
  }

  Push (Stack, (BOOLEAN)(Left.Known && Right.Known), Result);
}

/**
  AND and OR of truth values, either of which may be unknown: one side can decide alone.
**/
STATIC
VOID
PushLogical (
  IN OUT OperandStack  *Stack,
  IN     BOOLEAN       Decisive   ///< the truth value that decides: FALSE for AND, TRUE for OR
  )
{
  Operand  Right;
  Operand  Left;

  Right = Pop (Stack);
  Left  = Pop (Stack);
  if ((Left.Known && ((Left.Value != 0) == Decisive)) || (Right.Known && ((Right.Value != 0) == Decisive))) {
    Push (Stack, TRUE, Decisive);
  } else {
    Push (Stack, (BOOLEAN)(Left.Known && Right.Known), !Decisive);
  }
}

STATIC
VOID
PushMembership (
  IN OUT OperandStack                    *Stack,
  IN     CONST EFI_IFR_EQ_ID_VAL_LIST    *List,
  IN     CONST FormModel                 *Model
  )
{
  Operand  Question;
  BOOLEAN  Found;
  UINTN    Index;

  if ((List->Header.Length < OFFSET_OF (EFI_IFR_EQ_ID_VAL_LIST, ValueList)) ||
      ((List->Header.Length - OFFSET_OF (EFI_IFR_EQ_ID_VAL_LIST, ValueList)) / sizeof (UINT16) < List->ListLength))
  {
    Stack->Failed = TRUE;
    return;
  }

  Question = QuestionOperand (Model, List->QuestionId);
  for (Found = FALSE, Index = 0; Index < List->ListLength; Index++) {
    Found |= (BOOLEAN)(ReadUnaligned16 (&List->ValueList[Index]) == Question.Value);
  }

  Push (Stack, Question.Known, Found);
}

STATIC
VOID
Evaluate (
  IN OUT OperandStack             *Stack,
  IN     CONST EFI_IFR_OP_HEADER  *Opcode,
  IN     CONST FormModel          *Model
  )
{
  CONST EFI_IFR_EQ_ID_VAL  *EqualsValue;
  CONST EFI_IFR_EQ_ID_ID   *EqualsQuestion;
  Operand                  Left;
  Operand                  Right;

  switch (Opcode->OpCode) {
    case EFI_IFR_TRUE_OP:
    case EFI_IFR_ONE_OP:
      Push (Stack, TRUE, 1);
      return;
    case EFI_IFR_FALSE_OP:
    case EFI_IFR_ZERO_OP:
      Push (Stack, TRUE, 0);
      return;
    case EFI_IFR_ONES_OP:
      Push (Stack, TRUE, MAX_UINT64);
      return;
    case EFI_IFR_UINT8_OP:
      PushConstant (Stack, Opcode, sizeof (UINT8));
      return;
    case EFI_IFR_UINT16_OP:
      PushConstant (Stack, Opcode, sizeof (UINT16));
      return;
    case EFI_IFR_UINT32_OP:
      PushConstant (Stack, Opcode, sizeof (UINT32));
      return;
    case EFI_IFR_UINT64_OP:
      PushConstant (Stack, Opcode, sizeof (UINT64));
      return;
    case EFI_IFR_NOT_OP:
      Left = Pop (Stack);
      Push (Stack, Left.Known, Left.Value == 0);
      return;
    case EFI_IFR_AND_OP:
      PushLogical (Stack, FALSE);
      return;
    case EFI_IFR_OR_OP:
      PushLogical (Stack, TRUE);
      return;
    case EFI_IFR_EQUAL_OP:
    case EFI_IFR_NOT_EQUAL_OP:
    case EFI_IFR_GREATER_THAN_OP:
    case EFI_IFR_GREATER_EQUAL_OP:
    case EFI_IFR_LESS_THAN_OP:
    case EFI_IFR_LESS_EQUAL_OP:
      PushComparison (Stack, Opcode->OpCode);
      return;
    case EFI_IFR_QUESTION_REF1_OP:
      if (Opcode->Length >= sizeof (EFI_IFR_QUESTION_REF1)) {
        Left = QuestionOperand (Model, ((CONST EFI_IFR_QUESTION_REF1 *)Opcode)->QuestionId);
        Push (Stack, Left.Known, Left.Value);
        return;
      }

      break;
    case EFI_IFR_EQ_ID_VAL_OP:
      if (Opcode->Length >= sizeof (EFI_IFR_EQ_ID_VAL)) {
        EqualsValue = (CONST EFI_IFR_EQ_ID_VAL *)Opcode;
        Left        = QuestionOperand (Model, EqualsValue->QuestionId);
        Push (Stack, Left.Known, Left.Value == EqualsValue->Value);
        return;
      }

      break;
    case EFI_IFR_EQ_ID_ID_OP:
      if (Opcode->Length >= sizeof (EFI_IFR_EQ_ID_ID)) {
        EqualsQuestion = (CONST EFI_IFR_EQ_ID_ID *)Opcode;
        Left           = QuestionOperand (Model, EqualsQuestion->QuestionId1);
        Right          = QuestionOperand (Model, EqualsQuestion->QuestionId2);
        Push (Stack, (BOOLEAN)(Left.Known && Right.Known), Left.Value == Right.Value);
        return;
      }

      break;
    case EFI_IFR_EQ_ID_VAL_LIST_OP:
      PushMembership (Stack, (CONST EFI_IFR_EQ_ID_VAL_LIST *)Opcode, Model);
      return;
    default:
      break;
  }

  Stack->Failed = TRUE;
}

BOOLEAN
ConditionIsMet (
  IN OUT IfrReader        *Reader,
  IN     CONST FormModel  *Model
  )
{
  CONST EFI_IFR_OP_HEADER  *Opcode;
  OperandStack             Stack;
  BOOLEAN                  Scoped;

  Stack.Count  = 0;
  Stack.Failed = FALSE;
  Opcode       = NextOpcode (Reader);
  Scoped       = (BOOLEAN)((Opcode != NULL) && Opcode->Scope);
  while ((Opcode != NULL) && (Opcode->OpCode != EFI_IFR_END_OP)) {
    Evaluate (&Stack, Opcode, Model);
    if (!Scoped) {
      break;
    }

    Opcode = NextOpcode (Reader);
    if ((Opcode != NULL) && Opcode->Scope) {
      SkipScope (Reader);   // a list inside the expression, as MAP has: not understood
      Stack.Failed = TRUE;
    }
  }

  if (Opcode == NULL) {
    Reader->Broken = TRUE;
  }

  return (BOOLEAN)(!Stack.Failed && (Stack.Count == 1) && Stack.Entries[0].Known && (Stack.Entries[0].Value != 0));
}
