/** @file
  AttrDynamicCommand: attr as a command of the Shell, from the firmware.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/HiiLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Library/UefiHiiServicesLib.h>
#include <Protocol/HiiPackageList.h>
#include <Protocol/ShellDynamicCommand.h>
#include "Attr.h"

STATIC EFI_HII_HANDLE  mHelpTexts;

STATIC
SHELL_STATUS
EFIAPI
RunCommand (
  IN EFI_SHELL_DYNAMIC_COMMAND_PROTOCOL  *This,
  IN EFI_SYSTEM_TABLE                    *SystemTable,
  IN EFI_SHELL_PARAMETERS_PROTOCOL       *Parameters,
  IN EFI_SHELL_PROTOCOL                  *Shell
  )
{
  return RunAttr (Parameters, Shell);
}

STATIC
CHAR16 *
EFIAPI
GetHelp (
  IN EFI_SHELL_DYNAMIC_COMMAND_PROTOCOL  *This,
  IN CONST CHAR8                         *Language
  )
{
  return HiiGetString (mHelpTexts, STRING_TOKEN (STR_GET_HELP_ATTR), Language);
}

STATIC EFI_SHELL_DYNAMIC_COMMAND_PROTOCOL  mCommand = { L"attr", RunCommand, GetHelp };

EFI_STATUS
EFIAPI
AttrDynamicCommandEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_HII_PACKAGE_LIST_HEADER  *Packages;
  EFI_STATUS                   Status;

  Status = gBS->HandleProtocol (ImageHandle, &gEfiHiiPackageListProtocolGuid, (VOID **)&Packages);
  if (!EFI_ERROR (Status)) {
    Status = gHiiDatabase->NewPackageList (gHiiDatabase, Packages, NULL, &mHelpTexts);
  }

  if (EFI_ERROR (Status)) {
    return Status;
  }

  Status = gBS->InstallProtocolInterface (
                  &ImageHandle,
                  &gEfiShellDynamicCommandProtocolGuid,
                  EFI_NATIVE_INTERFACE,
                  &mCommand
                  );
  if (EFI_ERROR (Status)) {
    HiiRemovePackages (mHelpTexts);
  }

  return Status;
}

EFI_STATUS
EFIAPI
AttrDynamicCommandUnload (
  IN EFI_HANDLE  ImageHandle
  )
{
  EFI_STATUS  Status;

  Status = gBS->UninstallProtocolInterface (ImageHandle, &gEfiShellDynamicCommandProtocolGuid, &mCommand);
  if (!EFI_ERROR (Status)) {
    HiiRemovePackages (mHelpTexts);
  }

  return Status;
}
