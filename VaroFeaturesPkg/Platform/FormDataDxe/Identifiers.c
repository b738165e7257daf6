/** @file
  Identifiers: numbers that tell all questions of a boot apart.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PcdLib.h>
#include "FormSets.h"
#include "Identifiers.h"

#define NUMBERS_GROWTH  256

#pragma pack (1)

///
/// What a number is made of.
///
typedef struct {
  EFI_GUID           FormSet;
  UINT32             Instance;
  UINT16             Ordinal;    ///< among package lists with the same form set and instance
  EFI_QUESTION_ID    Question;
  UINT16             Attempt;    ///< counts up until the number is nobody else's
} NumberSource;

#pragma pack ()

typedef struct {
  UINT32          Number;
  NumberSource    Source;
} GivenNumber;

typedef struct {
  EFI_HII_HANDLE    HiiHandle;
  EFI_GUID          FormSet;
  UINT32            Instance;
  UINT16            Ordinal;
} GivenOrdinal;

STATIC GivenNumber   *mNumbers;
STATIC UINTN         mNumberCount;
STATIC GivenOrdinal  *mOrdinals;
STATIC UINTN         mOrdinalCount;

/**
  Makes room for one more entry of a table.

  @retval FALSE  There is no memory.
**/
STATIC
BOOLEAN
MakeRoom (
  IN OUT VOID   **Table,
  IN     UINTN  Count,
  IN     UINTN  Size
  )
{
  VOID  *Larger;

  if (Count % NUMBERS_GROWTH == 0) {
    Larger = ReallocatePool (Count * Size, (Count + NUMBERS_GROWTH) * Size, *Table);
    if (Larger == NULL) {
      return FALSE;
    }

    *Table = Larger;
  }

  return TRUE;
}

/**
  Gives the place of a form set among those that nothing else tells apart.
**/
STATIC
UINT16
OrdinalOf (
  IN CONST FormModel  *Model
  )
{
  GivenOrdinal  *Given;
  UINT16        Ordinal;

  Ordinal = 0;
  for (Given = mOrdinals; Given < mOrdinals + mOrdinalCount; Given++) {
    if (CompareGuid (&Given->FormSet, &Model->Guid) && (Given->Instance == Model->Instance)) {
      if (Given->HiiHandle == Model->HiiHandle) {
        return Given->Ordinal;
      }

      Ordinal++;
    }
  }

  if (MakeRoom ((VOID **)&mOrdinals, mOrdinalCount, sizeof (*mOrdinals))) {
    Given = &mOrdinals[mOrdinalCount];
    CopyGuid (&Given->FormSet, &Model->Guid);
    Given->HiiHandle = Model->HiiHandle;
    Given->Instance  = Model->Instance;
    Given->Ordinal   = Ordinal;
    mOrdinalCount++;
  }

  return Ordinal;
}

/**
  Finds a number that was given in this boot.
**/
STATIC
CONST GivenNumber *
FindNumber (
  IN UINT32  Number
  )
{
  UINTN  Index;

  for (Index = 0; Index < mNumberCount; Index++) {
    if (mNumbers[Index].Number == Number) {
      return &mNumbers[Index];
    }
  }

  return NULL;
}

/**
  Gives the number of a question; 0 without memory.
**/
STATIC
UINT32
NumberOf (
  IN OUT NumberSource  *Source
  )
{
  CONST GivenNumber  *Given;
  UINT32             Number;

  for (Source->Attempt = 0; ; Source->Attempt++) {
    Number = CalculateCrc32 (Source, sizeof (*Source));
    if (Number <= MAX_UINT16) {
      continue;
    }

    Given = FindNumber (Number);
    if (Given == NULL) {
      break;
    }

    if (CompareMem (&Given->Source, Source, sizeof (*Source)) == 0) {
      return Number;
    }
  }

  if (!MakeRoom ((VOID **)&mNumbers, mNumberCount, sizeof (*mNumbers))) {
    return 0;
  }

  mNumbers[mNumberCount].Number = Number;
  CopyMem (&mNumbers[mNumberCount].Source, Source, sizeof (*Source));
  mNumberCount++;
  return Number;
}

VOID
NumberQuestions (
  IN OUT FormModel               *Model,
  IN     CONST EFI_IFR_FORM_SET  *Head
  )
{
  FormQuestion  *Question;
  NumberSource  Source;

  if (ListsFormSet (PcdGetPtr (PcdVaroSharedNumbering), PcdGetSize (PcdVaroSharedNumbering), Head)) {
    return;
  }

  CopyGuid (&Source.FormSet, &Model->Guid);
  Source.Instance = Model->Instance;
  Source.Ordinal  = OrdinalOf (Model);
  for (Question = Model->First; Question != NULL; Question = NextQuestion (Model, Question)) {
    if (Question->Id == 0) {
      continue;   // a button without identifier
    }

    Source.Question             = Question->Id;
    Question->Record.Identifier = NumberOf (&Source);
    if ((Question->Record.Identifier == 0) && (Question->Verdict == QuestionEligible)) {
      Question->Verdict         = QuestionNoIdentifier;
      Question->Record.Eligible = 0;
    }
  }
}
