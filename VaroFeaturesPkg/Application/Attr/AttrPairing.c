/** @file
  AttrPairing: which display text belongs to which attribute, where that is sure.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Corvane/AttributeStore.h>
#include <IndustryStandard/PldmBios.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/MemoryAllocationLib.h>
#include "AttrNames.h"
#include "AttrPairing.h"
#include "TextReplay.h"

//
// From this many enumerations on, questions are left out of the attributes but not out of the texts.
//
#define ENUMERATION_LIMIT  241

///
/// An attribute that CorvaneDxe makes itself. Their texts are the same on every platform, and all of them are made
/// behind those of the setup's questions.
///
typedef struct {
  CONST CHAR8    *Name;       ///< without its suffix
  CONST CHAR8    *Text;
  BOOLEAN        HasHelp;
} OwnAttribute;

STATIC CONST OwnAttribute  mOwnAttributes[] = {
  { "CommonSystemId",               "Common System Identifier",                   FALSE },
  { "OverrideBatteryChargeFactory", "Override Battery Charging Limit in Factory", FALSE },
  { "ServiceResetConfig",           "Service reset configuration",                FALSE },
  { "Generation",                   "System Generation",                          FALSE },
  { "IBV",                          "Independent BIOS Vendor",                    FALSE },
  { "MfgModePxeAttribute",          "Manufacturing Mode PXE Attribute",           FALSE },
  { "FrontFan",                     "Front Fan",                                  FALSE },
  { "WlanCountryCode",              "WLAN Country Code",                          FALSE },
  { "AdvancedDebugMenu",            "Advanced Debug Menu",                        FALSE },
  { "HEVC",                         "High Efficiency Video Coding",               FALSE },
  { "ChargePowerLimitFactoryFlag",  "Charge Power Limit Factory Flag",            TRUE  },
  { "MasterPasswordLockout",        "Master Password Lockout",                    FALSE },
  { "MIPICam1",                     "MIPI Camera 1",                              FALSE },
  { "MIPICam2",                     "MIPI Camera 2",                              FALSE },
  { "MIPICam3",                     "MIPI Camera 3",                              FALSE },
  { "MIPICam4",                     "MIPI Camera 4",                              FALSE },
  { "AuxoraSupportLevel",           "Auxora Support Level",                       FALSE },
  { "AdminPassword",                "Admin Password",                             FALSE },
  { "SystemPassword",               "System Password",                            FALSE },
  { "OwnerPassword",                "Owner Password",                             FALSE },
  { "System boot configuration",    "System boot configuration",                  FALSE }
};

///
/// The steps that made the texts, and which attribute's own text each of them is.
///
typedef struct {
  ReplayStep    *Steps;
  UINTN         *Owners;      ///< entry, or NOBODY for the texts of values
  UINTN         Count;
  CHAR8         **Names;      ///< of values, which steps point to
  UINTN         NameCount;
  UINT16        NextName;     ///< string handle of the next name that is new
} StepList;

#define NOBODY  MAX_UINTN

STATIC
CONST OwnAttribute *
FindOwn (
  IN CONST AttributeEntry  *Entry
  )
{
  UINTN  Index;

  for (Index = 0; Index < ARRAY_SIZE (mOwnAttributes); Index++) {
    if (NameIs (Entry->Name, mOwnAttributes[Index].Name)) {
      return &mOwnAttributes[Index];
    }
  }

  return NULL;
}

STATIC
VOID
AddStep (
  IN OUT StepList     *List,
  IN     ReplayKind   Kind,
  IN     CONST CHAR8  *Text,
  IN     UINTN        Owner
  )
{
  List->Steps[List->Count].Kind       = Kind;
  List->Steps[List->Count].Text       = Text;
  List->Steps[List->Count].TextLength = (Text == NULL) ? 0 : AsciiStrLen (Text);
  List->Owners[List->Count]           = Owner;
  List->Count++;
}

/**
  Says whether a name was entered into the string table for the attribute at hand. Handles are given in order.

  @param[in,out]  InOrder  Cleared when one has been left out: something was made that is no attribute.
**/
STATIC
BOOLEAN
IsNewName (
  IN OUT StepList  *List,
  IN     UINT16    Handle,
  IN OUT BOOLEAN   *InOrder
  )
{
  if (Handle == List->NextName) {
    List->NextName++;
    return TRUE;
  }

  *InOrder = (BOOLEAN)(*InOrder && (Handle < List->NextName));
  return FALSE;
}

/**
  Adds the steps of an enumeration's values. A list enters a text for each value whose name is new. A checkbox has two
  values of fixed names, and their texts are those names, entered unless they are there.
**/
STATIC
BOOLEAN
AddValueSteps (
  IN     AttributeAccessProtocol  *Access,
  IN     CONST Attribute          *Attribute,
  IN OUT StepList                 *List
  )
{
  CHAR8    *Names[2];
  UINTN    Index;
  BOOLEAN  MaybeCheckbox;
  BOOLEAN  InOrder;

  ZeroMem (Names, sizeof (Names));
  MaybeCheckbox = (BOOLEAN)(Attribute->PossibleCount == ARRAY_SIZE (Names));
  for (Index = 0; MaybeCheckbox && (Index < ARRAY_SIZE (Names)); Index++) {
    Names[Index]  = ReadName (Access, HandleAt (Attribute->Possible, Index));
    MaybeCheckbox = (BOOLEAN)((Names[Index] != NULL) && NameIs (Names[Index], (Index == 0) ? "Disabled" : "Enabled"));
    if (Names[Index] != NULL) {
      List->Names[List->NameCount++] = Names[Index];
    }
  }

  InOrder = TRUE;
  for (Index = 0; Index < Attribute->PossibleCount; Index++) {
    if (IsNewName (List, HandleAt (Attribute->Possible, Index), &InOrder)) {
      AddStep (List, ReplayAnyText, NULL, NOBODY);
    } else if (MaybeCheckbox) {
      AddStep (List, ReplayMaybeText, Names[Index], NOBODY);
    }
  }

  return InOrder;
}

/**
  Adds the steps of the setup's attributes and, to end them, the first of the driver's own.

  @retval FALSE  These attributes do not show all that made texts.
**/
STATIC
BOOLEAN
AddSteps (
  IN     AttributeAccessProtocol  *Access,
  IN     CONST AttributeEntry     *Entries,
  IN     UINTN                    First,
  IN     UINTN                    End,
  IN OUT StepList                 *List
  )
{
  CONST Attribute  *This;
  CONST CHAR8      *Title;
  UINTN            Index;
  UINTN            Enumerations;
  BOOLEAN          InOrder;

  Enumerations = 0;
  InOrder      = TRUE;
  for (Index = First; InOrder && (Index < End); Index++) {
    This = &Entries[Index].Attribute;
    if (This->Handle != ATTRIBUTE_STORE_FIRST_HANDLE + Index - First) {
      return FALSE;
    }

    IsNewName (List, This->NameHandle, &InOrder);
    if (This->Type == PLDM_BIOS_ATTRIBUTE_COLLECTION) {
      for (Title = Entries[Index].Name; *Title == '*'; Title++) {
      }

      AddStep (List, ReplayTitle, Title, Index);
      continue;
    }

    AddStep (List, ReplayAnyText, NULL, Index);
    if (This->Type == PLDM_BIOS_ATTRIBUTE_ENUMERATION) {
      Enumerations++;
      InOrder = (BOOLEAN)(InOrder && This->HasParts && AddValueSteps (Access, This, List));
    }
  }

  return (BOOLEAN)(InOrder && (Enumerations < ENUMERATION_LIMIT));
}

STATIC
EFI_STATUS
ReadTexts (
  IN     AttributeAccessProtocol  *Access,
  IN OUT TextPairing              *Pairing
  )
{
  CHAR16  *Text;

  Pairing->Texts = AllocateZeroPool (ATTRIBUTE_STORE_STRING_LIMIT * sizeof (*Pairing->Texts));
  if (Pairing->Texts == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  while (Pairing->TextCount < ATTRIBUTE_STORE_STRING_LIMIT - ATTRIBUTE_STORE_FIRST_HANDLE) {
    Text = ReadText (Access, Access->GetTextStringB, (UINT16)(ATTRIBUTE_STORE_FIRST_HANDLE + Pairing->TextCount));
    if (Text == NULL) {
      break;
    }

    Pairing->Texts[Pairing->TextCount++] = Text;
  }

  return EFI_SUCCESS;
}

STATIC
VOID
Pair (
  IN OUT TextPairing  *Pairing,
  IN     UINTN        Entry,
  IN     UINTN        Place,
  IN     BOOLEAN      HasHelp
  )
{
  Pairing->Paired[Entry].Display    = Pairing->Texts[Place];
  Pairing->Paired[Entry].HelpHandle = HasHelp ? (UINT16)(ATTRIBUTE_STORE_FIRST_HANDLE + Place) : 0;
}

/**
  Pairs an attribute of the driver's own with its text, should that stand in the table once.
**/
STATIC
VOID
PairOwn (
  IN     CONST OwnAttribute  *Own,
  IN     UINTN               Entry,
  IN OUT TextPairing         *Pairing
  )
{
  UINTN  Index;
  UINTN  Found;
  UINTN  Place;

  Found = 0;
  Place = 0;
  for (Index = 0; Index < Pairing->TextCount; Index++) {
    if (TextIs (Pairing->Texts[Index], Own->Text, AsciiStrLen (Own->Text), FALSE)) {
      Place = Index;
      Found++;
    }
  }

  if (Found == 1) {
    Pair (Pairing, Entry, Place, Own->HasHelp);
  }
}

/**
  Pairs the setup's attributes.
**/
STATIC
EFI_STATUS
PairSetup (
  IN     AttributeAccessProtocol  *Access,
  IN     CONST AttributeEntry     *Entries,
  IN     UINTN                    First,
  IN     UINTN                    End,
  IN     CONST OwnAttribute       *Last,
  IN OUT TextPairing              *Pairing
  )
{
  StepList    List;
  UINTN       *Places;
  UINTN       Index;
  UINTN       Capacity;
  EFI_STATUS  Status;

  Capacity = 1;
  for (Index = First; Index < End; Index++) {
    Capacity += 1 + Entries[Index].Attribute.PossibleCount;
  }

  ZeroMem (&List, sizeof (List));
  List.NextName = ATTRIBUTE_STORE_FIRST_HANDLE;
  List.Steps    = AllocateZeroPool (Capacity * sizeof (*List.Steps));
  List.Owners   = AllocateZeroPool (Capacity * sizeof (*List.Owners));
  List.Names    = AllocateZeroPool (Capacity * sizeof (*List.Names));
  Places        = AllocateZeroPool (Capacity * sizeof (*Places));
  Status        = EFI_OUT_OF_RESOURCES;
  if ((List.Steps != NULL) && (List.Owners != NULL) && (List.Names != NULL) && (Places != NULL)) {
    Status = EFI_NOT_FOUND;
    if (AddSteps (Access, Entries, First, End, &List)) {
      AddStep (&List, ReplayFixedText, Last->Text, NOBODY);
      Status = ReplayTexts (List.Steps, List.Count, Pairing->Texts, Pairing->TextCount, Places);
    }
  }

  for (Index = 0; !EFI_ERROR (Status) && (Index < List.Count); Index++) {
    if ((List.Owners[Index] != NOBODY) && (Places[Index] != REPLAY_NO_PLACE)) {
      Pair (Pairing, List.Owners[Index], Places[Index], TRUE);
    }
  }

  while (List.NameCount > 0) {
    FreePool (List.Names[--List.NameCount]);
  }

  if (List.Steps != NULL) {
    FreePool (List.Steps);
  }

  if (List.Owners != NULL) {
    FreePool (List.Owners);
  }

  if (List.Names != NULL) {
    FreePool (List.Names);
  }

  if (Places != NULL) {
    FreePool (Places);
  }

  return Status;
}

EFI_STATUS
PairTexts (
  IN  AttributeAccessProtocol  *Access,
  IN  CONST AttributeEntry     *Entries,
  IN  UINTN                    Count,
  OUT TextPairing              *Pairing
  )
{
  CONST OwnAttribute  *Own;
  UINTN               First;
  UINTN               End;
  UINTN               Index;
  EFI_STATUS          Status;

  ZeroMem (Pairing, sizeof (*Pairing));
  Pairing->Paired = AllocateZeroPool ((Count + 1) * sizeof (*Pairing->Paired));
  if (Pairing->Paired == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Status = ReadTexts (Access, Pairing);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  // The placed attributes, the setup's up to the last collection, the driver's own.
  for (First = 0; (First < Count) && (Entries[First].Attribute.Handle < ATTRIBUTE_STORE_FIRST_HANDLE); First++) {
  }

  End = First;
  for (Index = First; Index < Count; Index++) {
    End = (Entries[Index].Attribute.Type == PLDM_BIOS_ATTRIBUTE_COLLECTION) ? Index + 1 : End;
  }

  for (Index = 0; Index < Count; Index++) {
    Own = ((Index < First) || (Index >= End)) ? FindOwn (&Entries[Index]) : NULL;
    if (Own != NULL) {
      PairOwn (Own, Index, Pairing);
    }

    if ((Index == End) && (Own != NULL)) {
      Status = PairSetup (Access, Entries, First, End, Own, Pairing);
    }
  }

  return Status;
}

VOID
FreePairing (
  IN OUT TextPairing  *Pairing
  )
{
  while (Pairing->TextCount > 0) {
    FreePool (Pairing->Texts[--Pairing->TextCount]);
  }

  if (Pairing->Texts != NULL) {
    FreePool (Pairing->Texts);
  }

  if (Pairing->Paired != NULL) {
    FreePool (Pairing->Paired);
  }

  ZeroMem (Pairing, sizeof (*Pairing));
}
