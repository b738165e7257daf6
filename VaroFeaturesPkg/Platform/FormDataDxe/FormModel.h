/** @file
  FormModel: one form set read out of its IFR (UEFI specification, chapter on Human Interface Infrastructure): its
  questions with their options, defaults and current values.

  IFR comes from any driver of the machine and is taken as untrusted: an opcode that does not fit into its package ends
  the parse with EFI_COMPROMISED_DATA.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef FORM_MODEL_H_
#define FORM_MODEL_H_

#include <Uefi.h>
#include <Protocol/FormBrowserData.h>
#include "IfrReader.h"
#include "Storage.h"

#define NO_OPCODE  0   ///< EFI_IFR_..._OP values in use begin at 1

typedef struct _FormStore     FormStore;
typedef struct _FormQuestion  FormQuestion;
typedef struct _FormModel     FormModel;

///
/// A store that the form set declares.
///
struct _FormStore {
  FormStore          *Next;
  EFI_VARSTORE_ID    Id;
  STORAGE_KIND       Kind;         ///< StorageNumber for all name/value stores
  EFI_GUID           Guid;
  UINT32             Attributes;   ///< of a variable
  UINT32             Size;         ///< bytes of a variable or buffer
  CHAR16             *Name;        ///< of a variable or buffer
};

///
/// How a question's default was declared. The later kind wins.
///
typedef enum {
  DefaultNone,
  DefaultOfCheckbox,
  DefaultOfOption,
  DefaultOfStatement
} DEFAULT_KIND;

///
/// Why a question is not eligible.
///
typedef enum {
  QuestionEligible,
  QuestionHidden,         ///< a condition hides it
  QuestionUndecided,      ///< a condition around it cannot be evaluated; Culprit is the opcode that is why
  QuestionNoStore,        ///< it keeps its value nowhere
  QuestionNoVariable,     ///< its variable does not exist
  QuestionComputed,       ///< its value is computed by an expression
  QuestionUnreadable,     ///< its storage cannot be read; Status says why
  QuestionNoIdentifier    ///< no memory for its identifier
} QUESTION_VERDICT;

struct _FormQuestion {
  QuestionRecord      Record;        ///< first, so that the record is the question
  FormModel           *Model;
  EFI_QUESTION_ID     Id;            ///< within the form set; Record.Identifier is that of the boot
  Storage             *Storage;      ///< NULL = the value is kept nowhere
  UINT16              Offset;        ///< of the value in the storage
  UINT16              Width;         ///< bytes that the value touches there
  UINT8               FirstBit;      ///< of a bit field, in the first byte
  UINT8               Bits;          ///< of a bit field; 0 = the value has whole bytes
  BOOLEAN             IsNumber;
  BOOLEAN             Computed;
  DEFAULT_KIND        DefaultKind;
  UINT64              Default;
  EFI_STRING_ID       DefaultText;   ///< of a string question; 0 = none
  UINT32              OptionRoom;
  QUESTION_VERDICT    Verdict;
  UINT8               Culprit;
  EFI_STATUS          Status;        ///< of reading the value
};

struct _FormModel {
  VOID              *PackageList;   ///< what Record.Ifr points into
  EFI_HII_HANDLE    HiiHandle;
  EFI_HANDLE        Driver;         ///< of the package list, or NULL
  EFI_GUID          Guid;
  UINT32            Instance;       ///< tells form sets with the same GUID apart
  FormStore         *Stores;
  FormQuestion      *First;
  FormQuestion      *Last;
};

/**
  Reads a form set.

  @param[in]   FormSet  Of ListFormSets.
  @param[out]  Model    The form set; FreeFormModel frees it.

  @retval EFI_SUCCESS           Model is valid, with or without questions.
  @retval EFI_NOT_FOUND         The package list has no such form set any more.
  @retval EFI_COMPROMISED_DATA  Its IFR is malformed.
  @retval EFI_OUT_OF_RESOURCES  There is no memory for it.
**/
EFI_STATUS
ReadFormModel (
  IN  CONST FormSetRecord  *FormSet,
  OUT FormModel            **Model
  );

VOID
FreeFormModel (
  IN FormModel  *Model
  );

/**
  Gives the question after another one; the first one after NULL.
**/
FormQuestion *
NextQuestion (
  IN CONST FormModel     *Model,
  IN CONST FormQuestion  *Question OPTIONAL
  );

/**
  Finds a question by its identifier within the form set.
**/
FormQuestion *
FindFormQuestion (
  IN CONST FormModel  *Model,
  IN EFI_QUESTION_ID  Id
  );

#endif
