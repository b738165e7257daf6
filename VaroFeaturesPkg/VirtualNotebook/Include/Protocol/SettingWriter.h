/** @file
  SettingWriterProtocol: changes a platform setting or setup question by its number.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_SETTING_WRITER_H_
#define PROTOCOL_SETTING_WRITER_H_

#include <Uefi/UefiBaseType.h>

typedef struct _SettingWriterProtocol SettingWriterProtocol;

/**
  Changes one setting for this boot and all that follow.

  @param[in]  This     The protocol.
  @param[in]  Setting  Number of the setting or identifier of the question.
  @param[in]  Text     New value: ASCII text for a string question, else a number, decimal or with 0x in front.

  @retval EFI_SUCCESS    The setting is changed.
  @retval EFI_NOT_FOUND  There is no such setting.
**/
typedef
EFI_STATUS
(EFIAPI *SETTING_WRITE)(
  IN SettingWriterProtocol  *This,
  IN UINT32                 Setting,
  IN CONST CHAR8            *Text
  );

struct _SettingWriterProtocol {
  SETTING_WRITE    Write;
};

extern EFI_GUID  gNotebookSettingWriterProtocolGuid;
extern EFI_GUID  gNotebookVariableGuid;

#endif
