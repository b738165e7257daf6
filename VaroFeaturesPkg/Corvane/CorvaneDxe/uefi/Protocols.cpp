/** @file
  Protocol look-up.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "uefi/Protocols.hpp"

#include "uefi/Status.hpp"

[[gnu::noinline]] EFI_STATUS LocateInterface(EFI_GUID& guid, void*& interface) {
  interface = nullptr;
  const EFI_STATUS status = gBS->LocateProtocol(&guid, nullptr, &interface);
  if (EFI_ERROR(status)) {
    interface = nullptr;
  }
  return status;
}

[[gnu::noinline]] void* FindInterface(EFI_GUID& guid) {
  void* interface = nullptr;
  IgnoreStatus(LocateInterface(guid, interface));  // null says it
  return interface;
}
