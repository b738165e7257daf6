/** @file
  IfrReader: steps over IFR opcodes within their package.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Library/BaseLib.h>
#include "IfrReader.h"

CONST EFI_IFR_OP_HEADER *
NextOpcode (
  IN OUT IfrReader  *Reader
  )
{
  CONST EFI_IFR_OP_HEADER  *Opcode;

  if (Reader->Broken || (Reader->Left == 0)) {
    return NULL;
  }

  Opcode = (CONST EFI_IFR_OP_HEADER *)Reader->Next;
  if ((Reader->Left < sizeof (EFI_IFR_OP_HEADER)) ||
      (Opcode->Length < sizeof (EFI_IFR_OP_HEADER)) ||
      (Opcode->Length > Reader->Left))
  {
    Reader->Broken = TRUE;
    return NULL;
  }

  Reader->Next += Opcode->Length;
  Reader->Left -= Opcode->Length;
  return Opcode;
}

VOID
SkipScope (
  IN OUT IfrReader  *Reader
  )
{
  CONST EFI_IFR_OP_HEADER  *Opcode;
  UINTN                    Depth;

  for (Depth = 1; Depth > 0; ) {
    Opcode = NextOpcode (Reader);
    if (Opcode == NULL) {
      Reader->Broken = TRUE;   // the scope never ends
      return;
    }

    if (Opcode->OpCode == EFI_IFR_END_OP) {
      Depth--;
    } else if (Opcode->Scope) {
      Depth++;
    }
  }
}

UINT64
ReadLittleEndian (
  IN CONST UINT8  *Bytes,
  IN UINTN        Width
  )
{
  UINT64  Value;
  UINTN   Index;

  for (Value = 0, Index = 0; Index < Width; Index++) {
    Value |= LShiftU64 (Bytes[Index], 8 * Index);
  }

  return Value;
}

UINTN
TypeWidth (
  IN UINT8  Type
  )
{
  switch (Type) {
    case EFI_IFR_TYPE_NUM_SIZE_8:
    case EFI_IFR_TYPE_BOOLEAN:
      return sizeof (UINT8);
    case EFI_IFR_TYPE_NUM_SIZE_16:
    case EFI_IFR_TYPE_STRING:
      return sizeof (UINT16);
    case EFI_IFR_TYPE_NUM_SIZE_32:
      return sizeof (UINT32);
    case EFI_IFR_TYPE_NUM_SIZE_64:
      return sizeof (UINT64);
    default:
      return 0;
  }
}
