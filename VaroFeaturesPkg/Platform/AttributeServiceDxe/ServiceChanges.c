/** @file
  ServiceChanges: stores new values, and remembers which settings were changed in this boot.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Corvane/AttributeCache.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Library/UefiRuntimeServicesTableLib.h>
#include <Protocol/PlatformSettings.h>
#include <Protocol/SetupValues.h>
#include <Uefi/UefiInternalFormRepresentation.h>
#include "ServiceChanges.h"

#define CACHE_STATUS_REBUILD  1
#define CHANGES_GROWTH        32

#define WIDEN(Text)       L##Text
#define AS_UNICODE(Text)  WIDEN (Text)

STATIC UINT32  *mChanged;       ///< tokens of questions
STATIC UINTN   mChangedCount;
STATIC UINT8   *mText;          ///< that FindChangedText gave last

STATIC
PlatformSettingsProtocol *
FindPlatform (
  VOID
  )
{
  PlatformSettingsProtocol  *Platform;
  EFI_STATUS                Status;

  Status = gBS->LocateProtocol (&gVaroPlatformSettingsProtocolGuid, NULL, (VOID **)&Platform);
  return EFI_ERROR (Status) ? NULL : Platform;
}

/**
  Finds a question that keeps a text, or one that keeps a number.
**/
STATIC
CONST SetupValue *
FindQuestion (
  IN  UINT32               Token,
  IN  BOOLEAN              IsText,
  OUT SetupValuesProtocol  **SetupValues
  )
{
  CONST SetupValue  *Question;
  EFI_STATUS        Status;

  Status = gBS->LocateProtocol (&gVaroSetupValuesProtocolGuid, NULL, (VOID **)SetupValues);
  if (EFI_ERROR (Status)) {
    return NULL;
  }

  Question = (*SetupValues)->Find (*SetupValues, Token);
  return ((Question != NULL) && ((Question->Opcode == EFI_IFR_STRING_OP) == IsText)) ? Question : NULL;
}

STATIC
BOOLEAN
IsChanged (
  IN UINT32  Token
  )
{
  UINTN  Index;

  for (Index = 0; Index < mChangedCount; Index++) {
    if (mChanged[Index] == Token) {
      return TRUE;
    }
  }

  return FALSE;
}

/**
  Makes room to remember one more change.
**/
STATIC
EFI_STATUS
PrepareChange (
  IN UINT32  Token
  )
{
  UINT32  *Larger;

  if (!IsChanged (Token) && (mChangedCount % CHANGES_GROWTH == 0)) {
    Larger = ReallocatePool (
               mChangedCount * sizeof (*Larger),
               (mChangedCount + CHANGES_GROWTH) * sizeof (*Larger),
               mChanged
               );
    if (Larger == NULL) {
      return EFI_OUT_OF_RESOURCES;
    }

    mChanged = Larger;
  }

  return EFI_SUCCESS;
}

/**
  Has the next boot gather the attributes again.
**/
STATIC
EFI_STATUS
RequestRebuild (
  VOID
  )
{
  UINT8  Rebuild;

  Rebuild = CACHE_STATUS_REBUILD;
  return gRT->SetVariable (
                AS_UNICODE (ATTRIBUTE_CACHE_STATUS),
                &gVaroAttributeVariableGuid,
                EFI_VARIABLE_NON_VOLATILE | EFI_VARIABLE_BOOTSERVICE_ACCESS | EFI_VARIABLE_RUNTIME_ACCESS,
                sizeof (Rebuild),
                &Rebuild
                );
}

/**
  Stores a question's value, and remembers that it was changed.

  @param[in]  Value  Question->Width bytes.
**/
STATIC
EFI_STATUS
StoreQuestion (
  IN SetupValuesProtocol  *SetupValues,
  IN CONST SetupValue     *Question,
  IN CONST VOID           *Value
  )
{
  UINT8       *Current;
  EFI_STATUS  Status;

  Status  = PrepareChange (Question->Identifier);
  Current = AllocatePool (Question->Width);
  if (EFI_ERROR (Status) || (Current == NULL)) {
    if (Current != NULL) {
      FreePool (Current);
    }

    return EFI_OUT_OF_RESOURCES;
  }

  Status = SetupValues->Read (SetupValues, Question, Current);   // a storage that cannot be read is not written
  FreePool (Current);
  if (!EFI_ERROR (Status)) {
    Status = RequestRebuild ();
  }

  if (!EFI_ERROR (Status)) {
    Status = SetupValues->Write (SetupValues, Question, Value);
  }

  if (!EFI_ERROR (Status) && !IsChanged (Question->Identifier)) {
    mChanged[mChangedCount] = Question->Identifier;
    mChangedCount++;
  }

  return Status;
}

EFI_STATUS
StoreNumber (
  IN UINT32  Token,
  IN UINT64  Value
  )
{
  PlatformSettingsProtocol  *Platform;
  SetupValuesProtocol       *SetupValues;
  CONST SetupValue          *Question;
  UINT64                    Width;
  UINT64                    Current;
  EFI_STATUS                Status;

  Platform = FindPlatform ();
  if ((Platform != NULL) && (Platform->Read (Platform, Token, &Width, &Current) != EFI_NOT_FOUND)) {
    if ((Width < sizeof (Value)) && (RShiftU64 (Value, (UINTN)(8 * Width)) != 0)) {
      return EFI_INVALID_PARAMETER;
    }

    Status = RequestRebuild ();
    return EFI_ERROR (Status) ? Status : Platform->Keep (Platform, Token, Value);
  }

  Question = FindQuestion (Token, FALSE, &SetupValues);
  if (Question == NULL) {
    return EFI_NOT_FOUND;
  }

  if ((Question->Width < sizeof (Value)) && (RShiftU64 (Value, 8 * Question->Width) != 0)) {
    return EFI_INVALID_PARAMETER;
  }

  return StoreQuestion (SetupValues, Question, &Value);
}

EFI_STATUS
StoreText (
  IN UINT32      Token,
  IN ByteReader  Text
  )
{
  SetupValuesProtocol  *SetupValues;
  CONST SetupValue     *Question;
  CHAR16               *Wide;
  UINTN                Index;
  EFI_STATUS           Status;

  Question = FindQuestion (Token, TRUE, &SetupValues);
  if (Question == NULL) {
    return EFI_NOT_FOUND;
  }

  if (Text.Left > Question->Width / sizeof (CHAR16)) {
    return EFI_INVALID_PARAMETER;
  }

  Wide = AllocateZeroPool (Question->Width);
  if (Wide == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  for (Index = 0; Index < Text.Left; Index++) {
    Wide[Index] = Text.Next[Index];   // a text that fills the question has no terminator
  }

  Status = StoreQuestion (SetupValues, Question, Wide);
  FreePool (Wide);
  return Status;
}

BOOLEAN
FindChangedNumber (
  IN  UINT32  Token,
  OUT UINT64  *Value
  )
{
  PlatformSettingsProtocol  *Platform;
  SetupValuesProtocol       *SetupValues;
  CONST SetupValue          *Question;

  Platform = FindPlatform ();
  if ((Platform != NULL) && !EFI_ERROR (Platform->Kept (Platform, Token, Value))) {
    return TRUE;
  }

  *Value   = 0;
  Question = IsChanged (Token) ? FindQuestion (Token, FALSE, &SetupValues) : NULL;
  return (BOOLEAN)((Question != NULL) && (Question->Width <= sizeof (*Value)) &&
                   !EFI_ERROR (SetupValues->Read (SetupValues, Question, Value)));
}

BOOLEAN
FindChangedText (
  IN  UINT32      Token,
  OUT ByteReader  *Text
  )
{
  SetupValuesProtocol  *SetupValues;
  CONST SetupValue     *Question;
  CHAR16               *Wide;

  Question = IsChanged (Token) ? FindQuestion (Token, TRUE, &SetupValues) : NULL;
  if (Question == NULL) {
    return FALSE;
  }

  if (mText != NULL) {
    FreePool (mText);
  }

  mText = AllocateZeroPool (Question->Width + sizeof (CHAR16));
  if ((mText == NULL) || EFI_ERROR (SetupValues->Read (SetupValues, Question, mText))) {
    return FALSE;
  }

  //
  // In place: a character ends no later than where it stood.
  //
  Wide         = (CHAR16 *)mText;
  Text->Next   = mText;
  Text->Failed = FALSE;
  for (Text->Left = 0; Wide[Text->Left] != L'\0'; Text->Left++) {
    mText[Text->Left] = (UINT8)Wide[Text->Left];
  }

  return TRUE;
}
