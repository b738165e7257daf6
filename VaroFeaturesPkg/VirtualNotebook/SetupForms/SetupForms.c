/** @file
  Publishes the form set of a module: its form package and its strings, as one package list of the HII database.

  Every form set of the setup is a module of its own, made of this file, its VFR and its strings.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/HiiLib.h>
#include <Library/ScenarioLib.h>

//
// The VFR compiler names the array after the file, which has the module's name.
//
extern UINT8  FORM_PACKAGE[];

EFI_STATUS
EFIAPI
SetupFormsEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_HII_HANDLE  HiiHandle;

  if (ScenarioLists ("without", "setup")) {
    return EFI_SUCCESS;
  }

  HiiHandle = HiiAddPackages (&gEfiCallerIdGuid, ImageHandle, STRING_ARRAY_NAME, FORM_PACKAGE, NULL);
  return (HiiHandle == NULL) ? EFI_OUT_OF_RESOURCES : EFI_SUCCESS;
}
