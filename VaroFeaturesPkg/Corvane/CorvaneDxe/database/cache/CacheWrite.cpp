/** @file
  The attribute cache: writing it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/cache/Cache.hpp"
#include "database/cache/CacheVariables.hpp"
#include "database/cache/CacheVersion.hpp"
#include "database/compression/Compressor.hpp"

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
  // Asking for the size first would cost a second compression. Text shrinks, so a block as large as the content is
  // enough.
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
  return WriteCacheVariable(name, {compressed.get(), size});
}

void PutContent(ByteWriter& writer, const AttributeDatabase& database, CachedContent content) {
  if (content == CachedContent::Attributes) {
    PutAttributes(writer, database);
  } else {
    PutStrings(writer, database, ArrayOf(content));
  }
}

/// Lays out a content, first to count its bytes, then in a block of that size, and writes it compressed.
[[gnu::noinline]] EFI_STATUS WriteContent(const AttributeDatabase& database, CachedContent content) {
  ByteWriter counter;
  PutContent(counter, database, content);
  const PoolPtr<std::byte[]> block = AllocateZeroedArray<std::byte>(counter.Used());
  if (!block) {
    return EFI_OUT_OF_RESOURCES;
  }
  ByteWriter writer{{block.get(), counter.Used()}};
  PutContent(writer, database, content);
  return WriteCompressed(VariableOf(content), {block.get(), writer.Used()});
}

EFI_STATUS WriteStringVariable(const AttributeDatabase& database, CachedContent list) {
  return WriteContent(database, list);
}

EFI_STATUS WriteAttributeData(const AttributeDatabase& database) {
  return WriteContent(database, CachedContent::Attributes);
}

/// Writes 0 to the status variable. A variable that somebody created with other attributes is replaced.
EFI_STATUS WriteGoodStatus() {
  const std::byte good{};
  EFI_STATUS status = EFI_INVALID_PARAMETER;  // the answer to a write with other attributes
  for (int tries = 0; tries < 2 && status == EFI_INVALID_PARAMETER; ++tries) {
    if (tries != 0) {
      IgnoreStatus(WriteVariable(kCacheStatusVariable, gVaroAttributeVariableGuid, kAnyAttributes, {}));
    }
    status = WriteVariable(kCacheStatusVariable, gVaroAttributeVariableGuid, kNonVolatileRuntime, {&good, 1});
  }
  return status;
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
  if (length >= kShortestSealedVersion) {
    const UINT32 seal = SealOfStoredCache();
    CopyMem(&content[length + 1], &seal, sizeof(seal));
  }
  return WriteCacheVariable(kBiosVersionVariable, {content.get(), 2 * length});
}

}  // namespace

EFI_STATUS WriteCache(const AttributeDatabase& database) {
  // No list of an earlier version may remain under the new version. The version is written last, so it has to be the
  // last variable in flash too: a flash driver that rewrites its block loses the end of the store when the power fails.
  IgnoreStatus(DeleteCache());
  bool staleListRemains = false;
  for (const CachedContent list : {CachedContent::Names, CachedContent::DisplayStrings, CachedContent::HelpStrings}) {
    if (const EFI_STATUS status = WriteStringVariable(database, list); EFI_ERROR(status)) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: cache variable \"%s\" not written: %r\n", VariableOf(list), status));
      const EFI_STATUS deleted = DeleteCacheVariable(VariableOf(list));
      staleListRemains = staleListRemains || (EFI_ERROR(deleted) && deleted != EFI_NOT_FOUND);
    }
  }
  bool cacheWriteOk = !EFI_ERROR(WriteAttributeData(database));
  const AttributeStoreHeader counters = database.Store()->Header;
  if (EFI_ERROR(WriteCacheVariable(kAttributesCountVariable, std::as_bytes(std::span(&counters, 1))))) {
    cacheWriteOk = false;
  }
  if (EFI_ERROR(WriteGoodStatus())) {
    cacheWriteOk = false;
  }
  const EFI_STATUS status = staleListRemains ? EFI_ACCESS_DENIED : WriteVersion();
  if (EFI_ERROR(status) || !cacheWriteOk) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: cache deleted: it could not be written completely\n"));
    return DeleteCache();
  }
  return status;
}
