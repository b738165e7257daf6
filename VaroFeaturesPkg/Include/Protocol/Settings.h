/** @file
  SettingsProtocol: reads and writes the platform's numbered settings. Provided by the platform.

  The driver requires it. It reads the settings of its platform attributes, and after a restore from the cache the
  current value of every enumeration and integer by its Token. The Token of a setup question therefore has to give the
  question's current value.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_SETTINGS_H_
#define PROTOCOL_SETTINGS_H_

#include <Uefi/UefiBaseType.h>

#define VARO_SETTINGS_PROTOCOL_GUID \
  { 0x71DB7B7E, 0x4165, 0x48FA, { 0xAC, 0x9D, 0xF9, 0xAF, 0x4C, 0xEF, 0xC5, 0x34 } }

///
/// The namespace of all settings that the driver reads.
///
#define VARO_SETTINGS_NAMESPACE_GUID \
  { 0x417ACEE0, 0x6FA9, 0x4A82, { 0x99, 0xD7, 0xF9, 0xB1, 0xDD, 0x27, 0x1E, 0x48 } }

typedef struct _SettingsProtocol SettingsProtocol;

/**
  Reads one setting.

  @param[in]      This       The protocol.
  @param[in]      Setting    Number of the setting.
  @param[in]      Namespace  gVaroSettingsNamespaceGuid.
  @param[in,out]  Size       Bytes of Value on input; bytes of the setting on output. The driver passes a buffer of 8
                             bytes, all zero, and may announce fewer (1 for enumerations, 2 for integers).
  @param[out]     Value      The setting, little-endian.

  @retval EFI_SUCCESS           Value holds Size bytes.
  @retval EFI_NOT_FOUND         There is no such setting on this platform.
  @retval EFI_BUFFER_TOO_SMALL  Size is too small; it holds the bytes needed.
  @retval others                The setting could not be read.
**/
typedef
EFI_STATUS
(EFIAPI *SETTINGS_READ)(
  IN     SettingsProtocol  *This,
  IN     UINT32            Setting,
  IN     CONST EFI_GUID    *Namespace,
  IN OUT UINT64            *Size,
  OUT    VOID              *Value
  );

struct _SettingsProtocol {
  SETTINGS_READ    Read;
};

extern EFI_GUID  gVaroSettingsProtocolGuid;
extern EFI_GUID  gVaroSettingsNamespaceGuid;

#endif
