/** @file
  AssetTagDxe: AssetTagLengthProtocol with the bounds of PcdVaroAssetTagMinimum and PcdVaroAssetTagMaximum, and with the
  strings that the owner typed into the setup, where the setup has questions of these numbers.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PcdLib.h>
#include <Library/PlatformPartLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/AssetTagLength.h>
#include <Protocol/SetupValues.h>

#define TOKEN_ASSET_TAG      9752
#define TOKEN_SECOND_STRING  1559

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

  *Minimum = PcdGet32 (PcdVaroAssetTagMinimum);
  *Maximum = PcdGet32 (PcdVaroAssetTagMaximum);
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

  Status = gBS->LocateProtocol (&gVaroSetupValuesProtocolGuid, NULL, (VOID **)&SetupValues);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  Question = SetupValues->Find (
                            SetupValues,
                            (Selector == PLATFORM_STRING_ASSET_TAG) ? TOKEN_ASSET_TAG : TOKEN_SECOND_STRING
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

STATIC AssetTagLengthProtocol  mAssetTagLength = { GetAssetTagLength, GetPlatformString };

EFI_STATUS
EFIAPI
AssetTagDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_HANDLE  Handle;

  if (!PlatformHasPart ("asset-tag")) {
    return EFI_UNSUPPORTED;
  }

  Handle = NULL;
  return gBS->InstallMultipleProtocolInterfaces (&Handle, &gVaroAssetTagLengthProtocolGuid, &mAssetTagLength, NULL);
}
