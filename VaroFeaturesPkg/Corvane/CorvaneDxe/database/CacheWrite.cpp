/** @file
  The attribute cache: writing it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/Cache.hpp"
#include "database/CacheVariables.hpp"
#include "database/CacheVersion.hpp"
#include "database/Compressor.hpp"

namespace {

void PutStrings(ByteWriter& list, const AttributeDatabase& database, StringArray array) {
  for (UINT16 handle = kFirstHandle; handle < database.StringLimit(array); ++handle) {
    const CHAR16* const text = database.StoredText(array, StringHandle{handle});
    const size_t size = text != nullptr ? (StringLength(text) + 1) * sizeof(CHAR16) : 0;
    list.PutValue(AttributeCacheString{handle, static_cast<UINT16>(size)});
    list.Put({reinterpret_cast<const std::byte*>(text), size});
  }
}

void PutAttributes(ByteWriter& data, const AttributeDatabase& database) {
  UINT16 slot = 0;
  while (const AttributeRecord* const record = database.NextAttribute(slot)) {
    if (IsCached(*record)) {
      PutRecord(data, *record, TextForm::Counted);
    }
  }
}

/// Compresses `content` and writes it as a variable.
EFI_STATUS WriteCompressed(const CHAR16* name, std::span<const std::byte> content) {
  // Text shrinks: a block as large as the content spares asking for the size, which costs a compression of its own.
  auto size = static_cast<UINT32>(content.size());
  PoolPtr<std::byte[]> compressed = AllocateZeroedArray<std::byte>(size);
  if (!compressed) {
    return EFI_OUT_OF_RESOURCES;
  }
  EFI_STATUS status = Compress(content, compressed.get(), size);
  if (status == EFI_BUFFER_TOO_SMALL) {
    compressed = AllocateZeroedArray<std::byte>(size);
    if (!compressed) {
      return EFI_OUT_OF_RESOURCES;
    }
    status = Compress(content, compressed.get(), size);
  }
  if (EFI_ERROR(status)) {
    return status;
  }
  return WriteVariable(name, gVaroAttributeVariableGuid, kNonVolatile, {compressed.get(), size});
}

/// The content of a string list, or of the attribute data for null.
void PutContent(ByteWriter& content, const AttributeDatabase& database, const CachedStrings* strings) {
  if (strings != nullptr) {
    PutStrings(content, database, strings->Array);
  } else {
    PutAttributes(content, database);
  }
}

/// Lays the content of a variable out, first counting, then in a block of that size, and writes it.
EFI_STATUS WriteContent(const AttributeDatabase& database, const CachedStrings* strings) {
  ByteWriter counter;
  PutContent(counter, database, strings);
  const PoolPtr<std::byte[]> block = AllocateZeroedArray<std::byte>(counter.Used());
  if (!block) {
    return EFI_OUT_OF_RESOURCES;
  }
  ByteWriter content{{block.get(), counter.Used()}};
  PutContent(content, database, strings);
  return WriteCompressed(strings != nullptr ? strings->Variable : kAttributesDataVariable,
                         {block.get(), content.Used()});
}

EFI_STATUS WriteStringVariable(const AttributeDatabase& database, const CachedStrings& kind) {
  return WriteContent(database, &kind);
}

EFI_STATUS WriteAttributeData(const AttributeDatabase& database) {
  return WriteContent(database, nullptr);
}

EFI_STATUS WriteVersion() {
  const Result<const CHAR8*> version = FirmwareVersion();
  if (!version.Ok()) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: gVaroFirmwareVersionProtocolGuid not found or empty: nothing is cached\n"));
    return version.Status();
  }
  const size_t length = AsciiLength(version.Value());
  const PoolPtr<std::byte[]> content{static_cast<std::byte*>(CopyBytes(version.Value(), length, length))};
  if (!content) {
    return EFI_OUT_OF_RESOURCES;
  }
  return WriteVariable(kBiosVersionVariable, gVaroAttributeVariableGuid, kNonVolatile, {content.get(), 2 * length});
}

}  // namespace

EFI_STATUS WriteCache(const AttributeDatabase& database) {
  // No list of an earlier version may stand under the new one. And the version, which is written last, has to lie last
  // as well: a flash driver that rewrites its block loses the end of the store when the power fails.
  IgnoreStatus(DeleteCache());
  for (const CachedStrings& kind : kCachedStrings) {
    if (const EFI_STATUS status = WriteStringVariable(database, kind); EFI_ERROR(status)) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: cache variable \"%s\" not written: %r: the next boot gathers anew\n",
             kind.Variable, status));
    }
  }
  bool written = !EFI_ERROR(WriteAttributeData(database));
  const AttributeStoreHeader counters = database.Store()->Header;
  if (EFI_ERROR(WriteVariable(kAttributesCountVariable, gVaroAttributeVariableGuid, kNonVolatile,
                              std::as_bytes(std::span(&counters, 1))))) {
    written = false;
  }
  constexpr UINT8 kGood = 0;
  if (EFI_ERROR(WriteVariable(kCacheStatusVariable, gVaroAttributeVariableGuid, kNonVolatileRuntime,
                              std::as_bytes(std::span(&kGood, 1))))) {
    written = false;
  }
  const EFI_STATUS status = WriteVersion();
  if (EFI_ERROR(status) || !written) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: cache deleted: it could not be written in whole\n"));
    return DeleteCache();
  }
  return status;
}
