/** @file
  AttrShow: prints attributes - list, get, info, export.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <IndustryStandard/PldmBios.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/TextOutputLib.h>
#include "AttrDependencies.h"
#include "AttrNames.h"
#include "AttrShow.h"
#include "AttrTexts.h"

STATIC CONST CHAR8 *CONST  mTypeNames[] = {
  "enumeration", "string", "password", "integer", "boot-configuration", "collection", "configuration-set"
};

VOID
PutName (
  IN AttributeAccessProtocol  *Access,
  IN UINT16                   Handle,
  IN ValueForm                Form
  )
{
  CHAR8  *Name;

  Name = ReadName (Access, Handle);
  if (Name == NULL) {
    PutFormat ("?%u", Handle);
    return;
  }

  PutEscaped (Name, (Form == ValueExact) ? AsciiStrLen (Name) : BareLength (Name), "");
  FreePool (Name);
}

/**
  Prints the names of possible values.
**/
STATIC
VOID
PutPossible (
  IN AttributeAccessProtocol  *Access,
  IN CONST Attribute          *Attribute,
  IN ValueForm                Form
  )
{
  UINTN  Index;

  for (Index = 0; Index < Attribute->PossibleCount; Index++) {
    PutText ((Index == 0) ? "" : "|");
    PutName (Access, HandleAt (Attribute->Possible, Index), Form);
  }

  PutText ((Attribute->PossibleCount == 0) ? "-" : "");
}

/**
  Prints the names of the possible values at the given places.
**/
STATIC
VOID
PutPlaces (
  IN AttributeAccessProtocol  *Access,
  IN CONST Attribute          *Attribute,
  IN CONST UINT8              *Places,
  IN UINTN                    Count,
  IN ValueForm                Form
  )
{
  UINTN  Index;

  for (Index = 0; Index < Count; Index++) {
    PutText ((Index == 0) ? "" : "|");
    if (Places[Index] < Attribute->PossibleCount) {
      PutName (Access, HandleAt (Attribute->Possible, Places[Index]), Form);
    } else {
      PutFormat ("#%u", Places[Index]);
    }
  }

  PutText ((Count == 0) ? "-" : "");
}

/**
  Prints the names of a collection's members.
**/
STATIC
VOID
PutMembers (
  IN AttributeAccessProtocol  *Access,
  IN CONST Attribute          *Attribute,
  IN ValueForm                Form
  )
{
  AttributeEntry  Member;
  UINT16          Handle;
  UINTN           Index;

  for (Index = 0; Index < Attribute->CurrentCount; Index++) {
    PutText ((Index == 0) ? "" : "|");
    Handle = HandleAt (Attribute->Current, Index);
    if (EFI_ERROR (ReadEntry (Access, Handle, &Member))) {
      PutFormat ("?%u", Handle);
    } else {
      PutName (Access, Member.Attribute.NameHandle, Form);
    }

    FreeEntry (&Member);
  }

  PutText ((Attribute->CurrentCount == 0) ? "-" : "");
}

VOID
PutValue (
  IN AttributeAccessProtocol  *Access,
  IN CONST AttributeEntry     *Entry,
  IN ValueForm                Form
  )
{
  CONST Attribute  *Attribute;

  Attribute = &Entry->Attribute;
  if (!Attribute->HasParts) {
    PutText ("?");
    return;
  }

  switch (Attribute->Type) {
    case PLDM_BIOS_ATTRIBUTE_STRING:
      PutText ((Form == ValueExact) ? "\"" : "");
      PutEscaped ((CONST CHAR8 *)Attribute->Current, Attribute->CurrentCount, (Form == ValueExact) ? "\"\\" : "");
      PutText ((Form == ValueExact) ? "\"" : "");
      break;
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:
      PutText ("hidden");
      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      PutFormat ("%lu", Attribute->Number);
      break;
    case PLDM_BIOS_ATTRIBUTE_COLLECTION:
      PutMembers (Access, Attribute, Form);
      break;
    default:
      PutPlaces (Access, Attribute, Attribute->Current, Attribute->CurrentCount, Form);
      break;
  }
}

STATIC
VOID
PutDefault (
  IN AttributeAccessProtocol  *Access,
  IN CONST Attribute          *Attribute,
  IN ValueForm                Form
  )
{
  switch (Attribute->Type) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      PutPlaces (Access, Attribute, Attribute->Defaults, Attribute->DefaultCount, Form);
      break;
    case PLDM_BIOS_ATTRIBUTE_STRING:
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:
      PutFormat ("length %lu", (UINT64)Attribute->DefaultCount);
      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      PutFormat ("%lu", Attribute->Default);
      break;
    default:
      PutText ("-");
      break;
  }
}

/**
  Prints the bounds, or the possible values.
**/
STATIC
VOID
PutDomain (
  IN AttributeAccessProtocol  *Access,
  IN CONST Attribute          *Attribute,
  IN ValueForm                Form
  )
{
  switch (Attribute->Type) {
    case PLDM_BIOS_ATTRIBUTE_STRING:
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:
      PutFormat ("%lu..%lu", Attribute->Minimum, Attribute->Maximum);
      break;
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      PutFormat ("%lu..%lu step %u", Attribute->Minimum, Attribute->Maximum, Attribute->Step);
      break;
    default:
      PutPossible (Access, Attribute, Form);
      break;
  }
}

STATIC
VOID
PutType (
  IN CONST Attribute  *Attribute
  )
{
  if (Attribute->Type < ARRAY_SIZE (mTypeNames)) {
    PutText (mTypeNames[Attribute->Type]);
  } else {
    PutFormat ("type-%u", Attribute->Type);
  }
}

STATIC
VOID
PutLongLine (
  IN AttributeAccessProtocol  *Access,
  IN CONST AttributeEntry     *Entry
  )
{
  PutFormat ("%u ", Entry->Attribute.Handle);
  PutEscaped (Entry->Name, AsciiStrLen (Entry->Name), "");
  PutText (" ");
  PutType (&Entry->Attribute);
  PutText (Entry->Attribute.ReadOnly ? " ro = " : " = ");
  PutValue (Access, Entry, ValueExact);
  if (Entry->Attribute.HasParts) {
    PutText (" (default ");
    PutDefault (Access, &Entry->Attribute, ValueExact);
    PutText (") {");
    PutDomain (Access, &Entry->Attribute, ValueExact);
    PutText ("}");
  }

  PutText ("\n");
}

STATIC
VOID
PutLine (
  IN AttributeAccessProtocol  *Access,
  IN CONST AttributeEntry     *Entry,
  IN CONST CHAR8              *Between
  )
{
  PutEscaped (Entry->Name, BareLength (Entry->Name), "");
  PutText (Between);
  PutValue (Access, Entry, ValuePlain);
  PutText ("\n");
}

/**
  Prints a line for each attribute whose name matches.

  @param[in]  Pattern  NULL = all attributes.
  @param[in]  Between  Stands between name and value; NULL = lines in the form of the host's inspector.
**/
STATIC
SHELL_STATUS
PutLines (
  IN CONST AttrCommand  *Command,
  IN CONST CHAR8        *Pattern,
  IN CONST CHAR8        *Between
  )
{
  AttributeEntry  Entry;
  UINT16          *Handles;
  UINTN           Count;
  UINTN           Index;
  UINTN           Lines;
  EFI_STATUS      Status;
  SHELL_STATUS    Result;

  Status = ReadHandles (Command->Access, &Handles, &Count);
  if (Handles == NULL) {
    return ReportNoTables (Status);
  }

  ZeroMem (&Entry, sizeof (Entry));
  Lines  = 0;
  Result = SHELL_SUCCESS;
  for (Index = 0; (Index < Count) && (Result == SHELL_SUCCESS); Index++) {
    if (IsInterrupted (Command)) {
      Result = SHELL_ABORTED;
    } else if (!EFI_ERROR (ReadEntry (Command->Access, Handles[Index], &Entry)) &&
               ((Pattern == NULL) || NameMatches (Entry.Name, Pattern)))
    {
      Lines++;
      if (Between == NULL) {
        PutLongLine (Command->Access, &Entry);
      } else {
        PutLine (Command->Access, &Entry, Between);
      }
    }

    FreeEntry (&Entry);
  }

  FreePool (Handles);
  if ((Result == SHELL_SUCCESS) && (Status == EFI_UNSUPPORTED)) {
    PutText ("attr: an attribute of unknown type hides itself and all after it\n");
    Result = SHELL_UNSUPPORTED;
  } else if ((Result == SHELL_SUCCESS) && (Lines == 0)) {
    PutFormat ("attr: no attribute%a\n", (Pattern == NULL) ? "" : " has such a name");
    Result = SHELL_NOT_FOUND;
  }

  return Result;
}

SHELL_STATUS
ListAttributes (
  IN CONST AttrCommand  *Command
  )
{
  return PutLines (Command, Command->Name, Command->Long ? NULL : " = ");
}

SHELL_STATUS
ExportAttributes (
  IN CONST AttrCommand  *Command
  )
{
  return PutLines (Command, NULL, "=");
}

/**
  Prints the value that the service gives for a name.
**/
STATIC
SHELL_STATUS
PutValueByName (
  IN CONST AttrCommand  *Command,
  IN CONST CHAR8        *Name
  )
{
  UINT8       None;
  UINT8       *Value;
  UINT32      Size;
  EFI_STATUS  Status;

  // A call without room for the value gives its length.
  Size   = 0;
  Value  = NULL;
  Status = Command->Access->GetAttributeValueByName (Command->Access, Name, &None, &Size);
  if ((Status == EFI_BUFFER_TOO_SMALL) && (Size > 0) && (Size < SIZE_64KB)) {
    Value  = AllocateZeroPool (Size);
    Status = (Value == NULL) ? EFI_OUT_OF_RESOURCES :
             Command->Access->GetAttributeValueByName (Command->Access, Name, Value, &Size);
  }

  if (!EFI_ERROR (Status)) {
    PutEscaped ((CONST CHAR8 *)Value, (Value == NULL) ? 0 : Size, "");
    PutText ("\n");
  }

  if (Value != NULL) {
    FreePool (Value);
  }

  return EFI_ERROR (Status) ? ReportRefusal (Status, FALSE) : SHELL_SUCCESS;
}

SHELL_STATUS
GetAttribute (
  IN CONST AttrCommand  *Command
  )
{
  AttributeEntry  Entry;
  SHELL_STATUS    Result;

  Result = ReadNamedEntry (Command, &Entry);
  if (Result == SHELL_SUCCESS) {
    if (Command->ByName) {
      Result = PutValueByName (Command, Entry.Name);
    } else if (!Entry.Attribute.HasParts) {
      Result = ReportRefusal (Entry.Status, FALSE);
    } else {
      PutValue (Command->Access, &Entry, ValuePlain);
      PutText ("\n");
    }
  }

  FreeEntry (&Entry);
  return Result;
}

STATIC
VOID
PutExpressions (
  IN CONST CHAR8  *Name
  )
{
  STATIC CONST CHAR8  Expression[] = "RegEx";
  NameAnnotation      Annotation;

  while (NextAnnotation (&Name, &Annotation)) {
    if ((Annotation.KeywordLength == sizeof (Expression) - 1) &&
        (CompareMem (Annotation.Keyword, Expression, Annotation.KeywordLength) == 0))
    {
      PutText ("Pattern:  ");
      PutEscaped (Annotation.Text, Annotation.TextLength, "");
      PutText ("\n");
    }
  }
}

SHELL_STATUS
DescribeAttribute (
  IN CONST AttrCommand  *Command
  )
{
  AttributeEntry  Entry;
  AttributeEntry  *Entries;
  UINTN           Count;
  UINTN           Index;
  EFI_STATUS      Status;
  SHELL_STATUS    Result;

  Result = ReadNamedEntry (Command, &Entry);
  if (Result != SHELL_SUCCESS) {
    FreeEntry (&Entry);
    return Result;
  }

  PutText ("Name:     ");
  PutEscaped (Entry.Name, BareLength (Entry.Name), "");
  PutFormat ("\nHandle:   %u\nType:     ", Entry.Attribute.Handle);
  PutType (&Entry.Attribute);
  PutText (Entry.Attribute.ReadOnly ? ", read-only\nValue:    " : "\nValue:    ");
  PutValue (Command->Access, &Entry, ValuePlain);
  PutText ("\n");
  if (Entry.Attribute.HasParts && (Entry.Attribute.Type != PLDM_BIOS_ATTRIBUTE_COLLECTION)) {
    PutText ("Default:  ");
    PutDefault (Command->Access, &Entry.Attribute, ValuePlain);
    PutText ((Entry.Attribute.PossibleCount > 0) ? "\nValues:   " :
             (Entry.Attribute.Type == PLDM_BIOS_ATTRIBUTE_INTEGER) ? "\nBounds:   " : "\nLength:   ");
    PutDomain (Command->Access, &Entry.Attribute, ValuePlain);
    PutText ("\n");
  }

  PutExpressions (Entry.Name);
  PutDependencies (Command->Access, &Entry, NULL);
  Status = ReadEntries (Command->Access, ReadEntry, &Entries, &Count);
  for (Index = 0; Index < Count; Index++) {
    PutDependencies (Command->Access, &Entries[Index], Entry.Name);
  }

  if (!EFI_ERROR (Status)) {
    PutTexts (&Entry, Entries, Count);   // only a list of all attributes tells the driver's own from the setup's
  }

  FreeEntries (Entries, Count);
  FreeEntry (&Entry);
  return SHELL_SUCCESS;
}
