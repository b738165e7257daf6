/** @file
  SetupValuesProtocol: values and defaults of the setup's questions by their identifiers, whatever form set they are in.
  Provided by Platform/FormDataDxe for the platform's own drivers; CorvaneDxe does not use it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_SETUP_VALUES_H_
#define PROTOCOL_SETUP_VALUES_H_

#include <Uefi/UefiBaseType.h>

#define VARO_SETUP_VALUES_PROTOCOL_GUID \
  { 0xB6A07D5C, 0x87D0, 0x43EA, { 0x9A, 0x3F, 0xEC, 0x71, 0xA9, 0xA3, 0xD6, 0x70 } }

typedef struct _SetupValuesProtocol SetupValuesProtocol;

///
/// One question of a kind that becomes an attribute, with a storage. The form sets are read again when somebody asks
/// after their packages have changed.
///
typedef struct {
  UINT32        Identifier;
  UINT8         Opcode;         ///< EFI_IFR_ONE_OF_OP, _CHECKBOX_OP, _NUMERIC_OP or _STRING_OP
  BOOLEAN       HasDefault;
  UINT32        Width;          ///< bytes of the value
  UINT64        Default;        ///< of one-of, checkbox and numeric questions, zero-extended
  CHAR16        *DefaultText;   ///< of string questions, or NULL
  CONST VOID    *Question;      ///< the provider's own
} SetupValue;

/**
  Gives variables that do not exist yet the defaults of their questions, for form sets whose drivers leave that to the
  platform.
**/
typedef
EFI_STATUS
(EFIAPI *SETUP_VALUES_CREATE)(
  IN SetupValuesProtocol  *This
  );

/**
  Finds a question.

  @return  The question, valid until the form sets are read again. NULL if no question has the identifier.
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
  Changes the value of a question at once, through the question's own storage, and reads it back.

  @param[in]  Value  Width bytes.

  @retval EFI_INVALID_PARAMETER  The value has more bits than the question keeps.
  @retval EFI_WRITE_PROTECTED    The storage took the value and has another one.
  @retval others                 The storage cannot be read or written.
**/
typedef
EFI_STATUS
(EFIAPI *SETUP_VALUES_WRITE)(
  IN SetupValuesProtocol  *This,
  IN CONST SetupValue     *Question,
  IN CONST VOID           *Value
  );

struct _SetupValuesProtocol {
  SETUP_VALUES_CREATE     CreateVariables;
  SETUP_VALUES_FIND       Find;
  SETUP_VALUES_READ       Read;
  SETUP_VALUES_WRITE      Write;
  UINTN                   Count;             ///< questions in Values, as of the last time the form sets were read
  CONST SetupValue        *Values;           ///< by ascending identifier
  UINT32                  FormSetsListed;    ///< calls of FormBrowserDataProtocol.ListFormSets in this boot
  UINT32                  FormSetsParsed;    ///< calls of FormBrowserDataProtocol.ParseFormSet in this boot
};

extern EFI_GUID  gVaroSetupValuesProtocolGuid;

#endif
