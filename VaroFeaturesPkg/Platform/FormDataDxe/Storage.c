/** @file
  Storage: what questions keep their values in.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/HiiLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PrintLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Library/UefiHiiServicesLib.h>
#include <Library/UefiLib.h>
#include <Library/UefiRuntimeServicesTableLib.h>
#include "Storage.h"

#define REQUEST_TEXT_CAPACITY  64   ///< characters of "&OFFSET=FFFFFFFF&WIDTH=FFFFFFFF&VALUE="
#define ELEMENTS_GROWTH        32

STATIC Storage    *mStorages;
STATIC EFI_EVENT  mForgetEvent;
STATIC BOOLEAN    mForgetPending;
STATIC BOOLEAN    mHeld;   ///< contents are kept until ReleaseStorages

STATIC
VOID
ForgetContent (
  IN OUT Storage  *This
  )
{
  if (This->Data != NULL) {
    FreePool (This->Data);
    This->Data = NULL;
  }
}

STATIC
VOID
ForgetContents (
  VOID
  )
{
  Storage  *This;

  for (This = mStorages; This != NULL; This = This->Next) {
    ForgetContent (This);
  }
}

STATIC
VOID
EFIAPI
OnForget (
  IN EFI_EVENT  Event,
  IN VOID       *Context
  )
{
  mForgetPending = FALSE;
  ForgetContents ();
}

/**
  Has what was read forgotten as soon as the current notification function returns: the event is queued after it.

  @retval FALSE  Nothing may be kept: other code can run between two calls.
**/
STATIC
BOOLEAN
KeepWhileNotifying (
  VOID
  )
{
  if (mHeld) {
    return TRUE;
  }

  if (EfiGetCurrentTpl () < TPL_CALLBACK) {
    return FALSE;
  }

  if (mForgetPending) {
    return TRUE;   // a second signal would move the event behind those that came meanwhile
  }

  if ((mForgetEvent == NULL) &&
      EFI_ERROR (gBS->CreateEvent (EVT_NOTIFY_SIGNAL, TPL_CALLBACK, OnForget, NULL, &mForgetEvent)))
  {
    return FALSE;
  }

  mForgetPending = (BOOLEAN)!EFI_ERROR (gBS->SignalEvent (mForgetEvent));
  return mForgetPending;
}

VOID
HoldStorages (
  VOID
  )
{
  mHeld = TRUE;
}

VOID
ReleaseStorages (
  VOID
  )
{
  mHeld = FALSE;
  if (EfiGetCurrentTpl () < TPL_CALLBACK) {
    ForgetContents ();
  } else {
    KeepWhileNotifying ();
  }
}

Storage *
FindStorage (
  IN STORAGE_KIND    Kind,
  IN CONST EFI_GUID  *Guid,
  IN CONST CHAR16    *Name,
  IN EFI_HANDLE      Driver,
  IN UINT32          Size,
  IN UINT32          Attributes
  )
{
  Storage  *This;

  for (This = mStorages; This != NULL; This = This->Next) {
    if ((This->Kind == Kind) && (This->Driver == Driver) && (This->Size == Size) && CompareGuid (&This->Guid, Guid) &&
        (StrCmp (This->Name, Name) == 0))
    {
      return This;
    }
  }

  This = AllocateZeroPool (sizeof (*This));
  if (This == NULL) {
    return NULL;
  }

  This->Name = AllocateCopyPool (StrSize (Name), Name);
  if (This->Name == NULL) {
    FreePool (This);
    return NULL;
  }

  CopyGuid (&This->Guid, Guid);
  This->Kind       = Kind;
  This->Driver     = Driver;
  This->Size       = Size;
  This->Attributes = Attributes;
  This->Next       = mStorages;
  mStorages        = This;
  return This;
}

EFI_STATUS
UseStorage (
  IN OUT Storage  *This,
  IN     UINT32   Offset,
  IN     UINT32   Width
  )
{
  UINT32  *Larger;
  UINTN   Index;

  if (This->Kind != StorageBuffer) {
    return EFI_SUCCESS;
  }

  for (Index = 0; Index < This->ElementCount; Index++) {
    if ((This->Elements[2 * Index] == Offset) && (This->Elements[2 * Index + 1] == Width)) {
      return EFI_SUCCESS;
    }
  }

  if (This->ElementCount % ELEMENTS_GROWTH == 0) {
    Larger = ReallocatePool (
               2 * This->ElementCount * sizeof (*Larger),
               2 * (This->ElementCount + ELEMENTS_GROWTH) * sizeof (*Larger),
               This->Elements
               );
    if (Larger == NULL) {
      return EFI_OUT_OF_RESOURCES;
    }

    This->Elements = Larger;
  }

  This->Elements[2 * This->ElementCount]     = Offset;
  This->Elements[2 * This->ElementCount + 1] = Width;
  This->ElementCount++;
  ForgetContent (This);
  return EFI_SUCCESS;
}

/**
  Makes the request for all bytes of a buffer that questions use, or for one name.

  @return  The request in pool, owned by the caller, or NULL.
**/
STATIC
CHAR16 *
MakeElements (
  IN CONST Storage  *This
  )
{
  CHAR16  *Text;
  UINTN   Size;
  UINTN   Index;

  Size = StrSize (This->Name) + (This->ElementCount + 1) * REQUEST_TEXT_CAPACITY * sizeof (*Text);
  Text = AllocateZeroPool (Size);
  if (Text == NULL) {
    return NULL;
  }

  if (This->Kind != StorageBuffer) {
    UnicodeSPrint (Text, Size, L"&%s", This->Name);
  }

  for (Index = 0; Index < This->ElementCount; Index++) {
    UnicodeSPrint (
      Text + StrLen (Text),
      REQUEST_TEXT_CAPACITY * sizeof (*Text),
      L"&OFFSET=%04x&WIDTH=%04x",
      This->Elements[2 * Index],
      This->Elements[2 * Index + 1]
      );
  }

  return Text;
}

/**
  Makes a configuration string: the header of a storage and what follows.

  @return  The string in pool, owned by the caller, or NULL.
**/
STATIC
EFI_STRING
MakeConfig (
  IN CONST Storage  *This,
  IN CONST CHAR16   *Rest
  )
{
  EFI_STRING  Header;
  EFI_STRING  Config;
  UINTN       Size;

  Header = HiiConstructConfigHdr (&This->Guid, (This->Kind == StorageBuffer) ? This->Name : NULL, This->Driver);
  if (Header == NULL) {
    return NULL;
  }

  Size   = StrSize (Header) + StrSize (Rest);
  Config = AllocatePool (Size);
  if (Config != NULL) {
    UnicodeSPrint (Config, Size, L"%s%s", Header, Rest);
  }

  FreePool (Header);
  return Config;
}

/**
  Finds the digits of a name's value in a configuration answer.

  @param[out]  Length  How many digits there are.

  @return  The first digit; NULL when the answer does not have the name.
**/
STATIC
CONST CHAR16 *
FindDigits (
  IN  CONST CHAR16  *Answer,
  IN  CONST CHAR16  *Name,
  OUT UINTN         *Length
  )
{
  CONST CHAR16  *Found;
  UINTN         NameLength;

  NameLength = StrLen (Name);
  for (Found = StrStr (Answer, Name); Found != NULL; Found = StrStr (Found + 1, Name)) {
    if ((Found > Answer) && (Found[-1] == L'&') && (Found[NameLength] == L'=')) {
      Found += NameLength + 1;
      for (*Length = 0; (Found[*Length] != L'\0') && (Found[*Length] != L'&'); (*Length)++) {
      }

      return Found;
    }
  }

  return NULL;
}

/**
  Gives the value of a hexadecimal digit; 0 for any other character.
**/
STATIC
UINT8
DigitValue (
  IN CHAR16  Digit
  )
{
  CHAR16  Text[2];

  Text[0] = Digit;
  Text[1] = L'\0';
  return (UINT8)StrHexToUintn (Text);
}

/**
  Takes the value of a name out of a configuration answer. The digits of a number end with its lowest byte; a text has
  four digits for each character, in the order of the text.

  @retval FALSE  The answer does not have it, or it does not fit.
**/
STATIC
BOOLEAN
TakeNamedValue (
  IN OUT Storage       *This,
  IN     CONST CHAR16  *Answer
  )
{
  CONST CHAR16  *Digits;
  UINTN         Length;
  UINTN         Index;
  UINTN         Nibble;

  Digits = FindDigits (Answer, This->Name, &Length);
  if ((Digits == NULL) || (Length > 2 * (UINTN)This->Size)) {
    return FALSE;
  }

  for (Index = 0; Index < Length; Index++) {
    Nibble                  = (This->Kind == StorageText) ? Index ^ 3 : Length - 1 - Index;
    This->Data[Nibble / 2] |= (UINT8)(DigitValue (Digits[Index]) << (4 * (Nibble % 2)));
  }

  return TRUE;
}

/**
  Takes the bytes of a buffer out of a configuration answer, once over zeros and once over ones. The two copies differ
  where the answer has no byte.
**/
STATIC
EFI_STATUS
TakeBlocks (
  IN OUT Storage     *This,
  IN     EFI_STRING  Answer
  )
{
  EFI_STRING  Progress;
  UINTN       Size;
  EFI_STATUS  Status;

  Size   = This->Size;
  Status = gHiiConfigRouting->ConfigToBlock (gHiiConfigRouting, Answer, This->Data, &Size, &Progress);
  if (!EFI_ERROR (Status)) {
    Size = This->Size;
    SetMem (This->Data + Size, Size, 0xFF);
    Status = gHiiConfigRouting->ConfigToBlock (gHiiConfigRouting, Answer, This->Data + Size, &Size, &Progress);
  }

  return Status;
}

/**
  Reads a storage behind a driver's configuration protocol.
**/
STATIC
EFI_STATUS
ExtractContent (
  IN OUT Storage  *This
  )
{
  CHAR16      *Elements;
  EFI_STRING  Request;
  EFI_STRING  Progress;
  EFI_STRING  Answer;
  EFI_STRING  Defaults;
  EFI_STATUS  Status;

  Request  = NULL;
  Elements = MakeElements (This);
  if (Elements != NULL) {
    Request = MakeConfig (This, Elements);
    FreePool (Elements);
  }

  if (Request == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Status = gHiiConfigRouting->ExtractConfig (gHiiConfigRouting, Request, &Progress, &Answer);
  FreePool (Request);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  //
  // The current values come first. Defaults may follow, as configurations of their own, which ConfigToBlock rejects.
  //
  Defaults = StrStr (Answer, L"&GUID=");
  if (Defaults != NULL) {
    *Defaults = L'\0';
  }

  if (This->Kind == StorageBuffer) {
    Status = TakeBlocks (This, Answer);
  } else {
    Status = TakeNamedValue (This, Answer) ? EFI_SUCCESS : EFI_COMPROMISED_DATA;
  }

  This->DataSize = This->Size;
  FreePool (Answer);
  return Status;
}

/**
  Reads the content of a storage, unless it is there already.
**/
STATIC
EFI_STATUS
LoadContent (
  IN OUT Storage  *This
  )
{
  UINTN   Size;
  UINT32  Attributes;

  if (This->Data != NULL) {
    return This->Status;
  }

  This->Data = AllocateZeroPool (MAX (This->Size, 1) * ((This->Kind == StorageBuffer) ? 2 : 1));
  if (This->Data == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  if (This->Kind == StorageVariable) {
    Size         = This->Size;
    Attributes   = This->Attributes;
    This->Status = gRT->GetVariable (This->Name, &This->Guid, &Attributes, &Size, This->Data);
    if (!EFI_ERROR (This->Status)) {
      This->DataSize   = (UINT32)Size;
      This->Attributes = Attributes;
    }
  } else {
    This->Status = ExtractContent (This);
  }

  return This->Status;
}

/**
  Tells whether the storage has these bytes.
**/
STATIC
BOOLEAN
HasBytes (
  IN CONST Storage  *This,
  IN UINTN          Offset,
  IN UINTN          Width
  )
{
  if ((Offset > This->DataSize) || (This->DataSize - Offset < Width)) {
    return FALSE;
  }

  return (BOOLEAN)((This->Kind != StorageBuffer) ||
                   (CompareMem (This->Data + Offset, This->Data + This->Size + Offset, Width) == 0));
}

EFI_STATUS
ReadStorage (
  IN  Storage  *This,
  IN  UINTN    Offset,
  IN  UINTN    Width,
  OUT VOID     *Bytes
  )
{
  EFI_STATUS  Status;

  Status = LoadContent (This);
  if (!EFI_ERROR (Status)) {
    if (HasBytes (This, Offset, Width)) {
      CopyMem (Bytes, This->Data + Offset, Width);
    } else {
      Status = EFI_COMPROMISED_DATA;
    }
  }

  if (!KeepWhileNotifying ()) {
    ForgetContent (This);
  }

  return Status;
}

/**
  Hands bytes to a driver's configuration protocol.
**/
STATIC
EFI_STATUS
RouteContent (
  IN CONST Storage  *This,
  IN UINTN          Offset,
  IN UINTN          Width,
  IN CONST UINT8    *Bytes
  )
{
  CHAR16      *Element;
  CHAR16      *End;
  EFI_STRING  Config;
  EFI_STRING  Progress;
  UINTN       Size;
  UINTN       Index;
  UINT8       Byte;
  EFI_STATUS  Status;

  Size    = StrSize (This->Name) + (REQUEST_TEXT_CAPACITY + 2 * Width) * sizeof (CHAR16);
  Element = AllocatePool (Size);
  if (Element == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  if (This->Kind == StorageBuffer) {
    UnicodeSPrint (Element, Size, L"&OFFSET=%x&WIDTH=%x&VALUE=", (UINT32)Offset, (UINT32)Width);
  } else {
    UnicodeSPrint (Element, Size, L"&%s=", This->Name);
  }

  End = Element + StrLen (Element);
  for (Index = 0; Index < Width; Index++) {
    Byte = (This->Kind == StorageText) ? Bytes[Index ^ 1] : Bytes[Width - 1 - Index];
    UnicodeSPrint (End, 3 * sizeof (CHAR16), L"%02x", Byte);
    End += 2;
  }

  Status = EFI_OUT_OF_RESOURCES;
  Config = MakeConfig (This, Element);
  if (Config != NULL) {
    Status = gHiiConfigRouting->RouteConfig (gHiiConfigRouting, Config, &Progress);
    FreePool (Config);
  }

  FreePool (Element);
  return Status;
}

EFI_STATUS
WriteStorage (
  IN Storage     *This,
  IN UINTN       Offset,
  IN UINTN       Width,
  IN CONST VOID  *Bytes
  )
{
  EFI_STATUS  Status;

  //
  // The whole content is written back, so it is read again: what was kept may be older than a change by its owner.
  //
  ForgetContent (This);
  Status = LoadContent (This);
  if (!EFI_ERROR (Status) && !HasBytes (This, Offset, Width)) {
    Status = EFI_COMPROMISED_DATA;
  }

  if (!EFI_ERROR (Status)) {
    if (This->Kind == StorageVariable) {
      CopyMem (This->Data + Offset, Bytes, Width);
      Status = gRT->SetVariable (This->Name, &This->Guid, This->Attributes, This->DataSize, This->Data);
    } else {
      Status = RouteContent (This, Offset, Width, Bytes);
    }
  }

  if (!EFI_ERROR (Status)) {
    ForgetContent (This);
    Status = LoadContent (This);
    if (!EFI_ERROR (Status) &&
        (!HasBytes (This, Offset, Width) || (CompareMem (This->Data + Offset, Bytes, Width) != 0)))
    {
      Status = EFI_WRITE_PROTECTED;
    }
  }

  ForgetContent (This);
  return Status;
}

EFI_STATUS
CreateStorage (
  IN Storage     *This,
  IN CONST VOID  *Data
  )
{
  ForgetContent (This);
  if (This->Kind != StorageVariable) {
    return EFI_UNSUPPORTED;
  }

  return gRT->SetVariable (This->Name, &This->Guid, This->Attributes, This->Size, (VOID *)Data);
}
