/** @file
  The driver's entry point: what it cannot do without, the first wait, the attribute access protocol.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "access/AttributeAccess.hpp"
#include "lifecycle/DriverState.hpp"
#include "lifecycle/FormSetsUpdated.hpp"
#include "uefi/Protocols.hpp"
#include "uefi/Status.hpp"

extern "C" {
#include <Protocol/FormSetsUpdated.h>
#include <Protocol/PasswordService.h>
}

constinit DriverState mState{};

namespace {

constexpr UINTN kRuntimePages = 8;

/// Pages for the platform's memory services at run time, below 4 GiB where 32-bit addresses reach them. Nothing here
/// reads them, and a platform without such memory does without.
void ReserveRuntimePages() {
  EFI_PHYSICAL_ADDRESS address = MAX_UINT32;
  IgnoreStatus(gBS->AllocatePages(AllocateMaxAddress, EfiRuntimeServicesData, kRuntimePages, &address));
}

bool ReadOwnerPasswordFlag() {
  static_assert(offsetof(PasswordServiceProtocol, OwnerPassword) == 13);
  const auto* const service = FindProtocol<PasswordServiceProtocol>(gVaroPasswordServiceProtocolGuid);
  if (service == nullptr) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: gVaroPasswordServiceProtocolGuid not found: there is no owner password\n"));
  }
  return service != nullptr && service->Revision >= PASSWORD_SERVICE_OWNER_REVISION && service->OwnerPassword != 0;
}

template <typename T>
EFI_STATUS Require(EFI_GUID& guid, [[maybe_unused]] const CHAR8* name, T*& interface) {
  EFI_STATUS status = LocateProtocol(guid, interface);
  if (status == EFI_SUCCESS && interface == nullptr) {
    status = EFI_NOT_FOUND;  // installed as a mere signal
  }
  if (EFI_ERROR(status)) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: %a not found: no attribute is gathered or published\n", name));
  }
  return status;
}

EFI_STATUS LocateRequired(DriverState& state) {
  EFI_STATUS status = Require(gEfiHiiDatabaseProtocolGuid, "gEfiHiiDatabaseProtocolGuid", state.HiiDatabase);
  if (!EFI_ERROR(status)) {
    status = Require(gVaroSettingsProtocolGuid, "gVaroSettingsProtocolGuid", state.Settings);
  }
  if (!EFI_ERROR(status)) {
    status = Require(gVaroFormBrowserDataProtocolGuid, "gVaroFormBrowserDataProtocolGuid", state.FormBrowser);
  }
  if (!EFI_ERROR(status)) {
    status = Require(gVaroTableTransportProtocolGuid, "gVaroTableTransportProtocolGuid", state.Transport);
    if (status != EFI_SUCCESS) {
      state.Transport = nullptr;  // a warning lets the tables be published without being sent
    }
  }
  return status;
}

EFI_STATUS EFIAPI UnloadDriver(EFI_HANDLE imageHandle) {
  if (IsArmed(mState.FormSetsWait) || IsArmed(mState.TablesWait)) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: unloaded while it waits: the signal it waits for will call into nowhere\n"));
  }
  return UnloadAttributeAccess(imageHandle);
}

EFI_STATUS StartDriver(DriverState& state, EFI_HANDLE imageHandle, EFI_SYSTEM_TABLE* systemTable) {
  ReserveRuntimePages();
  // To the end of boot services: the array is published as it stands.
  state.Descriptors = AllocateZeroedArray<TableDescriptor>(TABLE_DESCRIPTOR_COUNT).release();
  if (state.Descriptors == nullptr) {
    return EFI_OUT_OF_RESOURCES;
  }
  state.OwnerPassword = ReadOwnerPasswordFlag();
  const EFI_STATUS status = LocateRequired(state);
  if (!EFI_ERROR(status)) {
    constexpr std::array<const EFI_GUID*, 1> kAwaited = {&gVaroFormSetsUpdatedProtocolGuid};
    state.FormSetsWait = RegisterOnPrereq(state.Prerequisites, nullptr, CallbackOnAllFormSetsUpdated, imageHandle,
                                          systemTable, kAwaited);
    if (state.FormSetsWait == nullptr) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: cannot wait for the form sets: no attribute is gathered or published\n"));
    }
  }
  IgnoreStatus(InstallAttributeAccessProtocol(imageHandle, UnloadDriver));  // the tables do not depend on it
  return status;
}

}  // namespace

extern "C" EFI_STATUS EFIAPI CorvaneDxeEntryPoint(EFI_HANDLE imageHandle, EFI_SYSTEM_TABLE* systemTable) {
  return StartDriver(mState, imageHandle, systemTable);
}
