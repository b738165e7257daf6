/** @file
  AttrTables: reads attributes through the attribute access protocol, and checks every answer.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <IndustryStandard/PldmBios.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/LoadedImage.h>
#include "AttrTables.h"

//
// Upper limit of an answer: the size of the buffer that requests and answers share.
//
#define ANSWER_LIMIT  SIZE_64KB

//
// No attribute has this type. It stays in a record that GetAttributeInfo did not write.
//
#define NO_TYPE  MAX_UINT32

EFI_STATUS
OpenAttributeAccess (
  OUT AttributeAccessProtocol  **Access
  )
{
  EFI_HANDLE  *Handles;
  UINTN       Count;
  UINTN       Index;
  VOID        *Image;
  EFI_STATUS  Status;

  Status = gBS->LocateHandleBuffer (ByProtocol, &gVaroAttributeAccessProtocolGuid, NULL, &Count, &Handles);
  if (EFI_ERROR (Status)) {
    return EFI_NOT_FOUND;
  }

  Status = EFI_NOT_STARTED;
  for (Index = 0; (Index < Count) && (Status == EFI_NOT_STARTED); Index++) {
    // An unloaded image leaves its protocol installed, and the interface may be freed memory.
    if (EFI_ERROR (gBS->HandleProtocol (Handles[Index], &gEfiLoadedImageProtocolGuid, &Image)) ||
        EFI_ERROR (gBS->HandleProtocol (Handles[Index], &gVaroAttributeAccessProtocolGuid, (VOID **)Access)))
    {
      continue;
    }

    Status = ((*Access)->Revision == ATTRIBUTE_ACCESS_REVISION) ? EFI_SUCCESS : EFI_INCOMPATIBLE_VERSION;
  }

  FreePool (Handles);
  return Status;
}

EFI_STATUS
ReadHandles (
  IN  AttributeAccessProtocol  *Access,
  OUT UINT16                   **Handles,
  OUT UINTN                    *Count
  )
{
  UINT16      None;
  UINT32      Size;
  EFI_STATUS  Status;

  *Handles = NULL;
  *Count   = 0;
  Size     = 0;
  Status   = Access->GetAttributeHandles (Access, &None, &Size);
  if (Status == EFI_UNSUPPORTED) {
    Size = ANSWER_LIMIT;   // an unknown type hides the count, but not the handles before it
  } else if (EFI_ERROR (Status) && (Status != EFI_BUFFER_TOO_SMALL)) {
    return Status;
  } else if (Size > ANSWER_LIMIT) {
    return EFI_DEVICE_ERROR;
  }

  *Handles = AllocateZeroPool (Size + sizeof (UINT16));
  if (*Handles == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Status = Access->GetAttributeHandles (Access, *Handles, &Size);
  if (EFI_ERROR (Status) && (Status != EFI_UNSUPPORTED)) {
    FreePool (*Handles);
    *Handles = NULL;
    return Status;
  }

  while ((*Count < Size / sizeof (UINT16)) && ((*Handles)[*Count] != 0)) {
    (*Count)++;
  }

  return Status;
}

CHAR8 *
ReadName (
  IN AttributeAccessProtocol  *Access,
  IN UINT16                   Handle
  )
{
  CHAR8       None;
  CHAR8       *Name;
  UINT32      Size;
  EFI_STATUS  Status;

  Size   = 0;
  Status = Access->GetAttributeString (Access, Handle, &None, &Size);
  if ((EFI_ERROR (Status) && (Status != EFI_BUFFER_TOO_SMALL)) || (Size > ANSWER_LIMIT)) {
    return NULL;
  }

  Name = AllocateZeroPool (Size + sizeof (CHAR8));
  if ((Name != NULL) && EFI_ERROR (Access->GetAttributeString (Access, Handle, Name, &Size))) {
    FreePool (Name);
    Name = NULL;
  }

  return Name;
}

/**
  Reads the record with both parts, of the size that ReadHead found.
**/
STATIC
EFI_STATUS
ReadRecord (
  IN     AttributeAccessProtocol  *Access,
  IN     UINT16                   Handle,
  IN OUT AttributeEntry           *Entry
  )
{
  UINT32      Needed;
  EFI_STATUS  Status;

  Needed = Entry->RecordSize;
  if (Needed > ANSWER_LIMIT) {
    return EFI_DEVICE_ERROR;
  }

  Entry->Record = AllocateZeroPool (MAX (Needed, sizeof (AttributeInfo)));
  if (Entry->Record == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Entry->Record->Handle = Handle;
  Status                = Access->GetAttributeInfo (Access, Entry->Record, &Entry->RecordSize);
  if (!EFI_ERROR (Status)) {
    Entry->RecordSize = Needed;
    ParseAttribute (Entry->Record, Entry->RecordSize, &Entry->Attribute);
    Status = Entry->Attribute.HasParts ? EFI_SUCCESS : EFI_DEVICE_ERROR;
  }

  if (EFI_ERROR (Status)) {
    FreePool (Entry->Record);
    Entry->Record             = NULL;
    Entry->Attribute.HasParts = FALSE;
  }

  return Status;
}

EFI_STATUS
ReadHead (
  IN  AttributeAccessProtocol  *Access,
  IN  UINT16                   Handle,
  OUT AttributeEntry           *Entry
  )
{
  AttributeInfo  Head;

  ZeroMem (Entry, sizeof (*Entry));
  Head.Type       = NO_TYPE;
  Head.Handle     = Handle;
  Head.NameHandle = 0;
  Entry->Status   = Access->GetAttributeInfo (Access, &Head, &Entry->RecordSize);
  if (Head.Type == NO_TYPE) {
    return EFI_ERROR (Entry->Status) ? Entry->Status : EFI_NOT_FOUND;
  }

  ParseAttribute (&Head, 0, &Entry->Attribute);
  Entry->Name = ReadName (Access, Head.NameHandle);
  if (Entry->Name == NULL) {
    Entry->Name = AllocateZeroPool (sizeof (CHAR8));   // without a name: only a list shows the attribute
  }

  return (Entry->Name == NULL) ? EFI_OUT_OF_RESOURCES : EFI_SUCCESS;
}

EFI_STATUS
ReadEntry (
  IN  AttributeAccessProtocol  *Access,
  IN  UINT16                   Handle,
  OUT AttributeEntry           *Entry
  )
{
  EFI_STATUS  Status;

  Status = ReadHead (Access, Handle, Entry);
  if (!EFI_ERROR (Status) && (Entry->Status == EFI_BUFFER_TOO_SMALL)) {
    Entry->Status = ReadRecord (Access, Handle, Entry);
  }

  return Status;
}

VOID
FreeEntry (
  IN OUT AttributeEntry  *Entry
  )
{
  if (Entry->Name != NULL) {
    FreePool (Entry->Name);
  }

  if (Entry->Record != NULL) {
    FreePool (Entry->Record);
  }

  ZeroMem (Entry, sizeof (*Entry));
}

EFI_STATUS
ReadEntries (
  IN  AttributeAccessProtocol  *Access,
  IN  ATTRIBUTE_READ           Read,
  OUT AttributeEntry           **Entries,
  OUT UINTN                    *Count
  )
{
  UINT16      *Handles;
  UINTN       HandleCount;
  UINTN       Index;
  EFI_STATUS  Status;

  *Count   = 0;
  *Entries = NULL;
  Status   = ReadHandles (Access, &Handles, &HandleCount);
  if (Handles == NULL) {
    return Status;
  }

  *Entries = AllocateZeroPool ((HandleCount + 1) * sizeof (**Entries));
  for (Index = 0; (*Entries != NULL) && (Index < HandleCount); Index++) {
    if (EFI_ERROR (Read (Access, Handles[Index], &(*Entries)[*Count]))) {
      FreeEntry (&(*Entries)[*Count]);
    } else {
      (*Count)++;
    }
  }

  FreePool (Handles);
  return (*Entries == NULL) ? EFI_OUT_OF_RESOURCES : Status;
}

VOID
FreeEntries (
  IN AttributeEntry  *Entries,
  IN UINTN           Count
  )
{
  while ((Entries != NULL) && (Count > 0)) {
    FreeEntry (&Entries[--Count]);
  }

  if (Entries != NULL) {
    FreePool (Entries);
  }
}
