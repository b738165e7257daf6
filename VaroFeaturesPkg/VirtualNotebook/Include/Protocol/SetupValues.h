/** @file
  SetupValuesProtocol: values and defaults of the setup's questions by their identifiers, whatever form set they are in.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_SETUP_VALUES_H_
#define PROTOCOL_SETUP_VALUES_H_

#include <Uefi/UefiBaseType.h>

typedef struct _SetupValuesProtocol SetupValuesProtocol;

///
/// One question that keeps its value in a variable.
///
typedef struct {
  UINT32          Identifier;
  UINT8           Opcode;       ///< EFI_IFR_..._OP
  BOOLEAN         HasDefault;
  UINT16          Offset;       ///< of the value in the variable
  UINT32          Width;        ///< bytes of the value
  UINT64          Default;      ///< of one-of, checkbox and numeric questions, zero-extended
  CHAR16          *DefaultText; ///< of string questions, or NULL
  CHAR16          *Variable;
  EFI_GUID        Vendor;
  UINT32          Attributes;
  UINT32          VariableSize;
} SetupValue;

/**
  Looks at the HII database anew: lists all questions that keep a value, and gives variables that do not exist yet the
  questions' defaults, as on the first boot of a notebook.
**/
typedef
EFI_STATUS
(EFIAPI *SETUP_VALUES_REFRESH)(
  IN SetupValuesProtocol  *This
  );

/**
  Finds a question.

  @return  The question, which stays valid until the next Refresh; NULL when there is none of that identifier.
**/
typedef
CONST SetupValue *
(EFIAPI *SETUP_VALUES_FIND)(
  IN SetupValuesProtocol  *This,
  IN UINT32               Identifier
  );

/**
  Reads the current value of a question.

  @param[out]  Value  Width bytes.
**/
typedef
EFI_STATUS
(EFIAPI *SETUP_VALUES_READ)(
  IN  SetupValuesProtocol  *This,
  IN  CONST SetupValue     *Question,
  OUT VOID                 *Value
  );

/**
  Changes the value of a question, as somebody in the setup would.

  @param[in]  Value  Width bytes.
**/
typedef
EFI_STATUS
(EFIAPI *SETUP_VALUES_WRITE)(
  IN SetupValuesProtocol  *This,
  IN CONST SetupValue     *Question,
  IN CONST VOID           *Value
  );

struct _SetupValuesProtocol {
  SETUP_VALUES_REFRESH    Refresh;
  SETUP_VALUES_FIND       Find;
  SETUP_VALUES_READ       Read;
  SETUP_VALUES_WRITE      Write;
  UINTN                   Count;             ///< questions in Values
  CONST SetupValue        *Values;           ///< by ascending identifier
  UINT32                  FormSetsListed;    ///< calls of FormBrowserDataProtocol.ListFormSets in this boot
  UINT32                  FormSetsParsed;    ///< calls of FormBrowserDataProtocol.ParseFormSet in this boot
};

extern EFI_GUID  gNotebookSetupValuesProtocolGuid;
extern EFI_GUID  gNotebookVariableGuid;

#endif
