/** @file
  ShellOption: the boot option that the notebook starts.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/DebugLib.h>
#include <Library/DevicePathLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/UefiBootManagerLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Library/UefiLib.h>
#include <Protocol/LoadedImage.h>
#include "ShellOption.h"

STATIC CHAR16  mDescription[] = L"Notebook Shell";
STATIC CHAR16  mArguments[]   = L"-delay 0";

/**
  The Shell lies in the volume that this driver came from, under a name of the notebook's own: since EDK II 202505 the
  platform's boot manager removes an option for the Shell's first name that it did not make itself.

  @return  Device path in pool, owned by the caller, or NULL.
**/
STATIC
EFI_DEVICE_PATH_PROTOCOL *
ShellPath (
  VOID
  )
{
  EFI_LOADED_IMAGE_PROTOCOL          *Image;
  MEDIA_FW_VOL_FILEPATH_DEVICE_PATH  File;

  if (EFI_ERROR (gBS->HandleProtocol (gImageHandle, &gEfiLoadedImageProtocolGuid, (VOID **)&Image))) {
    return NULL;
  }

  EfiInitializeFwVolDevicepathNode (&File, &gNotebookShellFileGuid);
  return AppendDevicePathNode (DevicePathFromHandle (Image->DeviceHandle), (EFI_DEVICE_PATH_PROTOCOL *)&File);
}

VOID
AddShellOption (
  VOID
  )
{
  EFI_DEVICE_PATH_PROTOCOL      *Path;
  EFI_BOOT_MANAGER_LOAD_OPTION  Option;
  EFI_BOOT_MANAGER_LOAD_OPTION  *Known;
  UINTN                         Count;
  EFI_STATUS                    Status;

  Path   = ShellPath ();
  Status = EfiBootManagerInitializeLoadOption (
             &Option,
             LoadOptionNumberUnassigned,
             LoadOptionTypeBoot,
             LOAD_OPTION_ACTIVE,
             mDescription,
             Path,
             (UINT8 *)mArguments,
             sizeof (mArguments)
             );
  if (!EFI_ERROR (Status)) {
    Known = EfiBootManagerGetLoadOptions (&Count, LoadOptionTypeBoot);
    if (EfiBootManagerFindLoadOption (&Option, Known, Count) < 0) {
      Status = EfiBootManagerAddLoadOptionVariable (&Option, 0);
    }

    EfiBootManagerFreeLoadOptions (Known, Count);
    EfiBootManagerFreeLoadOption (&Option);
  }

  ASSERT_EFI_ERROR (Status);
  if (Path != NULL) {
    FreePool (Path);
  }
}
