/** @file
  AttrValue: checks a typed value against the attribute, before anything is sent.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Base.h>
#include <IndustryStandard/PldmBios.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/MemoryAllocationLib.h>
#include "AttrValue.h"

BOOLEAN
ReadNumber (
  IN  CONST CHAR8  *Text,
  OUT UINT64       *Number
  )
{
  CHAR8  *End;

  // The library's functions skip leading blanks, which are not allowed here.
  if ((*Text < '0') || (*Text > '9')) {
    return FALSE;
  }

  if ((Text[0] == '0') && ((Text[1] == 'x') || (Text[1] == 'X'))) {
    return (BOOLEAN)(!RETURN_ERROR (AsciiStrHexToUint64S (Text, &End, Number)) && (*End == '\0') && (Text[2] != '\0'));
  }

  return (BOOLEAN)(!RETURN_ERROR (AsciiStrDecimalToUint64S (Text, &End, Number)) && (*End == '\0'));
}

ValueVerdict
CheckInteger (
  IN  CONST Attribute  *Attribute,
  IN  CONST CHAR8      *Text,
  OUT UINT64           *Number
  )
{
  if (!ReadNumber ((*Text == '-') ? Text + 1 : Text, Number)) {
    return ValueNoNumber;
  }

  if ((*Text == '-') || (*Number < Attribute->Minimum) || (*Number > Attribute->Maximum)) {
    return ValueOutOfBounds;
  }

  if ((Attribute->Step != 0) && ((*Number - Attribute->Minimum) % Attribute->Step != 0)) {
    return ValueOutOfStep;
  }

  return ValueAccepted;
}

ValueVerdict
CheckLength (
  IN CONST Attribute  *Attribute,
  IN UINTN            Length
  )
{
  if (Length < Attribute->Minimum) {
    return ValueTooShort;
  }

  return (Length > Attribute->Maximum) ? ValueTooLong : ValueAccepted;
}

AttributeInfo *
MakeRecord (
  IN  CONST Attribute      *Attribute,
  IN  CONST AttributeInfo  *Record,
  IN  UINTN                RecordSize,
  IN  CONST CHAR8          *Text,
  IN  UINT64               Number,
  OUT UINT32               *Size
  )
{
  AttributeInfo  *Made;
  UINT8          *Value;
  UINTN          Length;

  Length = (Attribute->Type == PLDM_BIOS_ATTRIBUTE_STRING) ? AsciiStrLen (Text) : 0;
  if ((Attribute->Type == PLDM_BIOS_ATTRIBUTE_ENUMERATION) && (Attribute->CurrentCount == 0)) {
    return NULL;
  }

  if (Attribute->Type == PLDM_BIOS_ATTRIBUTE_STRING) {
    *Size = (UINT32)(Attribute->ValueOffset + sizeof (UINT16) + Length);
  } else {
    *Size = (UINT32)RecordSize;
  }

  Made = AllocateZeroPool (*Size);
  if (Made == NULL) {
    return NULL;
  }

  CopyMem (Made, Record, MIN (*Size, RecordSize));
  Value = (UINT8 *)Made + Attribute->ValueOffset;
  switch (Attribute->Type) {
    case PLDM_BIOS_ATTRIBUTE_STRING:
      WriteUnaligned16 ((UINT16 *)Value, (UINT16)Length);
      CopyMem (Value + sizeof (UINT16), Text, Length);
      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      WriteUnaligned64 ((UINT64 *)Value, Number);
      break;
    default:
      Value[sizeof (UINT8)] = (UINT8)Number;
      break;
  }

  return Made;
}
