/** @file
  AttrApp: attr as a program, for a Shell without the built-in command.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Library/UefiLib.h>
#include "Attr.h"

///
/// The Shell reads the help text from the image's resources. This reference keeps the text in the image.
///
GLOBAL_REMOVE_IF_UNREFERENCED EFI_STRING_ID  mHelpText = STRING_TOKEN (STR_GET_HELP_ATTR);

EFI_STATUS
EFIAPI
AttrAppEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_SHELL_PARAMETERS_PROTOCOL  *Parameters;
  EFI_SHELL_PROTOCOL             *Shell;
  EFI_STATUS                     Status;

  Status = gBS->HandleProtocol (ImageHandle, &gEfiShellParametersProtocolGuid, (VOID **)&Parameters);
  if (!EFI_ERROR (Status)) {
    Status = gBS->LocateProtocol (&gEfiShellProtocolGuid, NULL, (VOID **)&Shell);
  }

  if (EFI_ERROR (Status)) {
    Print (L"attr: runs in the UEFI Shell only\n");
    return Status;
  }

  return (EFI_STATUS)RunAttr (Parameters, Shell);   // the Shell treats a Shell status as the program's
}
