/** @file
  Protocol look-up, typed by the interface that the caller expects.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

/// Locates the first instance of a protocol. `interface` is null unless the status is EFI_SUCCESS or a warning.
[[nodiscard]] EFI_STATUS LocateInterface(EFI_GUID& guid, void*& interface);

template <typename T>
[[nodiscard]] EFI_STATUS LocateProtocol(EFI_GUID& guid, T*& interface) {
  void* found = nullptr;
  const EFI_STATUS status = LocateInterface(guid, found);
  interface = static_cast<T*>(found);
  return status;
}

/// The interface of an optional protocol, or null when it is missing.
[[nodiscard]] void* FindInterface(EFI_GUID& guid);

template <typename T>
[[nodiscard]] T* FindProtocol(EFI_GUID& guid) {
  return static_cast<T*>(FindInterface(guid));
}
