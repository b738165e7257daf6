/** @file
  PlatformInfoDxe: what the notebook says of itself: firmware version, mode, cameras, asset tag.

  Scenario items: "firmware-version" stands in for the version of the build; "factory-mode" non-zero puts the notebook
  into a factory mode; "cameras" is how many it has.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PcdLib.h>
#include <Library/ScenarioLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/AssetTagLength.h>
#include <Protocol/CameraIdentifiers.h>
#include <Protocol/FirmwareVersion.h>
#include <Protocol/ModeQuery.h>
#include <Protocol/SetupValues.h>

#define CAMERAS_OF_THIS_MODEL  2
#define FACTORY_MODE           3   ///< number of the mode that "factory-mode" stands for

#define ASSET_TAG_MINIMUM  1
#define ASSET_TAG_MAXIMUM  10

#define QUESTION_ASSET_TAG      9752
#define QUESTION_SECOND_STRING  1559

//
// The third place holds no camera, on any model.
//
STATIC CONST CHAR8 *CONST  mCameras[] = {
  "FRONT-5MP-RGB", "FRONT-IR-400K", NULL, "REAR-8MP-RGB", "AUX-2MP-DEPTH", "AUX-1MP-MONO"
};

STATIC BOOLEAN              mFactoryMode;
STATIC FirmwareVersionData  mVersionData;

/**
  Gives the bounds of the asset tag.
**/
STATIC
EFI_STATUS
EFIAPI
GetAssetTagLength (
  IN  UINT32  Selector,
  IN  VOID    *Context,
  OUT UINT64  *Minimum,
  OUT UINT64  *Maximum
  )
{
  if (Selector != 1) {
    return EFI_INVALID_PARAMETER;
  }

  *Minimum = ASSET_TAG_MINIMUM;
  *Maximum = ASSET_TAG_MAXIMUM;
  return EFI_SUCCESS;
}

/**
  Gives a string that the owner typed into the setup.
**/
STATIC
EFI_STATUS
EFIAPI
GetPlatformString (
  IN     UINT32  Selector,
  IN     UINT32  Context,
  IN OUT UINT64  *Size,
  OUT    CHAR8   *Buffer OPTIONAL
  )
{
  SetupValuesProtocol  *SetupValues;
  CONST SetupValue     *Question;
  CHAR16               *Text;
  UINTN                Length;
  UINTN                Index;
  EFI_STATUS           Status;

  if ((Selector != PLATFORM_STRING_ASSET_TAG) && (Selector != PLATFORM_STRING_SECOND)) {
    return EFI_NOT_FOUND;
  }

  Status = gBS->LocateProtocol (&gNotebookSetupValuesProtocolGuid, NULL, (VOID **)&SetupValues);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  Question = SetupValues->Find (
                            SetupValues,
                            (Selector == PLATFORM_STRING_ASSET_TAG) ? QUESTION_ASSET_TAG : QUESTION_SECOND_STRING
                            );
  if (Question == NULL) {
    return EFI_NOT_FOUND;
  }

  Text = AllocateZeroPool (Question->Width + sizeof (CHAR16));
  if (Text == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Status = SetupValues->Read (SetupValues, Question, Text);
  if (!EFI_ERROR (Status)) {
    Length = StrLen (Text);
    if (*Size < Length) {
      Status = EFI_BUFFER_TOO_SMALL;
    } else {
      for (Index = 0; Index < Length; Index++) {
        Buffer[Index] = (CHAR8)Text[Index];
      }
    }

    *Size = Length;
  }

  FreePool (Text);
  return Status;
}

/**
  Tells whether the notebook is in any of the listed modes.
**/
STATIC
EFI_STATUS
EFIAPI
QueryAnyMode (
  OUT UINT32  *Result,
  ...
  )
{
  VA_LIST  Modes;
  UINT32   Mode;

  *Result = 0;
  VA_START (Modes, Result);
  for (Mode = VA_ARG (Modes, UINT32); Mode != MODE_QUERY_END; Mode = VA_ARG (Modes, UINT32)) {
    if (mFactoryMode && (Mode == FACTORY_MODE)) {
      *Result = 1;
    }
  }

  VA_END (Modes);
  return EFI_SUCCESS;
}

STATIC AssetTagLengthProtocol     mAssetTagLength  = { GetAssetTagLength, GetPlatformString };
STATIC CameraIdentifiersProtocol  mCamerasProtocol = { CAMERAS_OF_THIS_MODEL, mCameras };
STATIC FirmwareVersionProtocol    mFirmwareVersion = { &mVersionData };
STATIC ModeQueryProtocol          mModeQuery       = { NULL, QueryAnyMode };

STATIC
CONST CHAR8 *
ReadFirmwareVersion (
  VOID
  )
{
  CONST CHAR16  *Built;
  CHAR8         *Version;

  Version = GetScenarioText ("firmware-version");
  if (Version == NULL) {
    Built   = PcdGetPtr (PcdFirmwareVersionString);
    Version = AllocateZeroPool (StrLen (Built) + 1);
    if (Version != NULL) {
      UnicodeStrToAsciiStrS (Built, Version, StrLen (Built) + 1);
    }
  }

  return Version;
}

typedef struct {
  CONST CHAR8    *Name;    ///< in the scenario item "without"
  EFI_GUID       *Guid;
  VOID           *Interface;
} PlatformPart;

EFI_STATUS
EFIAPI
PlatformInfoDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  STATIC CONST PlatformPart  Parts[] = {
    { "asset-tag",        &gVaroAssetTagLengthProtocolGuid,    &mAssetTagLength  },
    { "cameras",          &gVaroCameraIdentifiersProtocolGuid, &mCamerasProtocol },
    { "firmware-version", &gVaroFirmwareVersionProtocolGuid,   &mFirmwareVersion },
    { "mode-query",       &gVaroModeQueryProtocolGuid,         &mModeQuery       }
  };
  EFI_HANDLE                 Handle;
  EFI_STATUS                 Status;
  UINTN                      Index;

  mVersionData.Version   = ReadFirmwareVersion ();
  mFactoryMode           = (BOOLEAN)(GetScenarioNumber ("factory-mode", 0) != 0);
  mCamerasProtocol.Count = (UINT8)MIN (GetScenarioNumber ("cameras", CAMERAS_OF_THIS_MODEL), ARRAY_SIZE (mCameras));
  if (mCamerasProtocol.Count == 0) {
    mCamerasProtocol.Identifiers = NULL;
  }

  Handle = NULL;
  Status = EFI_SUCCESS;
  for (Index = 0; !EFI_ERROR (Status) && (Index < ARRAY_SIZE (Parts)); Index++) {
    if (!ScenarioLists ("without", Parts[Index].Name)) {
      Status = gBS->InstallProtocolInterface (&Handle, Parts[Index].Guid, EFI_NATIVE_INTERFACE, Parts[Index].Interface);
    }
  }

  return Status;
}
