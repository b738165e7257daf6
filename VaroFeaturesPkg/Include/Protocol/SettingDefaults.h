/** @file
  SettingDefaultsProtocol: default values of setup questions. Optional; without it every default is 0.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_SETTING_DEFAULTS_H_
#define PROTOCOL_SETTING_DEFAULTS_H_

#include <Uefi/UefiBaseType.h>
#include <Protocol/Settings.h>

#define VARO_SETTING_DEFAULTS_PROTOCOL_GUID \
  { 0x0AE751B3, 0x5944, 0x4400, { 0x96, 0x28, 0x93, 0xBD, 0x71, 0x2C, 0x13, 0xED } }

/**
  Gives the default value of a question.

  @param[in]      Identifier  Of the question.
  @param[in]      Namespace   gVaroSettingsNamespaceGuid.
  @param[in,out]  Size        Bytes of Value on input: 1 for one-of and checkbox questions, 8 for numeric ones. Bytes
                              written on output.
  @param[out]     Value       The default, little-endian; zero before the driver calls.

  @retval EFI_SUCCESS    Value holds Size bytes.
  @retval EFI_NOT_FOUND  The question has no default here.
  @retval others         The default could not be read.
**/
typedef
EFI_STATUS
(EFIAPI *SETTING_DEFAULTS_GET)(
  IN     UINT32           Identifier,
  IN     CONST EFI_GUID   *Namespace,
  IN OUT UINT64           *Size,
  OUT    VOID             *Value
  );

typedef struct {
  VOID                    *Defaults[2];   ///< the platform's own use; not called by the driver
  SETTING_DEFAULTS_GET    GetDefault;
} SettingDefaultsProtocol;

extern EFI_GUID  gVaroSettingDefaultsProtocolGuid;

#endif
