/** @file
  TableReader: numbers and bytes out of a published table or another block, never from behind its end.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef TABLE_READER_H_
#define TABLE_READER_H_

#include <Base.h>
#include <Corvane/TableDescriptor.h>
#include <IndustryStandard/PldmBios.h>

//
// An entry is longer than the zeros that may stand behind the last one, three at most.
//
#define SHORTEST_ENTRY  4

typedef struct {
  CONST UINT8    *Next;
  UINTN          Left;
  BOOLEAN        Failed;   ///< something was asked for that is not there; nothing more is read
} TableReader;

/**
  Opens a finished table; one that is not there has no entries.
**/
STATIC
inline
VOID
OpenTable (
  IN  CONST TableDescriptor  *Descriptor,
  OUT TableReader            *Reader
  )
{
  UINTN  Around;

  Around         = PLDM_BIOS_TABLE_CHECKSUM_SIZE + (UINTN)Descriptor->PadLength;
  Reader->Next   = (CONST UINT8 *)(UINTN)Descriptor->Data;
  Reader->Left   = ((Descriptor->Data == 0) || (Descriptor->Limit < Around)) ? 0 : Descriptor->Limit - Around;
  Reader->Failed = FALSE;
}

/**
  Opens a block of bytes.
**/
STATIC
inline
VOID
OpenBytes (
  IN  CONST VOID   *Bytes,
  IN  UINTN        Count,
  OUT TableReader  *Reader
  )
{
  Reader->Next   = Bytes;
  Reader->Left   = Count;
  Reader->Failed = FALSE;
}

STATIC
inline
BOOLEAN
MoreEntries (
  IN CONST TableReader  *Reader
  )
{
  return (BOOLEAN)(!Reader->Failed && (Reader->Left >= SHORTEST_ENTRY));
}

/**
  Takes bytes.

  @return  The bytes; NULL when there are not as many.
**/
STATIC
inline
CONST UINT8 *
TakeBytes (
  IN OUT TableReader  *Reader,
  IN     UINTN        Count
  )
{
  CONST UINT8  *Bytes;

  if (Reader->Failed || (Count > Reader->Left)) {
    Reader->Failed = TRUE;
    return NULL;
  }

  Bytes         = Reader->Next;
  Reader->Next += Count;
  Reader->Left -= Count;
  return Bytes;
}

/**
  Takes a little-endian number; 0 when it is not there.
**/
STATIC
inline
UINT64
TakeNumber (
  IN OUT TableReader  *Reader,
  IN     UINTN        Width
  )
{
  CONST UINT8  *Bytes;
  UINT64       Number;

  Bytes = TakeBytes (Reader, Width);
  for (Number = 0; (Bytes != NULL) && (Width > 0); Width--) {
    Number = (Number << 8) | Bytes[Width - 1];
  }

  return Number;
}

#endif
