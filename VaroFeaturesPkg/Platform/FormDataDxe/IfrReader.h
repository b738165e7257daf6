/** @file
  IfrReader: steps over IFR opcodes within their package (UEFI specification, chapter on Human Interface
  Infrastructure).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef IFR_READER_H_
#define IFR_READER_H_

#include <Uefi.h>
#include <Uefi/UefiInternalFormRepresentation.h>

typedef struct {
  CONST UINT8    *Next;
  UINTN          Left;     ///< bytes from Next to the end
  BOOLEAN        Broken;   ///< an opcode did not fit; nothing more is read
} IfrReader;

/**
  Reads the next opcode.

  @return  The opcode, all of its Length within the package; NULL at the end, or when Broken gets set.
**/
CONST EFI_IFR_OP_HEADER *
NextOpcode (
  IN OUT IfrReader  *Reader
  );

/**
  Skips what is in the scope that the opcode just read has opened, its end included.
**/
VOID
SkipScope (
  IN OUT IfrReader  *Reader
  );

/**
  Reads a little-endian number of up to 8 bytes.
**/
UINT64
ReadLittleEndian (
  IN CONST UINT8  *Bytes,
  IN UINTN        Width
  );

/**
  Gives the bytes of a number of an IFR type.

  @return  2 for a string, which is given by its identifier; 0 for types that are no number.
**/
UINTN
TypeWidth (
  IN UINT8  Type
  );

#endif
