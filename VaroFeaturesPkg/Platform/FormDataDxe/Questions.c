/** @file
  Questions: takes a question's head, options and default out of its IFR opcodes, and reads and writes its value.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Guid/MdeModuleHii.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/HiiLib.h>
#include <Library/MemoryAllocationLib.h>
#include "Questions.h"

#define OPTION_GROWTH  8

//
// A bit field lies in a UINT32 of the store's structure, and touches one byte more when it does not begin with one.
//
#define BIT_FIELD_BITS   32
#define BIT_FIELD_BYTES  5

BOOLEAN
IsAttributeKind (
  IN UINT8  Opcode
  )
{
  return (BOOLEAN)((Opcode == EFI_IFR_ONE_OF_OP) || (Opcode == EFI_IFR_CHECKBOX_OP) ||
                   (Opcode == EFI_IFR_NUMERIC_OP) || (Opcode == EFI_IFR_STRING_OP));
}

BOOLEAN
IsQuestion (
  IN UINT8  Opcode
  )
{
  switch (Opcode) {
    case EFI_IFR_PASSWORD_OP:
    case EFI_IFR_ORDERED_LIST_OP:
    case EFI_IFR_DATE_OP:
    case EFI_IFR_TIME_OP:
    case EFI_IFR_ACTION_OP:
    case EFI_IFR_REF_OP:
    case EFI_IFR_RESET_BUTTON_OP:
      return TRUE;
    default:
      return IsAttributeKind (Opcode);
  }
}

/**
  Adds a store.

  @param[in]  Name      ASCII, not necessarily terminated; NULL for a name/value store.
  @param[in]  NameRoom  Bytes that it may have.
**/
STATIC
EFI_STATUS
AddNamedStore (
  IN OUT FormModel        *Model,
  IN     CONST FormStore  *Declared,
  IN     CONST UINT8      *Name OPTIONAL,
  IN     UINTN            NameRoom
  )
{
  FormStore  *Store;

  if ((Name != NULL) && (AsciiStrnLenS ((CONST CHAR8 *)Name, NameRoom) == NameRoom)) {
    return EFI_COMPROMISED_DATA;
  }

  Store = AllocateCopyPool (sizeof (*Store), Declared);
  if (Store == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Store->Next   = Model->Stores;
  Store->Name   = NULL;
  Model->Stores = Store;
  if (Name != NULL) {
    Store->Name = AllocatePool (NameRoom * sizeof (CHAR16));
    if (Store->Name == NULL) {
      return EFI_OUT_OF_RESOURCES;
    }

    AsciiStrToUnicodeStrS ((CONST CHAR8 *)Name, Store->Name, NameRoom);
  }

  return EFI_SUCCESS;
}

EFI_STATUS
AddStore (
  IN OUT FormModel                *Model,
  IN     CONST EFI_IFR_OP_HEADER  *Opcode
  )
{
  CONST EFI_IFR_VARSTORE_EFI         *Variable;
  CONST EFI_IFR_VARSTORE             *Buffer;
  CONST EFI_IFR_VARSTORE_NAME_VALUE  *NameValue;
  FormStore                          Store;

  ZeroMem (&Store, sizeof (Store));
  switch (Opcode->OpCode) {
    case EFI_IFR_VARSTORE_EFI_OP:
      //
      // A declaration without size and name, from before UEFI 2.3.1, says too little to be used.
      //
      Variable = (CONST EFI_IFR_VARSTORE_EFI *)Opcode;
      if (Opcode->Length <= OFFSET_OF (EFI_IFR_VARSTORE_EFI, Name)) {
        return EFI_SUCCESS;
      }

      Store.Kind       = StorageVariable;
      Store.Id         = Variable->VarStoreId;
      Store.Attributes = Variable->Attributes;
      Store.Size       = Variable->Size;
      CopyGuid (&Store.Guid, &Variable->Guid);
      return AddNamedStore (Model, &Store, Variable->Name, Opcode->Length - OFFSET_OF (EFI_IFR_VARSTORE_EFI, Name));

    case EFI_IFR_VARSTORE_OP:
      Buffer = (CONST EFI_IFR_VARSTORE *)Opcode;
      if (Opcode->Length <= OFFSET_OF (EFI_IFR_VARSTORE, Name)) {
        return EFI_COMPROMISED_DATA;
      }

      Store.Kind = StorageBuffer;
      Store.Id   = Buffer->VarStoreId;
      Store.Size = Buffer->Size;
      CopyGuid (&Store.Guid, &Buffer->Guid);
      return AddNamedStore (Model, &Store, Buffer->Name, Opcode->Length - OFFSET_OF (EFI_IFR_VARSTORE, Name));

    default:
      NameValue = (CONST EFI_IFR_VARSTORE_NAME_VALUE *)Opcode;
      if (Opcode->Length < sizeof (*NameValue)) {
        return EFI_COMPROMISED_DATA;
      }

      Store.Kind = StorageNumber;
      Store.Id   = NameValue->VarStoreId;
      CopyGuid (&Store.Guid, &NameValue->Guid);
      return AddNamedStore (Model, &Store, NULL, 0);
  }
}

VOID
SetDefault (
  IN OUT FormQuestion  *Question,
  IN     DEFAULT_KIND  Kind,
  IN     UINT64        Value
  )
{
  if (Question->DefaultKind < Kind) {
    Question->DefaultKind = Kind;
    Question->Default     = Value;
  }
}

/**
  Takes the bounds that follow the flags of a numeric or one-of question. Those of a bit field are 4 bytes wide each;
  the flags then tell the bits.

  @retval FALSE  The opcode is too short for them.
**/
STATIC
BOOLEAN
ReadBounds (
  IN OUT FormQuestion          *Question,
  IN     CONST EFI_IFR_NUMERIC *Opcode,
  IN     BOOLEAN               BitField
  )
{
  CONST UINT8  *Data;
  UINTN        Width;

  if (Opcode->Header.Length < OFFSET_OF (EFI_IFR_NUMERIC, data)) {
    return FALSE;
  }

  Width = BitField ? sizeof (UINT32) : (UINTN)1 << (Opcode->Flags & EFI_IFR_NUMERIC_SIZE);
  if (Opcode->Header.Length < OFFSET_OF (EFI_IFR_NUMERIC, data) + 3 * Width) {
    return FALSE;
  }

  if (BitField) {
    Question->Bits = Opcode->Flags & EDKII_IFR_NUMERIC_SIZE_BIT;
    if ((Question->Bits == 0) || (Question->Bits > BIT_FIELD_BITS)) {
      return FALSE;
    }
  }

  Data                       = (CONST UINT8 *)&Opcode->data;
  Question->IsNumber         = TRUE;
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
  IN     CONST EFI_IFR_OP_HEADER  *Opcode,
  IN     BOOLEAN                  BitField
  )
{
  CONST EFI_IFR_STRING        *String;
  CONST EFI_IFR_CHECKBOX      *Checkbox;
  CONST EFI_IFR_PASSWORD      *Password;
  CONST EFI_IFR_ORDERED_LIST  *List;

  switch (Opcode->OpCode) {
    case EFI_IFR_ONE_OF_OP:
    case EFI_IFR_NUMERIC_OP:
      return ReadBounds (Question, (CONST EFI_IFR_NUMERIC *)Opcode, BitField);

    case EFI_IFR_CHECKBOX_OP:
      Checkbox = (CONST EFI_IFR_CHECKBOX *)Opcode;
      if (Opcode->Length < sizeof (*Checkbox)) {
        return FALSE;
      }

      Question->IsNumber         = TRUE;
      Question->Bits             = BitField ? 1 : 0;
      Question->Record.ValueSize = sizeof (BOOLEAN);
      SetDefault (Question, DefaultOfCheckbox, ((Checkbox->Flags & EFI_IFR_CHECKBOX_DEFAULT) != 0) ? 1 : 0);
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

/**
  Finds the storage that a question of a kind that becomes an attribute keeps its value in, and the value's place there.

  @retval EFI_SUCCESS  Question->Storage is NULL when the question keeps its value nowhere.
**/
STATIC
EFI_STATUS
FindPlace (
  IN OUT FormQuestion                   *Question,
  IN     CONST EFI_IFR_QUESTION_HEADER  *Head
  )
{
  CONST FormModel  *Model;
  CONST FormStore  *Store;
  CHAR16           *Name;
  UINT16           Start;
  STORAGE_KIND     Kind;

  Model = Question->Model;
  for (Store = Model->Stores; (Store != NULL) && (Store->Id != Head->VarStoreId); Store = Store->Next) {
  }

  if ((Store == NULL) || (Head->VarStoreId == 0) || (Question->Record.ValueSize == 0)) {
    return EFI_SUCCESS;
  }

  if ((Store->Kind != StorageVariable) && (Model->Driver == NULL)) {
    return EFI_SUCCESS;   // nobody to ask
  }

  Question->Width = Question->Record.ValueSize;
  if (Store->Kind == StorageNumber) {
    Name = HiiGetString (Model->HiiHandle, Head->VarStoreInfo.VarName, NULL);
    if (Name == NULL) {
      return EFI_SUCCESS;
    }

    Kind              = (Question->Record.Opcode == EFI_IFR_STRING_OP) ? StorageText : StorageNumber;
    Question->Storage = FindStorage (Kind, &Store->Guid, Name, Model->Driver, Question->Width, 0);
    FreePool (Name);
  } else {
    Start            = Head->VarStoreInfo.VarOffset;
    Question->Offset = Start;
    if (Question->Bits != 0) {
      Question->Offset   = Start / 8;
      Question->FirstBit = (UINT8)(Start % 8);
      Question->Width    = (UINT16)((Question->FirstBit + Question->Bits + 7) / 8);
    }

    Question->Storage = FindStorage (
                          Store->Kind,
                          &Store->Guid,
                          Store->Name,
                          (Store->Kind == StorageVariable) ? NULL : Model->Driver,
                          Store->Size,
                          Store->Attributes
                          );
  }

  if (Question->Storage == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  return UseStorage (Question->Storage, Question->Offset, Question->Width);
}

EFI_STATUS
AddQuestion (
  IN OUT FormModel                *Model,
  IN     CONST EFI_IFR_OP_HEADER  *Opcode,
  IN     BOOLEAN                  BitField
  )
{
  CONST EFI_IFR_QUESTION_HEADER  *Head;
  FormQuestion                   *Question;

  Question = AllocateZeroPool (sizeof (*Question));
  if (Question == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  if (Model->Last == NULL) {
    Model->First = Question;
  } else {
    Model->Last->Record.Next = &Question->Record;
  }

  Model->Last                = Question;
  Question->Model            = Model;
  Question->Record.Ifr       = Opcode;
  Question->Record.Opcode    = Opcode->OpCode;
  Question->Record.HiiHandle = Model->HiiHandle;

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

  if ((Opcode->Length < sizeof (*Opcode) + sizeof (*Head)) || !ReadKind (Question, Opcode, BitField)) {
    return EFI_COMPROMISED_DATA;
  }

  Question->Id                = Head->QuestionId;
  Question->Record.Identifier = Head->QuestionId;
  return IsAttributeKind (Opcode->OpCode) ? FindPlace (Question, Head) : EFI_SUCCESS;
}

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

  Options       += Question->Record.OptionCount;
  Options->Text  = Opcode->Option;
  Options->Value = ReadLittleEndian ((CONST UINT8 *)&Opcode->Value, Width);
  Question->Record.OptionCount++;
  if ((Opcode->Flags & EFI_IFR_OPTION_DEFAULT) != 0) {
    SetDefault (Question, DefaultOfOption, Options->Value);
  }

  return EFI_SUCCESS;
}

EFI_STATUS
AddDefault (
  IN OUT FormQuestion          *Question,
  IN     CONST EFI_IFR_DEFAULT *Opcode
  )
{
  UINTN   Width;
  UINT64  Value;

  Width = TypeWidth (Opcode->Type);
  if ((Opcode->DefaultId != EFI_HII_DEFAULT_CLASS_STANDARD) || (Width == 0)) {
    return EFI_SUCCESS;
  }

  if (Opcode->Header.Length < OFFSET_OF (EFI_IFR_DEFAULT, Value) + Width) {
    return EFI_COMPROMISED_DATA;
  }

  Value = ReadLittleEndian ((CONST UINT8 *)&Opcode->Value, Width);
  if (Opcode->Type != EFI_IFR_TYPE_STRING) {
    SetDefault (Question, DefaultOfStatement, Value);
  } else if (Question->DefaultText == 0) {
    Question->DefaultText = (EFI_STRING_ID)Value;
  }

  return EFI_SUCCESS;
}

/**
  Gives the bits of a number that a bit field keeps.
**/
STATIC
UINT64
BitMask (
  IN CONST FormQuestion  *Question
  )
{
  return LShiftU64 (1, Question->Bits) - 1;
}

EFI_STATUS
ReadQuestion (
  IN  CONST FormQuestion  *Question,
  OUT VOID                *Value
  )
{
  UINT8       Field[BIT_FIELD_BYTES];
  UINT64      Number;
  EFI_STATUS  Status;

  if (Question->Storage == NULL) {
    return EFI_UNSUPPORTED;
  }

  if (Question->Bits == 0) {
    return ReadStorage (Question->Storage, Question->Offset, Question->Width, Value);
  }

  Status = ReadStorage (Question->Storage, Question->Offset, Question->Width, Field);
  if (!EFI_ERROR (Status)) {
    Number = RShiftU64 (ReadLittleEndian (Field, Question->Width), Question->FirstBit) & BitMask (Question);
    CopyMem (Value, &Number, Question->Record.ValueSize);
  }

  return Status;
}

EFI_STATUS
PlaceValue (
  IN     CONST FormQuestion  *Question,
  IN OUT UINT8               *Data,
  IN     CONST VOID          *Value
  )
{
  UINT64  Number;
  UINT64  Field;

  if (Question->Bits == 0) {
    CopyMem (Data, Value, Question->Width);
    return EFI_SUCCESS;
  }

  Number = ReadLittleEndian (Value, Question->Record.ValueSize);
  if ((Number & ~BitMask (Question)) != 0) {
    return EFI_INVALID_PARAMETER;
  }

  Field  = ReadLittleEndian (Data, Question->Width) & ~LShiftU64 (BitMask (Question), Question->FirstBit);
  Field |= LShiftU64 (Number, Question->FirstBit);
  CopyMem (Data, &Field, Question->Width);
  return EFI_SUCCESS;
}

EFI_STATUS
WriteQuestion (
  IN CONST FormQuestion  *Question,
  IN CONST VOID          *Value
  )
{
  UINT8       Field[BIT_FIELD_BYTES];
  EFI_STATUS  Status;

  if (Question->Storage == NULL) {
    return EFI_UNSUPPORTED;
  }

  if (Question->Bits == 0) {
    return WriteStorage (Question->Storage, Question->Offset, Question->Width, Value);
  }

  Status = ReadStorage (Question->Storage, Question->Offset, Question->Width, Field);
  if (!EFI_ERROR (Status)) {
    Status = PlaceValue (Question, Field, Value);
  }

  return EFI_ERROR (Status) ? Status : WriteStorage (Question->Storage, Question->Offset, Question->Width, Field);
}

/**
  Reads a string question's current text as ASCII; other characters become question marks.
**/
STATIC
EFI_STATUS
LoadText (
  IN OUT FormQuestion  *Question
  )
{
  CHAR8       *Text;
  CHAR16      *Wide;
  UINTN       Index;
  EFI_STATUS  Status;

  Text                           = AllocateZeroPool ((UINTN)Question->Record.Maximum + 1);
  Wide                           = AllocateZeroPool (Question->Record.ValueSize + sizeof (CHAR16));
  Question->Record.CurrentString = Text;
  if ((Text == NULL) || (Wide == NULL)) {
    if (Wide != NULL) {
      FreePool (Wide);
    }

    return EFI_OUT_OF_RESOURCES;
  }

  Status = ReadQuestion (Question, Wide);
  for (Index = 0; !EFI_ERROR (Status) && (Wide[Index] != 0); Index++) {
    Text[Index] = ((Wide[Index] >= 0x20) && (Wide[Index] < 0x7F)) ? (CHAR8)Wide[Index] : '?';
  }

  FreePool (Wide);
  return Status;
}

EFI_STATUS
LoadValue (
  IN OUT FormQuestion  *Question
  )
{
  Question->Status = EFI_UNSUPPORTED;
  if (Question->IsNumber && (Question->Storage != NULL)) {
    Question->Status = ReadQuestion (Question, &Question->Record.CurrentValue);
  } else if (Question->Record.Opcode == EFI_IFR_STRING_OP) {
    Question->Status = LoadText (Question);
  }

  return Question->Status;
}
