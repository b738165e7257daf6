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
#include "AttrNames.h"
#include "AttrPairing.h"
#include "AttrShow.h"

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
  Prints the names at places among the possible values.
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
  Prints what values there can be.
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

  @param[in]  Pattern  NULL = all.
  @param[in]  Between  Name and value; NULL = lines as the host's inspector has them.
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
    PutText ("attr: an attribute of unknown type hides itself and all behind it\n");
    Result = SHELL_UNSUPPORTED;
  } else if ((Result == SHELL_SUCCESS) && (Lines == 0)) {
    PutFormat ("attr: no attribute%a\n", (Pattern == NULL) ? "" : " of such a name");
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
  Prints the value as the service gives it for a name.
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

  // The length of the value is what is asked for when there is no room.
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

/**
  Says whether an annotation is a dependency, and how it is put.

  @param[out]  Relation  What stands between the other attribute and its value.
**/
STATIC
BOOLEAN
IsDependency (
  IN  CONST NameAnnotation  *Annotation,
  OUT CONST CHAR8           **Relation
  )
{
  STATIC CONST CHAR8  If[]    = "ForceIf";
  STATIC CONST CHAR8  IfNot[] = "ForceIfNot";

  *Relation = (Annotation->KeywordLength == sizeof (If) - 1) ? " = " : " is not ";
  if ((Annotation->KeywordLength != sizeof (If) - 1) && (Annotation->KeywordLength != sizeof (IfNot) - 1)) {
    return FALSE;
  }

  return (BOOLEAN)((CompareMem (Annotation->Keyword, IfNot, Annotation->KeywordLength) == 0) &&
                   (Annotation->SubjectLength < Annotation->TextLength));
}

/**
  Prints the dependencies that a name carries.

  @param[in]  Forced   What the name is of: an attribute, or NULL for one of Described's values.
  @param[in]  Subject  Only those on this attribute are printed; NULL = all.
**/
STATIC
VOID
PutNameDependencies (
  IN CONST CHAR8  *Forced,
  IN CONST CHAR8  *Name,
  IN CONST CHAR8  *Subject
  )
{
  NameAnnotation  Annotation;
  CONST CHAR8     *Relation;
  CONST CHAR8     *Rest;

  Rest = Name;
  while (NextAnnotation (&Rest, &Annotation)) {
    if (!IsDependency (&Annotation, &Relation) ||
        ((Subject != NULL) && ((BareLength (Subject) != Annotation.SubjectLength) ||
                               (CompareMem (Subject, Annotation.Text, Annotation.SubjectLength) != 0))))
    {
      continue;
    }

    PutText ((Subject == NULL) ? "Depends:  " : "Forces:   ");
    if (Forced != NULL) {
      PutEscaped (Forced, BareLength (Forced), "");
      PutText (" = ");
    }

    PutEscaped (Name, BareLength (Name), "");
    PutText (" is forced if ");
    PutEscaped (Annotation.Text, Annotation.SubjectLength, "");
    PutText (Relation);
    PutEscaped (
      Annotation.Text + Annotation.SubjectLength + 1,
      Annotation.TextLength - Annotation.SubjectLength - 1,
      ""
      );
    PutText ("\n");
  }
}

/**
  Prints the dependencies of an attribute's own name and of its values' names.

  @param[in]  Subject  NULL: the attribute is the one described. Otherwise that one's name.
**/
STATIC
VOID
PutDependencies (
  IN AttributeAccessProtocol  *Access,
  IN CONST AttributeEntry     *Entry,
  IN CONST CHAR8              *Subject
  )
{
  CHAR8  *Value;
  UINTN  Index;

  PutNameDependencies (NULL, Entry->Name, Subject);
  if (Entry->Attribute.Type != PLDM_BIOS_ATTRIBUTE_ENUMERATION) {
    return;
  }

  for (Index = 0; Index < Entry->Attribute.PossibleCount; Index++) {
    Value = ReadName (Access, HandleAt (Entry->Attribute.Possible, Index));
    if (Value != NULL) {
      PutNameDependencies ((Subject == NULL) ? NULL : Entry->Name, Value, Subject);
      FreePool (Value);
    }
  }
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

/**
  Prints display and help text, where they are known to be the attribute's.
**/
STATIC
VOID
PutTexts (
  IN AttributeAccessProtocol  *Access,
  IN CONST AttributeEntry     *Entries,
  IN UINTN                    Count,
  IN UINT16                   Handle
  )
{
  TextPairing  Pairing;
  CHAR16       *Help;
  UINTN        Index;

  PairTexts (Access, Entries, Count, &Pairing);   // what is not paired is not printed
  for (Index = 0; (Pairing.Paired != NULL) && (Index < Count); Index++) {
    if ((Entries[Index].Attribute.Handle != Handle) || (Pairing.Paired[Index].Display == NULL)) {
      continue;
    }

    PutText ("Display:  ");
    PutWideText (Pairing.Paired[Index].Display);
    PutText ("\n");
    Help = NULL;
    if (Pairing.Paired[Index].HelpHandle != 0) {
      Help = ReadText (Access, Access->GetTextStringA, Pairing.Paired[Index].HelpHandle);
    }

    if ((Help != NULL) && (*Help != L'\0')) {
      PutText ("Help:     ");
      PutWideText (Help);
      PutText ("\n");
    }

    if (Help != NULL) {
      FreePool (Help);
    }
  }

  FreePairing (&Pairing);
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
  ReadEntries (Command->Access, ReadEntry, &Entries, &Count);   // without the others, what depends on them is not printed
  for (Index = 0; Index < Count; Index++) {
    PutDependencies (Command->Access, &Entries[Index], Entry.Name);
  }

  PutTexts (Command->Access, Entries, Count, Entry.Attribute.Handle);
  FreeEntries (Entries, Count);
  FreeEntry (&Entry);
  return SHELL_SUCCESS;
}
