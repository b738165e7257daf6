/** @file
  ServiceAttributes: reads the attribute stream, the string table and the value table.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <IndustryStandard/PldmBios.h>
#include <Library/BaseMemoryLib.h>
#include "ServiceAttributes.h"
#include "ServiceTables.h"

#define STREAM_SLOTS  256   ///< the stream visits no others

///
/// A walk of the attribute stream.
///
typedef struct {
  ByteReader    Stream;
  UINTN         Slot;     ///< the next one
} AttributeWalk;

STATIC
VOID
StartWalk (
  OUT AttributeWalk  *Walk
  )
{
  ByteReader  Record;
  UINT32      Size;

  Walk->Slot = 0;
  OpenRecord (TRANSPORT_RECORD_STREAM, &Record);
  Size = (UINT32)TakeNumber (&Record, sizeof (Size));
  TakeBytes (&Record, sizeof (AttributeStoreHeader));
  Walk->Stream = TakePart (&Record, Size);
}

/**
  Gives a text of the string table; an empty one for a handle that it does not have.
**/
STATIC
ByteReader
FindString (
  IN UINT16  Handle
  )
{
  ByteReader  Table;
  ByteReader  Text;
  UINT16      Found;
  UINT16      Length;

  OpenTable (TRANSPORT_RECORD_STRINGS, &Table);
  while (Table.Left > 0) {
    Found  = (UINT16)TakeNumber (&Table, sizeof (Found));
    Length = (UINT16)TakeNumber (&Table, sizeof (Length));
    Text   = TakePart (&Table, Length);
    if ((Found == Handle) && !Text.Failed) {
      return Text;
    }
  }

  ZeroMem (&Text, sizeof (Text));
  return Text;
}

/**
  Skips the empty slots.

  @retval FALSE  No other slot follows.
**/
STATIC
BOOLEAN
SkipEmptySlots (
  IN OUT AttributeWalk  *Walk
  )
{
  while ((Walk->Stream.Left > 0) && (*Walk->Stream.Next == ATTRIBUTE_STREAM_EMPTY_SLOT)) {
    //
    // The record of the last slot begins like an empty slot: with the low byte of its handle.
    //
    if ((Walk->Slot == STREAM_SLOTS - 1) && (Walk->Stream.Left > 1)) {
      return TRUE;
    }

    TakeBytes (&Walk->Stream, 1);
    Walk->Slot++;
  }

  return (BOOLEAN)((Walk->Stream.Left > 0) && (Walk->Slot < STREAM_SLOTS));
}

/**
  Reads the next attribute of the stream.

  @param[out]  NameHandle  Of its name; Attribute.Name is left to the caller, who may not need it.

  @retval FALSE  There is none.
**/
STATIC
BOOLEAN
NextAttribute (
  IN OUT AttributeWalk     *Walk,
  OUT    ServiceAttribute  *Attribute,
  OUT    UINT16            *NameHandle
  )
{
  ByteReader  *Stream;
  UINTN       Count;

  if (!SkipEmptySlots (Walk)) {
    return FALSE;
  }

  ZeroMem (Attribute, sizeof (*Attribute));
  Stream              = &Walk->Stream;
  Attribute->Handle   = (UINT16)TakeNumber (Stream, sizeof (UINT16));
  Attribute->Type     = (UINT8)TakeNumber (Stream, sizeof (UINT8));
  Attribute->BaseType = PLDM_BIOS_ATTRIBUTE_BASE_TYPE (Attribute->Type);
  *NameHandle         = (UINT16)TakeNumber (Stream, sizeof (UINT16));
  TakeNumber (Stream, sizeof (UINT16));   // ValueSize
  Attribute->Token = (UINT32)TakeNumber (Stream, sizeof (UINT32));
  if (Attribute->Handle != Walk->Slot) {
    return FALSE;
  }

  Walk->Slot++;
  switch (Attribute->BaseType) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      Attribute->ValueCount = (UINTN)TakeNumber (Stream, sizeof (UINT8));
      Attribute->ValueNames = TakePart (Stream, Attribute->ValueCount * sizeof (UINT16));
      Attribute->Values     = TakePart (Stream, Attribute->ValueCount * sizeof (UINT64));
      TakeBytes (Stream, 2 * sizeof (UINT8));
      break;
    case PLDM_BIOS_ATTRIBUTE_STRING:
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:
      TakeBytes (Stream, sizeof (UINT8));
      Attribute->Minimum = TakeNumber (Stream, sizeof (UINT16));
      Attribute->Maximum = TakeNumber (Stream, sizeof (UINT16));
      TakeBytes (Stream, sizeof (UINT16));
      if (Attribute->BaseType == PLDM_BIOS_ATTRIBUTE_PASSWORD) {
        TakeBytes (Stream, sizeof (UINT8));
      } else {
        while (TakeNumber (Stream, sizeof (CHAR8)) != 0) {
        }
      }

      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      Attribute->Minimum = TakeNumber (Stream, sizeof (UINT64));
      Attribute->Maximum = TakeNumber (Stream, sizeof (UINT64));
      Attribute->Step    = (UINT32)TakeNumber (Stream, sizeof (UINT32));
      TakeBytes (Stream, 2 * sizeof (UINT64));
      break;
    case PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING:
      TakeBytes (Stream, 4);
      Count = (UINTN)TakeNumber (Stream, sizeof (UINT8));
      TakeBytes (Stream, Count * sizeof (UINT16) + 23);
      break;
    case PLDM_BIOS_ATTRIBUTE_COLLECTION:
      TakeBytes (Stream, 4);
      Count = (UINTN)TakeNumber (Stream, sizeof (UINT8));
      TakeBytes (Stream, Count * sizeof (UINT16));
      break;
    case PLDM_BIOS_ATTRIBUTE_CONFIG_SET:
      Count = (UINTN)TakeNumber (Stream, sizeof (UINT8));
      TakeBytes (Stream, Count * sizeof (UINT16) + sizeof (UINT8));
      break;
    default:
      return FALSE;
  }

  return (BOOLEAN)!Stream->Failed;
}

BOOLEAN
FindAttribute (
  IN  UINT16            Handle,
  OUT ServiceAttribute  *Attribute
  )
{
  AttributeWalk  Walk;
  UINT16         NameHandle;

  StartWalk (&Walk);
  while (NextAttribute (&Walk, Attribute, &NameHandle)) {
    if (Attribute->Handle == Handle) {
      Attribute->Name = FindString (NameHandle);
      return TRUE;
    }
  }

  return FALSE;
}

BOOLEAN
FindAttributeByName (
  IN  CONST UINT8       *Name,
  IN  UINTN             Length,
  OUT ServiceAttribute  *Attribute
  )
{
  AttributeWalk  Walk;
  UINT16         NameHandle;

  StartWalk (&Walk);
  while (NextAttribute (&Walk, Attribute, &NameHandle)) {
    Attribute->Name = FindString (NameHandle);
    if (IsNamed (Attribute->Name, Name, Length)) {
      return TRUE;
    }
  }

  return FALSE;
}

/**
  Takes the value of an entry of the value table.
**/
STATIC
ByteReader
TakeValue (
  IN OUT ByteReader  *Table,
  IN     UINT8       BaseType
  )
{
  ByteReader  Ahead;
  UINTN       Size;

  Ahead = *Table;
  switch (BaseType) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      Size = sizeof (UINT8) + (UINTN)TakeNumber (&Ahead, sizeof (UINT8));
      break;
    case PLDM_BIOS_ATTRIBUTE_STRING:
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:
      Size = sizeof (UINT16) + (UINTN)TakeNumber (&Ahead, sizeof (UINT16));
      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      Size = sizeof (UINT64);
      break;
    case PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING:
      TakeBytes (&Ahead, 2 * sizeof (UINT8));
      Size = 3 * sizeof (UINT8) + (UINTN)TakeNumber (&Ahead, sizeof (UINT8));
      break;
    case PLDM_BIOS_ATTRIBUTE_COLLECTION:
      Size = sizeof (UINT8) + sizeof (UINT16) * (UINTN)TakeNumber (&Ahead, sizeof (UINT8));
      break;
    case PLDM_BIOS_ATTRIBUTE_CONFIG_SET:
      Size = sizeof (UINT8);
      break;
    default:
      Size = 0;
  }

  return TakePart (Table, Size);
}

BOOLEAN
FindCurrentValue (
  IN  CONST ServiceAttribute  *Attribute,
  OUT ByteReader              *Value
  )
{
  ByteReader  Table;
  UINT16      Handle;
  UINT8       Type;

  OpenTable (TRANSPORT_RECORD_VALUES, &Table);
  while (Table.Left > 0) {
    Handle = (UINT16)TakeNumber (&Table, sizeof (Handle));
    Type   = (UINT8)TakeNumber (&Table, sizeof (Type));
    *Value = TakeValue (&Table, PLDM_BIOS_ATTRIBUTE_BASE_TYPE (Type));
    if ((Handle == Attribute->Handle) && (Type == Attribute->Type)) {
      return (BOOLEAN)!Value->Failed;
    }
  }

  return FALSE;
}

BOOLEAN
GetValueName (
  IN  CONST ServiceAttribute  *Attribute,
  IN  UINTN                   Index,
  OUT ByteReader              *Name
  )
{
  ByteReader  Handles;

  Handles = Attribute->ValueNames;
  TakeBytes (&Handles, Index * sizeof (UINT16));
  *Name = FindString ((UINT16)TakeNumber (&Handles, sizeof (UINT16)));
  return (BOOLEAN)!Handles.Failed;
}

UINT64
GetPlatformValue (
  IN CONST ServiceAttribute  *Attribute,
  IN UINTN                   Index
  )
{
  ByteReader  Values;

  Values = Attribute->Values;
  TakeBytes (&Values, Index * sizeof (UINT64));
  return TakeNumber (&Values, sizeof (UINT64));
}

ByteReader
BareName (
  IN ByteReader  Name
  )
{
  CONST VOID  *Bracket;

  Bracket = ScanMem8 (Name.Next, Name.Left, '[');
  return (Bracket == NULL) ? Name : TakePart (&Name, (CONST UINT8 *)Bracket - Name.Next);
}

BOOLEAN
IsNamed (
  IN ByteReader   Name,
  IN CONST UINT8  *Text,
  IN UINTN        Length
  )
{
  if (Length != Name.Left) {
    Name = BareName (Name);
  }

  return (BOOLEAN)((Length == Name.Left) && (Length != 0) && (CompareMem (Name.Next, Text, Length) == 0));
}
