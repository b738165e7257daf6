/** @file
  TextReplay: which display text each step of the gathering of attributes made.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/MemoryAllocationLib.h>
#include "TextReplay.h"

///
/// One set of table positions for each step boundary: those that the steps before it can have led to. A table may be
/// cut at its capacity, so positions go on behind its last text as far as the steps could.
///
typedef struct {
  CONST ReplayStep    *Steps;
  UINTN               StepCount;
  CHAR16              *CONST *Texts;
  UINTN               TextCount;
  UINT8               *Sets;
  UINTN               SetSize;
} Replay;

STATIC
BOOLEAN
IsReached (
  IN CONST Replay  *This,
  IN UINTN         Boundary,
  IN UINTN         Position
  )
{
  return (BOOLEAN)((This->Sets[Boundary * This->SetSize + Position / 8] & (1 << (Position % 8))) != 0);
}

STATIC
VOID
SetReached (
  IN CONST Replay  *This,
  IN UINTN         Boundary,
  IN UINTN         Position,
  IN BOOLEAN       Reached
  )
{
  UINT8  *Byte;

  Byte  = &This->Sets[Boundary * This->SetSize + Position / 8];
  *Byte = (UINT8)(Reached ? (*Byte | (1 << (Position % 8))) : (*Byte & ~(1 << (Position % 8))));
}

BOOLEAN
TextIs (
  IN CONST CHAR16  *Text,
  IN CONST CHAR8   *Ascii,
  IN UINTN         Length,
  IN BOOLEAN       WithoutBlanks
  )
{
  UINTN  Index;

  Index = 0;
  for ( ; *Text != L'\0'; Text++) {
    if (WithoutBlanks && (*Text == L' ')) {
      continue;
    }

    if ((Index >= Length) || ((UINT8)*Text != (UINT8)Ascii[Index])) {
      return FALSE;
    }

    Index++;
  }

  return (BOOLEAN)(Index == Length);
}

/**
  Says whether a step can have made the text at a position.
**/
STATIC
BOOLEAN
CanMake (
  IN CONST Replay      *This,
  IN CONST ReplayStep  *Step,
  IN UINTN             Position
  )
{
  return (BOOLEAN)((Step->Kind == ReplayAnyText) || (Position >= This->TextCount) ||
                   TextIs (This->Texts[Position], Step->Text, Step->TextLength, (BOOLEAN)(Step->Kind == ReplayTitle)));
}

/**
  Says whether a step can have made no text when the table ended before a position.
**/
STATIC
BOOLEAN
CanSkip (
  IN CONST Replay      *This,
  IN CONST ReplayStep  *Step,
  IN UINTN             Position
  )
{
  UINTN  Index;

  if (Step->Kind != ReplayFixedText) {
    return TRUE;
  }

  for (Index = 0; Index < MIN (Position, This->TextCount); Index++) {
    if (TextIs (This->Texts[Index], Step->Text, Step->TextLength, FALSE)) {
      return TRUE;
    }
  }

  return (BOOLEAN)(Position > This->TextCount);
}

/**
  Walks forward: where each step can lead from where the ones before it can.
**/
STATIC
VOID
WalkForward (
  IN CONST Replay  *This
  )
{
  UINTN  Step;
  UINTN  Position;

  SetReached (This, 0, 0, TRUE);
  for (Step = 0; Step < This->StepCount; Step++) {
    for (Position = 0; Position <= Step; Position++) {
      if (!IsReached (This, Step, Position)) {
        continue;
      }

      if (CanSkip (This, &This->Steps[Step], Position)) {
        SetReached (This, Step + 1, Position, TRUE);
      }

      if (CanMake (This, &This->Steps[Step], Position)) {
        SetReached (This, Step + 1, Position + 1, TRUE);
      }
    }
  }
}

/**
  Walks back from the end, keeps the positions that lead to it and notes the text of each step that always makes the
  same.
**/
STATIC
VOID
WalkBack (
  IN  CONST Replay  *This,
  OUT UINTN         *Places
  )
{
  UINTN    Step;
  UINTN    Position;
  UINTN    Makes;
  BOOLEAN  Skips;
  BOOLEAN  Skip;
  BOOLEAN  Make;

  for (Step = This->StepCount; Step-- > 0; ) {
    Makes = 0;
    Skips = FALSE;
    for (Position = 0; Position <= Step; Position++) {
      if (!IsReached (This, Step, Position)) {
        continue;
      }

      Skip = (BOOLEAN)(CanSkip (This, &This->Steps[Step], Position) && IsReached (This, Step + 1, Position));
      Make = (BOOLEAN)(CanMake (This, &This->Steps[Step], Position) && IsReached (This, Step + 1, Position + 1));
      SetReached (This, Step, Position, (BOOLEAN)(Skip || Make));
      Skips = (BOOLEAN)(Skips || Skip);
      if (Make) {
        Makes++;
        Places[Step] = Position;
      }
    }

    if (Skips || (Makes != 1) || (Places[Step] >= This->TextCount)) {
      Places[Step] = REPLAY_NO_PLACE;
    }
  }
}

EFI_STATUS
ReplayTexts (
  IN  CONST ReplayStep  *Steps,
  IN  UINTN             StepCount,
  IN  CHAR16            *CONST *Texts,
  IN  UINTN             TextCount,
  OUT UINTN             *Places
  )
{
  Replay   This;
  UINTN    Position;
  BOOLEAN  Ended;

  SetMem (Places, StepCount * sizeof (*Places), 0xFF);
  This.Steps     = Steps;
  This.StepCount = StepCount;
  This.Texts     = Texts;
  This.TextCount = TextCount;
  This.SetSize   = StepCount / 8 + 1;
  This.Sets      = AllocateZeroPool ((StepCount + 1) * This.SetSize);
  if (This.Sets == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  WalkForward (&This);
  Ended = FALSE;
  for (Position = 0; Position <= StepCount; Position++) {
    Ended = (BOOLEAN)(Ended || IsReached (&This, StepCount, Position));
  }

  WalkBack (&This, Places);
  FreePool (This.Sets);
  return Ended ? EFI_SUCCESS : EFI_NOT_FOUND;
}
