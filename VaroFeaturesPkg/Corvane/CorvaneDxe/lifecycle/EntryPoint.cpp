/** @file
  The driver's entry point: what it cannot do without, the first wait, the attribute access protocol.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "access/protocol/AttributeAccess.hpp"
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

/// Reserves pages below 4 GiB for the platform's memory services at run time. Kept as it is: no code of this driver
/// reads the pages. A platform without such memory has none.
void ReserveRuntimePages() {
  EFI_PHYSICAL_ADDRESS address = MAX_UINT32;
  IgnoreStatus(gBS->AllocatePages(AllocateMaxAddress, EfiRuntimeServicesData, kRuntimePages, &address));
}

bool ReadOwnerPasswordFlag() {
  static_assert(offsetof(PasswordServiceProtocol, OwnerPassword) == 13);
  PasswordServiceProtocol* service = nullptr;
  const EFI_STATUS status = LocateProtocol(gVaroPasswordServiceProtocolGuid, service);
  if (status != EFI_SUCCESS || service == nullptr) {  // a warning does not count
    DEBUG((DEBUG_WARN, "CorvaneDxe: gVaroPasswordServiceProtocolGuid not found: there is no owner password\n"));
    return false;
  }
  return service->Revision >= PASSWORD_SERVICE_OWNER_REVISION && service->OwnerPassword != 0;
}

void WarnMissing([[maybe_unused]] const CHAR8* name) {
  DEBUG((DEBUG_WARN, "CorvaneDxe: %a not found: no attribute is gathered or published\n", name));
}

/// Locates a protocol that the driver needs. A null interface is EFI_NOT_FOUND, also if it comes with a warning.
template <typename T>
EFI_STATUS Require(EFI_GUID& guid, const CHAR8* name, T*& interface) {
  EFI_STATUS status = LocateProtocol(guid, interface);
  if (interface == nullptr && !EFI_ERROR(status)) {
    status = EFI_NOT_FOUND;  // a protocol without functions, installed as a signal
  }
  if (EFI_ERROR(status)) {
    WarnMissing(name);
  }
  return status;
}

/// Locates the transport. Without an error the tables are published, but only a transport with EFI_SUCCESS is used.
EFI_STATUS LocateTransport(TableTransportProtocol*& transport) {
  const EFI_STATUS status = LocateProtocol(gVaroTableTransportProtocolGuid, transport);
  if (EFI_ERROR(status)) {
    WarnMissing("gVaroTableTransportProtocolGuid");
  } else if (status != EFI_SUCCESS || transport == nullptr) {
    DEBUG((DEBUG_WARN,
           "CorvaneDxe: gVaroTableTransportProtocolGuid located with %r and interface %p: no table is sent\n", status,
           transport));
    transport = nullptr;
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
  return EFI_ERROR(status) ? status : LocateTransport(state.Transport);
}

EFI_STATUS EFIAPI UnloadDriver(EFI_HANDLE imageHandle) {
  if (IsArmed(mState.FormSetsWait) || IsArmed(mState.TablesWait)) {
    DEBUG((DEBUG_WARN,
           "CorvaneDxe: unloaded while a notification is pending: the notification will call unmapped code\n"));
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
  state.OwnerPasswordFlag = ReadOwnerPasswordFlag();
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
