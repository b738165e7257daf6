/** @file
  ServiceMannerDxe: has the attribute service misbehave, when the scenario item "service" asks for it: "fails"
  (requests are not delivered) or "silent" (delivered, but handled by nobody).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/DebugLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/ScenarioLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/RequestDispatch.h>

STATIC
EFI_STATUS
EFIAPI
FailToDispatch (
  IN OUT DispatchDescriptor  *Descriptor
  )
{
  return EFI_DEVICE_ERROR;
}

STATIC
EFI_STATUS
EFIAPI
DispatchSilently (
  IN OUT DispatchDescriptor  *Descriptor
  )
{
  return EFI_SUCCESS;
}

STATIC RequestDispatchProtocol  mFails  = { FailToDispatch };
STATIC RequestDispatchProtocol  mSilent = { DispatchSilently };

EFI_STATUS
EFIAPI
ServiceMannerDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  RequestDispatchProtocol  *Service;
  RequestDispatchProtocol  *Stand;
  EFI_HANDLE               *Handles;
  UINTN                    Count;
  CHAR8                    *Text;
  EFI_STATUS               Status;

  Text = GetScenarioText ("service");
  if (Text == NULL) {
    return EFI_UNSUPPORTED;
  }

  Stand = (AsciiStrCmp (Text, "fails") == 0) ? &mFails : &mSilent;
  ASSERT ((Stand == &mFails) || (AsciiStrCmp (Text, "silent") == 0));
  FreePool (Text);
  Status = gBS->LocateHandleBuffer (ByProtocol, &gVaroRequestDispatchProtocolGuid, NULL, &Count, &Handles);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  Status = gBS->HandleProtocol (Handles[0], &gVaroRequestDispatchProtocolGuid, (VOID **)&Service);
  if (!EFI_ERROR (Status)) {
    Status = gBS->ReinstallProtocolInterface (Handles[0], &gVaroRequestDispatchProtocolGuid, Service, Stand);
  }

  FreePool (Handles);
  return Status;
}
