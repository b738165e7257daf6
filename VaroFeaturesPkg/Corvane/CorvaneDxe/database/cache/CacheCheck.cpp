/** @file
  The attribute cache: whether it may be used, and its deletion.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/cache/Cache.hpp"
#include "database/cache/CacheVariables.hpp"
#include "database/cache/CacheVersion.hpp"
#include "database/tables/Crc32.hpp"
#include "uefi/ByteReader.hpp"
#include "uefi/Protocols.hpp"

extern "C" {
#include <Protocol/FirmwareVersion.h>
}

namespace {

bool IsMarkedBad() {
  std::byte mark{};
  UINT32 attributes = kAnyAttributes;  // a mark counts with any attributes
  const EFI_STATUS status = ReadVariable(kCacheStatusVariable, gVaroAttributeVariableGuid, {&mark, 1}, attributes);
  return !EFI_ERROR(status) && mark != std::byte{0};
}

}  // namespace

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

UINT32 SealOfStoredCache() {
  Crc32 crc32;
  crc32.Prepare();
  UINT32 seal = 0;
  constexpr std::span kNamed(kCacheVariables);
  for (const auto part : {kNamed.subspan(3), kNamed.subspan(1, 2)}) {  // the lists, then the data and the counters
    for (const CHAR16* const name : part) {
      seal = crc32.Of(ReadCacheVariable(name).Value().Bytes(), seal);
    }
  }
  return seal;
}

bool CacheIsValid(SealCheck sealCheck) {
  const Result<VariableContent> cached = ReadCacheVariable(kBiosVersionVariable);
  if (!cached.Ok()) {
    return false;
  }
  const Result<const CHAR8*> running = FirmwareVersion();
  if (!running.Ok()) {
    return false;
  }
  // The comparison includes the terminator: a longer cached version is another version.
  const size_t length = AsciiLength(running.Value());
  ByteReader reader(cached.Value().Bytes());
  if (!SameBytes(reader.Take(length + 1), std::as_bytes(std::span(running.Value(), length + 1))) || IsMarkedBad()) {
    return false;
  }
  const UINT32 seal = length >= kShortestSealedVersion ? reader.Read<UINT32>() : 0;
  if (seal == 0 || sealCheck == SealCheck::Skipped || seal == SealOfStoredCache()) {
    return true;
  }
  DEBUG((DEBUG_WARN, "CorvaneDxe: the cache does not match its seal: this boot gathers again\n"));
  return false;
}

[[gnu::noinline]] EFI_STATUS DeleteCacheVariable(const CHAR16* name) {
  EFI_STATUS status = WriteCacheVariable(name, {});
  if (status == EFI_INVALID_PARAMETER) {
    // The variable has other attributes. A write without access deletes a variable with any attributes.
    status = WriteVariable(name, gVaroAttributeVariableGuid, kAnyAttributes, {});
  }
  if (EFI_ERROR(status) && status != EFI_NOT_FOUND) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: cache variable \"%s\" cannot be deleted: %r\n", name, status));
  }
  return status;
}

[[gnu::noinline]] EFI_STATUS DeleteCache() {
  EFI_STATUS status = EFI_SUCCESS;
  for (const CHAR16* const name : kCacheVariables) {
    status = DeleteCacheVariable(name);
  }
  return status;
}
