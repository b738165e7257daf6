/** @file
  PendingValues: keeps accepted values in the variable "PendingValues" and applies them in the next boot.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Corvane/AttributeCache.h>
#include <Corvane/Packed.h>
#include <Library/BaseMemoryLib.h>
#include <Library/DebugLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Library/UefiLib.h>
#include <Library/UefiRuntimeServicesTableLib.h>
#include <Protocol/SettingWriter.h>
#include <Protocol/SetupValues.h>
#include "PendingValues.h"

#define PENDING_VARIABLE      L"PendingValues"
#define CACHE_STATUS_REBUILD  1

#define WIDEN(Text)       L##Text
#define AS_UNICODE(Text)  WIDEN (Text)

#pragma pack (1)

///
/// One value of the variable, followed by its text.
///
typedef struct {
  UINT32    Setting;
  UINT16    Length;    ///< bytes of the text
} CORVANE_PACKED PendingValue;

#pragma pack ()

//
// What the variable holds.
//
STATIC UINT8  *mPending;
STATIC UINTN  mPendingSize;

/**
  Takes the next value.

  @retval FALSE  There is none, or it is cut off.
**/
STATIC
BOOLEAN
NextPendingValue (
  IN OUT ByteReader    *Values,
  OUT    PendingValue  *Value,
  OUT    ByteReader    *Text
  )
{
  CONST UINT8  *Head;

  Head = TakeBytes (Values, sizeof (*Value));
  if (Head == NULL) {
    return FALSE;
  }

  CopyMem (Value, Head, sizeof (*Value));
  *Text = TakePart (Values, Value->Length);
  return (BOOLEAN)!Text->Failed;
}

STATIC
ByteReader
OpenPending (
  IN CONST UINT8  *Bytes,
  IN UINTN        Size
  )
{
  ByteReader  Reader;

  Reader.Next   = Bytes;
  Reader.Left   = Size;
  Reader.Failed = FALSE;
  return Reader;
}

BOOLEAN
FindPendingValue (
  IN  UINT32      Setting,
  OUT ByteReader  *Text
  )
{
  ByteReader    Values;
  PendingValue  Value;

  Values = OpenPending (mPending, mPendingSize);
  while (NextPendingValue (&Values, &Value, Text)) {
    if (Value.Setting == Setting) {
      return TRUE;
    }
  }

  return FALSE;
}

EFI_STATUS
KeepPendingValue (
  IN UINT32      Setting,
  IN ByteReader  Text
  )
{
  ByteReader    Values;
  ByteReader    OtherText;
  PendingValue  Value;
  UINT8         *Pending;
  UINT8         *End;
  UINT8         Rebuild;
  EFI_STATUS    Status;

  Pending = AllocatePool (mPendingSize + sizeof (Value) + Text.Left);
  if (Pending == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  End    = Pending;
  Values = OpenPending (mPending, mPendingSize);
  while (NextPendingValue (&Values, &Value, &OtherText)) {
    if (Value.Setting != Setting) {
      CopyMem (End, &Value, sizeof (Value));
      CopyMem (End + sizeof (Value), OtherText.Next, OtherText.Left);
      End += sizeof (Value) + OtherText.Left;
    }
  }

  Value.Setting = Setting;
  Value.Length  = (UINT16)Text.Left;
  CopyMem (End, &Value, sizeof (Value));
  CopyMem (End + sizeof (Value), Text.Next, Text.Left);
  End += sizeof (Value) + Text.Left;

  //
  // First what does no harm alone: a boot that gathers anew without need.
  //
  Rebuild = CACHE_STATUS_REBUILD;
  Status  = gRT->SetVariable (
                   AS_UNICODE (ATTRIBUTE_CACHE_STATUS),
                   &gVaroAttributeVariableGuid,
                   EFI_VARIABLE_NON_VOLATILE | EFI_VARIABLE_BOOTSERVICE_ACCESS | EFI_VARIABLE_RUNTIME_ACCESS,
                   sizeof (Rebuild),
                   &Rebuild
                   );
  if (!EFI_ERROR (Status)) {
    Status = gRT->SetVariable (
                    PENDING_VARIABLE,
                    &gNotebookVariableGuid,
                    EFI_VARIABLE_NON_VOLATILE | EFI_VARIABLE_BOOTSERVICE_ACCESS,
                    (UINTN)(End - Pending),
                    Pending
                    );
  }

  if (EFI_ERROR (Status)) {
    FreePool (Pending);
    return Status;
  }

  if (mPending != NULL) {
    FreePool (mPending);
  }

  mPending     = Pending;
  mPendingSize = (UINTN)(End - Pending);
  return EFI_SUCCESS;
}

/**
  Gives a text with the terminator that SettingWriterProtocol wants.

  @return  The text in pool, owned by the caller, or NULL.
**/
STATIC
CHAR8 *
CopyText (
  IN ByteReader  Text
  )
{
  CHAR8  *Copy;

  Copy = AllocateZeroPool (Text.Left + sizeof (CHAR8));
  if (Copy != NULL) {
    CopyMem (Copy, Text.Next, Text.Left);
  }

  return Copy;
}

EFI_STATUS
CheckPendingValue (
  IN UINT32      Setting,
  IN ByteReader  Text
  )
{
  SettingWriterProtocol  *Writer;
  CHAR8                  *Copy;
  EFI_STATUS             Status;

  Status = gBS->LocateProtocol (&gNotebookSettingWriterProtocolGuid, NULL, (VOID **)&Writer);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  Copy = CopyText (Text);
  if (Copy == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Status = Writer->Check (Writer, Setting, Copy);
  FreePool (Copy);
  return Status;
}

STATIC
VOID
ApplyValue (
  IN SettingWriterProtocol  *Writer,
  IN UINT32                 Setting,
  IN ByteReader             Text
  )
{
  CHAR8       *Copy;
  EFI_STATUS  Status;

  Status = EFI_OUT_OF_RESOURCES;
  Copy   = CopyText (Text);
  if (Copy != NULL) {
    Status = Writer->Write (Writer, Setting, Copy);
    FreePool (Copy);
  }

  if (EFI_ERROR (Status)) {
    DEBUG ((DEBUG_WARN, "%a: setting %u keeps its old value: %r\n", gEfiCallerBaseName, Setting, Status));
  }
}

STATIC
EFI_STATUS
EFIAPI
ApplyPendingValues (
  IN PendingValuesProtocol  *This
  )
{
  SettingWriterProtocol  *Writer;
  ByteReader             Values;
  ByteReader             Text;
  PendingValue           Value;
  UINT8                  *Bytes;
  UINTN                  Size;
  EFI_STATUS             Status;

  Status = GetVariable2 (PENDING_VARIABLE, &gNotebookVariableGuid, (VOID **)&Bytes, &Size);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  Status = gBS->LocateProtocol (&gNotebookSettingWriterProtocolGuid, NULL, (VOID **)&Writer);
  if (!EFI_ERROR (Status)) {
    Values = OpenPending (Bytes, Size);
    while (NextPendingValue (&Values, &Value, &Text)) {
      ApplyValue (Writer, Value.Setting, Text);
    }

    Status = gRT->SetVariable (PENDING_VARIABLE, &gNotebookVariableGuid, 0, 0, NULL);
  }

  FreePool (Bytes);
  return Status;
}

PendingValuesProtocol  mPendingValues = { ApplyPendingValues };
