/** @file
  SettingsDxe: questions of the setup as numbered settings and their defaults, behind SettingsProtocol and
  SettingDefaultsProtocol. Settings of the platform's own come from PlatformSettingsProtocol and stand before them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/PlatformPartLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/PlatformSettings.h>
#include <Protocol/SettingDefaults.h>
#include <Protocol/Settings.h>
#include <Protocol/SetupValues.h>

//
// CorvaneDxe caches nothing without this setting: the platform keeps an asset tag.
//
#define SETTING_ASSET_TAG  0x2618

STATIC SetupValuesProtocol  *mSetupValues;

/**
  Reads a setting of the platform's own.
**/
STATIC
EFI_STATUS
ReadPlatform (
  IN  UINT32  Number,
  OUT UINT64  *Width,
  OUT UINT64  *Value
  )
{
  PlatformSettingsProtocol  *Platform;
  EFI_STATUS                Status;

  Status = gBS->LocateProtocol (&gVaroPlatformSettingsProtocolGuid, NULL, (VOID **)&Platform);
  return EFI_ERROR (Status) ? EFI_NOT_FOUND : Platform->Read (Platform, Number, Width, Value);
}

/**
  Reads a question's value.

  @param[out]  Width  Bytes of the value.
  @param[out]  Value  The value, when it has 8 bytes at most.

  @retval EFI_BUFFER_TOO_SMALL  It is a text; settings are numbers.
**/
STATIC
EFI_STATUS
ReadQuestion (
  IN  UINT32  Number,
  OUT UINT64  *Width,
  OUT UINT64  *Value
  )
{
  CONST SetupValue  *Question;

  Question = mSetupValues->Find (mSetupValues, Number);
  if (Question == NULL) {
    return EFI_NOT_FOUND;
  }

  *Width = Question->Width;
  return (*Width > sizeof (*Value)) ? EFI_BUFFER_TOO_SMALL : mSetupValues->Read (mSetupValues, Question, Value);
}

STATIC
EFI_STATUS
EFIAPI
ReadSetting (
  IN     SettingsProtocol  *This,
  IN     UINT32            Setting,
  IN     CONST EFI_GUID    *Namespace,
  IN OUT UINT64            *Size,
  OUT    VOID              *Value
  )
{
  UINT64      Width;
  UINT64      Current;
  EFI_STATUS  Status;

  if (!CompareGuid (Namespace, &gVaroSettingsNamespaceGuid)) {
    return EFI_NOT_FOUND;
  }

  Current = 0;
  Status  = ReadPlatform (Setting, &Width, &Current);
  if (Status == EFI_NOT_FOUND) {
    Status = ReadQuestion (Setting, &Width, &Current);
  }

  if ((Status == EFI_NOT_FOUND) && (Setting == SETTING_ASSET_TAG)) {
    Width   = sizeof (UINT8);
    Current = 1;
    Status  = EFI_SUCCESS;
  }

  if (Status == EFI_BUFFER_TOO_SMALL) {
    *Size = Width;
  }

  if (EFI_ERROR (Status)) {
    return Status;
  }

  if (*Size < Width) {
    *Size = Width;
    return EFI_BUFFER_TOO_SMALL;
  }

  *Size = Width;
  CopyMem (Value, &Current, (UINTN)Width);
  return EFI_SUCCESS;
}

STATIC
EFI_STATUS
EFIAPI
GetDefault (
  IN     UINT32           Identifier,
  IN     CONST EFI_GUID   *Namespace,
  IN OUT UINT64           *Size,
  OUT    VOID             *Value
  )
{
  CONST SetupValue  *Question;

  Question = mSetupValues->Find (mSetupValues, Identifier);
  if (!CompareGuid (Namespace, &gVaroSettingsNamespaceGuid) || (Question == NULL) || !Question->HasDefault) {
    return EFI_NOT_FOUND;
  }

  //
  // Zero-extended to what was asked for, if it fits.
  //
  if ((*Size == 0) || ((*Size < sizeof (UINT64)) && (RShiftU64 (Question->Default, (UINTN)(8 * *Size)) != 0))) {
    *Size = Question->Width;
    return EFI_BUFFER_TOO_SMALL;
  }

  *Size = MIN (*Size, sizeof (UINT64));
  CopyMem (Value, &Question->Default, (UINTN)*Size);
  return EFI_SUCCESS;
}

STATIC SettingsProtocol         mSettingsProtocol = { ReadSetting };
STATIC SettingDefaultsProtocol  mSettingDefaults  = { .GetDefault = GetDefault };

EFI_STATUS
EFIAPI
SettingsDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_HANDLE  Handle;
  EFI_STATUS  Status;

  Status = gBS->LocateProtocol (&gVaroSetupValuesProtocolGuid, NULL, (VOID **)&mSetupValues);
  Handle = NULL;
  if (!EFI_ERROR (Status) && PlatformHasPart ("settings")) {
    Status = gBS->InstallMultipleProtocolInterfaces (&Handle, &gVaroSettingsProtocolGuid, &mSettingsProtocol, NULL);
  }

  if (!EFI_ERROR (Status) && PlatformHasPart ("defaults")) {
    Status = gBS->InstallMultipleProtocolInterfaces (
                    &Handle,
                    &gVaroSettingDefaultsProtocolGuid,
                    &mSettingDefaults,
                    NULL
                    );
  }

  return Status;
}
