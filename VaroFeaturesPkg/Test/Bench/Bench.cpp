/** @file
  Benchmarks of the database: codec, interning, tables, restore. Prints lines for bench.py: "label NUMBER MEASURE STORE
  [LIST]" for stretches whose instructions are counted, "value MEASURE STORE [LIST] NUMBER" for sizes.

  Usage: corvane_bench FOLDER...    each has the cache variables of one store, a file per variable; the folder's name is
                                    the store's name, and the first store is the model of the generated ones

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "Bench/FormWalk.hpp"
#include "Bench/References.hpp"
#include "Bench/Stores.hpp"
#include "database/cache/Cache.hpp"
#include "database/cache/CacheVariables.hpp"
#include "database/compression/Compressor.hpp"
#include "database/compression/Decompressor.hpp"
#include "database/tables/TableBuilder.hpp"
#include "lifecycle/AttributeStream.hpp"
#include "sources/Interning.hpp"

namespace {

constexpr const char* kLists[] = {"PldmString", "DispString", "HelpString", "AttributesData"};

[[noreturn]] void Die(const std::string& what) {
  std::fprintf(stderr, "corvane_bench: %s\n", what.c_str());
  std::exit(1);
}

void Require(bool holds, const char* what) {
  if (!holds) {
    Die(std::string(what) + " does not hold");
  }
}

void PrintValue(const std::string& what, size_t value) {
  std::printf("value %s %zu\n", what.c_str(), value);
}

std::u16string Widened(const std::string& text) {
  return {text.begin(), text.end()};
}

Bytes ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    Die(path + " cannot be read");
  }
  const std::string content{std::istreambuf_iterator<char>(file), {}};
  const auto* const begin = reinterpret_cast<const std::byte*>(content.data());
  return {begin, begin + content.size()};
}

Bytes Decompressed(const Bytes& stream) {
  UINT32 size = 0;
  UINT32 scratchSize = 0;
  Require(DecompressGetInfo(stream, size, scratchSize) == EFI_SUCCESS, "a list has a header");
  Bytes output(size);
  Bytes scratch(scratchSize);
  Require(Decompress(stream, output, scratch) == EFI_SUCCESS, "a list decompresses");
  return output;
}

void MeasureCodec(BenchUefi& uefi, const std::string& store) {
  for (const char* const list : kLists) {
    const std::string of = store + " " + list;
    const Bytes source = Decompressed(uefi.Variables.at(Widened(list)));
    Bytes stream(2 * source.size() + 1000);
    auto size = static_cast<UINT32>(stream.size());
    uefi.PoolPeak = uefi.PoolInUse;
    const size_t inUse = uefi.PoolInUse;
    Require(Count("compress " + of, [&] { return Compress(source, stream.data(), size); }) == EFI_SUCCESS,
            "a list compresses");
    PrintValue("compressor-memory " + of, uefi.PoolPeak - inUse);
    stream.resize(size);

    Bytes reference(2 * source.size() + 1000);
    reference.resize(Count("reference-compress " + of, [&] { return ReferenceCompress(source, reference); }));
    PrintValue("raw " + of, source.size());
    PrintValue("size " + of, stream.size());
    PrintValue("reference-size " + of, reference.size());

    // Both decoders read both streams, in case an encoder suits its own decoder.
    for (const auto& [from, block] : {std::pair("", &stream), std::pair("-reference-stream", &reference)}) {
      Bytes output(source.size());
      Bytes scratch(16384);
      Require(Count(std::string("decompress") + from + " " + of, [&] { return Decompress(*block, output, scratch); }) ==
                  EFI_SUCCESS,
              "a stream decompresses");
      Require(output == source, "decompressing gives back what was compressed");
      Require(Count(std::string("reference-decompress") + from + " " + of,
                    [&] { return ReferenceDecompress(*block, output, scratch); }),
              "EDK II reads the stream");
      Require(output == source, "EDK II gives back what was compressed");
    }
  }
}

/// Every name and display text in the order and as often as a cold boot meets them.
struct Occurrences {
  std::vector<const CHAR16*> Names;
  std::vector<const CHAR16*> Texts;
};

Occurrences OccurrencesOf(const AttributeDatabase& database) {
  Occurrences found;
  UINT16 slot = 0;
  while (const AttributeRecord* const record = database.NextAttribute(slot)) {
    found.Names.push_back(database.GetNameString(StringHandle{record->NameHandle}));
    if (BaseType(*record) == AttributeType::Enumeration) {
      const auto& enumeration = As<EnumerationRecord>(*record);
      for (UINT8 i = 0; i < enumeration.PossibleValueCount; ++i) {
        found.Names.push_back(database.GetNameString(StringHandle{enumeration.PossibleValueNames[i]}));
      }
    }
  }
  // All names and texts, in case no record has them.
  for (UINT16 handle = kFirstHandle; handle < database.StringLimit(StringArray::Names); ++handle) {
    found.Names.push_back(database.GetNameString(StringHandle{handle}));
  }
  for (UINT16 handle = kFirstHandle; handle < database.StringLimit(StringArray::Display); ++handle) {
    found.Texts.push_back(database.StoredText(StringArray::Display, StringHandle{handle}));
  }
  return found;
}

void MeasureInterning(const AttributeDatabase& finished, const std::string& store) {
  const Occurrences occurrences = OccurrencesOf(finished);
  AttributeDatabase database;
  Require(database.AllocateStore() == EFI_SUCCESS, "there is memory for a store");
  std::vector<UINT16> handles(occurrences.Names.size() + occurrences.Texts.size());
  std::vector<UINT16> expected(handles.size());
  Count("intern " + store, [&] {
    UINT16* handle = handles.data();
    for (const CHAR16* const name : occurrences.Names) {
      *handle++ = Raw(InternName(database, name));
    }
    for (const CHAR16* const text : occurrences.Texts) {
      *handle++ = Raw(InternDisplayString(database, text).Handle);
    }
    database.ReleaseIndexes();
  });
  LinearStrings names;
  LinearStrings texts;
  Count("reference-intern " + store, [&] {
    UINT16* handle = expected.data();
    for (const CHAR16* const name : occurrences.Names) {
      *handle++ = names.Intern(name);
    }
    for (const CHAR16* const text : occurrences.Texts) {
      *handle++ = texts.Intern(text);
    }
  });
  Require(handles == expected, "both ways of interning give the same handles");
  PrintValue("interned " + store, handles.size());
  FreeStore(database);
}

void MeasureTables(AttributeDatabase& database, const std::string& store) {
  std::array<TableDescriptor, TABLE_DESCRIPTOR_COUNT> descriptors{};
  TableWriter writer{descriptors.data()};
  ValueEntries values{nullptr, false};
  Require(Count("tables " + store, [&] { return TableBuilder(database, writer, values).BuildTables(); }) == EFI_SUCCESS,
          "the tables are built");
  size_t bytes = 0;
  for (const TableDescriptor& table : descriptors) {
    bytes += table.Limit;
    FreeBlock(reinterpret_cast<void*>(UINTN{table.Data}));
  }
  PrintValue("table-bytes " + store, bytes);
}

/// The driver's own work in a boot with a valid cache.
void MeasureWarm(const std::string& store) {
  AttributeDatabase database;
  std::array<TableDescriptor, TABLE_DESCRIPTOR_COUNT> descriptors{};
  Bytes stream;
  Require(database.AllocateStore() == EFI_SUCCESS, "there is memory for a store");
  Count("warm " + store, [&] {
    RestoreCache(database);
    TableWriter writer{descriptors.data()};
    ValueEntries values{nullptr, false};
    IgnoreStatus(TableBuilder(database, writer, values).BuildTables());
    stream.resize(AttributeStreamSize(database));
    EncodeAttributes(database, stream);
  });
  PrintValue("warm-attributes " + store, database.GetAttributeCount());
  for (const TableDescriptor& table : descriptors) {
    FreeBlock(reinterpret_cast<void*>(UINTN{table.Data}));
  }
  FreeStore(database);
}

void MeasureWalk(const AttributeDatabase& finished, const std::string& store) {
  AttributeDatabase database;
  Require(database.AllocateStore() == EFI_SUCCESS, "there is memory for a store");
  PrintValue("walked-attributes " + store, MeasureFormWalk(finished, database, "walk " + store));
  FreeStore(database);
}

void Measure(BenchUefi& uefi, AttributeDatabase& database, const std::string& store) {
  MeasureCodec(uefi, store);
  MeasureInterning(database, store);
  MeasureTables(database, store);
  MeasureWarm(store);
  MeasureWalk(database, store);
}

struct Generated {
  const char* Name;
  size_t Attributes;
  size_t Texts;
};
constexpr Generated kGenerated[] = {{"texts-225", 60, 225}, {"texts-430", 120, 430}, {"texts-900", 240, 900}};

/// For the growth of interning alone: these texts are far more than the tables hold.
constexpr Generated kManyTexts[] = {{"texts-1250", 60, 1250}, {"texts-5000", 240, 5000}};

/// Takes the cache variables from a folder. Uncompressed content is compressed first.
void ReadVariables(BenchUefi& uefi, const std::string& folder) {
  uefi.Variables.clear();
  uefi.Variables[u"AttributesCount"] = ReadFile(folder + "/AttributesCount");
  for (const std::string list : kLists) {
    const std::string path = folder + "/" + list;
    if (std::ifstream(path).good()) {
      uefi.Variables[Widened(list)] = ReadFile(path);
      continue;
    }
    const Bytes content = ReadFile(path + ".content");
    Bytes stream(2 * content.size() + 1000);
    auto size = static_cast<UINT32>(stream.size());
    Require(Compress(content, stream.data(), size) == EFI_SUCCESS, "a list compresses");
    stream.resize(size);
    uefi.Variables[Widened(list)] = stream;
  }
}

/// A database for one measurement.
class Store {
 public:
  Store() { Require(Database.AllocateStore() == EFI_SUCCESS, "there is memory for a store"); }
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;
  ~Store() { FreeStore(Database); }

  AttributeDatabase Database;
};

void MeasureGenerated(BenchUefi& uefi, Store& store, const char* name) {
  uefi.Variables.clear();
  Require(WriteCache(store.Database) == EFI_SUCCESS, "the cache is written");
  Measure(uefi, store.Database, name);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    Die("usage: corvane_bench FOLDER...");
  }
  BenchUefi uefi;
  Store model;
  for (int i = 1; i < argc; ++i) {
    const std::string folder = argv[i];
    ReadVariables(uefi, folder);
    Store other;
    Store& store = i == 1 ? model : other;
    RestoreCache(store.Database);
    Measure(uefi, store.Database, folder.substr(folder.rfind('/') + 1));
  }
  for (const auto& [name, attributes, texts] : kGenerated) {
    Store store;
    GenerateStore(store.Database, model.Database, attributes, texts);
    MeasureGenerated(uefi, store, name);
  }
  for (const auto& [name, attributes, texts] : kManyTexts) {
    Store store;
    GenerateStore(store.Database, model.Database, attributes, texts);
    MeasureInterning(store.Database, name);
  }
  for (const Setup& setup : kSetups) {
    Store store;
    GenerateStore(store.Database, setup);
    MeasureGenerated(uefi, store, setup.Name);
  }
}
