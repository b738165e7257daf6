/** @file
  ForeignFormsDxe: lets form sets of EDK II's own drivers into the setup, when the scenario item "foreign" asks for
  them.

  The drivers wait for gNotebookForeignFormsProtocolGuid (ForeignFormsGateLib). Their class joins PcdVaroSetupFormSets.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Guid/HiiPlatformSetupFormset.h>
#include <Library/BaseMemoryLib.h>
#include <Library/PcdLib.h>
#include <Library/ScenarioLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/FormBrowserData.h>

EFI_STATUS
EFIAPI
ForeignFormsDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_GUID    Classes[2];
  UINTN       Size;
  EFI_HANDLE  Handle;
  EFI_STATUS  Status;

  if (GetScenarioNumber ("foreign", 0) == 0) {
    return EFI_UNSUPPORTED;
  }

  CopyGuid (&Classes[0], &gVaroSetupFormSetsGuid);
  CopyGuid (&Classes[1], &gEfiHiiPlatformSetupFormsetGuid);
  Size   = sizeof (Classes);
  Status = PcdSetPtrS (PcdVaroSetupFormSets, &Size, Classes);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  Handle = NULL;
  return gBS->InstallMultipleProtocolInterfaces (&Handle, &gNotebookForeignFormsProtocolGuid, NULL, NULL);
}
