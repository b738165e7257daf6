/** @file
  AttrDependencies: the annotations of names by which one attribute forces another.

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
#include "AttrValue.h"

///
/// One dependency of a name. The pointers lead into the name.
///
typedef struct {
  CONST CHAR8    *Subject;        ///< the attribute that forces
  UINTN          SubjectLength;
  CONST CHAR8    *Value;          ///< its value in question
  UINTN          ValueLength;
  BOOLEAN        Inverted;        ///< acts while the attribute has any other value
} Dependency;

/**
  Takes the next dependency of a name.

  @param[in,out]  Rest  The name at first.

  @retval FALSE  None is left.
**/
STATIC
BOOLEAN
NextDependency (
  IN OUT CONST CHAR8  **Rest,
  OUT    Dependency   *This
  )
{
  STATIC CONST CHAR8  If[]    = "ForceIf";
  STATIC CONST CHAR8  IfNot[] = "ForceIfNot";
  NameAnnotation      Annotation;

  while (NextAnnotation (Rest, &Annotation)) {
    This->Inverted = (BOOLEAN)(Annotation.KeywordLength == sizeof (IfNot) - 1);
    if ((This->Inverted || (Annotation.KeywordLength == sizeof (If) - 1)) &&
        (CompareMem (Annotation.Keyword, IfNot, Annotation.KeywordLength) == 0) &&
        (Annotation.SubjectLength < Annotation.TextLength))
    {
      This->Subject       = Annotation.Text;
      This->SubjectLength = Annotation.SubjectLength;
      This->Value         = Annotation.Text + Annotation.SubjectLength + 1;
      This->ValueLength   = Annotation.TextLength - Annotation.SubjectLength - 1;
      return TRUE;
    }
  }

  return FALSE;
}

STATIC
VOID
PutCondition (
  IN CONST Dependency  *This,
  IN CONST CHAR8       *Is
  )
{
  PutEscaped (This->Subject, This->SubjectLength, "");
  PutText (This->Inverted ? " is not " : Is);
  PutEscaped (This->Value, This->ValueLength, "");
  PutText ("\n");
}

/**
  Prints the dependencies that a name carries.

  @param[in]  Forced   The attribute, when the name is that of one of its values.
  @param[in]  Subject  Only the dependencies on this attribute are printed; NULL = all.
**/
STATIC
VOID
PutNameDependencies (
  IN CONST CHAR8  *Forced OPTIONAL,
  IN CONST CHAR8  *Name,
  IN CONST CHAR8  *Subject OPTIONAL
  )
{
  Dependency   This;
  CONST CHAR8  *Rest;

  Rest = Name;
  while (NextDependency (&Rest, &This)) {
    if ((Subject != NULL) && ((BareLength (Subject) != This.SubjectLength) ||
                              (CompareMem (Subject, This.Subject, This.SubjectLength) != 0)))
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
    PutCondition (&This, " = ");
  }
}

/**
  Gives the number of values whose names can carry dependencies.
**/
STATIC
UINTN
ValueCount (
  IN CONST Attribute  *Attribute
  )
{
  return (Attribute->Type == PLDM_BIOS_ATTRIBUTE_ENUMERATION) ? Attribute->PossibleCount : 0;
}

VOID
PutDependencies (
  IN AttributeAccessProtocol  *Access,
  IN CONST AttributeEntry     *Entry,
  IN CONST CHAR8              *Subject OPTIONAL
  )
{
  CHAR8  *Value;
  UINTN  Index;

  PutNameDependencies (NULL, Entry->Name, Subject);
  for (Index = 0; Index < ValueCount (&Entry->Attribute); Index++) {
    Value = ReadName (Access, HandleAt (Entry->Attribute.Possible, Index));
    if (Value != NULL) {
      PutNameDependencies ((Subject == NULL) ? NULL : Entry->Name, Value, Subject);
      FreePool (Value);
    }
  }
}

/**
  Compares an attribute's current value with the text of a condition.

  @param[out]  Equal  The result.

  @retval FALSE  The current value is not known, or is of a type without conditions.
**/
STATIC
BOOLEAN
CompareCurrent (
  IN  AttributeAccessProtocol  *Access,
  IN  CONST Attribute          *Attribute,
  IN  CONST CHAR8              *Text,
  OUT BOOLEAN                  *Equal
  )
{
  CHAR8   *Name;
  UINT64  Number;

  *Equal = FALSE;
  if (!Attribute->HasParts) {
    return FALSE;
  }

  switch (Attribute->Type) {
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      *Equal = (BOOLEAN)(ReadNumber (Text, &Number) && (Number == Attribute->Number));
      return TRUE;
    case PLDM_BIOS_ATTRIBUTE_STRING:
      *Equal = (BOOLEAN)((Attribute->CurrentCount == AsciiStrLen (Text)) &&
                         (CompareMem (Attribute->Current, Text, Attribute->CurrentCount) == 0));
      return TRUE;
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      if ((Attribute->CurrentCount != 1) || (Attribute->Current[0] >= Attribute->PossibleCount)) {
        return FALSE;
      }

      Name = ReadName (Access, HandleAt (Attribute->Possible, Attribute->Current[0]));
      if (Name == NULL) {
        return FALSE;
      }

      *Equal = NameIs (Name, Text, FALSE);
      FreePool (Name);
      return TRUE;
    default:
      return FALSE;
  }
}

/**
  Tells whether a dependency acts with the current value of its attribute.
**/
STATIC
BOOLEAN
Acts (
  IN AttributeAccessProtocol  *Access,
  IN CONST Dependency         *This
  )
{
  CHAR8           *Subject;
  CHAR8           *Value;
  UINT16          Handle;
  AttributeEntry  Entry;
  BOOLEAN         Equal;
  BOOLEAN         Known;

  Subject = AllocateZeroPool (This->SubjectLength + 1 + This->ValueLength + 1);
  if (Subject == NULL) {
    return FALSE;
  }

  Value = Subject + This->SubjectLength + 1;
  CopyMem (Subject, This->Subject, This->SubjectLength);
  CopyMem (Value, This->Value, This->ValueLength);
  ZeroMem (&Entry, sizeof (Entry));
  Known = (BOOLEAN)(!EFI_ERROR (Access->FindAttributeHandle (Access, Subject, &Handle)) &&
                    !EFI_ERROR (ReadEntry (Access, Handle, &Entry)) &&
                    CompareCurrent (Access, &Entry.Attribute, Value, &Equal));
  FreeEntry (&Entry);
  FreePool (Subject);
  return (BOOLEAN)(Known && (Equal != This->Inverted));
}

/**
  Prints what of a name's dependencies acts right now.

  @param[in]  Value  Name of the value that carries the dependencies; NULL = the attribute's own name does.
**/
STATIC
VOID
PutNameForces (
  IN AttributeAccessProtocol  *Access,
  IN CONST AttributeEntry     *Entry,
  IN CONST CHAR8              *Value OPTIONAL
  )
{
  Dependency   This;
  CONST CHAR8  *Rest;

  Rest = (Value == NULL) ? Entry->Name : Value;
  while (NextDependency (&Rest, &This)) {
    if (!Acts (Access, &This)) {
      continue;
    }

    PutText ("attr: ");
    PutEscaped (Entry->Name, BareLength (Entry->Name), "");
    if (Value == NULL) {
      PutText (" is held at ");
      PutValue (Access, Entry, ValuePlain);
    } else {
      PutText (" is forced to ");
      PutEscaped (Value, BareLength (Value), "");
    }

    PutText (" while ");
    PutCondition (&This, " is ");
  }
}

VOID
PutForces (
  IN AttributeAccessProtocol  *Access,
  IN CONST AttributeEntry     *Entry,
  IN UINT64                   Place
  )
{
  CHAR8  *Value;
  UINTN  Index;

  PutNameForces (Access, Entry, NULL);
  for (Index = 0; Index < ValueCount (&Entry->Attribute); Index++) {
    Value = (Index == Place) ? NULL : ReadName (Access, HandleAt (Entry->Attribute.Possible, Index));
    if (Value != NULL) {
      PutNameForces (Access, Entry, Value);
      FreePool (Value);
    }
  }
}
