/** @file
  SetupValues: the questions of all form sets by identifier, behind SetupValuesProtocol.

  Reading a question's value here asks the variable alone; the form sets are read when somebody refreshes.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/DebugLib.h>
#include <Library/HiiLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/UefiRuntimeServicesTableLib.h>
#include "FormModel.h"
#include "SetupValues.h"

STATIC SetupValue  *mValues;
STATIC UINTN       mRoom;

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
CONST SetupValue *
EFIAPI
FindValue (
  IN SetupValuesProtocol  *This,
  IN UINT32               Identifier
  )
{
  UINTN  Place;

  Place = PlaceOf (Identifier);
  return ((Place < This->Count) && (mValues[Place].Identifier == Identifier)) ? &mValues[Place] : NULL;
}

STATIC
VOID
ForgetValues (
  VOID
  )
{
  while (mSetupValues.Count > 0) {
    mSetupValues.Count--;
    FreePool (mValues[mSetupValues.Count].Variable);
    if (mValues[mSetupValues.Count].DefaultText != NULL) {
      FreePool (mValues[mSetupValues.Count].DefaultText);
    }
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
    Value = ReallocatePool (mRoom * sizeof (*Value), (mRoom + 64) * sizeof (*Value), mValues);
    if (Value == NULL) {
      return EFI_OUT_OF_RESOURCES;
    }

    mRoom              += 64;
    mValues             = Value;
    mSetupValues.Values = Value;
  }

  Value = &mValues[Place];
  CopyMem (Value + 1, Value, (mSetupValues.Count - Place) * sizeof (*Value));
  ZeroMem (Value, sizeof (*Value));
  Value->Variable = AllocateCopyPool (StrSize (Question->Store->Name), Question->Store->Name);
  if (Value->Variable == NULL) {
    CopyMem (Value, Value + 1, (mSetupValues.Count - Place) * sizeof (*Value));
    return EFI_OUT_OF_RESOURCES;
  }

  mSetupValues.Count++;
  Value->Identifier   = Question->Record.Identifier;
  Value->Opcode       = Question->Record.Opcode;
  Value->HasDefault   = Question->HasDefault;
  Value->Default      = Question->Default;
  Value->Offset       = Question->Offset;
  Value->Width        = Question->Record.ValueSize;
  Value->Attributes   = Question->Store->Attributes;
  Value->VariableSize = Question->Store->Size;
  CopyGuid (&Value->Vendor, &Question->Store->Vendor);
  if (Question->DefaultText != 0) {
    Value->DefaultText = HiiGetString (Question->Record.HiiHandle, Question->DefaultText, NULL);
  }

  return EFI_SUCCESS;
}

/**
  Writes the defaults of all questions into a variable that does not exist yet.
**/
STATIC
EFI_STATUS
CreateVariable (
  IN CONST SetupValue  *Example   ///< any question that keeps its value there
  )
{
  CONST SetupValue  *Value;
  UINT8             *Data;
  UINTN             Index;
  EFI_STATUS        Status;

  Data = AllocateZeroPool (Example->VariableSize);
  if (Data == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  for (Index = 0; Index < mSetupValues.Count; Index++) {
    Value = &mValues[Index];
    if ((StrCmp (Value->Variable, Example->Variable) != 0) || !CompareGuid (&Value->Vendor, &Example->Vendor) ||
        (Value->Offset > Example->VariableSize) || (Example->VariableSize - Value->Offset < Value->Width))
    {
      continue;
    }

    if (Value->HasDefault) {
      CopyMem (Data + Value->Offset, &Value->Default, MIN (Value->Width, sizeof (Value->Default)));
    } else if (Value->DefaultText != NULL) {
      CopyMem (Data + Value->Offset, Value->DefaultText, MIN (Value->Width, StrSize (Value->DefaultText)));
    }
  }

  Status = gRT->SetVariable (
                  Example->Variable,
                  (EFI_GUID *)&Example->Vendor,
                  Example->Attributes,
                  Example->VariableSize,
                  Data
                  );
  FreePool (Data);
  return Status;
}

STATIC
EFI_STATUS
EFIAPI
RefreshValues (
  IN SetupValuesProtocol  *This
  )
{
  CONST FormSetRecord  **FormSets;
  FormModel            *Model;
  FormQuestion         *Question;
  UINTN                Index;
  UINTN                Size;
  EFI_STATUS           Status;

  ForgetValues ();
  Status = FindFormSets (&FormSets);
  if (EFI_ERROR (Status) || (FormSets == NULL)) {
    return Status;
  }

  for (Index = 0; FormSets[Index] != NULL; Index++) {
    Status = ReadFormModel (FormSets[Index], &Model);
    if (EFI_ERROR (Status)) {
      DEBUG ((DEBUG_WARN, "%a: form set %g: %r\n", gEfiCallerBaseName, &FormSets[Index]->Guid, Status));
      continue;
    }

    for (Question = Model->First; Question != NULL; Question = (FormQuestion *)Question->Record.Next) {
      if ((Question->Store != NULL) && (Question->Record.ValueSize != 0)) {
        Status = AddValue (Question);
        ASSERT_EFI_ERROR (Status);
      }
    }

    FreeFormModel (Model);
  }

  FreePool (FormSets);
  for (Index = 0; Index < This->Count; Index++) {
    Size   = 0;
    Status = gRT->GetVariable (mValues[Index].Variable, &mValues[Index].Vendor, NULL, &Size, NULL);
    if (Status == EFI_NOT_FOUND) {
      Status = CreateVariable (&mValues[Index]);
      if (EFI_ERROR (Status)) {
        DEBUG ((DEBUG_WARN, "%a: %s: %r\n", gEfiCallerBaseName, mValues[Index].Variable, Status));
      }
    }
  }

  return EFI_SUCCESS;
}

/**
  Reads the variable that a question keeps its value in.

  @param[out]  Data  VariableSize bytes in pool; the caller frees them.
**/
STATIC
EFI_STATUS
ReadWhole (
  IN  CONST SetupValue  *Question,
  OUT UINT8             **Data
  )
{
  UINTN       Size;
  EFI_STATUS  Status;

  if ((Question->Offset > Question->VariableSize) || (Question->VariableSize - Question->Offset < Question->Width)) {
    return EFI_COMPROMISED_DATA;
  }

  *Data = AllocateZeroPool (Question->VariableSize);
  if (*Data == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Size   = Question->VariableSize;
  Status = gRT->GetVariable (Question->Variable, (EFI_GUID *)&Question->Vendor, NULL, &Size, *Data);
  if (EFI_ERROR (Status)) {
    FreePool (*Data);
  }

  return Status;
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
  UINT8       *Data;
  EFI_STATUS  Status;

  Status = ReadWhole (Question, &Data);
  if (!EFI_ERROR (Status)) {
    CopyMem (Value, Data + Question->Offset, Question->Width);
    FreePool (Data);
  }

  return Status;
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
  UINT8       *Data;
  EFI_STATUS  Status;

  Status = ReadWhole (Question, &Data);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  CopyMem (Data + Question->Offset, Value, Question->Width);
  Status = gRT->SetVariable (
                  Question->Variable,
                  (EFI_GUID *)&Question->Vendor,
                  Question->Attributes,
                  Question->VariableSize,
                  Data
                  );
  FreePool (Data);
  return Status;
}

SetupValuesProtocol  mSetupValues = {
  .Refresh = RefreshValues,
  .Find    = FindValue,
  .Read    = ReadValue,
  .Write   = WriteValue
};
