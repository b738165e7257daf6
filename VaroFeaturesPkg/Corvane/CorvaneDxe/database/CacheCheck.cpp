/** @file
  The attribute cache: whether it may be used, and its deletion.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/Cache.hpp"
#include "database/CacheVariables.hpp"
#include "database/CacheVersion.hpp"
#include "uefi/ByteReader.hpp"
#include "uefi/Protocols.hpp"

extern "C" {
#include <Protocol/FirmwareVersion.h>
}

Result<const CHAR8*> FirmwareVersion() {
  FirmwareVersionProtocol* protocol = nullptr;
  if (const EFI_STATUS status = LocateProtocol(gVaroFirmwareVersionProtocolGuid, protocol); EFI_ERROR(status)) {
    return Failure{status};
  }
  if (protocol == nullptr || protocol->Data == nullptr || protocol->Data->Version == nullptr) {
    return Failure{EFI_NOT_FOUND};
  }
  return protocol->Data->Version;
}

bool CacheIsValid() {
  const Result<VariableContent> cached = ReadVariable(kBiosVersionVariable, gVaroAttributeVariableGuid);
  if (!cached.Ok() || cached.Value().Size == 0) {
    return false;
  }
  const Result<const CHAR8*> running = FirmwareVersion();
  if (!running.Ok()) {
    return false;
  }
  // The terminator counts: a cached version that goes on is another one.
  const auto version = std::as_bytes(std::span(running.Value(), AsciiLength(running.Value()) + 1));
  const std::span<const std::byte> content = cached.Value().Bytes();
  if (content.size() < version.size() || !SameBytes(content.first(version.size()), version)) {
    return false;
  }
  UINT8 markedBad = 0;
  return EFI_ERROR(ReadVariable(kCacheStatusVariable, gVaroAttributeVariableGuid, markedBad)) || markedBad == 0;
}

EFI_STATUS DeleteCache() {
  EFI_STATUS status = EFI_SUCCESS;
  for (const CHAR16* const name : kCacheVariables) {
    status = WriteVariable(name, gVaroAttributeVariableGuid, kNonVolatile, {});
  }
  return status;
}
