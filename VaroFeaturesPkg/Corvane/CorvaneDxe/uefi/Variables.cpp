/** @file
  UEFI variables: reads, writes, deletion.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "uefi/Variables.hpp"

Result<VariableContent> ReadVariable(const CHAR16* name, EFI_GUID& vendor, UINT32 attributes) {
  auto* const writableName = const_cast<CHAR16*>(name);  // UEFI declares an input name without const
  UINTN size = 0;
  EFI_STATUS status = gRT->GetVariable(writableName, &vendor, nullptr, &size, nullptr);
  if (status != EFI_BUFFER_TOO_SMALL) {
    return Failure{EFI_ERROR(status) ? status : EFI_NOT_FOUND};
  }
  VariableContent content{AllocateZeroedArray<std::byte>(size, sizeof(CHAR16))};
  if (!content.Data) {
    return Failure{EFI_OUT_OF_RESOURCES};
  }
  const UINTN room = size;
  UINT32 found = attributes;
  status = gRT->GetVariable(writableName, &vendor, &found, &size, content.Data.get());
  if (!EFI_ERROR(status) && attributes != kAnyAttributes && found != attributes) {
    status = EFI_NOT_FOUND;
  }
  if (EFI_ERROR(status)) {
    return Failure{status};
  }
  content.Size = std::min(size, room);
  return content;
}

[[gnu::noinline]] EFI_STATUS ReadVariable(const CHAR16* name, EFI_GUID& vendor, std::span<std::byte> value,
                                          UINT32& attributes) {
  UINTN size = value.size();
  const EFI_STATUS status = gRT->GetVariable(const_cast<CHAR16*>(name), &vendor, &attributes, &size, value.data());
  return EFI_ERROR(status) || size == value.size() ? status : EFI_BAD_BUFFER_SIZE;
}

EFI_STATUS WriteVariable(const CHAR16* name, EFI_GUID& vendor, UINT32 attributes, std::span<const std::byte> bytes) {
  return gRT->SetVariable(const_cast<CHAR16*>(name), &vendor, attributes, bytes.size(),
                          const_cast<std::byte*>(bytes.data()));
}
