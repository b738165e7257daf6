/** @file
  FirmwareVersionDxe: FirmwareVersionProtocol with the version of PcdFirmwareVersionString.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/DebugLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PcdLib.h>
#include <Library/PlatformPartLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/FirmwareVersion.h>

STATIC FirmwareVersionData      mVersionData;
STATIC FirmwareVersionProtocol  mFirmwareVersion = { &mVersionData };

EFI_STATUS
EFIAPI
FirmwareVersionDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  CONST CHAR16  *Version;
  CHAR8         *Text;
  UINTN         Size;
  EFI_HANDLE    Handle;

  if (!PlatformHasPart ("firmware-version")) {
    return EFI_UNSUPPORTED;
  }

  Version = PcdGetPtr (PcdFirmwareVersionString);
  if (Version[0] == L'\0') {
    DEBUG ((DEBUG_WARN, "%a: PcdFirmwareVersionString is empty: nothing is cached\n", gEfiCallerBaseName));
  }

  Size = StrLen (Version) + 1;
  Text = AllocateZeroPool (Size);
  if (Text == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  UnicodeStrToAsciiStrS (Version, Text, Size);
  mVersionData.Version = Text;
  Handle               = NULL;
  return gBS->InstallMultipleProtocolInterfaces (&Handle, &gVaroFirmwareVersionProtocolGuid, &mFirmwareVersion, NULL);
}
