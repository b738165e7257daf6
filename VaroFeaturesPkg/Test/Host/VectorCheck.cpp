/** @file
  vector_check DIRECTORY: builds the store that a folder describes and compares what the driver makes of it with the
  folder's expected files, byte for byte.

  store.json stands in DIRECTORY or in folders below it. store.json is one object:

    names, displays, helps   texts by handle, as {"16": "text", ...}; names and displays without gaps from 16 on
    attributes               records in the order in which they enter the store, each with handle, type, name,
                             value_size, token and, by base type:
      0  value_names, values, default, current           4  boot_type, modes, sources, cur_count, order (hexadecimal)
      1  subtype, min_length, max_length, default_length, text (hexadecimal; absent or null = none)
      2  subtype, min_length, max_length, default_length, installed
      3  lower, upper, step, default, current            5  items                6  configs, current

  and beside it any of these, of which at least one must be there:

    string.table attribute.table value.table display.table help.table   finished tables
    attributes.stream                                                    attribute stream
    counts.bin                                                           the four counters
    PldmString.list DispString.list HelpString.list AttributesData.list  cache variables, decompressed

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "FakeUefi/FakeNotebook.hpp"
#include "FakeUefi/ReferenceCompression.hpp"
#include "Host/StoreBuilder.hpp"
#include "Host/TestBytes.hpp"
#include "database/Cache.hpp"
#include "database/TableBuilder.hpp"
#include "lifecycle/AttributeStream.hpp"

namespace {

using nlohmann::json;

/// What the expected streams hold where nothing is written: the fill of a block that EDK II's DEBUG pool gave out.
constexpr UINT8 kUnwritten = 0xAF;
namespace fs = std::filesystem;

Bytes ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

std::u16string Wide(const std::string& utf8) {
  return fs::path(std::u8string(utf8.begin(), utf8.end())).u16string();
}

Bytes FromHex(const std::string& hex) {
  Bytes bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

/// Takes those of the fields, given as key and place in turn, that the entry has.
template <typename Field, typename... More>
void Take(const json& entry, const char* key, Field& field, More&&... more) {
  if (entry.contains(key)) {
    entry.at(key).get_to(field);
  }
  if constexpr (sizeof...(more) != 0) {
    Take(entry, more...);
  }
}

RecordSpec SpecOf(const json& entry) {
  RecordSpec spec;
  Take(entry, "handle", spec.Handle, "type", spec.Type, "name", spec.Name, "value_size", spec.ValueSize, "token",
       spec.Token, "value_names", spec.Handles, "sources", spec.Handles, "items", spec.Handles, "configs", spec.Handles,
       "values", spec.Values, "default", spec.Default, "current", spec.Current, "lower", spec.Lower, "upper",
       spec.Upper, "step", spec.Step, "subtype", spec.SubType, "boot_type", spec.SubType, "min_length", spec.MinLength,
       "max_length", spec.MaxLength, "default_length", spec.DefaultLength, "installed", spec.Installed, "modes",
       spec.Modes);
  if (entry.contains("text") && !entry["text"].is_null()) {
    const Bytes text = FromHex(entry["text"].get<std::string>());
    spec.Text = std::string(text.begin(), text.end());
  }
  if (entry.contains("order")) {
    spec.Order = FromHex(entry["order"].get<std::string>());
    spec.Order.resize(entry["cur_count"].get<size_t>());
  }
  return spec;
}

void PutTexts(AttributeDatabase& database, StringArray array, const json& texts) {
  std::map<UINT16, std::u16string> byHandle;
  for (const auto& [handle, text] : texts.items()) {
    byHandle[static_cast<UINT16>(std::stoi(handle))] = Wide(text.get<std::string>());
  }
  for (const auto& [handle, text] : byHandle) {
    if (array == StringArray::Help) {
      PutHelp(database, handle, text);
    } else {
      PutText(database, array, text);
    }
  }
}

int CheckFolder(const fs::path& folder) {
  FakeUefi uefi;
  const json store = json::parse(ReadFile(folder / "store.json"));
  AttributeDatabase database;
  if (EFI_ERROR(database.AllocateStore())) {
    return 1;
  }
  PutTexts(database, StringArray::Names, store.at("names"));
  PutTexts(database, StringArray::Display, store.at("displays"));
  PutTexts(database, StringArray::Help, store.at("helps"));
  for (const json& entry : store.at("attributes")) {
    Put(database, SpecOf(entry));
  }

  std::map<std::string, Bytes> made;
  std::array<TableDescriptor, TABLE_DESCRIPTOR_COUNT> descriptors{};
  TableWriter writer{descriptors.data()};
  ValueEntries values{nullptr, false};
  TableBuilder(database, writer, values).BuildTables();
  for (const auto& [name, index] : {std::pair("string.table", TABLE_STRINGS),
                                    {"attribute.table", TABLE_ATTRIBUTES},
                                    {"value.table", TABLE_VALUES},
                                    {"display.table", TABLE_DISPLAY},
                                    {"help.table", TABLE_HELP}}) {
    made[name] = BytesAt(reinterpret_cast<const void*>(UINTN{descriptors[index].Data}), descriptors[index].Limit);
  }

  Bytes& stream = made["attributes.stream"];
  stream.resize(AttributeStreamSize(database), kUnwritten);
  EncodeAttributes(database, std::as_writable_bytes(std::span(stream)));

  const FirmwareVersionData version{"1"};
  FirmwareVersionProtocol versionProtocol{&version};
  uefi.Install(gVaroFirmwareVersionProtocolGuid, &versionProtocol);
  if (EFI_ERROR(WriteCache(database))) {
    std::cout << folder.string() << ": the cache could not be written\n";
    return 1;
  }
  const auto variable = [&](std::u16string_view name) {
    return uefi.Variables[{Ucs2(name), gVaroAttributeVariableGuid}].Data;
  };
  made["counts.bin"] = variable(u"" ATTRIBUTE_CACHE_COUNTERS);
  for (const std::string list : {"PldmString", "DispString", "HelpString", "AttributesData"}) {
    made[list + ".list"] = ReferenceDecompress(variable(Wide(list)));
  }

  int compared = 0;
  int wrong = 0;
  for (const auto& [name, bytes] : made) {
    if (!fs::exists(folder / name)) {
      continue;
    }
    const Bytes expected = ReadFile(folder / name);
    ++compared;
    if (bytes != expected) {
      ++wrong;
      const auto shorter = static_cast<std::ptrdiff_t>(std::min(bytes.size(), expected.size()));
      const auto differs = std::mismatch(bytes.begin(), bytes.begin() + shorter, expected.begin()).first;
      std::cout << (folder / name).string() << ": " << bytes.size() << " bytes made, " << expected.size()
                << " expected; different from byte " << differs - bytes.begin() << " on\n";
    }
  }
  std::cout << folder.string() << ": " << compared - wrong << " of " << compared << " files equal\n";
  return wrong == 0 && compared != 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: vector_check DIRECTORY\n";
    return 2;
  }
  std::set<fs::path> folders;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(argv[1])) {
    if (entry.path().filename() == "store.json") {
      folders.insert(entry.path().parent_path());
    }
  }
  int failed = folders.empty() ? 1 : 0;
  for (const fs::path& folder : folders) {
    failed |= CheckFolder(folder);
  }
  return failed;
}
