/** @file
  The attribute cache: restoring the database from it. Everything read here is untrusted.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/Cache.hpp"
#include "database/CacheVariables.hpp"
#include "database/Decompressor.hpp"
#include "uefi/ByteReader.hpp"

namespace {

/// Whether a failure is recorded, which deletes the cache.
enum class Outcome : UINT8 { Fine, Silent, Recorded };

struct DecompressedBlock {
  PoolPtr<std::byte[]> Data;
  size_t Size = 0;
};

/// The content of a compressed block; nothing in it is an error.
Result<DecompressedBlock> Decompressed(std::span<const std::byte> block) {
  UINT32 size = 0;
  UINT32 scratchSize = 0;
  if (const EFI_STATUS status = DecompressGetInfo(block, size, scratchSize); EFI_ERROR(status)) {
    return Failure{status};
  }
  if (size == 0 || size > kLargestBlock) {
    return Failure{EFI_COMPROMISED_DATA};
  }
  DecompressedBlock content{AllocateZeroedArray<std::byte>(size), size};
  const PoolPtr<std::byte[]> scratch = AllocateZeroedArray<std::byte>(scratchSize);
  if (!content.Data || !scratch) {
    return Failure{EFI_OUT_OF_RESOURCES};
  }
  if (const EFI_STATUS status = Decompress(block, {content.Data.get(), size}, {scratch.get(), scratchSize});
      EFI_ERROR(status)) {
    return Failure{status};
  }
  return content;
}

/// Restores the entries of a string list, at most `count`; a malformed one ends the list.
bool RestoreEntries(AttributeDatabase& database, StringArray array, std::span<const std::byte> list, UINT64 count) {
  ByteReader reader{list};
  for (UINT64 i = 0; i < count && !reader.AtEnd(); ++i) {
    const auto entry = reader.ReadStruct<AttributeCacheString>();
    const std::span<const std::byte> text = reader.Take(entry.Size);
    if (!reader.Ok()) {
      return false;
    }
    PoolPtr<CHAR16[]> copy;
    if (array != StringArray::Help || !text.empty()) {
      copy = AllocateZeroedArray<CHAR16>(text.size() / sizeof(CHAR16) + 2);  // ends in zero whatever the text
      if (!copy) {
        return false;
      }
      CopyMem(copy.get(), text.data(), text.size());
    }
    if (!database.RestoreString(array, std::move(copy), entry.Handle)) {
      return false;
    }
  }
  return true;
}

Outcome RestoreStrings(AttributeDatabase& database, const CachedStrings& kind, UINT64 count) {
  const Result<VariableContent> variable = ReadVariable(kind.Variable, gVaroAttributeVariableGuid);
  if (!variable.Ok()) {
    return Outcome::Recorded;
  }
  const Result<DecompressedBlock> list = Decompressed(variable.Value().Bytes());
  if (!list.Ok()) {
    return Outcome::Silent;
  }
  const bool whole = RestoreEntries(database, kind.Array, {list.Value().Data.get(), list.Value().Size}, count);
  return whole ? Outcome::Fine : Outcome::Silent;
}

/// Takes `size` bytes into a block of the record's own, zero-terminated, and keeps it at `pointer`. False when they are
/// not there or there is no memory for them.
bool TakeOwned(ByteReader& reader, AttributeRecord& record, size_t pointer, size_t size) {
  const std::span<const std::byte> bytes = reader.Take(size);
  if (!reader.Ok()) {
    return false;
  }
  std::byte* const block = AllocateZeroedArray<std::byte>(size + 1).release();  // to the record
  if (block == nullptr) {
    return false;
  }
  CopyMem(block, bytes.data(), size);
  SetPointerAt(record, pointer, block);
  return true;
}

/// Takes the bytes [begin, end) of the record itself.
void TakeBytes(ByteReader& reader, AttributeRecord& record, size_t begin, size_t end) {
  const std::span<const std::byte> bytes = reader.Take(end - begin);
  CopyMem(reinterpret_cast<std::byte*>(&record) + begin, bytes.data(), bytes.size());
}

/// Takes one record off the stream, or null when it is malformed or there is no memory for it.
OwnedRecord<AttributeRecord> TakeRecord(ByteReader& reader) {
  const auto head = reader.ReadStruct<AttributeRecord>();
  if (!reader.Ok() || !IsCached(head)) {
    return nullptr;
  }
  const RecordShape& shape = ShapeOf(head);
  OwnedRecord<AttributeRecord> record = MakeAttribute(head);
  if (!record) {
    return nullptr;
  }
  TakeBytes(reader, *record, sizeof(head), shape.FixedEnd);
  const auto count = std::to_integer<size_t>(*RecordBytes(*record, shape.Count, shape.Size).data());
  if (shape.Handles != 0 && !TakeOwned(reader, *record, shape.Handles, count * sizeof(UINT16))) {
    return nullptr;
  }
  if (shape.Values != 0 && !TakeOwned(reader, *record, shape.Values, count * sizeof(UINT64))) {
    return nullptr;
  }
  if (shape.Text != 0) {
    const UINT16 length = reader.Read<UINT16>();
    if (length != 0 && !TakeOwned(reader, *record, shape.Text, length)) {
      return nullptr;
    }
  }
  TakeBytes(reader, *record, shape.TailBegin, shape.Size);
  return reader.Ok() ? std::move(record) : nullptr;
}

bool KeepRecord(AttributeDatabase& database, OwnedRecord<AttributeRecord>&& record) {
  constexpr UINT16 kFirstCountedHandle = 15;  // one below the first that is handed out; tools know the counter so
  const UINT16 handle = record->Handle;
  switch (BaseType(*record)) {
    case AttributeType::Password:
      return database.RestoreAttribute(std::move(record), handle, false);
    case AttributeType::Collection:
      return database.RestoreAttribute(std::move(record), handle, true);
    case AttributeType::ConfigurationSet:
      return database.RestoreAttribute(std::move(record), ATTRIBUTE_HANDLE_CONFIGURATION_SET, false);
    default:
      return database.RestoreAttribute(std::move(record), handle, handle >= kFirstCountedHandle);
  }
}

Outcome RestoreAttributes(AttributeDatabase& database, UINT64 count) {
  const Result<VariableContent> variable = ReadVariable(kAttributesDataVariable, gVaroAttributeVariableGuid);
  if (!variable.Ok()) {
    return Outcome::Silent;
  }
  const Result<DecompressedBlock> data = Decompressed(variable.Value().Bytes());
  if (!data.Ok()) {
    return Outcome::Recorded;
  }
  ByteReader reader{{data.Value().Data.get(), data.Value().Size}};
  // The reserved handles come on top of the counted records. The counter is compared, not added to: it may be anything.
  for (UINT64 i = 1; !reader.AtEnd() && (i < kFirstHandle || i - kFirstHandle < count); ++i) {
    OwnedRecord<AttributeRecord> record = TakeRecord(reader);
    if (!record || !KeepRecord(database, std::move(record))) {
      return Outcome::Recorded;
    }
  }
  return Outcome::Fine;
}

}  // namespace

void RestoreCache(AttributeDatabase& database) {
  AttributeStoreHeader saved{};
  bool restored = !EFI_ERROR(ReadVariable(kAttributesCountVariable, gVaroAttributeVariableGuid, saved));
  if (!restored) {
    saved = {};
  }
  const auto note = [&restored]([[maybe_unused]] const CHAR16* variable, Outcome outcome) {
    if (outcome != Outcome::Fine) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: cache variable \"%s\" could not be restored in whole\n", variable));
    }
    restored = restored && outcome != Outcome::Recorded;
  };
  for (const CachedStrings& kind : kCachedStrings) {
    note(kind.Variable,
         RestoreStrings(database, kind, kind.Array == StringArray::Names ? saved.NameCount : saved.DisplayCount));
  }
  note(kAttributesDataVariable, RestoreAttributes(database, saved.AttributeCount));
  if (!restored) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: cache deleted: the next boot gathers anew\n"));
    IgnoreStatus(DeleteCache());  // a cache that stays is found wanting again
  }
}
