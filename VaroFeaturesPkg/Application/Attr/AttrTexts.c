/** @file
  AttrTexts: display and help text of an attribute, from where this boot has them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Corvane/AttributeRecord.h>
#include <Corvane/OwnAttributes.h>
#include <Guid/GlobalVariable.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/TextOutputLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Library/UefiRuntimeServicesTableLib.h>
#include <Protocol/FormBrowserData.h>
#include <Protocol/HiiString.h>
#include <Protocol/PublishedTables.h>
#include "AttrTexts.h"

//
// The driver uses this language when the platform names none.
//
#define DEFAULT_LANGUAGE   "en-US"
#define LANGUAGE_CAPACITY  64

STATIC CONST OwnAttribute  mOwnAttributes[] = { OWN_ADDED_ATTRIBUTES, OWN_PLACED_ATTRIBUTES };

///
/// The setup question, or the form set, that an attribute was made from.
///
typedef struct {
  UINT32           Token;     ///< of the question; 0 when a form set is sought
  CONST CHAR8      *Title;    ///< of the form set, without blanks
  UINTN            Matches;   ///< the members below are those of the last match
  EFI_HII_HANDLE   Package;
  EFI_STRING_ID    Prompt;
  EFI_STRING_ID    Help;      ///< 0 = none
} TextSource;

/**
  Finds the attribute among the driver's own. They are at the fixed handles and after the last form set's collection;
  elsewhere, a setup question may have the same name.
**/
STATIC
CONST OwnAttribute *
FindOwn (
  IN CONST AttributeEntry  *Entry,
  IN CONST AttributeEntry  *Entries,
  IN UINTN                 Count
  )
{
  UINTN  Index;

  if (Entry->Attribute.Handle >= ATTRIBUTE_STORE_FIRST_HANDLE) {
    for (Index = 0; Index < Count; Index++) {
      if ((Entries[Index].Attribute.Type == PLDM_BIOS_ATTRIBUTE_COLLECTION) &&
          (Entries[Index].Attribute.Handle >= Entry->Attribute.Handle))
      {
        return NULL;
      }
    }
  }

  for (Index = 0; Index < ARRAY_SIZE (mOwnAttributes); Index++) {
    if (AsciiStrCmp (mOwnAttributes[Index].Name, Entry->Name) == 0) {
      return &mOwnAttributes[Index];
    }
  }

  return NULL;
}

/**
  Compares a text with a name of the string table. The table has the low byte of each character, and no character whose
  bit 7 is set.

  @param[in]  Skipped  This character of the text is not in the name either.
**/
STATIC
BOOLEAN
TextIsName (
  IN CONST CHAR16  *Text,
  IN CHAR16        Skipped,
  IN CONST CHAR8   *Name
  )
{
  for ( ; *Text != L'\0'; Text++) {
    if ((*Text == Skipped) || ((*Text & 0x80) != 0)) {
      continue;
    }

    if ((UINT8)*Text != (UINT8)*Name++) {
      return FALSE;
    }
  }

  return (BOOLEAN)(*Name == '\0');
}

/**
  Finds the record of an attribute in the published store.

  @return  NULL when there is no store, or when its record is not that of the service's attribute.
**/
STATIC
CONST AttributeRecord *
FindRecord (
  IN CONST AttributeEntry  *Entry
  )
{
  PublishedTablesInterface  *Tables;
  CONST AttributeRecord     *Record;
  CONST CHAR16              *Name;
  UINT16                    Handle;

  Handle = Entry->Attribute.Handle;
  if (EFI_ERROR (gBS->LocateProtocol (&gVaroPublishedTablesProtocolGuid, NULL, (VOID **)&Tables)) ||
      (Tables->Store == NULL) || (Handle >= ATTRIBUTE_STORE_HANDLE_LIMIT))
  {
    return NULL;
  }

  Record = Tables->Store->Slots[ATTRIBUTE_STORE_ATTRIBUTES + Handle];
  if ((Record == NULL) || (Record->NameHandle < ATTRIBUTE_STORE_FIRST_HANDLE) ||
      (Record->NameHandle >= ATTRIBUTE_STORE_STRING_LIMIT))
  {
    return NULL;
  }

  Name = Tables->Store->Slots[ATTRIBUTE_STORE_NAMES + Record->NameHandle];
  return ((Name != NULL) && TextIsName (Name, L'\0', Entry->Name)) ? Record : NULL;
}

/**
  Reads a text in the platform's language.

  @return  The text, which the caller frees; NULL when there is none.
**/
STATIC
CHAR16 *
ReadHiiText (
  IN EFI_HII_HANDLE  Package,
  IN EFI_STRING_ID   Id
  )
{
  EFI_HII_STRING_PROTOCOL  *Strings;
  CHAR8                    Language[LANGUAGE_CAPACITY];
  CHAR16                   *Text;
  UINTN                    Size;

  if ((Id == 0) || EFI_ERROR (gBS->LocateProtocol (&gEfiHiiStringProtocolGuid, NULL, (VOID **)&Strings))) {
    return NULL;
  }

  ZeroMem (Language, sizeof (Language));
  Size = sizeof (Language) - 1;
  if (EFI_ERROR (gRT->GetVariable (EFI_PLATFORM_LANG_VARIABLE_NAME, &gEfiGlobalVariableGuid, NULL, &Size, Language))) {
    AsciiStrCpyS (Language, sizeof (Language), DEFAULT_LANGUAGE);
  }

  Size = 0;
  if (Strings->GetString (Strings, Language, Package, Id, NULL, &Size, NULL) != EFI_BUFFER_TOO_SMALL) {
    return NULL;
  }

  Text = AllocateZeroPool (Size + sizeof (CHAR16));
  if ((Text != NULL) && EFI_ERROR (Strings->GetString (Strings, Language, Package, Id, Text, &Size, NULL))) {
    FreePool (Text);
    Text = NULL;
  }

  return Text;
}

/**
  Compares a form set, or its questions, with what is sought.
**/
STATIC
VOID
SearchFormSet (
  IN     FormBrowserDataProtocol  *Browser,
  IN     CONST FormSetRecord      *FormSet,
  IN OUT TextSource               *Source
  )
{
  QuestionRecord  *Questions;
  QuestionRecord  *Question;
  CHAR16          *Title;

  if (Source->Token == 0) {
    Title = ReadHiiText (FormSet->HiiHandle, FormSet->Title);
    if ((Title != NULL) && TextIsName (Title, L' ', Source->Title)) {
      Source->Package = FormSet->HiiHandle;
      Source->Prompt  = FormSet->Title;
      Source->Matches++;
    }

    if (Title != NULL) {
      FreePool (Title);
    }
  } else if (!EFI_ERROR (Browser->ParseFormSet (Browser, FormSet, &Questions))) {
    for (Question = Questions; Question != NULL; Question = Question->Next) {
      if ((Question->Ifr != NULL) && (Question->Identifier == Source->Token)) {
        Source->Package = Question->HiiHandle;
        Source->Prompt  = Question->Prompt;
        Source->Help    = Question->Help;
        Source->Matches++;
      }
    }

    Browser->ReleaseQuestions (Browser, Questions);
  }
}

/**
  Searches the form sets that the driver makes attributes from.
**/
STATIC
VOID
SearchForms (
  IN OUT TextSource  *Source
  )
{
  FormBrowserDataProtocol  *Browser;
  CONST FormSetRecord      **FormSets;
  UINTN                    Index;

  if (EFI_ERROR (gBS->LocateProtocol (&gVaroFormBrowserDataProtocolGuid, NULL, (VOID **)&Browser)) ||
      EFI_ERROR (Browser->ListFormSets (Browser, &gVaroSetupFormSetsGuid, &FormSets)) || (FormSets == NULL))
  {
    return;
  }

  for (Index = 0; FormSets[Index] != NULL; Index++) {
    if (!CompareGuid (&FormSets[Index]->Guid, &gVaroSetupFormSetsGuid) &&
        !CompareGuid (&FormSets[Index]->Guid, &gVaroSetupHiddenFormSetGuid))
    {
      SearchFormSet (Browser, FormSets[Index], Source);
    }
  }

  FreePool (FormSets);
}

/**
  Prints a text of the HII database, unless it is empty or missing.
**/
STATIC
VOID
PutHiiText (
  IN CONST CHAR8     *Label,
  IN EFI_HII_HANDLE  Package,
  IN EFI_STRING_ID   Id
  )
{
  CHAR16  *Text;

  Text = ReadHiiText (Package, Id);
  if (Text == NULL) {
    return;
  }

  if (*Text != L'\0') {
    PutText (Label);
    PutWideText (Text);
    PutText ("\n");
  }

  FreePool (Text);
}

VOID
PutTexts (
  IN CONST AttributeEntry  *Entry,
  IN CONST AttributeEntry  *Entries,
  IN UINTN                 Count
  )
{
  CONST OwnAttribute     *Own;
  CONST AttributeRecord  *Record;
  TextSource             Source;

  Own = FindOwn (Entry, Entries, Count);
  if (Own != NULL) {
    PutFormat ("Display:  %a\n", Own->DisplayText);
    if (Own->Token == OWN_CHARGE_POWER_LIMIT_TOKEN) {
      PutText ("Help:     " OWN_CHARGE_POWER_LIMIT_HELP "\n");
    }

    return;
  }

  Record = FindRecord (Entry);
  if (Record == NULL) {
    return;
  }

  ZeroMem (&Source, sizeof (Source));
  Source.Title = Entry->Name;
  Source.Token = Record->Token;
  if ((Source.Token != 0) || (Entry->Attribute.Type == PLDM_BIOS_ATTRIBUTE_COLLECTION)) {
    SearchForms (&Source);
  }

  if (Source.Matches == 1) {
    PutHiiText ("Display:  ", Source.Package, Source.Prompt);
    PutHiiText ("Help:     ", Source.Package, Source.Help);
  }
}
