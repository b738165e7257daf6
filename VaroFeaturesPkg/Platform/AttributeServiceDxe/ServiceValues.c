/** @file
  ServiceValues: turns values of the value table, of the settings and of requests into each other.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Corvane/AttributeRequest.h>
#include <IndustryStandard/PldmBios.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/PrintLib.h>
#include "NameExpression.h"
#include "ServiceChanges.h"
#include "ServicePasswords.h"
#include "ServiceValues.h"

//
// A number as text, with its terminator.
//
#define NUMBER_TEXT_SIZE  21

/**
  Prints a number.

  @param[out]  Room  NUMBER_TEXT_SIZE bytes.

  @return  The digits.
**/
STATIC
ByteReader
PrintNumber (
  OUT CHAR8   *Room,
  IN  UINT64  Number
  )
{
  ByteReader  Digits;

  Digits.Left   = AsciiSPrint (Room, NUMBER_TEXT_SIZE, "%Lu", Number);
  Digits.Next   = (CONST UINT8 *)Room;
  Digits.Failed = FALSE;
  return Digits;
}

/**
  Reads a decimal number that is the whole text.
**/
STATIC
BOOLEAN
ReadNumber (
  IN  ByteReader  Text,
  OUT UINT64      *Number
  )
{
  UINT64  Digit;

  *Number = 0;
  if (Text.Left == 0) {
    return FALSE;
  }

  while (Text.Left > 0) {
    Digit = TakeNumber (&Text, sizeof (CHAR8)) - '0';
    if ((Digit > 9) || (*Number > DivU64x32 (MAX_UINT64 - Digit, 10))) {
      return FALSE;
    }

    *Number = *Number * 10 + Digit;
  }

  return TRUE;
}

/**
  Finds the place of a platform's number among the possible values.
**/
STATIC
BOOLEAN
FindPlatformValue (
  IN  CONST ServiceAttribute  *Attribute,
  IN  UINT64                  Number,
  OUT UINTN                   *Index
  )
{
  for (*Index = 0; *Index < Attribute->ValueCount; (*Index)++) {
    if (GetPlatformValue (Attribute, *Index) == Number) {
      return TRUE;
    }
  }

  return FALSE;
}

/**
  Gives the value of a string.
**/
STATIC
BOOLEAN
GetString (
  IN  CONST ServiceAttribute  *Attribute,
  OUT ByteReader              *Text
  )
{
  if (FindChangedText (Attribute->Token, Text)) {
    return TRUE;
  }

  if (!FindCurrentValue (Attribute, Text)) {
    return FALSE;
  }

  TakeBytes (Text, sizeof (UINT16));   // its length, which is all that is left
  return (BOOLEAN)!Text->Failed;
}

/**
  Gives the value of an integer, or the current index of an enumeration.
**/
STATIC
BOOLEAN
GetNumber (
  IN  CONST ServiceAttribute  *Attribute,
  OUT UINT64                  *Number
  )
{
  BOOLEAN     Integer;
  ByteReader  Value;
  UINTN       Index;

  Integer = (BOOLEAN)(Attribute->BaseType == PLDM_BIOS_ATTRIBUTE_INTEGER);
  if (FindChangedNumber (Attribute->Token, Number)) {
    if (Integer) {
      return TRUE;
    }

    if (FindPlatformValue (Attribute, *Number, &Index)) {
      *Number = Index;
      return TRUE;
    }
  }

  if (!FindCurrentValue (Attribute, &Value)) {
    return FALSE;
  }

  if (!Integer) {
    TakeBytes (&Value, sizeof (UINT8));
  }

  *Number = TakeNumber (&Value, Integer ? sizeof (UINT64) : sizeof (UINT8));
  return (BOOLEAN)!Value.Failed;
}

UINT8
GetValuePart (
  IN  CONST ServiceAttribute  *Attribute,
  OUT UINT8                   *Part,
  IN  UINTN                   Room,
  OUT UINTN                   *Size
  )
{
  UINT64      Head;
  UINTN       HeadSize;
  ByteReader  Rest;
  BOOLEAN     Found;

  Head     = 0;
  HeadSize = sizeof (UINT16);
  Found    = TRUE;
  ZeroMem (&Rest, sizeof (Rest));
  switch (Attribute->BaseType) {
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:   // nobody is told its length
      break;
    case PLDM_BIOS_ATTRIBUTE_STRING:
      Found = GetString (Attribute, &Rest);
      Head  = Rest.Left;
      break;
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      Found = GetNumber (Attribute, &Head);
      Head  = LShiftU64 (Head, 8) | 1;
      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      Found    = GetNumber (Attribute, &Head);
      HeadSize = sizeof (UINT64);
      break;
    default:
      Found    = FindCurrentValue (Attribute, &Rest);
      HeadSize = 0;
      break;
  }

  *Size = HeadSize + Rest.Left;
  if (!Found) {
    return ATTRIBUTE_STATUS_UNSUPPORTED;
  }

  if (*Size > Room) {
    return ATTRIBUTE_STATUS_BUFFER_TOO_SMALL;
  }

  CopyMem (Part, &Head, HeadSize);
  CopyMem (Part + HeadSize, Rest.Next, Rest.Left);
  return ATTRIBUTE_STATUS_SUCCESS;
}

UINT8
GetValueText (
  IN  CONST ServiceAttribute  *Attribute,
  OUT UINT8                   *Text,
  IN  UINTN                   Room,
  OUT UINTN                   *Size
  )
{
  CHAR8       Digits[NUMBER_TEXT_SIZE];
  ByteReader  Value;
  UINT64      Number;
  BOOLEAN     Found;

  ZeroMem (&Value, sizeof (Value));
  switch (Attribute->BaseType) {
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:   // nobody is told anything
      Found = TRUE;
      break;
    case PLDM_BIOS_ATTRIBUTE_STRING:
      Found = GetString (Attribute, &Value);
      break;
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      Found = (BOOLEAN)(GetNumber (Attribute, &Number) && GetValueName (Attribute, (UINTN)Number, &Value));
      Value = BareName (Value);
      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      Found = GetNumber (Attribute, &Number);
      Value = PrintNumber (Digits, Found ? Number : 0);
      break;
    default:
      Found = FALSE;
      break;
  }

  *Size = Value.Left;
  if (!Found) {
    return ATTRIBUTE_STATUS_UNSUPPORTED;
  }

  if (*Size > Room) {
    return ATTRIBUTE_STATUS_BUFFER_TOO_SMALL;
  }

  CopyMem (Text, Value.Next, Value.Left);
  return ATTRIBUTE_STATUS_SUCCESS;
}

/**
  Tells whether anybody with this key may change the attribute, whatever the value.
**/
STATIC
UINT8
CheckAccess (
  IN CONST ServiceAttribute  *Attribute,
  IN UINT32                  Key
  )
{
  if ((Attribute->BaseType != PLDM_BIOS_ATTRIBUTE_ENUMERATION) &&
      (Attribute->BaseType != PLDM_BIOS_ATTRIBUTE_STRING) && (Attribute->BaseType != PLDM_BIOS_ATTRIBUTE_INTEGER))
  {
    return ATTRIBUTE_STATUS_UNSUPPORTED;
  }

  if ((Attribute->Type != Attribute->BaseType) || (Attribute->Token == 0) || !KeyOpensAttributes (Key)) {
    return ATTRIBUTE_STATUS_ACCESS_DENIED;
  }

  return ATTRIBUTE_STATUS_SUCCESS;
}

/**
  Gives the status byte for the status of storing a value.
**/
STATIC
UINT8
StoredStatus (
  IN EFI_STATUS  Status
  )
{
  switch (Status) {
    case EFI_SUCCESS:
      return ATTRIBUTE_STATUS_SUCCESS;
    case EFI_OUT_OF_RESOURCES:
    case EFI_DEVICE_ERROR:
      return SERVICE_STATUS_FAILED;
    default:
      return ATTRIBUTE_STATUS_INVALID_PARAMETER;
  }
}

STATIC
UINT8
SetIndex (
  IN CONST ServiceAttribute  *Attribute,
  IN UINTN                   Index
  )
{
  if (Index >= Attribute->ValueCount) {
    return ATTRIBUTE_STATUS_INVALID_PARAMETER;
  }

  return StoredStatus (StoreNumber (Attribute->Token, GetPlatformValue (Attribute, Index)));
}

STATIC
UINT8
SetInteger (
  IN CONST ServiceAttribute  *Attribute,
  IN UINT64                  Number
  )
{
  if ((Number < Attribute->Minimum) || (Number > Attribute->Maximum) ||
      ((Attribute->Step != 0) && (ModU64x32 (Number - Attribute->Minimum, Attribute->Step) != 0)))
  {
    return ATTRIBUTE_STATUS_INVALID_PARAMETER;
  }

  return StoredStatus (StoreNumber (Attribute->Token, Number));
}

STATIC
UINT8
SetString (
  IN CONST ServiceAttribute  *Attribute,
  IN ByteReader              Text
  )
{
  if ((Text.Left < Attribute->Minimum) || (Text.Left > Attribute->Maximum) ||
      (ScanMem8 (Text.Next, Text.Left, '\0') != NULL) || !NameAllowsText (Attribute->Name, Text))
  {
    return ATTRIBUTE_STATUS_INVALID_PARAMETER;
  }

  return StoredStatus (StoreText (Attribute->Token, Text));
}

UINT8
SetValuePart (
  IN CONST ServiceAttribute  *Attribute,
  IN UINT32                  Key,
  IN ByteReader              Part
  )
{
  UINT64      Number;
  ByteReader  Text;
  UINT8       Status;

  Status = CheckAccess (Attribute, Key);
  if (Status != ATTRIBUTE_STATUS_SUCCESS) {
    return Status;
  }

  Text   = Part;
  Number = 0;
  switch (Attribute->BaseType) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      if (TakeNumber (&Part, sizeof (UINT8)) != 1) {
        return ATTRIBUTE_STATUS_INVALID_PARAMETER;
      }

      Number = TakeNumber (&Part, sizeof (UINT8));
      break;
    case PLDM_BIOS_ATTRIBUTE_STRING:
      Number = TakeNumber (&Part, sizeof (UINT16));
      Text   = TakePart (&Part, (UINTN)Number);
      break;
    default:
      Number = TakeNumber (&Part, sizeof (UINT64));
      break;
  }

  if (Part.Failed || (Part.Left > 0)) {
    return ATTRIBUTE_STATUS_INVALID_PARAMETER;
  }

  switch (Attribute->BaseType) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      return SetIndex (Attribute, (UINTN)Number);
    case PLDM_BIOS_ATTRIBUTE_STRING:
      return SetString (Attribute, Text);
    default:
      return SetInteger (Attribute, Number);
  }
}

UINT8
SetValueText (
  IN CONST ServiceAttribute  *Attribute,
  IN UINT32                  Key,
  IN ByteReader              Text
  )
{
  ByteReader  Name;
  UINT64      Number;
  UINTN       Index;
  UINT8       Status;

  Status = CheckAccess (Attribute, Key);
  if (Status != ATTRIBUTE_STATUS_SUCCESS) {
    return Status;
  }

  switch (Attribute->BaseType) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      for (Index = 0; Index < Attribute->ValueCount; Index++) {
        if (GetValueName (Attribute, Index, &Name) && IsNamed (Name, Text.Next, Text.Left)) {
          break;
        }
      }

      return SetIndex (Attribute, Index);
    case PLDM_BIOS_ATTRIBUTE_STRING:
      return SetString (Attribute, Text);
    default:
      return ReadNumber (Text, &Number) ? SetInteger (Attribute, Number) : ATTRIBUTE_STATUS_INVALID_PARAMETER;
  }
}
