/** @file
  ByteReader: numbers and bytes out of a record or a request, never from behind its end.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef BYTE_READER_H_
#define BYTE_READER_H_

#include <Base.h>

typedef struct {
  CONST UINT8    *Next;
  UINTN          Left;
  BOOLEAN        Failed;   ///< something was asked for that is not there; nothing more is read
} ByteReader;

/**
  Takes bytes.

  @return  The bytes; NULL when there are not as many.
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
  Takes bytes to be read by themselves; none when there are not as many.
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
