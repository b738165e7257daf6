/** @file
  FormModel: one form set read out of its IFR (UEFI specification, chapter on Human Interface Infrastructure): its
  questions with their options, defaults and current values.

  IFR comes from any driver of the machine and is taken as untrusted: what does not fit into its package ends the parse
  with EFI_COMPROMISED_DATA.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef FORM_MODEL_H_
#define FORM_MODEL_H_

#include <Uefi.h>
#include <Protocol/FormBrowserData.h>
#include <Protocol/HiiDatabase.h>
#include <Uefi/UefiInternalFormRepresentation.h>

typedef struct _FormStore     FormStore;
typedef struct _FormQuestion  FormQuestion;
typedef struct _FormModel     FormModel;

///
/// A variable that questions keep their values in.
///
struct _FormStore {
  FormStore          *Next;
  EFI_VARSTORE_ID    Id;
  EFI_GUID           Vendor;
  UINT32             Attributes;
  UINT32             Size;         ///< bytes of the variable, as the form set declares it
  CHAR16             *Name;
  UINT8              *Data;        ///< the variable's content, Size bytes; NULL while there is none
};

struct _FormQuestion {
  QuestionRecord     Record;       ///< first, so that the record is the question
  FormModel          *Model;
  CONST FormStore    *Store;       ///< NULL = the value is not kept in a variable
  UINT16             Offset;       ///< of the value in the store
  UINT8              ValueWidth;   ///< bytes of a number, 0 = the value is no number
  BOOLEAN            HasDefault;
  UINT64             Default;
  EFI_STRING_ID      DefaultText;  ///< of a string question; 0 = none
  CONST CHAR8        *Unreadable;  ///< why the value cannot be read; NULL = it can, or nobody sees the question
  UINT32             OptionRoom;
};

struct _FormModel {
  VOID            *PackageList;    ///< what Record.Ifr points into
  FormStore       *Stores;
  FormQuestion    *First;
  FormQuestion    *Last;
};

/**
  Exports a package list of the HII database.

  @param[in]   HiiHandle    Of the list.
  @param[out]  PackageList  The list in pool; the caller frees it.
  @param[out]  Size         Its bytes.
**/
EFI_STATUS
ExportPackageList (
  IN  EFI_HII_HANDLE               HiiHandle,
  OUT EFI_HII_PACKAGE_LIST_HEADER  **PackageList,
  OUT UINTN                        *Size
  );

/**
  Steps through the form sets of a package list.

  @param[in]      PackageList  The list.
  @param[in]      Size         Its bytes.
  @param[in,out]  Position     Bytes of the list already looked at; 0 to begin with.
  @param[out]     Length       Bytes from the form set on to the end of its package.

  @return  The next form set, with room for its head and class GUIDs; NULL after the last.
**/
CONST EFI_IFR_FORM_SET *
NextFormSet (
  IN     CONST EFI_HII_PACKAGE_LIST_HEADER  *PackageList,
  IN     UINTN                              Size,
  IN OUT UINTN                              *Position,
  OUT    UINTN                              *Length
  );

/**
  Tells whether a form set belongs to a class.
**/
BOOLEAN
FormSetHasClass (
  IN CONST EFI_IFR_FORM_SET  *FormSet,
  IN CONST EFI_GUID          *Class
  );

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
  Gives a question's current number.

  @retval TRUE  Value holds it; FALSE: the question keeps no number in a variable that exists.
**/
BOOLEAN
CurrentNumber (
  IN  CONST FormQuestion  *Question,
  OUT UINT64              *Value
  );

/**
  Finds a question by its identifier.
**/
FormQuestion *
FindFormQuestion (
  IN CONST FormModel  *Model,
  IN EFI_QUESTION_ID  Identifier
  );

#endif
