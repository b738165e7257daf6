/** @file
  The attribute cache: restoring the database from it. Everything read here is untrusted.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/cache/Cache.hpp"
#include "database/cache/CacheVariables.hpp"
#include "database/compression/Decompressor.hpp"
#include "uefi/ByteReader.hpp"

namespace {

/// What became of one content.
enum class Outcome : UINT8 {
  Restored,
  Left,      // not restored in this boot; the variable itself may be good
  Unusable,  // one variable is deleted; the rest of the cache is good
  Recorded,  // the whole cache is deleted
};

/// What follows from each way in which a content can fail.
struct FailureRules {
  Outcome Missing;
  Outcome ReadFails;
  Outcome NoMemoryToDecompress;
  Outcome Damaged;
};
constexpr FailureRules kListRules{Outcome::Recorded, Outcome::Recorded, Outcome::Left, Outcome::Unusable};
constexpr FailureRules kAttributeRules{Outcome::Unusable, Outcome::Left, Outcome::Recorded, Outcome::Recorded};

struct DecompressedBlock {
  PoolPtr<std::byte[]> Data;
  size_t Size = 0;

  [[nodiscard]] std::span<const std::byte> Bytes() const { return {Data.get(), Size}; }
};

Result<DecompressedBlock> Decompressed(std::span<const std::byte> block) {
  UINT32 size = 0;
  UINT32 scratchSize = 0;
  if (const EFI_STATUS status = DecompressGetInfo(block, size, scratchSize); EFI_ERROR(status)) {
    return Failure{status};
  }
  if (size > kLargestBlock) {
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

/// The last handle that `count` strings take, as far as there are so many handles.
UINT64 LastHandleOf(UINT64 count) {
  return std::min<UINT64>(count, AttributeDatabase::kMostStrings) + kFirstHandle - 1;
}

enum class ListForm : UINT8 { Malformed, OtherCount, Whole };

/// Walks a string list and calls `visit(handle, text)` for each entry, at most `count` of them. A whole list ends with
/// exactly that entry.
template <typename Visit>
ListForm WalkStrings(std::span<const std::byte> list, UINT64 count, Visit visit) {
  ByteReader reader{list};
  UINT64 walked = 0;
  for (; walked < count && !reader.AtEnd(); ++walked) {
    const auto entry = reader.ReadStruct<AttributeCacheString>();
    const std::span<const std::byte> text = reader.Take(entry.Size);
    if (!reader.Ok() || entry.Handle < kFirstHandle || entry.Handle >= ATTRIBUTE_STORE_STRING_LIMIT) {
      return ListForm::Malformed;
    }
    visit(entry.Handle, text);
  }
  return walked == count && reader.AtEnd() ? ListForm::Whole : ListForm::OtherCount;
}

/// Restores a string list. Returns false unless the list is whole. Nothing of a malformed list is restored: its texts
/// may be wrong before the place where the damage shows.
bool RestoreStrings(AttributeDatabase& database, StringArray array, std::span<const std::byte> list,
                    UINT64 savedCount) {
  const UINT64 count = std::min<UINT64>(savedCount, AttributeDatabase::kMostStrings);
  if (WalkStrings(list, count, [](UINT16, std::span<const std::byte>) {}) == ListForm::Malformed) {
    return false;
  }
  const ListForm form = WalkStrings(list, count, [&](UINT16 handle, std::span<const std::byte> text) {
    PoolPtr<CHAR16[]> copy;
    if (array != StringArray::Help || !text.empty()) {
      copy = CopyUcs2(text);
      if (!copy) {
        DEBUG((DEBUG_WARN, "CorvaneDxe: text with handle %d is empty: out of memory\n", handle));
      }
    }
    database.RestoreString(array, std::move(copy), handle);
  });
  return form == ListForm::Whole && count == savedCount;
}

/// Where a record goes, and whether the record counts. Management software relies on the counter as these rules give
/// it.
struct Place {
  UINT16 Slot;
  bool Counted;
};

Place PlaceOf(const AttributeRecord& head) {
  constexpr UINT16 kFirstCountedHandle = 15;
  switch (BaseType(head)) {
    case AttributeType::Password:
      return {head.Handle, false};
    case AttributeType::Collection:
      return {head.Handle, true};
    case AttributeType::ConfigurationSet:
      return {ATTRIBUTE_HANDLE_CONFIGURATION_SET, false};
    default:
      return {head.Handle, head.Handle >= kFirstCountedHandle};
  }
}

/// Keeps the handles of the names that a record uses from later names.
void ReserveNames(AttributeDatabase& database, const AttributeRecord& head, std::span<const std::byte> handles) {
  database.ReserveStrings(StringArray::Names, head.NameHandle);
  if (BaseType(head) == AttributeType::Collection) {
    return;  // the handles are those of attributes
  }
  for (ByteReader reader{handles}; !reader.AtEnd();) {
    database.ReserveStrings(StringArray::Names, reader.Read<UINT16>());
  }
}

/// Reads the parts of one record off the stream into the record. A record that lacks memory becomes null, and its parts
/// are read all the same.
class RecordParts {
 public:
  RecordParts(ByteReader& reader, OwnedRecord<AttributeRecord>& record) : reader_(reader), record_(record) {}

  /// Takes the bytes [begin, end) of the record itself.
  [[gnu::noinline]] std::span<const std::byte> TakeBytes(size_t begin, size_t end) {
    const std::span<const std::byte> bytes = reader_.Take(end - begin);
    if (record_) {
      CopyMem(reinterpret_cast<std::byte*>(record_.get()) + begin, bytes.data(), bytes.size());
    }
    return bytes;
  }

  /// Takes bytes into a block of the record's own, followed by a zero byte.
  [[gnu::noinline]] std::span<const std::byte> TakeOwned(size_t pointer, size_t size) {
    const std::span<const std::byte> bytes = reader_.Take(size);
    if (record_) {
      void* const block = CopyBytes(bytes.data(), bytes.size(), 1);
      SetPointerAt(*record_, pointer, block);
      if (block == nullptr) {
        record_.reset();
      }
    }
    return bytes;
  }

 private:
  ByteReader& reader_;
  OwnedRecord<AttributeRecord>& record_;
};

/// Takes one record off the stream and keeps it. Without memory for the record its slot stays empty. Returns false if
/// the record is malformed.
bool RestoreRecord(AttributeDatabase& database, ByteReader& reader) {
  const auto head = reader.ReadStruct<AttributeRecord>();
  if (!reader.Ok() || !IsCached(head)) {
    return false;
  }
  const RecordShape& shape = ShapeOf(head);
  OwnedRecord<AttributeRecord> record = MakeAttribute(head);
  RecordParts parts(reader, record);
  const std::span<const std::byte> fixed = parts.TakeBytes(sizeof(head), shape.FixedEnd);
  std::span<const std::byte> handles;
  if (shape.Handles != 0 && reader.Ok()) {
    const auto count = std::to_integer<size_t>(fixed[shape.Count - sizeof(head)]);
    handles = parts.TakeOwned(shape.Handles, count * sizeof(UINT16));
    if (shape.Values != 0) {
      parts.TakeOwned(shape.Values, count * sizeof(UINT64));
    }
  }
  if (shape.Text != 0) {
    const UINT16 length = reader.Read<UINT16>();
    if (length != 0) {
      parts.TakeOwned(shape.Text, length);
    }
  }
  parts.TakeBytes(shape.TailBegin, shape.Size);
  if (!record) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: attribute with handle %d dropped: out of memory\n", head.Handle));
  }
  const Place place = PlaceOf(head);
  if (!reader.Ok() || !database.RestoreAttribute(std::move(record), place.Slot, place.Counted)) {
    return false;
  }
  ReserveNames(database, head, handles);
  return true;
}

/// Restores the records. Returns false unless there are some, at most as many as counted, and all are well-formed.
bool RestoreAttributes(AttributeDatabase& database, std::span<const std::byte> data, UINT64 savedCount) {
  // The reserved handles come on top of the counted records. Handle 0 has no record.
  const UINT64 limit = std::min<UINT64>(savedCount, AttributeDatabase::kMostAttributes) + kFirstHandle;
  ByteReader reader{data};
  for (UINT64 i = 1; !reader.AtEnd(); ++i) {
    if (i == limit || !RestoreRecord(database, reader)) {
      return false;
    }
  }
  return !data.empty();
}

Outcome RestoreContent(AttributeDatabase& database, CachedContent content, const AttributeStoreHeader& savedCounts) {
  const bool isList = content != CachedContent::Attributes;
  const FailureRules& rules = isList ? kListRules : kAttributeRules;
  const Result<VariableContent> variable = ReadCacheVariable(VariableOf(content));
  if (!variable.Ok()) {
    return variable.Status() == EFI_NOT_FOUND ? rules.Missing : rules.ReadFails;
  }
  const Result<DecompressedBlock> block = Decompressed(variable.Value().Bytes());
  if (!block.Ok()) {
    return block.Status() == EFI_OUT_OF_RESOURCES ? rules.NoMemoryToDecompress : rules.Damaged;
  }
  const bool whole =
      isList ? RestoreStrings(database, ArrayOf(content), block.Value().Bytes(),
                              content == CachedContent::Names ? savedCounts.NameCount : savedCounts.DisplayCount)
             : RestoreAttributes(database, block.Value().Bytes(), savedCounts.AttributeCount);
  return whole ? Outcome::Restored : rules.Damaged;
}

}  // namespace

void RestoreCache(AttributeDatabase& database) {
  AttributeStoreHeader savedCounts{};
  UINT32 attributes = kNonVolatile;
  bool cacheRestoreOk = !EFI_ERROR(ReadVariable(kAttributesCountVariable, gVaroAttributeVariableGuid,
                                                std::as_writable_bytes(std::span(&savedCounts, 1)), attributes)) &&
                        attributes == kNonVolatile;
  if (cacheRestoreOk) {
    // Handles of lost texts stay taken, so that no record gets the name of a later string.
    database.ReserveStrings(StringArray::Names, LastHandleOf(savedCounts.NameCount));
    database.ReserveStrings(StringArray::Display, LastHandleOf(savedCounts.DisplayCount));
    for (const CachedContent content : kCachedContents) {
      const Outcome outcome = RestoreContent(database, content, savedCounts);
      if (outcome != Outcome::Restored) {
        DEBUG(
            (DEBUG_WARN, "CorvaneDxe: cache variable \"%s\" could not be restored completely\n", VariableOf(content)));
      }
      if (outcome == Outcome::Unusable) {
        // Without attributes there is nothing to restore in the next boot: without the version, that boot gathers.
        IgnoreStatus(
            DeleteCacheVariable(content == CachedContent::Attributes ? kBiosVersionVariable : VariableOf(content)));
      }
      cacheRestoreOk = cacheRestoreOk && outcome != Outcome::Recorded;
    }
  }
  if (!cacheRestoreOk) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: cache deleted: the next boot gathers again\n"));
    IgnoreStatus(DeleteCache());  // a variable that cannot be deleted makes the next restore fail too
  }
}
