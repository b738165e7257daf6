/** @file
  FakeUefi: the variable services.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "FakeUefi/FakeUefi.hpp"

EFI_STATUS FakeUefi::SetVariable(const CHAR16* name, const EFI_GUID& vendor, UINT32 attributes, UINTN size,
                                 const void* data) {
  constexpr UINT32 kKnown = EFI_VARIABLE_NON_VOLATILE | EFI_VARIABLE_BOOTSERVICE_ACCESS | EFI_VARIABLE_RUNTIME_ACCESS;
  constexpr UINT32 kAccess = EFI_VARIABLE_BOOTSERVICE_ACCESS | EFI_VARIABLE_RUNTIME_ACCESS;
  if (*name == 0 || (attributes & ~kKnown) != 0 || (attributes & kAccess) == EFI_VARIABLE_RUNTIME_ACCESS ||
      (size != 0 && data == nullptr)) {
    return EFI_INVALID_PARAMETER;
  }
  const VariableKey key{Ucs2String(name), vendor};
  const auto found = Variables.find(key);
  if (found != Variables.end() && Protected.contains(key.first)) {
    return EFI_SECURITY_VIOLATION;
  }
  const bool deletes = size == 0 || (attributes & kAccess) == 0;
  if (found == Variables.end() && deletes) {
    return EFI_NOT_FOUND;
  }
  if (found != Variables.end() && (attributes & kAccess) != 0 && found->second.Attributes != attributes) {
    return EFI_INVALID_PARAMETER;
  }
  if (deletes) {
    Variables.erase(found);
    return EFI_SUCCESS;
  }
  const auto sizeOf = [](const VariableKey& of, size_t bytes) {
    return (of.first.size() + 1) * sizeof(CHAR16) + bytes;
  };
  size_t used = sizeOf(key, size);
  if (used > VariableSizeLimit) {
    return EFI_INVALID_PARAMETER;
  }
  for (const auto& entry : Variables) {
    used +=
        &entry == (found == Variables.end() ? nullptr : &*found) ? 0 : sizeOf(entry.first, entry.second.Data.size());
  }
  if (used > VariableSpaceLimit) {
    return EFI_OUT_OF_RESOURCES;
  }
  const auto* const bytes = static_cast<const std::uint8_t*>(data);
  Variables[key] = {attributes, Bytes(bytes, bytes + size)};
  return EFI_SUCCESS;
}

void FakeUefi::FillVariableServices() {
  runtimeServices_.GetVariable = [](CHAR16* name, EFI_GUID* vendor, UINT32* attributes, UINTN* size,
                                    VOID* data) -> EFI_STATUS {
    if (name == nullptr || vendor == nullptr || size == nullptr) {
      return EFI_INVALID_PARAMETER;
    }
    const EFI_STATUS status = Current().Enter(Service::VariableRead);
    if (EFI_ERROR(status)) {
      return status;
    }
    const auto found = Current().Variables.find({Ucs2String(name), *vendor});
    if (*name == 0 || found == Current().Variables.end()) {
      return EFI_NOT_FOUND;
    }
    const Variable& variable = found->second;
    if (attributes != nullptr) {
      *attributes = variable.Attributes;
    }
    const UINTN room = std::exchange(*size, variable.Data.size());
    if (room < *size) {
      return EFI_BUFFER_TOO_SMALL;
    }
    if (data == nullptr) {
      return EFI_INVALID_PARAMETER;
    }
    std::copy(variable.Data.begin(), variable.Data.end(), static_cast<std::uint8_t*>(data));
    return EFI_SUCCESS;
  };
  runtimeServices_.SetVariable = [](CHAR16* name, EFI_GUID* vendor, UINT32 attributes, UINTN size,
                                    VOID* data) -> EFI_STATUS {
    if (name == nullptr || vendor == nullptr) {
      return EFI_INVALID_PARAMETER;
    }
    const EFI_STATUS status = Current().Enter(Service::VariableWrite);
    return EFI_ERROR(status) ? status : Current().SetVariable(name, *vendor, attributes, size, data);
  };
}
