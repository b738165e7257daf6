/** @file
  AttrSet: changes an attribute.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <IndustryStandard/PldmBios.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PrintLib.h>
#include <Library/TextOutputLib.h>
#include "AttrDependencies.h"
#include "AttrNames.h"
#include "AttrPassword.h"
#include "AttrSet.h"
#include "AttrShow.h"
#include "AttrValue.h"

///
/// A value that passed all checks.
///
typedef struct {
  CONST CHAR8    *Text;      ///< of a string
  UINT64         Number;     ///< of an integer, or the place of an enumeration's value
} NewValue;

/**
  Finds an enumeration's value: by its name, by its name in any case where one value alone has it, or by its place.
**/
STATIC
BOOLEAN
FindPlace (
  IN  AttributeAccessProtocol  *Access,
  IN  CONST Attribute          *Attribute,
  IN  CONST CHAR8              *Typed,
  OUT UINT64                   *Place
  )
{
  CHAR8    *Name;
  BOOLEAN  Exact;
  UINTN    Alike;
  UINTN    Index;

  Alike = 0;
  Exact = FALSE;
  for (Index = 0; !Exact && (Index < Attribute->PossibleCount); Index++) {
    Name = ReadName (Access, HandleAt (Attribute->Possible, Index));
    if ((Name != NULL) && NameIs (Name, Typed, TRUE)) {
      Exact  = NameIs (Name, Typed, FALSE);
      *Place = Index;
      Alike++;
    }

    if (Name != NULL) {
      FreePool (Name);
    }
  }

  return (BOOLEAN)(Exact || (Alike == 1) || (ReadNumber (Typed, Place) && (*Place < Attribute->PossibleCount)));
}

/**
  Prints why a value is refused.
**/
STATIC
VOID
PutVerdict (
  IN CONST Attribute  *Attribute,
  IN ValueVerdict     Verdict
  )
{
  PutText ("attr: ");
  switch (Verdict) {
    case ValueNoNumber:
      PutText ("not a number, decimal or 0x and hexadecimal\n");
      break;
    case ValueOutOfBounds:
      PutFormat ("out of bounds, which are %lu to %lu\n", Attribute->Minimum, Attribute->Maximum);
      break;
    case ValueOutOfStep:
      PutFormat ("out of step: values go in steps of %u from %lu\n", Attribute->Step, Attribute->Minimum);
      break;
    case ValueTooShort:
      PutFormat ("too short, %lu characters at least\n", Attribute->Minimum);
      break;
    default:
      PutFormat ("too long, %lu characters at most\n", Attribute->Maximum);
      break;
  }
}

/**
  Checks the typed value, and prints why it is refused.
**/
STATIC
SHELL_STATUS
CheckValue (
  IN  CONST AttrCommand     *Command,
  IN  CONST AttributeEntry  *Entry,
  OUT NewValue              *Value
  )
{
  CONST Attribute  *Attribute;
  ValueVerdict     Verdict;
  UINTN            Index;

  Attribute     = &Entry->Attribute;
  Value->Text   = Command->Value;
  Value->Number = 0;
  Verdict       = ValueAccepted;
  switch (Attribute->Type) {
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      Verdict = CheckInteger (Attribute, Command->Value, &Value->Number);
      break;
    case PLDM_BIOS_ATTRIBUTE_STRING:
      Verdict = CheckLength (Attribute, AsciiStrLen (Command->Value));
      break;
    default:
      if (FindPlace (Command->Access, Attribute, Command->Value, &Value->Number)) {
        break;
      }

      PutText ("attr: no such value; there are");
      for (Index = 0; Index < Attribute->PossibleCount; Index++) {
        PutFormat (" %lu ", (UINT64)Index);
        PutName (Command->Access, HandleAt (Attribute->Possible, Index), ValuePlain);
      }

      PutText ("\n");
      return SHELL_INVALID_PARAMETER;
  }

  if (Verdict != ValueAccepted) {
    PutVerdict (Attribute, Verdict);
    return SHELL_INVALID_PARAMETER;
  }

  return SHELL_SUCCESS;
}

STATIC
BOOLEAN
HasValue (
  IN CONST Attribute  *Attribute,
  IN CONST NewValue   *Value
  )
{
  switch (Attribute->Type) {
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      return (BOOLEAN)(Attribute->Number == Value->Number);
    case PLDM_BIOS_ATTRIBUTE_STRING:
      return (BOOLEAN)((Attribute->CurrentCount == AsciiStrLen (Value->Text)) &&
                       (CompareMem (Attribute->Current, Value->Text, Attribute->CurrentCount) == 0));
    default:
      return (BOOLEAN)((Attribute->CurrentCount > 0) && (Attribute->Current[0] == Value->Number));
  }
}

/**
  Prints the new value in the form of PutValue.
**/
STATIC
VOID
PutNewValue (
  IN AttributeAccessProtocol  *Access,
  IN CONST Attribute          *Attribute,
  IN CONST NewValue           *Value
  )
{
  switch (Attribute->Type) {
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      PutFormat ("%lu", Value->Number);
      break;
    case PLDM_BIOS_ATTRIBUTE_STRING:
      PutEscaped (Value->Text, AsciiStrLen (Value->Text), "");
      break;
    default:
      PutName (Access, HandleAt (Attribute->Possible, (UINTN)Value->Number), ValuePlain);
      break;
  }
}

STATIC
EFI_STATUS
SendByHandle (
  IN CONST AttrCommand     *Command,
  IN CONST AttributeEntry  *Entry,
  IN CONST NewValue        *Value,
  IN CONST CHAR8           *Password
  )
{
  AttributeInfo  *Record;
  UINT32         Size;
  EFI_STATUS     Status;

  Record = MakeRecord (&Entry->Attribute, Entry->Record, Entry->RecordSize, Value->Text, Value->Number, &Size);
  if (Record == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Status = Command->Access->SetAttributeValue (Command->Access, Record, Size, Password);
  FreePool (Record);
  return Status;
}

STATIC
EFI_STATUS
SendByName (
  IN CONST AttrCommand     *Command,
  IN CONST AttributeEntry  *Entry,
  IN CONST NewValue        *Value,
  IN CONST CHAR8           *Password
  )
{
  CHAR8       Number[24];
  CHAR8       *Name;
  EFI_STATUS  Status;

  if (Entry->Attribute.Type == PLDM_BIOS_ATTRIBUTE_STRING) {
    return Command->Access->SetAttributeValueByName (Command->Access, Entry->Name, Value->Text, Password);
  }

  if (Entry->Attribute.Type == PLDM_BIOS_ATTRIBUTE_INTEGER) {
    AsciiSPrint (Number, sizeof (Number), "%lu", Value->Number);
    return Command->Access->SetAttributeValueByName (Command->Access, Entry->Name, Number, Password);
  }

  Name = ReadName (Command->Access, HandleAt (Entry->Attribute.Possible, (UINTN)Value->Number));
  if (Name == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Status = Command->Access->SetAttributeValueByName (Command->Access, Entry->Name, Name, Password);
  FreePool (Name);
  return Status;
}

/**
  Sends the request, with a password if the command asks for one, and wipes the password.
**/
STATIC
EFI_STATUS
Send (
  IN  CONST AttrCommand     *Command,
  IN  CONST AttributeEntry  *Entry,
  IN  CONST NewValue        *Value,
  OUT BOOLEAN               *Asked
  )
{
  CHAR8        Password[PASSWORD_CAPACITY];
  CONST CHAR8  *Given;
  EFI_STATUS   Status;

  Given  = NULL;
  *Asked = Command->Password;
  if (Command->Password) {
    Status = AskPassword (Password);
    if (EFI_ERROR (Status)) {
      return Status;
    }

    *Asked = FALSE;
    Given  = Password;
  }

  Status = Command->ByName ? SendByName (Command, Entry, Value, Given) : SendByHandle (Command, Entry, Value, Given);
  WipeBytes (Password, sizeof (Password));
  return Status;
}

/**
  Reads the value back, and prints a message unless it is the new one.
**/
STATIC
SHELL_STATUS
ReadBack (
  IN CONST AttrCommand     *Command,
  IN CONST AttributeEntry  *Before,
  IN CONST NewValue        *Value
  )
{
  AttributeEntry  After;
  SHELL_STATUS    Result;

  Result = SHELL_NOT_EQUAL;
  if (EFI_ERROR (ReadEntry (Command->Access, Before->Attribute.Handle, &After)) || !After.Attribute.HasParts) {
    PutText ("attr: sent, but the value cannot be read back\n");
  } else if ((After.Attribute.Type == Before->Attribute.Type) && HasValue (&After.Attribute, Value)) {
    Result = SHELL_SUCCESS;
  } else {
    PutText ("attr: not taken, the value is still ");
    PutValue (Command->Access, &After, ValuePlain);
    PutText (Command->Password ? "\n" : "; a password may be wanted (-p)\n");
  }

  FreeEntry (&After);
  return Result;
}

/**
  Prints why no password was read. Nothing was sent.
**/
STATIC
SHELL_STATUS
ReportNoPassword (
  IN EFI_STATUS  Status
  )
{
  switch (Status) {
    case EFI_ABORTED:
      PutText ("attr: cancelled, nothing sent\n");
      return SHELL_ABORTED;
    case EFI_UNSUPPORTED:
      PutText ("attr: not a password of up to 255 printable characters, nothing sent\n");
      return SHELL_INVALID_PARAMETER;
    default:
      PutFormat ("attr: no password can be read, nothing sent (%r)\n", Status);
      return SHELL_DEVICE_ERROR;
  }
}

/**
  Sends a value that passed all checks, and prints the result.
**/
STATIC
SHELL_STATUS
ChangeValue (
  IN CONST AttrCommand     *Command,
  IN CONST AttributeEntry  *Entry,
  IN CONST NewValue        *Value
  )
{
  BOOLEAN       Asking;
  EFI_STATUS    Status;
  SHELL_STATUS  Result;

  PutForces (Command->Access, Entry, Value->Number);
  Status = Send (Command, Entry, Value, &Asking);
  if (EFI_ERROR (Status) && Asking) {
    return ReportNoPassword (Status);
  }

  Result = EFI_ERROR (Status) ? ReportRefusal (Status, Command->Password) : ReadBack (Command, Entry, Value);
  if (Result == SHELL_SUCCESS) {
    PutEscaped (Entry->Name, BareLength (Entry->Name), "");
    PutText (": ");
    PutValue (Command->Access, Entry, ValuePlain);
    PutText (" -> ");
    PutNewValue (Command->Access, &Entry->Attribute, Value);
    PutText ("\n");
  }

  return Result;
}

SHELL_STATUS
SetAttribute (
  IN CONST AttrCommand  *Command
  )
{
  AttributeEntry  Entry;
  NewValue        Value;
  SHELL_STATUS    Result;

  Result = ReadNamedEntry (Command, &Entry);
  if (Result == SHELL_SUCCESS) {
    if (Entry.Attribute.ReadOnly) {
      PutText ("attr: the attribute is read-only\n");
      Result = SHELL_WRITE_PROTECTED;
    } else if ((Entry.Attribute.Type != PLDM_BIOS_ATTRIBUTE_INTEGER) &&
               (Entry.Attribute.Type != PLDM_BIOS_ATTRIBUTE_STRING) &&
               (Entry.Attribute.Type != PLDM_BIOS_ATTRIBUTE_ENUMERATION))
    {
      PutText ("attr: an attribute of this type cannot be set\n");
      Result = SHELL_UNSUPPORTED;
    } else if (!Entry.Attribute.HasParts) {
      Result = ReportRefusal (Entry.Status, FALSE);
    } else {
      Result = CheckValue (Command, &Entry, &Value);
    }
  }

  if ((Result == SHELL_SUCCESS) && HasValue (&Entry.Attribute, &Value)) {
    PutEscaped (Entry.Name, BareLength (Entry.Name), "");
    PutText (": ");
    PutValue (Command->Access, &Entry, ValuePlain);
    PutText (" already, nothing sent\n");
  } else if (Result == SHELL_SUCCESS) {
    Result = ChangeValue (Command, &Entry, &Value);
  }

  FreeEntry (&Entry);
  return Result;
}
