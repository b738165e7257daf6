/** @file
  NameExpression: matches texts with the expressions that names carry.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseMemoryLib.h>
#include "NameExpression.h"

#define EXPRESSION_MARK  "[RegEx:"

typedef struct {
  UINT8      Character;
  BOOLEAN    Literal;     ///< stands for itself, whatever it means elsewhere
} ExpressionToken;

///
/// ^CLASS{Minimum,Maximum}$
///
typedef struct {
  BOOLEAN    Class[256];
  UINT64     Minimum;
  UINT64     Maximum;
} Expression;

/**
  Takes digits of a base.

  @return  Their number; the reader fails on anything else.
**/
STATIC
UINT8
TakeDigits (
  IN OUT ByteReader  *Reader,
  IN     UINTN       Count,
  IN     UINTN       Base
  )
{
  UINTN  Number;
  UINTN  Digit;
  CHAR8  Character;

  for (Number = 0; Count > 0; Count--) {
    Character = (CHAR8)TakeNumber (Reader, sizeof (CHAR8));
    Digit     = ((Character >= '0') && (Character <= '9')) ? (UINTN)(Character - '0') :
                ((Character >= 'a') && (Character <= 'f')) ? (UINTN)(Character - 'a' + 10) :
                ((Character >= 'A') && (Character <= 'F')) ? (UINTN)(Character - 'A' + 10) : Base;
    Number = Number * Base + Digit;
    if ((Digit >= Base) || (Number > MAX_UINT8)) {
      Reader->Failed = TRUE;
      return 0;
    }
  }

  return (UINT8)Number;
}

STATIC
BOOLEAN
IsLetterOrDigit (
  IN UINT8  Character
  )
{
  return (BOOLEAN)(((Character >= '0') && (Character <= '9')) || ((Character >= 'A') && (Character <= 'Z')) ||
                   ((Character >= 'a') && (Character <= 'z')));
}

/**
  Takes the next token. After the last one the reader fails.
**/
STATIC
ExpressionToken
TakeToken (
  IN OUT ByteReader  *Reader
  )
{
  ExpressionToken  Token;
  ByteReader       Escape;

  Token.Literal   = FALSE;
  Token.Character = (UINT8)TakeNumber (Reader, sizeof (UINT8));
  if (Token.Character != '\\') {
    return Token;
  }

  if ((Reader->Left > 0) && (*Reader->Next == '\\')) {
    TakeBytes (Reader, 1);
  }

  Escape          = *Reader;
  Token.Literal   = TRUE;
  Token.Character = (UINT8)TakeNumber (Reader, sizeof (UINT8));
  if (Token.Character == 'x') {
    Token.Character = TakeDigits (Reader, 2, 16);
  } else if ((Token.Character >= '0') && (Token.Character <= '7')) {
    *Reader         = Escape;
    Token.Character = TakeDigits (Reader, 3, 8);
    Token.Literal   = (BOOLEAN)((Token.Character != '[') && (Token.Character != ']'));
  } else if (IsLetterOrDigit (Token.Character)) {
    Reader->Failed = TRUE;
  }

  return Token;
}

STATIC
BOOLEAN
IsMark (
  IN ExpressionToken  Token,
  IN CHAR8            Mark
  )
{
  return (BOOLEAN)(!Token.Literal && (Token.Character == (UINT8)Mark));
}

/**
  Takes a class, to its closing bracket.
**/
STATIC
VOID
TakeClass (
  IN OUT ByteReader  *Reader,
  OUT    Expression  *This
  )
{
  ExpressionToken  First;
  ExpressionToken  Last;
  ByteReader       Ahead;
  UINTN            Character;

  First = TakeToken (Reader);
  if (!IsMark (First, '[')) {
    Reader->Failed = TRUE;
  }

  First = TakeToken (Reader);
  if (IsMark (First, '^')) {
    Reader->Failed = TRUE;
  }

  while (!Reader->Failed && !IsMark (First, ']')) {
    Last  = First;
    Ahead = *Reader;
    if (IsMark (TakeToken (&Ahead), '-')) {
      *Reader = Ahead;
      Last    = TakeToken (Reader);
      if (IsMark (Last, ']') || (Last.Character < First.Character)) {
        Reader->Failed = TRUE;
      }
    }

    for (Character = First.Character; Character <= Last.Character; Character++) {
      This->Class[Character] = TRUE;
    }

    First = TakeToken (Reader);
  }
}

/**
  Takes a decimal number.

  @param[in]  Default  What no digit stands for.
**/
STATIC
UINT64
TakeDecimal (
  IN OUT ByteReader  *Reader,
  IN     UINT64      Default
  )
{
  UINT64  Number;

  if ((Reader->Left == 0) || (*Reader->Next < '0') || (*Reader->Next > '9')) {
    return Default;
  }

  for (Number = 0; (Reader->Left > 0) && (*Reader->Next >= '0') && (*Reader->Next <= '9'); ) {
    Number = Number * 10 + TakeNumber (Reader, sizeof (CHAR8)) - '0';
    if (Number > MAX_UINT32) {
      Reader->Failed = TRUE;
      break;
    }
  }

  return Number;
}

/**
  Takes the repetition, if there is one.
**/
STATIC
VOID
TakeRepetition (
  IN OUT ByteReader  *Reader,
  OUT    Expression  *This
  )
{
  CHAR8  Mark;

  This->Minimum = 1;
  This->Maximum = 1;
  Mark          = (Reader->Left > 0) ? (CHAR8)*Reader->Next : '\0';
  if ((Mark == '*') || (Mark == '+') || (Mark == '?')) {
    TakeBytes (Reader, 1);
    This->Minimum = (Mark == '+') ? 1 : 0;
    This->Maximum = (Mark == '?') ? 1 : MAX_UINT64;
  } else if (Mark == '{') {
    TakeBytes (Reader, 1);
    This->Minimum = TakeDecimal (Reader, MAX_UINT64);   // a repetition without number matches nothing
    This->Maximum = This->Minimum;
    if ((Reader->Left > 0) && (*Reader->Next == ',')) {
      TakeBytes (Reader, 1);
      This->Maximum = TakeDecimal (Reader, MAX_UINT64);
    }

    if (!IsMark (TakeToken (Reader), '}')) {
      Reader->Failed = TRUE;
    }
  }
}

/**
  Finds the expression of a name.

  @retval FALSE  The name carries none.
**/
STATIC
BOOLEAN
FindExpression (
  IN  ByteReader  Name,
  OUT ByteReader  *Found
  )
{
  CONST UINTN  MarkLength = sizeof (EXPRESSION_MARK) - 1;

  for ( ; Name.Left > MarkLength; TakeBytes (&Name, 1)) {
    if (CompareMem (Name.Next, EXPRESSION_MARK, MarkLength) == 0) {
      TakeBytes (&Name, MarkLength);
      *Found = TakePart (&Name, Name.Left - 1);
      if (*Name.Next != ']') {
        Found->Failed = TRUE;
      }

      return TRUE;
    }
  }

  return FALSE;
}

BOOLEAN
NameAllowsText (
  IN ByteReader  Name,
  IN ByteReader  Text
  )
{
  Expression  This;
  ByteReader  Reader;

  if (!FindExpression (Name, &Reader)) {
    return TRUE;
  }

  ZeroMem (&This, sizeof (This));
  if (!IsMark (TakeToken (&Reader), '^')) {
    return FALSE;
  }

  TakeClass (&Reader, &This);
  TakeRepetition (&Reader, &This);
  if (!IsMark (TakeToken (&Reader), '$') || Reader.Failed || (Reader.Left > 0) ||
      (Text.Left < This.Minimum) || (Text.Left > This.Maximum))
  {
    return FALSE;
  }

  while (Text.Left > 0) {
    if (!This.Class[TakeNumber (&Text, sizeof (UINT8))]) {
      return FALSE;
    }
  }

  return TRUE;
}
