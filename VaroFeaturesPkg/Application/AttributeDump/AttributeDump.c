/** @file
  AttributeDump: a UEFI Shell program that prints the attributes of the published tables and checks the cache.

    AttributeDump      one line for each attribute, as the host's `inspect show --no-tables` prints them
    AttributeDump -c   one line for each of the driver's variables, "NAME SIZE LENGTH CRC32 ok" or "NAME STATUS"; LENGTH
                       is what the firmware's own decompressor makes of a compressed one
    AttributeDump -i   where the driver's image lies: "CorvaneDxe BASE SIZE", in hexadecimal

  Lines are long; redirect them with `>a FILE` to have them as ASCII.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/TextOutputLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/AttributeAccess.h>
#include <Protocol/LoadedImage.h>
#include <Protocol/PublishedTables.h>
#include <Protocol/ShellParameters.h>
#include <TableReader.h>
#include "CacheCheck.h"

STATIC CONST CHAR8 *CONST  mTypeNames[] = {
  "enumeration", "string", "password", "integer", "boot-configuration", "collection", "configuration-set"
};

///
/// An attribute while it is printed: each reader stands behind the head of its entry.
///
typedef struct {
  CONST PublishedTablesInterface    *Tables;
  UINT8                             BaseType;
  TableReader                       Bounds;       ///< entry of the attribute table
  TableReader                       Value;        ///< entry of the value table
  BOOLEAN                           HasValue;
  UINT8                             NameCount;
  TableReader                       Names;        ///< names of possible values, sources or configurations
} Attribute;

STATIC
VOID
PutName (
  IN CONST PublishedTablesInterface  *Tables,
  IN UINT16                          Handle
  )
{
  TableReader  Entries;
  UINT16       Found;
  UINT16       Length;

  OpenTable (&Tables->Descriptors[TABLE_STRINGS], &Entries);
  while (MoreEntries (&Entries)) {
    Found  = (UINT16)TakeNumber (&Entries, sizeof (UINT16));
    Length = (UINT16)TakeNumber (&Entries, sizeof (UINT16));
    if (Found == Handle) {
      PutEscaped ((CONST CHAR8 *)TakeBytes (&Entries, Length), Entries.Failed ? 0 : Length, "");
      return;
    }

    TakeBytes (&Entries, Length);
  }

  PutFormat ("?%u", Handle);
}

/**
  Prints `Count` names from their handles.
**/
STATIC
VOID
PutNames (
  IN CONST PublishedTablesInterface  *Tables,
  IN TableReader                     Handles,
  IN UINTN                           Count
  )
{
  UINTN  Index;

  for (Index = 0; Index < Count; Index++) {
    PutText ((Index == 0) ? "" : "|");
    PutName (Tables, (UINT16)TakeNumber (&Handles, sizeof (UINT16)));
  }

  PutText ((Count == 0) ? "-" : "");
}

/**
  Prints `Count` names from their places among the attribute's possible ones.
**/
STATIC
VOID
PutPlaces (
  IN     CONST Attribute  *This,
  IN OUT TableReader      *Places,
  IN     UINTN            Count
  )
{
  TableReader  Names;
  UINTN        Index;
  UINT8        Place;

  for (Index = 0; Index < Count; Index++) {
    PutText ((Index == 0) ? "" : "|");
    Place = (UINT8)TakeNumber (Places, sizeof (Place));
    if (Place >= This->NameCount) {
      PutFormat ("#%u", Place);
      continue;
    }

    Names = This->Names;
    TakeBytes (&Names, Place * sizeof (UINT16));
    PutName (This->Tables, (UINT16)TakeNumber (&Names, sizeof (UINT16)));
  }

  PutText ((Count == 0) ? "-" : "");
}

/**
  Moves a reader of the attribute table behind the entry that it stands in.
**/
STATIC
VOID
SkipBounds (
  IN OUT TableReader  *Entries,
  IN     UINT8        BaseType
  )
{
  switch (BaseType) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      TakeBytes (Entries, (UINTN)TakeNumber (Entries, sizeof (UINT8)) * sizeof (UINT16));
      TakeBytes (Entries, (UINTN)TakeNumber (Entries, sizeof (UINT8)));
      break;
    case PLDM_BIOS_ATTRIBUTE_STRING:
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:
      TakeBytes (Entries, sizeof (UINT8) + 3 * sizeof (UINT16));
      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      TakeBytes (Entries, 2 * sizeof (UINT64) + sizeof (UINT32) + sizeof (UINT64));
      break;
    case PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING:
      TakeBytes (Entries, 4 * sizeof (UINT8));
      TakeBytes (Entries, (UINTN)TakeNumber (Entries, sizeof (UINT8)) * sizeof (UINT16));
      break;
    case PLDM_BIOS_ATTRIBUTE_COLLECTION:
      TakeBytes (Entries, 4);
      break;
    case PLDM_BIOS_ATTRIBUTE_CONFIG_SET:
      TakeBytes (Entries, (UINTN)TakeNumber (Entries, sizeof (UINT8)) * sizeof (UINT16));
      break;
    default:
      break;
  }
}

STATIC
VOID
SkipValue (
  IN OUT TableReader  *Entries,
  IN     UINT8        BaseType
  )
{
  switch (BaseType) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      TakeBytes (Entries, (UINTN)TakeNumber (Entries, sizeof (UINT8)));
      break;
    case PLDM_BIOS_ATTRIBUTE_STRING:
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:
      TakeBytes (Entries, (UINTN)TakeNumber (Entries, sizeof (UINT16)));
      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      TakeBytes (Entries, sizeof (UINT64));
      break;
    case PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING:
      TakeBytes (Entries, 2 * sizeof (UINT8));
      TakeBytes (Entries, (UINTN)TakeNumber (Entries, sizeof (UINT8)));
      break;
    case PLDM_BIOS_ATTRIBUTE_COLLECTION:
      TakeBytes (Entries, (UINTN)TakeNumber (Entries, sizeof (UINT8)) * sizeof (UINT16));
      break;
    case PLDM_BIOS_ATTRIBUTE_CONFIG_SET:
      TakeBytes (Entries, sizeof (UINT8));
      break;
    default:
      break;
  }
}

/**
  Finds the entry of the value table; one of another type, or one that is cut, does not count.
**/
STATIC
BOOLEAN
FindValue (
  IN  CONST PublishedTablesInterface  *Tables,
  IN  UINT16                          Handle,
  IN  UINT8                           BaseType,
  OUT TableReader                     *Value
  )
{
  TableReader  Rest;
  UINT16       Found;
  UINT8        Type;

  OpenTable (&Tables->Descriptors[TABLE_VALUES], Value);
  while (MoreEntries (Value)) {
    Found = (UINT16)TakeNumber (Value, sizeof (UINT16));
    Type  = PLDM_BIOS_ATTRIBUTE_BASE_TYPE (TakeNumber (Value, sizeof (UINT8)));
    if (Found == Handle) {
      Rest = *Value;
      SkipValue (&Rest, Type);
      return (BOOLEAN)(!Rest.Failed && (Type == BaseType));
    }

    SkipValue (Value, Type);
  }

  return FALSE;
}

/**
  Prints the name of the attribute with a handle, as a member of a collection.
**/
STATIC
VOID
PutMember (
  IN CONST PublishedTablesInterface  *Tables,
  IN UINT16                          Handle
  )
{
  TableReader  Entries;
  UINT16       Found;
  UINT16       Name;
  UINT8        Type;

  OpenTable (&Tables->Descriptors[TABLE_ATTRIBUTES], &Entries);
  while (MoreEntries (&Entries)) {
    Found = (UINT16)TakeNumber (&Entries, sizeof (UINT16));
    Type  = (UINT8)TakeNumber (&Entries, sizeof (UINT8));
    Name  = (UINT16)TakeNumber (&Entries, sizeof (UINT16));
    if (Found == Handle) {
      PutName (Tables, Name);
      return;
    }

    SkipBounds (&Entries, PLDM_BIOS_ATTRIBUTE_BASE_TYPE (Type));
  }

  PutFormat ("?%u", Handle);
}

/**
  Finds the names that places refer to.
**/
STATIC
VOID
FindNames (
  IN OUT Attribute  *This
  )
{
  This->NameCount = 0;
  This->Names     = This->Bounds;
  switch (This->BaseType) {
    case PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING:
      TakeBytes (&This->Names, 4 * sizeof (UINT8));
      This->NameCount = (UINT8)TakeNumber (&This->Names, sizeof (UINT8));
      break;
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
    case PLDM_BIOS_ATTRIBUTE_CONFIG_SET:
      This->NameCount = (UINT8)TakeNumber (&This->Names, sizeof (UINT8));
      break;
    default:
      break;
  }
}

STATIC
VOID
PutCurrent (
  IN Attribute  *This
  )
{
  TableReader  *Value;
  UINTN        Count;
  UINTN        Index;
  CONST UINT8  *Bytes;

  Value = &This->Value;
  if (!This->HasValue) {
    PutText ((This->BaseType == PLDM_BIOS_ATTRIBUTE_PASSWORD) ? "not installed" : "?");
    return;
  }

  switch (This->BaseType) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      Count = (UINTN)TakeNumber (Value, sizeof (UINT8));
      PutPlaces (This, Value, Count);
      break;
    case PLDM_BIOS_ATTRIBUTE_STRING:
      Count = (UINTN)TakeNumber (Value, sizeof (UINT16));
      Bytes = TakeBytes (Value, Count);
      PutText ("\"");
      PutEscaped ((CONST CHAR8 *)Bytes, (Bytes == NULL) ? 0 : Count, "\"\\");
      PutText ("\"");
      break;
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:
      PutText ("installed");
      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      PutFormat ("%lu", TakeNumber (Value, sizeof (UINT64)));
      break;
    case PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING:
      TakeBytes (Value, 2 * sizeof (UINT8));
      Count = (UINTN)TakeNumber (Value, sizeof (UINT8));
      PutPlaces (This, Value, Count);
      break;
    case PLDM_BIOS_ATTRIBUTE_COLLECTION:
      Count = (UINTN)TakeNumber (Value, sizeof (UINT8));
      for (Index = 0; Index < Count; Index++) {
        PutText ((Index == 0) ? "" : "|");
        PutMember (This->Tables, (UINT16)TakeNumber (Value, sizeof (UINT16)));
      }

      PutText ((Count == 0) ? "-" : "");
      break;
    case PLDM_BIOS_ATTRIBUTE_CONFIG_SET:
      PutPlaces (This, Value, 1);
      break;
    default:
      PutText ("-");
      break;
  }
}

/**
  Prints where the driver's image lies, for whoever has an address out of it: "CorvaneDxe BASE SIZE", in hexadecimal.
**/
STATIC
EFI_STATUS
PutDriverImage (
  VOID
  )
{
  EFI_LOADED_IMAGE_PROTOCOL  *Image;
  EFI_HANDLE                 Handle;
  UINTN                      Size;
  EFI_STATUS                 Status;

  Size   = sizeof (Handle);
  Status = gBS->LocateHandle (ByProtocol, &gVaroAttributeAccessProtocolGuid, NULL, &Size, &Handle);
  if (!EFI_ERROR (Status)) {
    Status = gBS->HandleProtocol (Handle, &gEfiLoadedImageProtocolGuid, (VOID **)&Image);
  }

  if (!EFI_ERROR (Status)) {
    PutFormat ("CorvaneDxe %lx %lx\n", (UINT64)(UINTN)Image->ImageBase, Image->ImageSize);
  }

  return Status;
}

/**
  Prints the default and the domain, which lie behind one another in the attribute table.
**/
STATIC
VOID
PutBounds (
  IN Attribute  *This
  )
{
  TableReader  *Bounds;
  UINT64       Low;
  UINT64       High;
  UINT64       Step;
  UINTN        Count;

  Bounds = &This->Bounds;
  switch (This->BaseType) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      TakeBytes (Bounds, sizeof (UINT8) + This->NameCount * sizeof (UINT16));
      PutText (" (default ");
      Count = (UINTN)TakeNumber (Bounds, sizeof (UINT8));
      PutPlaces (This, Bounds, Count);
      PutText (") {");
      PutNames (This->Tables, This->Names, This->NameCount);
      break;
    case PLDM_BIOS_ATTRIBUTE_STRING:
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:
      TakeBytes (Bounds, sizeof (UINT8));
      Low  = TakeNumber (Bounds, sizeof (UINT16));
      High = TakeNumber (Bounds, sizeof (UINT16));
      PutFormat (" (default length %lu) {%lu..%lu", TakeNumber (Bounds, sizeof (UINT16)), Low, High);
      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      Low  = TakeNumber (Bounds, sizeof (UINT64));
      High = TakeNumber (Bounds, sizeof (UINT64));
      Step = TakeNumber (Bounds, sizeof (UINT32));
      PutFormat (" (default %lu) {%lu..%lu step %lu", TakeNumber (Bounds, sizeof (UINT64)), Low, High, Step);
      break;
    case PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING:
    case PLDM_BIOS_ATTRIBUTE_CONFIG_SET:
      PutText (" (default -) {");
      PutNames (This->Tables, This->Names, This->NameCount);
      break;
    default:
      PutText (" (default -) {-");
      break;
  }

  PutText ("}\n");
}

STATIC
VOID
PutAttributes (
  IN CONST PublishedTablesInterface  *Tables
  )
{
  TableReader  Entries;
  Attribute    This;
  UINT16       Handle;
  UINT16       Name;
  UINT8        Type;

  OpenTable (&Tables->Descriptors[TABLE_ATTRIBUTES], &Entries);
  while (MoreEntries (&Entries)) {
    Handle        = (UINT16)TakeNumber (&Entries, sizeof (UINT16));
    Type          = (UINT8)TakeNumber (&Entries, sizeof (UINT8));
    Name          = (UINT16)TakeNumber (&Entries, sizeof (UINT16));
    This.Tables   = Tables;
    This.BaseType = PLDM_BIOS_ATTRIBUTE_BASE_TYPE (Type);
    This.Bounds   = Entries;
    This.HasValue = FindValue (Tables, Handle, This.BaseType, &This.Value);
    FindNames (&This);

    PutFormat ("%u ", Handle);
    PutName (Tables, Name);
    if (This.BaseType < ARRAY_SIZE (mTypeNames)) {
      PutFormat (" %a", mTypeNames[This.BaseType]);
    } else {
      PutFormat (" type-%u", This.BaseType);
    }

    PutText (((Type & PLDM_BIOS_ATTRIBUTE_READ_ONLY) != 0) ? " ro = " : " = ");
    PutCurrent (&This);
    PutBounds (&This);
    SkipBounds (&Entries, This.BaseType);
  }
}

EFI_STATUS
EFIAPI
AttributeDumpEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_SHELL_PARAMETERS_PROTOCOL  *Parameters;
  PublishedTablesInterface       *Tables;
  EFI_STATUS                     Status;

  Status = gBS->HandleProtocol (ImageHandle, &gEfiShellParametersProtocolGuid, (VOID **)&Parameters);
  if (!EFI_ERROR (Status) && (Parameters->Argc > 1)) {
    if (StrCmp (Parameters->Argv[1], L"-c") == 0) {
      Status = CheckCache ();
    } else {
      Status = (StrCmp (Parameters->Argv[1], L"-i") == 0) ? PutDriverImage () : EFI_INVALID_PARAMETER;
    }
  } else {
    Status = gBS->LocateProtocol (&gVaroPublishedTablesProtocolGuid, NULL, (VOID **)&Tables);
    if (!EFI_ERROR (Status)) {
      PutAttributes (Tables);
    }
  }

  if (EFI_ERROR (Status)) {
    PutFormat ("AttributeDump: %r\n", Status);
  }

  return Status;
}
