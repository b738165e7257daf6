/** @file
  ByteReader: reads numbers and bytes of a record, a table or a request in C, and never past its end.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CORVANE_BYTE_READER_H_
#define CORVANE_BYTE_READER_H_

#include <Base.h>

typedef struct {
  CONST UINT8    *Next;
  UINTN          Left;
  BOOLEAN        Failed;   ///< a read went past the end; every later read fails too
} ByteReader;

/**
  Takes bytes.

  @return  The bytes; NULL when fewer are left.
**/
STATIC
inline
CONST UINT8 *
TakeBytes (
  IN OUT ByteReader  *Reader,
  IN     UINTN       Count
  )
{
  CONST UINT8  *Bytes;

  if (Reader->Failed || (Count > Reader->Left)) {
    Reader->Failed = TRUE;
    Reader->Left   = 0;
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
  IN OUT ByteReader  *Reader,
  IN     UINTN       Width
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

/**
  Takes bytes as a reader of their own; an empty, failed reader when fewer are left.
**/
STATIC
inline
ByteReader
TakePart (
  IN OUT ByteReader  *Reader,
  IN     UINTN       Count
  )
{
  ByteReader  Part;

  Part.Next   = TakeBytes (Reader, Count);
  Part.Left   = Reader->Failed ? 0 : Count;
  Part.Failed = Reader->Failed;
  return Part;
}

#endif
