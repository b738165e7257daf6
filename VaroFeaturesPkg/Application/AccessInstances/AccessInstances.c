/** @file
  AccessInstances: a UEFI Shell program that lists and removes instances of the attribute access protocol.

    AccessInstances      prints a line for each handle with the protocol: the place that its image was loaded from, or
                         "unloaded"
    AccessInstances -u   unloads these images; their protocols stay installed and can no longer be called
    AccessInstances -r   uninstalls the protocol from handles without an image, so that a driver can be loaded again

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/DevicePathLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/TextOutputLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/AttributeAccess.h>
#include <Protocol/LoadedImage.h>
#include <Protocol/ShellParameters.h>

STATIC
VOID
PutInstance (
  IN CONST EFI_LOADED_IMAGE_PROTOCOL  *Image  OPTIONAL
  )
{
  CHAR16  *Path;

  if (Image == NULL) {
    PutText ("unloaded\n");
    return;
  }

  if ((DevicePathType (Image->FilePath) == MEDIA_DEVICE_PATH) &&
      (DevicePathSubType (Image->FilePath) == MEDIA_PIWG_FW_FILE_DP))
  {
    PutText ("loaded from the firmware\n");
    return;
  }

  Path = ConvertDevicePathToText (Image->FilePath, TRUE, TRUE);
  PutText ("loaded from ");
  PutWideText ((Path == NULL) ? L"?" : Path);
  PutText ("\n");
  if (Path != NULL) {
    FreePool (Path);
  }
}

/**
  Lists, unloads or removes one handle.

  @param[in]  Option  L'u' = unload, L'r' = remove, other = list.
**/
STATIC
VOID
VisitHandle (
  IN EFI_HANDLE  Handle,
  IN CHAR16      Option
  )
{
  EFI_LOADED_IMAGE_PROTOCOL  *Image;
  VOID                       *Access;
  EFI_STATUS                 Status;

  if (EFI_ERROR (gBS->HandleProtocol (Handle, &gEfiLoadedImageProtocolGuid, (VOID **)&Image))) {
    Image = NULL;
  }

  Status = EFI_SUCCESS;
  if ((Option == L'u') && (Image != NULL)) {
    Status = gBS->UnloadImage (Handle);
  } else if ((Option == L'r') && (Image == NULL)) {
    Status = gBS->HandleProtocol (Handle, &gVaroAttributeAccessProtocolGuid, &Access);
    if (!EFI_ERROR (Status)) {
      Status = gBS->UninstallProtocolInterface (Handle, &gVaroAttributeAccessProtocolGuid, Access);
    }
  } else {
    PutInstance (Image);
    return;
  }

  PutFormat ("%a: %r\n", (Option == L'u') ? "unload" : "remove", Status);
}

EFI_STATUS
EFIAPI
AccessInstancesEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_SHELL_PARAMETERS_PROTOCOL  *Parameters;
  EFI_HANDLE                     *Handles;
  CHAR16                         Option;
  UINTN                          Count;
  EFI_STATUS                     Status;

  Option = L'\0';
  Status = gBS->HandleProtocol (ImageHandle, &gEfiShellParametersProtocolGuid, (VOID **)&Parameters);
  if (!EFI_ERROR (Status) && (Parameters->Argc > 1) && (Parameters->Argv[1][0] == L'-')) {
    Option = Parameters->Argv[1][1];
  }

  Status = gBS->LocateHandleBuffer (ByProtocol, &gVaroAttributeAccessProtocolGuid, NULL, &Count, &Handles);
  if (EFI_ERROR (Status)) {
    PutFormat ("none: %r\n", Status);
    return Status;
  }

  while (Count > 0) {
    VisitHandle (Handles[--Count], Option);
  }

  FreePool (Handles);
  return EFI_SUCCESS;
}
