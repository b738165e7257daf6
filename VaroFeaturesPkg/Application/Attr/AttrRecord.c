/** @file
  AttrRecord: decodes a record of GetAttributeInfo.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Base.h>
#include <Corvane/ByteReader.h>
#include <IndustryStandard/PldmBios.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include "AttrRecord.h"

UINT16
HandleAt (
  IN CONST UINT8  *Handles,
  IN UINTN        Index
  )
{
  return (UINT16)(Handles[2 * Index] | (Handles[2 * Index + 1] << 8));
}

STATIC
VOID
TakePossible (
  IN OUT ByteReader  *Reader,
  OUT    Attribute   *Attribute
  )
{
  Attribute->PossibleCount = (UINTN)TakeNumber (Reader, sizeof (UINT8));
  Attribute->Possible      = TakeBytes (Reader, Attribute->PossibleCount * sizeof (UINT16));
}

/**
  Reads the attribute part. The value part begins where it ends.
**/
STATIC
VOID
TakeBounds (
  IN OUT ByteReader  *Reader,
  OUT    Attribute   *Attribute
  )
{
  switch (Attribute->Type) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      TakePossible (Reader, Attribute);
      Attribute->DefaultCount = (UINTN)TakeNumber (Reader, sizeof (UINT8));
      Attribute->Defaults     = TakeBytes (Reader, Attribute->DefaultCount);
      break;
    case PLDM_BIOS_ATTRIBUTE_STRING:
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:
      TakeBytes (Reader, sizeof (UINT8));
      Attribute->Minimum      = TakeNumber (Reader, sizeof (UINT16));
      Attribute->Maximum      = TakeNumber (Reader, sizeof (UINT16));
      Attribute->DefaultCount = (UINTN)TakeNumber (Reader, sizeof (UINT16));
      Attribute->Defaults     = TakeBytes (Reader, Attribute->DefaultCount);
      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      Attribute->Minimum = TakeNumber (Reader, sizeof (UINT64));
      Attribute->Maximum = TakeNumber (Reader, sizeof (UINT64));
      Attribute->Step    = (UINT32)TakeNumber (Reader, sizeof (UINT32));
      Attribute->Default = TakeNumber (Reader, sizeof (UINT64));
      break;
    case PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING:
      TakeBytes (Reader, 4);
      TakePossible (Reader, Attribute);
      break;
    case PLDM_BIOS_ATTRIBUTE_COLLECTION:
      TakeBytes (Reader, 4);
      break;
    case PLDM_BIOS_ATTRIBUTE_CONFIG_SET:
      TakePossible (Reader, Attribute);
      break;
    default:
      Reader->Failed = TRUE;
      break;
  }
}

STATIC
VOID
TakeValue (
  IN OUT ByteReader  *Reader,
  OUT    Attribute   *Attribute
  )
{
  switch (Attribute->Type) {
    case PLDM_BIOS_ATTRIBUTE_STRING:
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:
      Attribute->CurrentCount = (UINTN)TakeNumber (Reader, sizeof (UINT16));
      Attribute->Current      = TakeBytes (Reader, Attribute->CurrentCount);
      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      Attribute->Number = TakeNumber (Reader, sizeof (UINT64));
      break;
    case PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING:
      TakeBytes (Reader, 2);
      Attribute->CurrentCount = (UINTN)TakeNumber (Reader, sizeof (UINT8));
      Attribute->Current      = TakeBytes (Reader, Attribute->CurrentCount);
      break;
    case PLDM_BIOS_ATTRIBUTE_COLLECTION:
      Attribute->CurrentCount = (UINTN)TakeNumber (Reader, sizeof (UINT8));
      Attribute->Current      = TakeBytes (Reader, Attribute->CurrentCount * sizeof (UINT16));
      break;
    case PLDM_BIOS_ATTRIBUTE_CONFIG_SET:
      Attribute->CurrentCount = 1;
      Attribute->Current      = TakeBytes (Reader, Attribute->CurrentCount);
      break;
    default:
      Attribute->CurrentCount = (UINTN)TakeNumber (Reader, sizeof (UINT8));
      Attribute->Current      = TakeBytes (Reader, Attribute->CurrentCount);
      break;
  }
}

VOID
ParseAttribute (
  IN  CONST AttributeInfo  *Record,
  IN  UINTN                Size,
  OUT Attribute            *Attribute
  )
{
  ByteReader  Reader;

  ZeroMem (Attribute, sizeof (*Attribute));
  Attribute->Handle     = Record->Handle;
  Attribute->NameHandle = Record->NameHandle;
  Attribute->Type       = PLDM_BIOS_ATTRIBUTE_BASE_TYPE (Record->Type);
  Attribute->ReadOnly   = (BOOLEAN)((Record->Type & PLDM_BIOS_ATTRIBUTE_READ_ONLY) != 0);
  if (Size <= sizeof (*Record)) {
    return;
  }

  Reader.Next   = (CONST UINT8 *)(Record + 1);
  Reader.Left   = Size - sizeof (*Record);
  Reader.Failed = FALSE;
  TakeBounds (&Reader, Attribute);
  Attribute->ValueOffset = Size - Reader.Left;
  TakeValue (&Reader, Attribute);
  Attribute->HasParts = (BOOLEAN)!Reader.Failed;
}
