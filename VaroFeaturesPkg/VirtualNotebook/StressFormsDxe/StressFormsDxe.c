/** @file
  StressFormsDxe: a form set made while the notebook starts, of as many questions and as long texts as the scenario item
  "stress" calls for. A notebook that is not under stress has none.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Guid/MdeModuleHii.h>
#include <Library/BaseLib.h>
#include <Library/DebugLib.h>
#include <Library/HiiLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PrintLib.h>
#include <Library/ScenarioLib.h>
#include <Uefi/UefiInternalFormRepresentation.h>
#include "StressForms.h"

#define FIRST_IDENTIFIER  20000
#define TEXT_LIMIT        4095   ///< characters

///
/// What a form set is made of. All lengths are in characters; a text says its number first and is filled up.
///
typedef struct {
  CONST CHAR8    *Name;       ///< of the scenario
  UINT8          Opcode;      ///< of all questions
  UINT16         Questions;
  UINT16         Options;     ///< of each one-of question
  UINT16         Keyword;     ///< length of keywords, those of options included
  UINT16         Display;     ///< length of prompts and options
  UINT16         Help;        ///< length of help texts; 0 = none
  UINT8          Value;       ///< length of the values of strings
  BOOLEAN        CutShort;    ///< the last opcode is shorter than its kind
} StressKind;

//
// The first five fill what the setup leaves free of one table (7680, 3072, 2048, 10240 and 65535 bytes) and more, and
// little of the others: an entry of names takes 4 bytes and one for each character, an attribute 12, or 33 for a number
// and 8 and 2 for each option of a one-of, a value 5 or 11 and its text, a display or help text 4 and two for each
// character. "long-help" fills the help table to its last hundred bytes, so that no single answer of the attribute
// service holds it. "240" leaves, in a notebook without a setup of its own, room for its collection and four attributes
// of the platform.
//
STATIC CONST StressKind  mKinds[] = {
  //                                        questions options keyword display  help  value
  { "strings",      EFI_IFR_ONE_OF_OP,      1,      60,     100,       8,       0,     0,    FALSE },
  { "attributes",   EFI_IFR_NUMERIC_OP,     45,     0,      8,         8,       0,     0,    FALSE },
  { "values",       EFI_IFR_STRING_OP,      8,      0,      8,         8,       0,     240,  FALSE },
  { "display",      EFI_IFR_CHECKBOX_OP,    20,     0,      8,         120,     0,     0,    FALSE },
  { "help",         EFI_IFR_CHECKBOX_OP,    8,      0,      8,         8,       4000,  0,    FALSE },
  { "long-help",    EFI_IFR_CHECKBOX_OP,    8,      0,      8,         8,       3083,  0,    FALSE },
  { "checkboxes",   EFI_IFR_CHECKBOX_OP,    250,    0,      8,         8,       0,     0,    FALSE },
  { "240",          EFI_IFR_CHECKBOX_OP,    235,    0,      8,         8,       40,    0,    FALSE },
  { "bad-form-set", EFI_IFR_CHECKBOX_OP,    3,      0,      8,         8,       0,     0,    TRUE  }
};

extern UINT8  StressFormsBin[];

STATIC EFI_GUID        mFormSetGuid = STRESS_FORM_SET_GUID;
STATIC EFI_HII_HANDLE  mHiiHandle;
STATIC CHAR16          mText[TEXT_LIMIT + 1];

/**
  Makes a text: its number, filled up to its length.
**/
STATIC
CHAR16 *
MakeText (
  IN CHAR16  Kind,    ///< first character
  IN UINTN   Number,
  IN UINTN   Length
  )
{
  UINTN  Index;

  UnicodeSPrint (mText, sizeof (mText), L"%c%04d", Kind, Number);
  for (Index = StrLen (mText); Index < Length; Index++) {
    mText[Index] = L"stress"[Index % 6];
  }

  mText[Length] = L'\0';
  return mText;
}

/**
  Adds a text with its keyword to the strings of the form set.
**/
STATIC
EFI_STRING_ID
AddText (
  IN CONST StressKind  *Kind,
  IN CHAR16            First,
  IN UINTN             Number
  )
{
  EFI_STRING_ID  Text;

  Text = HiiSetString (mHiiHandle, 0, MakeText (First, Number, Kind->Display), NULL);
  return HiiSetString (mHiiHandle, Text, MakeText (First, Number, Kind->Keyword), "x-UEFI");
}

STATIC
VOID
AddQuestion (
  IN VOID              *Opcodes,
  IN CONST StressKind  *Kind,
  IN UINT16            Number,
  IN VOID              *Options
  )
{
  EFI_QUESTION_ID  Identifier;
  EFI_STRING_ID    Prompt;
  EFI_STRING_ID    Help;
  EFI_STRING_ID    Value;
  UINT16           Offset;
  VOID             *Default;

  Identifier = FIRST_IDENTIFIER + Number;
  Prompt     = AddText (Kind, L'Q', Number);
  Help       = (Kind->Help == 0) ? 0 : HiiSetString (mHiiHandle, 0, MakeText (L'H', Number, Kind->Help), NULL);
  Offset     = Number * MAX (1, Kind->Value * sizeof (CHAR16));
  switch (Kind->Opcode) {
    case EFI_IFR_ONE_OF_OP:
      HiiCreateOneOfOpCode (Opcodes, Identifier, STRESS_STORE, Offset, Prompt, Help, 0, 0, Options, NULL);
      break;

    case EFI_IFR_NUMERIC_OP:
      HiiCreateNumericOpCode (Opcodes, Identifier, STRESS_STORE, Offset, Prompt, Help, 0, 0, 0, 255, 1, NULL);
      break;

    case EFI_IFR_STRING_OP:
      Value   = HiiSetString (mHiiHandle, 0, MakeText (L'V', Number, Kind->Value), NULL);
      Default = HiiAllocateOpCodeHandle ();
      HiiCreateDefaultOpCode (Default, EFI_HII_DEFAULT_CLASS_STANDARD, EFI_IFR_TYPE_STRING, Value);
      HiiCreateStringOpCode (
        Opcodes,
        Identifier,
        STRESS_STORE,
        Offset,
        Prompt,
        Help,
        0,
        0,
        0,
        Kind->Value,
        Default
        );
      HiiFreeOpCodeHandle (Default);
      break;

    default:
      HiiCreateCheckBoxOpCode (Opcodes, Identifier, STRESS_STORE, Offset, Prompt, Help, 0, 0, NULL);
      break;
  }
}

/**
  Puts the questions behind the form's label.
**/
STATIC
EFI_STATUS
FillForm (
  IN CONST StressKind  *Kind
  )
{
  STATIC CONST EFI_IFR_OP_HEADER  Short = { EFI_IFR_NUMERIC_OP, sizeof (EFI_IFR_OP_HEADER), 0 };
  EFI_IFR_GUID_LABEL              *Label;
  VOID                            *Opcodes;
  VOID                            *Options;
  UINT16                          Number;
  EFI_STATUS                      Status;

  Opcodes = HiiAllocateOpCodeHandle ();
  Options = HiiAllocateOpCodeHandle ();
  Label   = (EFI_IFR_GUID_LABEL *)HiiCreateGuidOpCode (Opcodes, &gEfiIfrTianoGuid, NULL, sizeof (*Label));

  Label->ExtendOpCode = EFI_IFR_EXTEND_OP_LABEL;
  Label->Number       = STRESS_LABEL;
  for (Number = 0; Number < Kind->Options; Number++) {
    HiiCreateOneOfOptionOpCode (
      Options,
      AddText (Kind, L'O', Number),
      (Number == 0) ? EFI_IFR_OPTION_DEFAULT : 0,
      EFI_IFR_NUMERIC_SIZE_1,
      Number
      );
  }

  for (Number = 0; Number < Kind->Questions; Number++) {
    AddQuestion (Opcodes, Kind, Number, Options);
  }

  if (Kind->CutShort) {
    HiiCreateRawOpCodes (Opcodes, (UINT8 *)&Short, sizeof (Short));
  }

  Status = HiiUpdateForm (mHiiHandle, &mFormSetGuid, STRESS_FORM, Opcodes, NULL);
  HiiFreeOpCodeHandle (Options);
  HiiFreeOpCodeHandle (Opcodes);
  return Status;
}

STATIC
CONST StressKind *
FindKind (
  IN CONST CHAR8  *Name
  )
{
  UINTN  Index;

  for (Index = 0; Index < ARRAY_SIZE (mKinds); Index++) {
    if (AsciiStrCmp (Name, mKinds[Index].Name) == 0) {
      return &mKinds[Index];
    }
  }

  DEBUG ((DEBUG_WARN, "%a: no stress is called \"%a\"\n", gEfiCallerBaseName, Name));
  return NULL;
}

EFI_STATUS
EFIAPI
StressFormsDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  CHAR8             *Name;
  CONST StressKind  *Kind;

  Name = GetScenarioText ("stress");
  if (Name == NULL) {
    return EFI_SUCCESS;
  }

  Kind = FindKind (Name);
  FreePool (Name);
  if (Kind == NULL) {
    return EFI_SUCCESS;
  }

  mHiiHandle = HiiAddPackages (&mFormSetGuid, ImageHandle, StressFormsDxeStrings, StressFormsBin, NULL);
  return (mHiiHandle == NULL) ? EFI_OUT_OF_RESOURCES : FillForm (Kind);
}
