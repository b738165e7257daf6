/** @file
  SetupValues: the questions of all form sets by identifier, behind SetupValuesProtocol.

  Reading a question's value here asks its storage alone; the form sets are read when the form packages have changed.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/DebugLib.h>
#include <Library/HiiLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/UefiHiiServicesLib.h>
#include "FormSets.h"
#include "Questions.h"
#include "SetupValues.h"

#define VALUES_GROWTH  64

STATIC FormModel   **mModels;       ///< that the values point into
STATIC UINTN       mModelCount;
STATIC SetupValue  *mValues;
STATIC UINTN       mRoom;
STATIC BOOLEAN     mStale = TRUE;   ///< the form packages have changed since they were read

STATIC CONST CHAR8 *CONST  mVerdicts[] = {
  [QuestionHidden]       = "hidden",
  [QuestionUndecided]    = "condition",
  [QuestionNoStore]      = "no store",
  [QuestionNoVariable]   = "no variable",
  [QuestionComputed]     = "computed",
  [QuestionUnreadable]   = "unreadable",
  [QuestionNoIdentifier] = "no identifier"
};

/**
  Gives the place of an identifier among the values, or the one where it belongs.
**/
STATIC
UINTN
PlaceOf (
  IN UINT32  Identifier
  )
{
  UINTN  Low;
  UINTN  High;
  UINTN  Middle;

  Low  = 0;
  High = mSetupValues.Count;
  while (Low < High) {
    Middle = Low + (High - Low) / 2;
    if (mValues[Middle].Identifier < Identifier) {
      Low = Middle + 1;
    } else {
      High = Middle;
    }
  }

  return Low;
}

STATIC
VOID
ForgetValues (
  VOID
  )
{
  while (mSetupValues.Count > 0) {
    mSetupValues.Count--;
    if (mValues[mSetupValues.Count].DefaultText != NULL) {
      FreePool (mValues[mSetupValues.Count].DefaultText);
    }
  }

  while (mModelCount > 0) {
    mModelCount--;
    FreeFormModel (mModels[mModelCount]);
  }

  if (mModels != NULL) {
    FreePool (mModels);
    mModels = NULL;
  }
}

/**
  Adds a question, unless its identifier is there from an earlier form set.
**/
STATIC
EFI_STATUS
AddValue (
  IN CONST FormQuestion  *Question
  )
{
  SetupValue  *Value;
  UINTN       Place;

  Place = PlaceOf (Question->Record.Identifier);
  if ((Place < mSetupValues.Count) && (mValues[Place].Identifier == Question->Record.Identifier)) {
    return EFI_SUCCESS;
  }

  if (mSetupValues.Count == mRoom) {
    Value = ReallocatePool (mRoom * sizeof (*Value), (mRoom + VALUES_GROWTH) * sizeof (*Value), mValues);
    if (Value == NULL) {
      return EFI_OUT_OF_RESOURCES;
    }

    mRoom              += VALUES_GROWTH;
    mValues             = Value;
    mSetupValues.Values = Value;
  }

  Value = &mValues[Place];
  CopyMem (Value + 1, Value, (mSetupValues.Count - Place) * sizeof (*Value));
  ZeroMem (Value, sizeof (*Value));
  mSetupValues.Count++;
  Value->Identifier = Question->Record.Identifier;
  Value->Opcode     = Question->Record.Opcode;
  Value->HasDefault = (BOOLEAN)(Question->DefaultKind != DefaultNone);
  Value->Default    = Question->Default;
  Value->Width      = Question->Record.ValueSize;
  Value->Question   = Question;
  if (Question->DefaultText != 0) {
    Value->DefaultText = HiiGetString (Question->Record.HiiHandle, Question->DefaultText, NULL);
  }

  return EFI_SUCCESS;
}

/**
  Adds the questions of one form set.
**/
STATIC
EFI_STATUS
AddValues (
  IN CONST FormModel  *Model
  )
{
  FormQuestion  *Question;
  EFI_STATUS    Status;

  Status = EFI_SUCCESS;
  for (Question = Model->First; !EFI_ERROR (Status) && (Question != NULL); Question = NextQuestion (Model, Question)) {
    if ((Question->Storage != NULL) && !Question->Computed && (Question->Record.Identifier != 0)) {
      Status = AddValue (Question);
    }
  }

  return Status;
}

/**
  Reads all form sets.
**/
STATIC
EFI_STATUS
RefreshValues (
  VOID
  )
{
  CONST FormSetRecord  **FormSets;
  UINTN                Index;
  EFI_STATUS           Status;

  ForgetValues ();
  mStale = FALSE;
  Status = SelectFormSets (&FormSets);
  if (EFI_ERROR (Status) || (FormSets == NULL)) {
    return Status;
  }

  for (Index = 0; FormSets[Index] != NULL; Index++) {
  }

  mModels = AllocatePool (Index * sizeof (*mModels));
  if (mModels == NULL) {
    FreePool (FormSets);
    return EFI_OUT_OF_RESOURCES;
  }

  for (Index = 0; FormSets[Index] != NULL; Index++) {
    Status = ReadFormModel (FormSets[Index], &mModels[mModelCount]);
    if (EFI_ERROR (Status)) {
      DEBUG ((DEBUG_WARN, "%a: form set %g: %r\n", gEfiCallerBaseName, &FormSets[Index]->Guid, Status));
      continue;
    }

    Status = AddValues (mModels[mModelCount]);
    mModelCount++;
    if (EFI_ERROR (Status)) {
      DEBUG ((DEBUG_WARN, "%a: form set %g: %r\n", gEfiCallerBaseName, &FormSets[Index]->Guid, Status));
    }
  }

  FreePool (FormSets);
  mStale = FALSE;   // a driver that changes its forms whenever it is asked for values would have this never end
  return EFI_SUCCESS;
}

/**
  Reads the form sets if they have changed since the last time.
**/
STATIC
VOID
RefreshIfStale (
  VOID
  )
{
  if (mStale) {
    RefreshValues ();
  }
}

STATIC
CONST SetupValue *
EFIAPI
FindValue (
  IN SetupValuesProtocol  *This,
  IN UINT32               Identifier
  )
{
  UINTN  Place;

  RefreshIfStale ();
  Place = PlaceOf (Identifier);
  return ((Place < This->Count) && (mValues[Place].Identifier == Identifier)) ? &mValues[Place] : NULL;
}

/**
  Puts a question's default into a copy of its storage.

  @param[in,out]  Data  All of the storage.
**/
STATIC
EFI_STATUS
PlaceDefault (
  IN     CONST SetupValue  *Value,
  IN OUT UINT8             *Data
  )
{
  CONST FormQuestion  *Question;
  UINT8               *Text;
  EFI_STATUS          Status;

  Question = Value->Question;
  Status   = EFI_SUCCESS;
  if (Question->IsNumber && Value->HasDefault) {
    Status = PlaceValue (Question, Data + Question->Offset, &Value->Default);
  } else if (Value->DefaultText != NULL) {
    Text = AllocateZeroPool (Value->Width);
    if (Text == NULL) {
      return EFI_OUT_OF_RESOURCES;
    }

    CopyMem (Text, Value->DefaultText, MIN (Value->Width, StrSize (Value->DefaultText)));
    Status = PlaceValue (Question, Data + Question->Offset, Text);
    FreePool (Text);
  }

  return Status;
}

/**
  Writes the defaults of all questions into a variable that does not exist yet.
**/
STATIC
EFI_STATUS
CreateVariable (
  IN Storage  *Variable
  )
{
  CONST SetupValue    *Value;
  CONST FormQuestion  *Question;
  UINT8               *Data;
  EFI_STATUS          Status;

  Data = AllocateZeroPool (MAX (Variable->Size, 1));
  if (Data == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Status = EFI_SUCCESS;
  for (Value = mValues; !EFI_ERROR (Status) && (Value < mValues + mSetupValues.Count); Value++) {
    Question = Value->Question;
    if ((Question->Storage == Variable) && (Question->Offset <= Variable->Size) &&
        (Variable->Size - Question->Offset >= Question->Width))
    {
      Status = PlaceDefault (Value, Data);
    }
  }

  if (!EFI_ERROR (Status)) {
    Status = CreateStorage (Variable, Data);
  }

  FreePool (Data);
  return Status;
}

STATIC
EFI_STATUS
EFIAPI
CreateVariables (
  IN SetupValuesProtocol  *This
  )
{
  Storage     *Variable;
  UINTN       Index;
  UINT8       Byte;
  EFI_STATUS  Status;

  RefreshIfStale ();
  for (Index = 0; Index < This->Count; Index++) {
    Variable = ((CONST FormQuestion *)mValues[Index].Question)->Storage;
    if ((Variable->Kind == StorageVariable) && (ReadStorage (Variable, 0, sizeof (Byte), &Byte) == EFI_NOT_FOUND)) {
      Status = CreateVariable (Variable);
      if (EFI_ERROR (Status)) {
        DEBUG ((DEBUG_WARN, "%a: %s: %r\n", gEfiCallerBaseName, Variable->Name, Status));
      } else {
        mStale = TRUE;   // its questions can be read now
      }
    }
  }

  return EFI_SUCCESS;
}

STATIC
EFI_STATUS
EFIAPI
ReadValue (
  IN  SetupValuesProtocol  *This,
  IN  CONST SetupValue     *Question,
  OUT VOID                 *Value
  )
{
  return ReadQuestion (Question->Question, Value);
}

STATIC
EFI_STATUS
EFIAPI
WriteValue (
  IN SetupValuesProtocol  *This,
  IN CONST SetupValue     *Question,
  IN CONST VOID           *Value
  )
{
  return WriteQuestion (Question->Question, Value);
}

/**
  Says why one question is left out. Hidden ones are what conditions are for, and go without a line.
**/
STATIC
VOID
ReportQuestion (
  IN CONST FormQuestion  *Question
  )
{
  if ((Question->Verdict == QuestionEligible) || (Question->Verdict == QuestionHidden)) {
    return;
  }

  if (Question->Verdict == QuestionUndecided) {
    DEBUG ((
      DEBUG_INFO,
      "%a: question 0x%x of form set %g is not eligible: opcode 0x%x of a condition cannot be evaluated\n",
      gEfiCallerBaseName,
      Question->Id,
      &Question->Model->Guid,
      Question->Culprit
      ));
  } else {
    DEBUG ((
      DEBUG_INFO,
      "%a: question 0x%x of form set %g is not eligible: %a (%r)\n",
      gEfiCallerBaseName,
      Question->Id,
      &Question->Model->Guid,
      mVerdicts[Question->Verdict],
      Question->Status
      ));
  }
}

VOID
ReportFormSets (
  VOID
  )
{
  CONST FormQuestion  *Question;
  UINT32              Counts[ARRAY_SIZE (mVerdicts)];
  UINT32              Questions;
  UINT32              Attributes;
  UINTN               Index;

  if (!DebugPrintEnabled ()) {
    return;
  }

  RefreshIfStale ();
  ZeroMem (Counts, sizeof (Counts));
  Questions  = 0;
  Attributes = 0;
  for (Index = 0; Index < mModelCount; Index++) {
    for (Question = mModels[Index]->First; Question != NULL; Question = NextQuestion (mModels[Index], Question)) {
      Questions++;
      Counts[Question->Verdict]++;
      if ((Question->Verdict == QuestionEligible) && IsAttributeKind (Question->Record.Opcode)) {
        Attributes++;
      }
    }
  }

  DEBUG ((
    DEBUG_INFO,
    "%a: %u form sets, %u questions, %u to become attributes, %u of other kinds; left out:",
    gEfiCallerBaseName,
    mModelCount,
    Questions,
    Attributes,
    Counts[QuestionEligible] - Attributes
    ));
  for (Index = QuestionHidden; Index < ARRAY_SIZE (mVerdicts); Index++) {
    DEBUG ((DEBUG_INFO, " %u %a", Counts[Index], mVerdicts[Index]));
    DEBUG ((DEBUG_INFO, "%a", (Index + 1 < ARRAY_SIZE (mVerdicts)) ? "," : "\n"));
  }

  for (Index = 0; Index < mModelCount; Index++) {
    for (Question = mModels[Index]->First; Question != NULL; Question = NextQuestion (mModels[Index], Question)) {
      ReportQuestion (Question);
    }
  }
}

STATIC
EFI_STATUS
EFIAPI
OnFormPackages (
  IN UINT8                         PackageType,
  IN CONST EFI_GUID                *PackageGuid,
  IN CONST EFI_HII_PACKAGE_HEADER  *Package,
  IN EFI_HII_HANDLE                Handle,
  IN EFI_HII_DATABASE_NOTIFY_TYPE  NotifyType
  )
{
  mStale = TRUE;
  return EFI_SUCCESS;
}

VOID
WatchFormPackages (
  VOID
  )
{
  STATIC CONST EFI_HII_DATABASE_NOTIFY_TYPE  Types[] = {
    EFI_HII_DATABASE_NOTIFY_NEW_PACK, EFI_HII_DATABASE_NOTIFY_ADD_PACK, EFI_HII_DATABASE_NOTIFY_REMOVE_PACK
  };
  EFI_HANDLE                                 Notify;
  UINTN                                      Index;
  EFI_STATUS                                 Status;

  for (Index = 0; Index < ARRAY_SIZE (Types); Index++) {
    Status = gHiiDatabase->RegisterPackageNotify (
                             gHiiDatabase,
                             EFI_HII_PACKAGE_FORMS,
                             NULL,
                             OnFormPackages,
                             Types[Index],
                             &Notify
                             );
    ASSERT_EFI_ERROR (Status);
  }
}

SetupValuesProtocol  mSetupValues = {
  .CreateVariables = CreateVariables,
  .Find            = FindValue,
  .Read            = ReadValue,
  .Write           = WriteValue
};
