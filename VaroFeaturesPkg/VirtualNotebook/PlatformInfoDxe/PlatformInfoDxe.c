/** @file
  PlatformInfoDxe: what the notebook says of itself: firmware version, mode, cameras.

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
#include <Protocol/CameraIdentifiers.h>
#include <Protocol/FirmwareVersion.h>
#include <Protocol/ModeQuery.h>

#define CAMERAS_OF_THIS_MODEL  2
#define FACTORY_MODE           3   ///< number of the mode that "factory-mode" stands for

//
// The third place holds no camera, on any model.
//
STATIC CONST CHAR8 *CONST  mCameras[] = {
  "FRONT-5MP-RGB", "FRONT-IR-400K", NULL, "REAR-8MP-RGB", "AUX-2MP-DEPTH", "AUX-1MP-MONO"
};

STATIC BOOLEAN              mFactoryMode;
STATIC FirmwareVersionData  mVersionData;

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
