/** @file
  Fuzz target of the cache: whatever its variables hold, the restored database is sound, its tables can be built and all
  of it can be freed.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "FakeUefi/ReferenceCompression.hpp"
#include "Fuzz/Require.hpp"
#include "Host/StoreBuilder.hpp"
#include "Host/TestBytes.hpp"
#include "database/Cache.hpp"
#include "database/CacheVariables.hpp"
#include "database/TableBuilder.hpp"
#include "lifecycle/AttributeStream.hpp"

namespace {

void Store(FakeUefi& uefi, std::u16string_view name, const Bytes& content) {
  uefi.Variables[{Ucs2(name), gVaroAttributeVariableGuid}] = {kNonVolatile, content};
}

/// Every record names itself or stands where configuration sets stand, and the stream is as long as announced.
void RequireSound(const AttributeDatabase& database) {
  UINT16 slot = 0;
  while (const AttributeRecord* const record = database.NextAttribute(slot)) {
    Require(record->Handle == slot || slot == ATTRIBUTE_HANDLE_CONFIGURATION_SET, "a record in a foreign slot");
  }
  Bytes stream(AttributeStreamSize(database));
  EncodeAttributes(database, std::as_writable_bytes(std::span(stream)));
}

}  // namespace

/// Three bytes choose the variable, whether the rest is compressed for it, and the counters; the rest is its content.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  if (size < 3) {
    return 0;
  }
  constexpr std::array<std::u16string_view, 4> kVariables = {u"PldmString", u"DispString", u"HelpString",
                                                             u"AttributesData"};
  FakeUefi uefi;
  uefi.VariableSizeLimit = uefi.VariableSpaceLimit = SIZE_MAX;
  const Bytes content(data + 3, data + size);
  Store(uefi, kVariables[data[0] % kVariables.size()], data[1] % 4 != 0 ? ReferenceCompress(content) : content);
  const UINT64 count = data[2] == 255 ? MAX_UINT64 : data[2];
  Store(uefi, u"AttributesCount", Join(count, count, count, count));

  AttributeDatabase database;
  Require(database.AllocateStore() == EFI_SUCCESS, "no store");
  RestoreCache(database);
  RequireSound(database);
  std::array<TableDescriptor, TABLE_DESCRIPTOR_COUNT> descriptors{};
  TableWriter writer{descriptors.data()};
  ValueEntries values{nullptr, true};
  IgnoreStatus(TableBuilder(database, writer, values).BuildTables());
  for (const TableDescriptor& table : descriptors) {
    FreeBlock(reinterpret_cast<const void*>(static_cast<UINTN>(table.Data)));
  }
  FreeStore(database.Store());
  Require(uefi.LivePoolBlocks() == 0, "a block was left");
  return 0;
}
