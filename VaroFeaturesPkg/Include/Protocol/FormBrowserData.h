/** @file
  FormBrowserDataProtocol: the setup's form sets and questions as data. Provided by the platform, usually beside its
  form browser; the driver requires it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_FORM_BROWSER_DATA_H_
#define PROTOCOL_FORM_BROWSER_DATA_H_

#include <Uefi/UefiBaseType.h>
#include <Uefi/UefiInternalFormRepresentation.h>
#include <Protocol/HiiDatabase.h>

#define VARO_FORM_BROWSER_DATA_PROTOCOL_GUID \
  { 0x6A683524, 0x687D, 0x4D7B, { 0x93, 0xE1, 0x95, 0x29, 0x8E, 0xE3, 0x13, 0xD1 } }

///
/// Kind of form sets that the driver asks for: all that belong to the setup. Form sets that carry one of these two
/// GUIDs as their own hold no settings of the user, and the driver skips them.
///
#define VARO_SETUP_FORM_SETS_GUID \
  { 0x06C430EC, 0x8DDE, 0x4C68, { 0xAE, 0xAF, 0xA1, 0x0A, 0x47, 0xCA, 0x89, 0x2A } }
#define VARO_SETUP_HIDDEN_FORM_SET_GUID \
  { 0x7ECD7788, 0xDA8A, 0x48C3, { 0xAD, 0x45, 0xA7, 0x4C, 0x0C, 0xB9, 0xEE, 0xE2 } }

typedef struct _FormBrowserDataProtocol FormBrowserDataProtocol;

///
/// One form set.
///
typedef struct {
  EFI_GUID          Guid;
  EFI_HII_HANDLE    HiiHandle;   ///< package list of the form set and its strings
  EFI_STRING_ID     Title;
} FormSetRecord;

///
/// One option of a one-of question.
///
typedef struct {
  UINT64           Value;   ///< zero-extended
  EFI_STRING_ID    Text;    ///< in the question's package list
} QuestionOption;

typedef struct _QuestionRecord QuestionRecord;

///
/// One question of a form set.
///
/// The keyword of a question or option, by which management software knows it, is its text in the HII language
/// "x-UEFI".
///
struct _QuestionRecord {
  QuestionRecord              *Next;            ///< in the order of the forms; NULL ends the list
  CONST EFI_IFR_OP_HEADER     *Ifr;             ///< the question's IFR; NULL = the record carries no question
  UINT32                      Identifier;       ///< of the question; becomes the attribute's Token
  UINT8                       Opcode;           ///< EFI_IFR_ONE_OF_OP, _CHECKBOX_OP, _NUMERIC_OP, _STRING_OP, ...
  UINT8                       Eligible;         ///< 1 = may become an attribute; 0 = suppressed or not for management
  UINT16                      ValueSize;        ///< bytes of the question's value
  EFI_STRING_ID               Prompt;           ///< 0 = none
  EFI_STRING_ID               Help;             ///< 0 = none
  EFI_HII_HANDLE              HiiHandle;
  UINT64                      Minimum;          ///< numeric: lowest value; string: fewest characters
  UINT64                      Maximum;          ///< numeric: highest value; string: most characters
  UINT64                      Step;             ///< numeric
  UINT64                      CurrentValue;     ///< one-of, checkbox and numeric, zero-extended
  CONST CHAR8                 *CurrentString;   ///< string: NUL-terminated ASCII, or NULL
  UINT32                      OptionCount;      ///< one-of
  CONST QuestionOption        *Options;         ///< one-of: OptionCount options in IFR order
};

/**
  Lists the form sets of one kind.

  @param[in]   This      The protocol.
  @param[in]   Kind      gVaroSetupFormSetsGuid.
  @param[out]  FormSets  Array of record pointers that ends with NULL, one block of boot services pool that the caller
                         frees. The records stay valid at least as long as the array. NULL when there is none.

  @retval EFI_SUCCESS  The form sets are listed, or there is none.
  @retval others       They could not be listed.
**/
typedef
EFI_STATUS
(EFIAPI *FORM_BROWSER_LIST_FORM_SETS)(
  IN  FormBrowserDataProtocol   *This,
  IN  CONST EFI_GUID            *Kind,
  OUT CONST FormSetRecord       ***FormSets
  );

/**
  Parses one form set into its questions, current values included.

  @param[in]   This       The protocol.
  @param[in]   FormSet    A record of ListFormSets.
  @param[out]  Questions  First question, or NULL when the form set has none. The list and all it points to belong to
                          the service until it is handed to ReleaseQuestions.

  @retval EFI_SUCCESS  Questions is valid.
  @retval others       The form set could not be parsed; nothing is to be released.
**/
typedef
EFI_STATUS
(EFIAPI *FORM_BROWSER_PARSE_FORM_SET)(
  IN  FormBrowserDataProtocol   *This,
  IN  CONST FormSetRecord       *FormSet,
  OUT QuestionRecord            **Questions
  );

/**
  Releases a list of questions.

  @param[in]  This       The protocol.
  @param[in]  Questions  A list of ParseFormSet; NULL is allowed.

  @retval EFI_SUCCESS  The list is released.
**/
typedef
EFI_STATUS
(EFIAPI *FORM_BROWSER_RELEASE_QUESTIONS)(
  IN FormBrowserDataProtocol   *This,
  IN QuestionRecord            *Questions
  );

struct _FormBrowserDataProtocol {
  VOID                              *Browser[5];         ///< the browser's own use; not called by the driver
  FORM_BROWSER_LIST_FORM_SETS       ListFormSets;
  FORM_BROWSER_PARSE_FORM_SET       ParseFormSet;
  FORM_BROWSER_RELEASE_QUESTIONS    ReleaseQuestions;
};

extern EFI_GUID  gVaroFormBrowserDataProtocolGuid;
extern EFI_GUID  gVaroSetupFormSetsGuid;
extern EFI_GUID  gVaroSetupHiddenFormSetGuid;

#endif
