/** @file
  PlatformSettingsProtocol: numbered settings of the platform's own, for Platform/SettingsDxe and
  Platform/AttributeServiceDxe. Optional; without it, questions of the setup are the only settings.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_PLATFORM_SETTINGS_H_
#define PROTOCOL_PLATFORM_SETTINGS_H_

#include <Uefi/UefiBaseType.h>

#define VARO_PLATFORM_SETTINGS_PROTOCOL_GUID \
  { 0x3BC7EFCE, 0x34A2, 0x4286, { 0x99, 0x31, 0x9B, 0x27, 0xA1, 0x81, 0xDF, 0x85 } }

typedef struct _PlatformSettingsProtocol PlatformSettingsProtocol;

/**
  Reads a setting. It stands before a question of the same number.

  @param[in]   This    The protocol.
  @param[in]   Number  Of the setting.
  @param[out]  Width   Bytes of the setting, 8 at most.
  @param[out]  Value   Its current value.

  @retval EFI_NOT_FOUND  The platform has no such setting of its own; a question may have the number.
  @retval others         The setting cannot be read.
**/
typedef
EFI_STATUS
(EFIAPI *PLATFORM_SETTINGS_READ)(
  IN  PlatformSettingsProtocol  *This,
  IN  UINT32                    Number,
  OUT UINT64                    *Width,
  OUT UINT64                    *Value
  );

/**
  Takes a new value for a setting. It is in force from the next boot on, and Kept gives it until then.

  @retval EFI_NOT_FOUND          The platform has no such setting of its own.
  @retval EFI_INVALID_PARAMETER  The setting cannot have this value.
  @retval others                 The value could not be stored.
**/
typedef
EFI_STATUS
(EFIAPI *PLATFORM_SETTINGS_KEEP)(
  IN PlatformSettingsProtocol  *This,
  IN UINT32                    Number,
  IN UINT64                    Value
  );

/**
  Gives the value that a setting will have in the next boot.

  @retval EFI_NOT_FOUND  Keep was not called for the setting in this boot.
**/
typedef
EFI_STATUS
(EFIAPI *PLATFORM_SETTINGS_KEPT)(
  IN  PlatformSettingsProtocol  *This,
  IN  UINT32                    Number,
  OUT UINT64                    *Value
  );

struct _PlatformSettingsProtocol {
  PLATFORM_SETTINGS_READ    Read;
  PLATFORM_SETTINGS_KEEP    Keep;
  PLATFORM_SETTINGS_KEPT    Kept;
};

extern EFI_GUID  gVaroPlatformSettingsProtocolGuid;

#endif
