/** @file
  FormModel: one form set read out of its IFR: its questions with their options, defaults and current values.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Guid/MdeModuleHii.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/HiiLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/UefiHiiServicesLib.h>
#include <Library/UefiRuntimeServicesTableLib.h>
#include "FormModel.h"
#include "IfrReader.h"

#define SCOPE_DEPTH    32
#define OPTION_GROWTH  8

//
// The two walks over a form set's IFR. Conditions may name questions that come later, so values are there first.
//
typedef enum {
  CollectQuestions,   ///< variables and heads of questions
  CompleteQuestions   ///< eligibility, options, defaults
} WalkPurpose;

///
/// What an opcode inside a scope inherits.
///
typedef struct {
  BOOLEAN         Hidden;     ///< by a condition further out
  BOOLEAN         BitFields;  ///< offsets and widths of the questions inside count bits
  FormQuestion    *Question;  ///< that the scope belongs to; NULL = none
} Scope;

typedef struct {
  FormModel       *Model;
  WalkPurpose     Purpose;
  IfrReader       Reader;
  FormQuestion    *Upcoming;   ///< CompleteQuestions: the question that the next question opcode stands for
  UINTN           Depth;
  Scope           Scopes[SCOPE_DEPTH];
  EFI_STATUS      Status;
} Walk;

STATIC
UINT64
ReadLittleEndian (
  IN CONST UINT8  *Bytes,
  IN UINTN        Width
  )
{
  UINT64  Value;
  UINTN   Index;

  for (Value = 0, Index = 0; Index < Width; Index++) {
    Value |= LShiftU64 (Bytes[Index], 8 * Index);
  }

  return Value;
}

EFI_STATUS
ExportPackageList (
  IN  EFI_HII_HANDLE               HiiHandle,
  OUT EFI_HII_PACKAGE_LIST_HEADER  **PackageList,
  OUT UINTN                        *Size
  )
{
  EFI_STATUS  Status;

  *PackageList = NULL;
  *Size        = 0;
  Status       = gHiiDatabase->ExportPackageLists (gHiiDatabase, HiiHandle, Size, NULL);
  if (Status != EFI_BUFFER_TOO_SMALL) {
    return EFI_ERROR (Status) ? Status : EFI_NOT_FOUND;
  }

  *PackageList = AllocatePool (*Size);
  if (*PackageList == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Status = gHiiDatabase->ExportPackageLists (gHiiDatabase, HiiHandle, Size, *PackageList);
  if (EFI_ERROR (Status)) {
    FreePool (*PackageList);
    *PackageList = NULL;
  }

  return Status;
}

/**
  Tells whether an opcode is a form set's head that lies within its length, class GUIDs included.
**/
STATIC
BOOLEAN
IsFormSet (
  IN CONST EFI_IFR_OP_HEADER  *Opcode
  )
{
  return (BOOLEAN)((Opcode->OpCode == EFI_IFR_FORM_SET_OP) && Opcode->Scope &&
                   (Opcode->Length >= sizeof (EFI_IFR_FORM_SET)) &&
                   ((Opcode->Length - sizeof (EFI_IFR_FORM_SET)) / sizeof (EFI_GUID) >=
                    (((CONST EFI_IFR_FORM_SET *)Opcode)->Flags & 0x3U)));
}

CONST EFI_IFR_FORM_SET *
NextFormSet (
  IN     CONST EFI_HII_PACKAGE_LIST_HEADER  *PackageList,
  IN     UINTN                              Size,
  IN OUT UINTN                              *Position,
  OUT    UINTN                              *Length
  )
{
  EFI_HII_PACKAGE_HEADER   Package;
  CONST UINT8              *Start;
  IfrReader                Reader;
  CONST EFI_IFR_OP_HEADER  *Opcode;
  UINTN                    Offset;

  //
  // Packages from the first on; Position is an offset into the list that may lie within a form package.
  //
  for (Offset = sizeof (*PackageList); Offset < Size; Offset += Package.Length) {
    Start = (CONST UINT8 *)PackageList + Offset;
    if (Size - Offset < sizeof (Package)) {
      return NULL;
    }

    CopyMem (&Package, Start, sizeof (Package));
    if ((Package.Length < sizeof (Package)) || (Package.Length > Size - Offset)) {
      return NULL;
    }

    if ((Package.Type != EFI_HII_PACKAGE_FORMS) || (*Position >= Offset + Package.Length)) {
      continue;
    }

    Reader.Next   = Start + MAX (sizeof (Package), (*Position > Offset) ? *Position - Offset : 0);
    Reader.Left   = Package.Length - (UINTN)(Reader.Next - Start);
    Reader.Broken = FALSE;
    while ((Opcode = NextOpcode (&Reader)) != NULL) {
      if (IsFormSet (Opcode)) {
        *Length   = Reader.Left + Opcode->Length;
        *Position = Offset + (UINTN)(Reader.Next - Start);
        return (CONST EFI_IFR_FORM_SET *)Opcode;
      }
    }
  }

  *Position = Size;
  return NULL;
}

BOOLEAN
FormSetHasClass (
  IN CONST EFI_IFR_FORM_SET  *FormSet,
  IN CONST EFI_GUID          *Class
  )
{
  CONST EFI_GUID  *Classes;
  UINTN           Index;

  Classes = (CONST EFI_GUID *)(FormSet + 1);
  for (Index = 0; Index < (FormSet->Flags & 0x3U); Index++) {
    if (CompareGuid (&Classes[Index], Class)) {
      return TRUE;
    }
  }

  return FALSE;
}

FormQuestion *
FindFormQuestion (
  IN CONST FormModel  *Model,
  IN EFI_QUESTION_ID  Identifier
  )
{
  FormQuestion  *Question;

  for (Question = Model->First; Question != NULL; Question = (FormQuestion *)Question->Record.Next) {
    if (Question->Record.Identifier == Identifier) {
      return Question;
    }
  }

  return NULL;
}

/**
  Gives the place of a question's value in the current content of its variable, when all of it is there.
**/
STATIC
CONST UINT8 *
CurrentBytes (
  IN CONST FormQuestion  *Question,
  IN UINTN               Width
  )
{
  CONST FormStore  *Store;

  Store = Question->Store;
  if ((Store == NULL) || (Store->Data == NULL) || (Question->Offset > Store->Size) ||
      (Store->Size - Question->Offset < Width))
  {
    return NULL;
  }

  return Store->Data + Question->Offset;
}

BOOLEAN
CurrentNumber (
  IN  CONST FormQuestion  *Question,
  OUT UINT64              *Value
  )
{
  CONST UINT8  *Bytes;

  Bytes = (Question->ValueWidth == 0) ? NULL : CurrentBytes (Question, Question->ValueWidth);
  if (Bytes == NULL) {
    return FALSE;
  }

  *Value = ReadLittleEndian (Bytes, Question->ValueWidth);
  return TRUE;
}

/**
  Gives a string question's current text in ASCII; what is not ASCII becomes a question mark.
**/
STATIC
CHAR8 *
CurrentText (
  IN CONST FormQuestion  *Question
  )
{
  CONST UINT8  *Bytes;
  CHAR8        *Text;
  UINT16       Unit;
  UINTN        Index;

  Text = AllocateZeroPool ((UINTN)Question->Record.Maximum + 1);
  if (Text == NULL) {
    return NULL;
  }

  Bytes = CurrentBytes (Question, Question->Record.ValueSize);
  for (Index = 0; (Bytes != NULL) && (Index < Question->Record.Maximum); Index++) {
    Unit = ReadUnaligned16 ((CONST UINT16 *)Bytes + Index);
    if (Unit == 0) {
      break;
    }

    Text[Index] = ((Unit >= 0x20) && (Unit < 0x7F)) ? (CHAR8)Unit : '?';
  }

  return Text;
}

/**
  Adds an EFI variable store and reads its variable.
**/
STATIC
EFI_STATUS
AddStore (
  IN OUT FormModel                   *Model,
  IN     CONST EFI_IFR_VARSTORE_EFI  *Opcode
  )
{
  FormStore   *Store;
  UINTN       NameRoom;
  UINTN       Size;
  EFI_STATUS  Status;

  //
  // A declaration without size and name, from before UEFI 2.3.1, says too little to be used.
  //
  if (Opcode->Header.Length <= OFFSET_OF (EFI_IFR_VARSTORE_EFI, Name)) {
    return EFI_SUCCESS;
  }

  NameRoom = Opcode->Header.Length - OFFSET_OF (EFI_IFR_VARSTORE_EFI, Name);
  if (AsciiStrnLenS ((CONST CHAR8 *)Opcode->Name, NameRoom) == NameRoom) {
    return EFI_COMPROMISED_DATA;
  }

  Store = AllocateZeroPool (sizeof (*Store));
  if (Store == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Store->Next       = Model->Stores;
  Model->Stores     = Store;
  Store->Id         = Opcode->VarStoreId;
  Store->Attributes = Opcode->Attributes;
  Store->Size       = Opcode->Size;
  Store->Name       = AllocatePool (NameRoom * sizeof (CHAR16));
  Store->Data       = AllocateZeroPool (Store->Size);
  CopyGuid (&Store->Vendor, &Opcode->Guid);
  if ((Store->Name == NULL) || (Store->Data == NULL)) {
    return EFI_OUT_OF_RESOURCES;
  }

  AsciiStrToUnicodeStrS ((CONST CHAR8 *)Opcode->Name, Store->Name, NameRoom);
  Size   = Store->Size;
  Status = gRT->GetVariable (Store->Name, &Store->Vendor, NULL, &Size, Store->Data);
  if (EFI_ERROR (Status)) {
    FreePool (Store->Data);
    Store->Data = NULL;
  }

  return EFI_SUCCESS;
}

/**
  Takes the bounds that follow the flags of a numeric or one-of question, in the width that the flags tell.

  @retval FALSE  The opcode is too short for them.
**/
STATIC
BOOLEAN
ReadBounds (
  IN OUT FormQuestion          *Question,
  IN     CONST EFI_IFR_NUMERIC *Opcode
  )
{
  CONST UINT8  *Data;
  UINTN        Width;

  if (Opcode->Header.Length < OFFSET_OF (EFI_IFR_NUMERIC, data)) {
    return FALSE;
  }

  Width = (UINTN)1 << (Opcode->Flags & EFI_IFR_NUMERIC_SIZE);
  if (Opcode->Header.Length < OFFSET_OF (EFI_IFR_NUMERIC, data) + 3 * Width) {
    return FALSE;
  }

  Data                       = (CONST UINT8 *)&Opcode->data;
  Question->ValueWidth       = (UINT8)Width;
  Question->Record.ValueSize = (UINT16)Width;
  Question->Record.Minimum   = ReadLittleEndian (Data, Width);
  Question->Record.Maximum   = ReadLittleEndian (Data + Width, Width);
  Question->Record.Step      = ReadLittleEndian (Data + 2 * Width, Width);
  return TRUE;
}

/**
  Takes what is particular to a kind of question.

  @retval FALSE  The opcode is too short for its kind.
**/
STATIC
BOOLEAN
ReadKind (
  IN OUT FormQuestion             *Question,
  IN     CONST EFI_IFR_OP_HEADER  *Opcode
  )
{
  CONST EFI_IFR_STRING        *String;
  CONST EFI_IFR_CHECKBOX      *Checkbox;
  CONST EFI_IFR_PASSWORD      *Password;
  CONST EFI_IFR_ORDERED_LIST  *List;

  switch (Opcode->OpCode) {
    case EFI_IFR_ONE_OF_OP:
    case EFI_IFR_NUMERIC_OP:
      return ReadBounds (Question, (CONST EFI_IFR_NUMERIC *)Opcode);

    case EFI_IFR_CHECKBOX_OP:
      Checkbox = (CONST EFI_IFR_CHECKBOX *)Opcode;
      if (Opcode->Length < sizeof (*Checkbox)) {
        return FALSE;
      }

      Question->ValueWidth       = sizeof (BOOLEAN);
      Question->Record.ValueSize = sizeof (BOOLEAN);
      Question->HasDefault       = TRUE;
      Question->Default          = ((Checkbox->Flags & EFI_IFR_CHECKBOX_DEFAULT) != 0) ? 1 : 0;
      return TRUE;

    case EFI_IFR_STRING_OP:
      String = (CONST EFI_IFR_STRING *)Opcode;
      if (Opcode->Length < sizeof (*String)) {
        return FALSE;
      }

      Question->Record.Minimum   = String->MinSize;
      Question->Record.Maximum   = String->MaxSize;
      Question->Record.ValueSize = (UINT16)(String->MaxSize * sizeof (CHAR16));
      return TRUE;

    case EFI_IFR_PASSWORD_OP:
      Password = (CONST EFI_IFR_PASSWORD *)Opcode;
      if (Opcode->Length < sizeof (*Password)) {
        return FALSE;
      }

      Question->Record.Minimum = Password->MinSize;
      Question->Record.Maximum = Password->MaxSize;
      return TRUE;

    case EFI_IFR_ORDERED_LIST_OP:
      List = (CONST EFI_IFR_ORDERED_LIST *)Opcode;
      if (Opcode->Length < sizeof (*List)) {
        return FALSE;
      }

      Question->Record.Maximum = List->MaxContainers;
      return TRUE;

    default:
      return TRUE;   // dates, times, buttons, links: recorded with their opcode
  }
}

STATIC
BOOLEAN
IsQuestion (
  IN UINT8  Opcode
  )
{
  switch (Opcode) {
    case EFI_IFR_ONE_OF_OP:
    case EFI_IFR_CHECKBOX_OP:
    case EFI_IFR_NUMERIC_OP:
    case EFI_IFR_STRING_OP:
    case EFI_IFR_PASSWORD_OP:
    case EFI_IFR_ORDERED_LIST_OP:
    case EFI_IFR_DATE_OP:
    case EFI_IFR_TIME_OP:
    case EFI_IFR_ACTION_OP:
    case EFI_IFR_REF_OP:
    case EFI_IFR_RESET_BUTTON_OP:
      return TRUE;
    default:
      return FALSE;
  }
}

/**
  Adds a question at the end of the list.

  @param[in]  BitField  The question's offset and width count bits.
**/
STATIC
EFI_STATUS
AddQuestion (
  IN OUT FormModel                *Model,
  IN     CONST EFI_IFR_OP_HEADER  *Opcode,
  IN     BOOLEAN                  BitField
  )
{
  CONST EFI_IFR_QUESTION_HEADER  *Head;
  FormQuestion                   *Question;
  CONST FormStore                *Store;

  Question = AllocateZeroPool (sizeof (*Question));
  if (Question == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  if (Model->Last == NULL) {
    Model->First = Question;
  } else {
    Model->Last->Record.Next = &Question->Record;
  }

  Model->Last             = Question;
  Question->Model         = Model;
  Question->Record.Ifr    = Opcode;
  Question->Record.Opcode = Opcode->OpCode;

  //
  // A reset button has the head of a statement, and no identifier.
  //
  if (Opcode->Length < sizeof (*Opcode) + sizeof (EFI_IFR_STATEMENT_HEADER)) {
    return EFI_COMPROMISED_DATA;
  }

  Head                    = (CONST EFI_IFR_QUESTION_HEADER *)(Opcode + 1);
  Question->Record.Prompt = Head->Header.Prompt;
  Question->Record.Help   = Head->Header.Help;
  if (Opcode->OpCode == EFI_IFR_RESET_BUTTON_OP) {
    return EFI_SUCCESS;
  }

  if (Opcode->Length < sizeof (*Opcode) + sizeof (*Head)) {
    return EFI_COMPROMISED_DATA;
  }

  Question->Record.Identifier = Head->QuestionId;
  if (BitField) {
    Question->Unreadable = "its value is a bit field";
    return EFI_SUCCESS;
  }

  if (!ReadKind (Question, Opcode)) {
    return EFI_COMPROMISED_DATA;
  }

  Question->Offset = Head->VarStoreInfo.VarOffset;
  for (Store = Model->Stores; (Store != NULL) && (Head->VarStoreId != 0); Store = Store->Next) {
    if (Store->Id == Head->VarStoreId) {
      Question->Store = Store;
      break;
    }
  }

  if ((Question->Store == NULL) && (Head->VarStoreId != 0)) {
    Question->Unreadable = "its store is no EFI variable";
    return EFI_SUCCESS;
  }

  if (!CurrentNumber (Question, &Question->Record.CurrentValue) && (Opcode->OpCode == EFI_IFR_STRING_OP)) {
    Question->Record.CurrentString = CurrentText (Question);
    if (Question->Record.CurrentString == NULL) {
      return EFI_OUT_OF_RESOURCES;
    }
  }

  return EFI_SUCCESS;
}

/**
  Gives the bytes of a number of an IFR type; 0 for other types.
**/
STATIC
UINTN
TypeWidth (
  IN UINT8  Type
  )
{
  switch (Type) {
    case EFI_IFR_TYPE_NUM_SIZE_8:
    case EFI_IFR_TYPE_BOOLEAN:
      return sizeof (UINT8);
    case EFI_IFR_TYPE_NUM_SIZE_16:
    case EFI_IFR_TYPE_STRING:
      return sizeof (UINT16);
    case EFI_IFR_TYPE_NUM_SIZE_32:
      return sizeof (UINT32);
    case EFI_IFR_TYPE_NUM_SIZE_64:
      return sizeof (UINT64);
    default:
      return 0;
  }
}

/**
  Adds an option to a one-of question.
**/
STATIC
EFI_STATUS
AddOption (
  IN OUT FormQuestion                 *Question,
  IN     CONST EFI_IFR_ONE_OF_OPTION  *Opcode
  )
{
  QuestionOption  *Options;
  UINTN           Width;

  if (Opcode->Header.Length < OFFSET_OF (EFI_IFR_ONE_OF_OPTION, Value)) {
    return EFI_COMPROMISED_DATA;
  }

  Width = TypeWidth (Opcode->Type);
  if ((Width == 0) || (Opcode->Header.Length < OFFSET_OF (EFI_IFR_ONE_OF_OPTION, Value) + Width)) {
    return EFI_COMPROMISED_DATA;
  }

  Options = (QuestionOption *)Question->Record.Options;
  if (Question->Record.OptionCount == Question->OptionRoom) {
    Options = ReallocatePool (
                Question->OptionRoom * sizeof (*Options),
                (Question->OptionRoom + OPTION_GROWTH) * sizeof (*Options),
                Options
                );
    if (Options == NULL) {
      return EFI_OUT_OF_RESOURCES;
    }

    Question->OptionRoom    += OPTION_GROWTH;
    Question->Record.Options = Options;
  }

  Options               += Question->Record.OptionCount;
  Options->Text          = Opcode->Option;
  Options->Value         = ReadLittleEndian ((CONST UINT8 *)&Opcode->Value, Width);
  Question->Record.OptionCount++;
  if ((Opcode->Flags & EFI_IFR_OPTION_DEFAULT) != 0) {
    Question->HasDefault = TRUE;
    Question->Default    = Options->Value;
  }

  return EFI_SUCCESS;
}

/**
  Takes the standard default of a question; those of other classes do not count.
**/
STATIC
EFI_STATUS
AddDefault (
  IN OUT FormQuestion          *Question,
  IN     CONST EFI_IFR_DEFAULT *Opcode
  )
{
  UINTN   Width;
  UINT64  Value;

  if (Opcode->Header.Length < OFFSET_OF (EFI_IFR_DEFAULT, Value)) {
    return EFI_COMPROMISED_DATA;
  }

  Width = TypeWidth (Opcode->Type);
  if ((Opcode->DefaultId != EFI_HII_DEFAULT_CLASS_STANDARD) || (Width == 0)) {
    return EFI_SUCCESS;
  }

  if (Opcode->Header.Length < OFFSET_OF (EFI_IFR_DEFAULT, Value) + Width) {
    return EFI_COMPROMISED_DATA;
  }

  Value = ReadLittleEndian ((CONST UINT8 *)&Opcode->Value, Width);
  if (Opcode->Type == EFI_IFR_TYPE_STRING) {
    Question->DefaultText = (EFI_STRING_ID)Value;
  } else {
    Question->HasDefault = TRUE;
    Question->Default    = Value;
  }

  return EFI_SUCCESS;
}

/**
  Takes one opcode of the form set other than an end.

  @param[in,out]  Walk    Its innermost scope is where the opcode stands.
  @param[in]      Opcode  The opcode.
  @param[out]     Inner   The scope that the opcode opens, if it opens one.

  @return  FALSE: the scope that the opcode opens is read already.
**/
STATIC
BOOLEAN
TakeOpcode (
  IN OUT Walk                     *Walk,
  IN     CONST EFI_IFR_OP_HEADER  *Opcode,
  OUT    Scope                    *Inner
  )
{
  BOOLEAN  Met;

  *Inner = Walk->Scopes[Walk->Depth - 1];
  if (IsQuestion (Opcode->OpCode)) {
    if (Walk->Purpose == CollectQuestions) {
      Walk->Status = AddQuestion (Walk->Model, Opcode, Inner->BitFields);
    } else {
      Inner->Question = Walk->Upcoming;
      if (Inner->Hidden) {
        Inner->Question->Unreadable = NULL;
      } else if (Inner->Question->Unreadable == NULL) {
        Inner->Question->Record.Eligible = 1;
      }

      Walk->Upcoming = (FormQuestion *)Walk->Upcoming->Record.Next;
    }

    return TRUE;
  }

  switch (Opcode->OpCode) {
    case EFI_IFR_VARSTORE_EFI_OP:
      if ((Walk->Purpose == CollectQuestions) && (Opcode->Length >= OFFSET_OF (EFI_IFR_VARSTORE_EFI, Size))) {
        Walk->Status = AddStore (Walk->Model, (CONST EFI_IFR_VARSTORE_EFI *)Opcode);
      }

      return TRUE;

    case EFI_IFR_GUID_OP:
      if ((Opcode->Length >= sizeof (EFI_IFR_GUID)) &&
          CompareGuid (&((CONST EFI_IFR_GUID *)Opcode)->Guid, &gEdkiiIfrBitVarstoreGuid))
      {
        Inner->BitFields = TRUE;
      }

      return TRUE;

    case EFI_IFR_SUPPRESS_IF_OP:
    case EFI_IFR_DISABLE_IF_OP:
      Met            = ConditionIsMet (&Walk->Reader, Walk->Model);
      Inner->Hidden |= Met;
      return TRUE;

    case EFI_IFR_GRAY_OUT_IF_OP:
      ConditionIsMet (&Walk->Reader, Walk->Model);   // grey questions are seen in the setup, so here too
      return TRUE;

    case EFI_IFR_ONE_OF_OPTION_OP:
      if ((Inner->Question != NULL) && (Inner->Question->Record.Opcode == EFI_IFR_ONE_OF_OP) && !Inner->Hidden) {
        Walk->Status = AddOption (Inner->Question, (CONST EFI_IFR_ONE_OF_OPTION *)Opcode);
      }

      return TRUE;

    case EFI_IFR_DEFAULT_OP:
      if (Inner->Question != NULL) {
        Walk->Status = AddDefault (Inner->Question, (CONST EFI_IFR_DEFAULT *)Opcode);
      }

      if (Opcode->Scope) {
        SkipScope (&Walk->Reader);   // a default to be computed
      }

      return FALSE;

    case EFI_IFR_NO_SUBMIT_IF_OP:
    case EFI_IFR_INCONSISTENT_IF_OP:
    case EFI_IFR_WARNING_IF_OP:
    case EFI_IFR_RULE_OP:
    case EFI_IFR_VALUE_OP:
    case EFI_IFR_READ_OP:
    case EFI_IFR_WRITE_OP:
      if (Opcode->Scope) {
        SkipScope (&Walk->Reader);
      }

      return FALSE;

    default:
      return TRUE;   // forms, texts, images and vendors' opcodes: looked through
  }
}

/**
  Walks over one form set, from behind its head to the end of its scope.
**/
STATIC
EFI_STATUS
WalkFormSet (
  IN OUT FormModel               *Model,
  IN     CONST EFI_IFR_FORM_SET  *FormSet,
  IN     UINTN                   Length,
  IN     WalkPurpose             Purpose
  )
{
  Walk                     Walk;
  CONST EFI_IFR_OP_HEADER  *Opcode;
  Scope                    Inner;
  BOOLEAN                  Enter;

  ZeroMem (&Walk, sizeof (Walk));
  Walk.Model       = Model;
  Walk.Purpose     = Purpose;
  Walk.Upcoming    = Model->First;
  Walk.Depth       = 1;   // the form set's own scope
  Walk.Reader.Next = (CONST UINT8 *)FormSet + FormSet->Header.Length;
  Walk.Reader.Left = Length - FormSet->Header.Length;
  while (Walk.Depth > 0) {
    Opcode = NextOpcode (&Walk.Reader);
    if (Opcode == NULL) {
      return EFI_COMPROMISED_DATA;   // cut short within the form set
    }

    if (Opcode->OpCode == EFI_IFR_END_OP) {
      Walk.Depth--;
      continue;
    }

    Enter = TakeOpcode (&Walk, Opcode, &Inner);
    if (EFI_ERROR (Walk.Status)) {
      return Walk.Status;
    }

    if (Walk.Reader.Broken) {
      return EFI_COMPROMISED_DATA;
    }

    if (Enter && Opcode->Scope) {
      if (Walk.Depth == SCOPE_DEPTH) {
        return EFI_COMPROMISED_DATA;
      }

      Walk.Scopes[Walk.Depth] = Inner;
      Walk.Depth++;
    }
  }

  return EFI_SUCCESS;
}

EFI_STATUS
ReadFormModel (
  IN  CONST FormSetRecord  *FormSet,
  OUT FormModel            **Model
  )
{
  EFI_HII_PACKAGE_LIST_HEADER  *PackageList;
  CONST EFI_IFR_FORM_SET       *Head;
  QuestionRecord               *Record;
  UINTN                        Size;
  UINTN                        Position;
  UINTN                        Length;
  EFI_STATUS                   Status;

  *Model = NULL;
  Status = ExportPackageList (FormSet->HiiHandle, &PackageList, &Size);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  *Model = AllocateZeroPool (sizeof (**Model));
  if (*Model == NULL) {
    FreePool (PackageList);
    return EFI_OUT_OF_RESOURCES;
  }

  (*Model)->PackageList = PackageList;
  Position              = 0;
  do {
    Head = NextFormSet (PackageList, Size, &Position, &Length);
  } while ((Head != NULL) && !CompareGuid (&Head->Guid, &FormSet->Guid));

  Status = EFI_NOT_FOUND;
  if (Head != NULL) {
    Status = WalkFormSet (*Model, Head, Length, CollectQuestions);
  }

  if (!EFI_ERROR (Status)) {
    Status = WalkFormSet (*Model, Head, Length, CompleteQuestions);
  }

  if (EFI_ERROR (Status)) {
    FreeFormModel (*Model);
    *Model = NULL;
    return Status;
  }

  if ((*Model)->First != NULL) {
    for (Record = &(*Model)->First->Record; Record != NULL; Record = Record->Next) {
      Record->HiiHandle = FormSet->HiiHandle;
    }
  }

  return EFI_SUCCESS;
}

STATIC
VOID
FreeIfAny (
  IN CONST VOID  *Block
  )
{
  if (Block != NULL) {
    FreePool ((VOID *)Block);
  }
}

VOID
FreeFormModel (
  IN FormModel  *Model
  )
{
  FormQuestion  *Question;
  FormStore     *Store;

  while ((Question = Model->First) != NULL) {
    Model->First = (FormQuestion *)Question->Record.Next;
    FreeIfAny (Question->Record.CurrentString);
    FreeIfAny (Question->Record.Options);
    FreePool (Question);
  }

  while ((Store = Model->Stores) != NULL) {
    Model->Stores = Store->Next;
    FreeIfAny (Store->Name);
    FreeIfAny (Store->Data);
    FreePool (Store);
  }

  FreePool (Model->PackageList);
  FreePool (Model);
}
