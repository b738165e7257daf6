/** @file
  SettingsDxe: the notebook's numbered settings and their defaults, behind SettingsProtocol and SettingDefaultsProtocol.

  A setting is either one of the platform's own, kept in the variable "NotebookSettings" once it differs from how the
  notebook was made, or a question of the setup.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/DebugLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/ScenarioLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Library/UefiRuntimeServicesTableLib.h>
#include <Protocol/SettingDefaults.h>
#include <Protocol/Settings.h>
#include <Protocol/SettingWriter.h>
#include <Protocol/SetupValues.h>
#include <Uefi/UefiInternalFormRepresentation.h>

#define SETTINGS_VARIABLE  L"NotebookSettings"
#define FAILING_CAPACITY   32

//
// The time of day at which the notebook starts by itself. The clock's registers hold it in BCD, and so does the
// setting, whereas the setup shows plain numbers.
//
#define SETTING_AUTO_ON_HOUR    1142
#define SETTING_AUTO_ON_MINUTE  1143

typedef struct {
  UINT32    Number;
  UINT8     Width;    ///< bytes
  UINT16    Value;    ///< current value
} PlatformSetting;

//
// As the notebook was made. ChargePowerLimitFactoryFlag (12054) is none of this model's settings.
//
STATIC PlatformSetting  mSettings[] = {
  { 1340,  2, 0x0012 },   // AuxoraSupportLevel
  { 1469,  1, 1      },   // HEVC
  { 1621,  2, 32     },   // longest admin password
  { 1623,  2, 32     },   // longest system password
  { 1751,  1, 1      },   // OverrideBatteryChargeFactory
  { 1756,  2, 4      },   // MfgModePxeAttribute
  { 1843,  1, 0      },   // MasterPasswordLockout
  { 1874,  2, 24     },   // longest password while there is an owner password
  { 1879,  1, 0      },   // FrontFan
  { 1881,  1, 0      },   // AdvancedDebugMenu
  { 3633,  2, 0x0C4A },   // CommonSystemId
  { 3728,  1, 2      },   // ServiceResetConfig
  { 0x2618, 1, 1     },   // the platform keeps an asset tag
  { 9902,  2, 0x4150 }    // WlanCountryCode
};

STATIC SetupValuesProtocol  *mSetupValues;
STATIC UINT32               mFailing[FAILING_CAPACITY];   ///< settings that cannot be read in this boot
STATIC UINTN                mFailingCount;

STATIC
PlatformSetting *
FindSetting (
  IN UINT32  Number
  )
{
  UINTN  Index;

  for (Index = 0; Index < ARRAY_SIZE (mSettings); Index++) {
    if (mSettings[Index].Number == Number) {
      return &mSettings[Index];
    }
  }

  return NULL;
}

STATIC
BOOLEAN
IsFailing (
  IN UINT32  Number
  )
{
  UINTN  Index;

  for (Index = 0; Index < mFailingCount; Index++) {
    if (mFailing[Index] == Number) {
      return TRUE;
    }
  }

  return FALSE;
}

/**
  Reads a question's value as the platform's setting behind it.

  @param[out]  Width  Bytes of the value.
  @param[out]  Value  The value, when it has 8 bytes at most.
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
  EFI_STATUS        Status;

  Question = mSetupValues->Find (mSetupValues, Number);
  if (Question == NULL) {
    return EFI_NOT_FOUND;
  }

  *Width = Question->Width;
  if (*Width > sizeof (*Value)) {
    return EFI_BUFFER_TOO_SMALL;   // a text; settings are numbers
  }

  Status = mSetupValues->Read (mSetupValues, Question, Value);
  if (!EFI_ERROR (Status) && ((Number == SETTING_AUTO_ON_HOUR) || (Number == SETTING_AUTO_ON_MINUTE))) {
    *Value = DecimalToBcd8 ((UINT8)*Value);
  }

  return Status;
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
  CONST PlatformSetting  *Platform;
  UINT64                 Width;
  UINT64                 Current;
  EFI_STATUS             Status;

  if (!CompareGuid (Namespace, &gVaroSettingsNamespaceGuid)) {
    return EFI_NOT_FOUND;
  }

  if (IsFailing (Setting)) {
    return EFI_DEVICE_ERROR;
  }

  Current  = 0;
  Platform = FindSetting (Setting);
  if (Platform != NULL) {
    Width   = Platform->Width;
    Current = Platform->Value;
  } else {
    Status = ReadQuestion (Setting, &Width, &Current);
    if (Status == EFI_BUFFER_TOO_SMALL) {
      *Size = Width;
    }

    if (EFI_ERROR (Status)) {
      return Status;
    }
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

STATIC
EFI_STATUS
WriteQuestion (
  IN CONST SetupValue  *Question,
  IN CONST CHAR8       *Text
  )
{
  UINT8       *Value;
  UINT64      Number;
  EFI_STATUS  Status;

  Value = AllocateZeroPool (MAX (Question->Width, sizeof (Number)));
  if (Value == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  if (Question->Opcode == EFI_IFR_STRING_OP) {
    //
    // A text that fills the question has no terminator.
    //
    for (Number = 0; (Text[Number] != '\0') && (Number < Question->Width / sizeof (CHAR16)); Number++) {
      Value[2 * Number] = (UINT8)Text[Number];
    }
  } else {
    Number = ReadScenarioNumber (Text);
    CopyMem (Value, &Number, sizeof (Number));
  }

  Status = mSetupValues->Write (mSetupValues, Question, Value);
  FreePool (Value);
  return Status;
}

/**
  Finds what is changed for a number. The asset tag is a setting as well as a question: the question's text is changed.

  @param[out]  Platform  The platform's own setting; NULL when it is a question.
  @param[out]  Question  The question; NULL when it is one of the platform's own.

  @retval FALSE  There is no such setting.
**/
STATIC
BOOLEAN
FindTarget (
  IN  UINT32            Setting,
  OUT PlatformSetting   **Platform,
  OUT CONST SetupValue  **Question
  )
{
  *Platform = FindSetting (Setting);
  *Question = mSetupValues->Find (mSetupValues, Setting);
  if ((*Question != NULL) && ((*Platform == NULL) || ((*Question)->Opcode == EFI_IFR_STRING_OP))) {
    *Platform = NULL;
  } else {
    *Question = NULL;
  }

  return (BOOLEAN)((*Platform != NULL) || (*Question != NULL));
}

STATIC
EFI_STATUS
EFIAPI
CheckSetting (
  IN SettingWriterProtocol  *This,
  IN UINT32                 Setting,
  IN CONST CHAR8            *Text
  )
{
  PlatformSetting   *Platform;
  CONST SetupValue  *Question;
  UINT8             *Value;
  UINTN             Width;
  EFI_STATUS        Status;

  if (!FindTarget (Setting, &Platform, &Question)) {
    return EFI_NOT_FOUND;
  }

  Width = (Platform != NULL) ? Platform->Width : Question->Width;
  if (Question != NULL) {
    Value = AllocatePool (Width);
    if (Value == NULL) {
      return EFI_OUT_OF_RESOURCES;
    }

    Status = mSetupValues->Read (mSetupValues, Question, Value);
    FreePool (Value);
    if (EFI_ERROR (Status)) {
      return Status;
    }

    if (Question->Opcode == EFI_IFR_STRING_OP) {
      return (AsciiStrLen (Text) <= Width / sizeof (CHAR16)) ? EFI_SUCCESS : EFI_INVALID_PARAMETER;
    }
  }

  return ((Width >= sizeof (UINT64)) || (RShiftU64 (ReadScenarioNumber (Text), 8 * Width) == 0)) ? EFI_SUCCESS :
         EFI_INVALID_PARAMETER;
}

STATIC
EFI_STATUS
EFIAPI
WriteSetting (
  IN SettingWriterProtocol  *This,
  IN UINT32                 Setting,
  IN CONST CHAR8            *Text
  )
{
  PlatformSetting   *Platform;
  CONST SetupValue  *Question;

  if (!FindTarget (Setting, &Platform, &Question)) {
    return EFI_NOT_FOUND;
  }

  if (Question != NULL) {
    return WriteQuestion (Question, Text);
  }

  Platform->Value = (UINT16)ReadScenarioNumber (Text);
  return gRT->SetVariable (
                SETTINGS_VARIABLE,
                &gNotebookVariableGuid,
                EFI_VARIABLE_NON_VOLATILE | EFI_VARIABLE_BOOTSERVICE_ACCESS,
                sizeof (mSettings),
                mSettings
                );
}

/**
  Takes over what was changed in earlier boots.
**/
STATIC
VOID
LoadSettings (
  VOID
  )
{
  PlatformSetting  Saved[ARRAY_SIZE (mSettings)];
  PlatformSetting  *Setting;
  UINTN            Size;
  UINTN            Index;

  Size = sizeof (Saved);
  if (EFI_ERROR (gRT->GetVariable (SETTINGS_VARIABLE, &gNotebookVariableGuid, NULL, &Size, Saved))) {
    return;
  }

  for (Index = 0; Index < Size / sizeof (Saved[0]); Index++) {
    Setting = FindSetting (Saved[Index].Number);
    if (Setting != NULL) {
      Setting->Value = Saved[Index].Value;
    }
  }
}

STATIC
VOID
LoadFailing (
  VOID
  )
{
  CHAR8  *Text;
  CHAR8  *Rest;
  CHAR8  *Entry;

  Text = GetScenarioText ("failing-settings");
  Rest = Text;
  while ((mFailingCount < FAILING_CAPACITY) && ((Entry = NextScenarioEntry (&Rest, ',')) != NULL)) {
    mFailing[mFailingCount] = (UINT32)ReadScenarioNumber (Entry);
    mFailingCount++;
  }

  if (Text != NULL) {
    FreePool (Text);
  }
}

STATIC SettingsProtocol         mSettingsProtocol = { ReadSetting };
STATIC SettingDefaultsProtocol  mSettingDefaults  = { .GetDefault = GetDefault };
STATIC SettingWriterProtocol    mSettingWriter    = { WriteSetting, CheckSetting };

EFI_STATUS
EFIAPI
SettingsDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_HANDLE  Handle;
  EFI_STATUS  Status;

  Status = gBS->LocateProtocol (&gNotebookSetupValuesProtocolGuid, NULL, (VOID **)&mSetupValues);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  LoadSettings ();
  LoadFailing ();
  Handle = NULL;
  Status = gBS->InstallMultipleProtocolInterfaces (&Handle, &gNotebookSettingWriterProtocolGuid, &mSettingWriter, NULL);
  if (!EFI_ERROR (Status) && !ScenarioLists ("without", "settings")) {
    Status = gBS->InstallMultipleProtocolInterfaces (&Handle, &gVaroSettingsProtocolGuid, &mSettingsProtocol, NULL);
  }

  if (!EFI_ERROR (Status) && !ScenarioLists ("without", "defaults")) {
    Status = gBS->InstallMultipleProtocolInterfaces (
                    &Handle,
                    &gVaroSettingDefaultsProtocolGuid,
                    &mSettingDefaults,
                    NULL
                    );
  }

  return Status;
}
