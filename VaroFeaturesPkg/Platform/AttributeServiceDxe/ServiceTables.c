/** @file
  ServiceTables: finds the tables among the transport records and answers requests for them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Corvane/TableDescriptor.h>
#include <Corvane/TableDirectory.h>
#include <IndustryStandard/PldmBios.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/TransportLog.h>
#include "ServiceTables.h"

//
// A table that would fill the buffer from PayloadLength on is sent in chunks.
//
#define CHUNKED_FROM  (REQUEST_BUFFER_SIZE - OFFSET_OF (RequestBlock, PayloadLength))

//
// Descriptors of the tables in the order of their records, which is that of the directory too.
//
STATIC CONST UINT8  mTables[] = { TABLE_STRINGS, TABLE_ATTRIBUTES, TABLE_VALUES, TABLE_DISPLAY, TABLE_HELP };

STATIC BOOLEAN  mAnnounced[ARRAY_SIZE (mTables)];   ///< the next answer at offset 0 is the first chunk

BOOLEAN
OpenRecord (
  IN  UINT8       Type,
  OUT ByteReader  *Payload
  )
{
  TransportLogProtocol  *Log;
  ByteReader            Records;
  ByteReader            Found;
  CONST EFI_GUID        *Guid;
  UINT64                Length;

  ZeroMem (Payload, sizeof (*Payload));
  Payload->Failed = TRUE;
  if (EFI_ERROR (gBS->LocateProtocol (&gVaroTransportLogProtocolGuid, NULL, (VOID **)&Log))) {
    return FALSE;
  }

  Records.Next   = Log->Records;
  Records.Left   = Log->Size;
  Records.Failed = FALSE;
  while (Records.Left > 0) {
    Guid   = (CONST EFI_GUID *)TakeBytes (&Records, sizeof (*Guid));
    Length = TakeNumber (&Records, sizeof (Length));
    if ((Guid == NULL) || !CompareGuid (Guid, &gVaroTransportRecordGuid)) {
      break;
    }

    if ((UINT8)TakeNumber (&Records, sizeof (Type)) != Type) {
      TakeBytes (&Records, (UINTN)Length);
      continue;
    }

    //
    // A driver that was loaded again has sent its tables again: the last ones count.
    //
    Found = TakePart (&Records, (UINTN)Length);
    if (!Found.Failed) {
      *Payload = Found;
    }
  }

  return (BOOLEAN)!Payload->Failed;
}

BOOLEAN
OpenTable (
  IN  UINT8       Type,
  OUT ByteReader  *Table
  )
{
  ByteReader             Descriptors;
  CONST TableDescriptor  *Descriptor;
  UINTN                  Around;

  Descriptor = NULL;
  if (OpenRecord (TRANSPORT_RECORD_DESCRIPTORS, &Descriptors)) {
    TakeBytes (&Descriptors, mTables[Type - TRANSPORT_RECORD_STRINGS] * sizeof (*Descriptor));
    Descriptor = (CONST TableDescriptor *)TakeBytes (&Descriptors, sizeof (*Descriptor));
  }

  if (!OpenRecord (Type, Table) || (Descriptor == NULL)) {
    return FALSE;
  }

  Around      = PLDM_BIOS_TABLE_CHECKSUM_SIZE + (UINTN)Descriptor->PadLength;
  Table->Left = (Table->Left < Around) ? 0 : Table->Left - Around;
  return TRUE;
}

BOOLEAN
AnswerDirectory (
  IN OUT RequestBlock  *Request
  )
{
  ByteReader           Record;
  ByteReader           Table;
  TableDirectory       *Directory;
  TableDirectoryEntry  *Entry;
  CONST UINT8          *Bytes;
  UINTN                Index;

  OpenRecord (TRANSPORT_RECORD_DIRECTORY, &Record);
  Bytes = TakeBytes (&Record, sizeof (*Directory));
  if (Bytes == NULL) {
    return FALSE;
  }

  ZeroMem (mAnnounced, sizeof (mAnnounced));   // who asks for the directory starts from the beginning
  Directory = (TableDirectory *)(Request + 1);
  CopyMem (Directory, Bytes, sizeof (*Directory));
  Directory->EntryCount = MIN (Directory->EntryCount, ARRAY_SIZE (mTables));
  Directory->Length     = OFFSET_OF (TableDirectory, Entries) + Directory->EntryCount * sizeof (*Entry);
  Directory->Checksum   = 0;
  for (Index = 0; Index < Directory->EntryCount; Index++) {
    Entry = &Directory->Entries[Index];
    OpenTable ((UINT8)(TRANSPORT_RECORD_STRINGS + Index), &Table);
    Entry->Length     = (UINT16)Table.Left;
    Entry->AddressLow = 0;                     // of the driver's memory
  }

  Directory->Checksum    = CalculateCheckSum8 ((UINT8 *)Directory, Directory->Length);
  Request->PayloadLength = sizeof (Request->PayloadLength) + Directory->Length;
  return TRUE;
}

BOOLEAN
AnswerTable (
  IN OUT RequestBlock  *Request
  )
{
  ByteReader  Table;
  UINT8       *Payload;
  UINT32      Id;
  UINT32      Offset;
  UINTN       Size;
  UINTN       Count;
  UINTN       Present;

  Id      = Request->Arguments[2];
  Offset  = Request->Arguments[3];
  Payload = (UINT8 *)(Request + 1);
  if ((Id >= ARRAY_SIZE (mTables)) || !OpenTable ((UINT8)(TRANSPORT_RECORD_STRINGS + Id), &Table)) {
    return FALSE;
  }

  Size = Table.Left;
  if (Size + sizeof (Request->PayloadLength) < CHUNKED_FROM) {
    if (Offset != 0) {
      return FALSE;
    }

    CopyMem (Payload, Table.Next, Size);
    Request->PayloadLength = (UINT32)(sizeof (Request->PayloadLength) + Size);
    return TRUE;
  }

  //
  // Some lengths are too long for a whole answer and too short for an announcement. Zeros fill them up: readers stop
  // before the last bytes of a table that came in chunks.
  //
  Size = MAX (Size, CHUNKED_FROM);
  if ((Offset == 0) && !mAnnounced[Id]) {
    mAnnounced[Id]         = TRUE;
    Request->PayloadLength = (UINT32)Size;
    return TRUE;
  }

  if (Offset >= Size) {
    return FALSE;
  }

  mAnnounced[Id] = FALSE;
  Count          = MIN (Size - Offset, REQUEST_PAYLOAD_CAPACITY);
  Present        = (Offset < Table.Left) ? MIN (Table.Left - Offset, Count) : 0;
  CopyMem (Payload, Table.Next + Offset, Present);
  ZeroMem (Payload + Present, Count - Present);
  Request->PayloadLength = (UINT32)Count;
  return TRUE;
}
