/** @file
  NotebookSettingsDxe: the notebook's own numbered settings, behind PlatformSettingsProtocol, and what changes them from
  outside.

  They are kept in the variable "NotebookSettings" once they differ from how the notebook was made. A value that the
  attribute service accepts for one waits in the variable "PendingValues" for the next boot.

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
#include <Protocol/PendingValues.h>
#include <Protocol/PlatformSettings.h>
#include <Protocol/SettingWriter.h>
#include <Protocol/SetupValues.h>
#include <Uefi/UefiInternalFormRepresentation.h>

#define SETTINGS_VARIABLE  L"NotebookSettings"
#define PENDING_VARIABLE   L"PendingValues"
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
STATIC PlatformSetting      mPending[ARRAY_SIZE (mSettings) + 1];   ///< values of the next boot, and a free place
STATIC UINTN                mPendingCount;

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
  Reads an hour or minute of the clock.
**/
STATIC
EFI_STATUS
ReadClock (
  IN  UINT32  Number,
  OUT UINT64  *Width,
  OUT UINT64  *Value
  )
{
  CONST SetupValue  *Question;
  EFI_STATUS        Status;

  Question = mSetupValues->Find (mSetupValues, Number);
  if ((Question == NULL) || (Question->Width > sizeof (*Value))) {
    return EFI_NOT_FOUND;
  }

  *Width = Question->Width;
  Status = mSetupValues->Read (mSetupValues, Question, Value);
  *Value = DecimalToBcd8 ((UINT8)*Value);
  return Status;
}

STATIC
EFI_STATUS
EFIAPI
ReadSetting (
  IN  PlatformSettingsProtocol  *This,
  IN  UINT32                    Number,
  OUT UINT64                    *Width,
  OUT UINT64                    *Value
  )
{
  CONST PlatformSetting  *Setting;

  if (IsFailing (Number)) {
    return EFI_DEVICE_ERROR;
  }

  if ((Number == SETTING_AUTO_ON_HOUR) || (Number == SETTING_AUTO_ON_MINUTE)) {
    return ReadClock (Number, Width, Value);
  }

  Setting = FindSetting (Number);
  if (Setting == NULL) {
    return EFI_NOT_FOUND;
  }

  *Width = Setting->Width;
  *Value = Setting->Value;
  return EFI_SUCCESS;
}

/**
  Finds the value that a setting has in the next boot, or the place for it.
**/
STATIC
PlatformSetting *
FindPending (
  IN UINT32  Number
  )
{
  UINTN  Index;

  for (Index = 0; (Index < mPendingCount) && (mPending[Index].Number != Number); Index++) {
  }

  return &mPending[Index];
}

STATIC
EFI_STATUS
EFIAPI
KeepSetting (
  IN PlatformSettingsProtocol  *This,
  IN UINT32                    Number,
  IN UINT64                    Value
  )
{
  CONST PlatformSetting  *Setting;
  PlatformSetting        *Pending;
  UINTN                  Count;
  EFI_STATUS             Status;

  Setting = FindSetting (Number);
  if (Setting == NULL) {
    return EFI_NOT_FOUND;
  }

  Pending        = FindPending (Number);
  Count          = MAX (mPendingCount, (UINTN)(Pending - mPending) + 1);
  *Pending       = *Setting;
  Pending->Value = (UINT16)Value;
  Status         = gRT->SetVariable (
                          PENDING_VARIABLE,
                          &gNotebookVariableGuid,
                          EFI_VARIABLE_NON_VOLATILE | EFI_VARIABLE_BOOTSERVICE_ACCESS,
                          Count * sizeof (*Pending),
                          mPending
                          );
  if (!EFI_ERROR (Status)) {
    mPendingCount = Count;
  }

  return Status;
}

STATIC
EFI_STATUS
EFIAPI
KeptSetting (
  IN  PlatformSettingsProtocol  *This,
  IN  UINT32                    Number,
  OUT UINT64                    *Value
  )
{
  CONST PlatformSetting  *Pending;

  Pending = FindPending (Number);
  if (Pending == mPending + mPendingCount) {
    return EFI_NOT_FOUND;
  }

  *Value = Pending->Value;
  return EFI_SUCCESS;
}

STATIC
EFI_STATUS
SaveSettings (
  VOID
  )
{
  return gRT->SetVariable (
                SETTINGS_VARIABLE,
                &gNotebookVariableGuid,
                EFI_VARIABLE_NON_VOLATILE | EFI_VARIABLE_BOOTSERVICE_ACCESS,
                sizeof (mSettings),
                mSettings
                );
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

  //
  // The asset tag is both: what somebody changes is the text.
  //
  Platform = FindSetting (Setting);
  Question = mSetupValues->Find (mSetupValues, Setting);
  if ((Question != NULL) && ((Platform == NULL) || (Question->Opcode == EFI_IFR_STRING_OP))) {
    return WriteQuestion (Question, Text);
  }

  if (Platform == NULL) {
    return EFI_NOT_FOUND;
  }

  Platform->Value = (UINT16)ReadScenarioNumber (Text);
  return SaveSettings ();
}

/**
  Takes values of a variable over into the settings.
**/
STATIC
EFI_STATUS
LoadSettings (
  IN CHAR16  *Variable
  )
{
  PlatformSetting  Saved[ARRAY_SIZE (mSettings)];
  PlatformSetting  *Setting;
  UINTN            Size;
  UINTN            Index;
  EFI_STATUS       Status;

  Size   = sizeof (Saved);
  Status = gRT->GetVariable (Variable, &gNotebookVariableGuid, NULL, &Size, Saved);
  for (Index = 0; !EFI_ERROR (Status) && (Index < Size / sizeof (Saved[0])); Index++) {
    Setting = FindSetting (Saved[Index].Number);
    if (Setting != NULL) {
      Setting->Value = Saved[Index].Value;
    }
  }

  return Status;
}

STATIC
EFI_STATUS
EFIAPI
ApplyPendingValues (
  IN PendingValuesProtocol  *This
  )
{
  EFI_STATUS  Status;

  Status = LoadSettings (PENDING_VARIABLE);
  if (!EFI_ERROR (Status)) {
    Status = SaveSettings ();
  }

  if (!EFI_ERROR (Status)) {
    Status = gRT->SetVariable (PENDING_VARIABLE, &gNotebookVariableGuid, 0, 0, NULL);
  }

  return Status;
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

STATIC PlatformSettingsProtocol  mPlatformSettings = { ReadSetting, KeepSetting, KeptSetting };
STATIC SettingWriterProtocol     mSettingWriter    = { WriteSetting };
STATIC PendingValuesProtocol     mPendingValues    = { ApplyPendingValues };

EFI_STATUS
EFIAPI
NotebookSettingsDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_HANDLE  Handle;
  EFI_STATUS  Status;

  Status = gBS->LocateProtocol (&gVaroSetupValuesProtocolGuid, NULL, (VOID **)&mSetupValues);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  LoadSettings (SETTINGS_VARIABLE);
  LoadFailing ();
  Handle = NULL;
  return gBS->InstallMultipleProtocolInterfaces (
                &Handle,
                &gVaroPlatformSettingsProtocolGuid,
                &mPlatformSettings,
                &gNotebookSettingWriterProtocolGuid,
                &mSettingWriter,
                &gNotebookPendingValuesProtocolGuid,
                &mPendingValues,
                NULL
                );
}
