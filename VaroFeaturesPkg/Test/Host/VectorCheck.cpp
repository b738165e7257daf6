/** @file
  vector_check DIRECTORY: builds the store that a folder describes and compares what the driver makes of it with the
  folder's expected files, byte for byte.

  DIRECTORY holds store.json, or folders that do. store.json is one object:

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

/// BMP text of UTF-8.
std::u16string Wide(const std::string& text) {
  std::u16string wide;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto lead = static_cast<std::uint8_t>(text[i]);
    const int more = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : 2;
    int code = more == 0 ? lead : lead & (0x3F >> more);
    for (int k = 0; k < more; ++k) {
      code = code << 6 | (text[++i] & 0x3F);
    }
    wide += static_cast<char16_t>(code);
  }
  return wide;
}

Bytes FromHex(const std::string& hex) {
  Bytes bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

RecordSpec SpecOf(const json& entry) {
  RecordSpec spec;
  const auto take = [&](const char* key, auto& field) {
    if (entry.contains(key)) {
      entry.at(key).get_to(field);
    }
  };
  take("handle", spec.Handle);
  take("type", spec.Type);
  take("name", spec.Name);
  take("value_size", spec.ValueSize);
  take("token", spec.Token);
  for (const char* const key : {"value_names", "sources", "items", "configs"}) {
    take(key, spec.Handles);
  }
  take("values", spec.Values);
  take("default", spec.Default);
  take("current", spec.Current);
  take("lower", spec.Lower);
  take("upper", spec.Upper);
  take("step", spec.Step);
  take("subtype", spec.SubType);
  take("boot_type", spec.SubType);
  take("min_length", spec.MinLength);
  take("max_length", spec.MaxLength);
  take("default_length", spec.DefaultLength);
  take("installed", spec.Installed);
  take("modes", spec.Modes);
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
  std::map<int, std::u16string> byHandle;
  for (const auto& [handle, text] : texts.items()) {
    byHandle[std::stoi(handle)] = Wide(text.get<std::string>());
  }
  for (const auto& [handle, text] : byHandle) {
    if (array == StringArray::Help) {
      PutHelp(database, static_cast<UINT16>(handle), text);
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
  const auto table = [&](size_t index) {
    const auto* const data = reinterpret_cast<const std::uint8_t*>(UINTN{descriptors[index].Data});
    return Bytes(data, data + descriptors[index].Limit);
  };
  made["string.table"] = table(TABLE_STRINGS);
  made["attribute.table"] = table(TABLE_ATTRIBUTES);
  made["value.table"] = table(TABLE_VALUES);
  made["display.table"] = table(TABLE_DISPLAY);
  made["help.table"] = table(TABLE_HELP);

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
  made["PldmString.list"] = ReferenceDecompress(variable(u"" ATTRIBUTE_CACHE_NAMES));
  made["DispString.list"] = ReferenceDecompress(variable(u"" ATTRIBUTE_CACHE_DISPLAY_STRINGS));
  made["HelpString.list"] = ReferenceDecompress(variable(u"" ATTRIBUTE_CACHE_HELP_STRINGS));
  made["AttributesData.list"] = ReferenceDecompress(variable(u"" ATTRIBUTE_CACHE_ATTRIBUTES_DATA));

  int compared = 0;
  int wrong = 0;
  for (const auto& [name, bytes] : made) {
    if (!fs::exists(folder / name)) {
      continue;
    }
    const Bytes expected = ReadFile(folder / name);
    ++compared;
    if (bytes == expected) {
      continue;
    }
    ++wrong;
    std::cout << folder.string() << ": " << name << ": " << bytes.size() << " bytes made, " << expected.size()
              << " expected; different:";
    int shown = 0;
    for (size_t i = 0; i < std::min(bytes.size(), expected.size()) && shown < 8; ++i) {
      if (bytes[i] != expected[i]) {
        std::cout << " byte " << i << " is " << int{bytes[i]} << " not " << int{expected[i]} << ",";
        ++shown;
      }
    }
    std::cout << "\n";
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
  const fs::path root = argv[1];
  std::vector<fs::path> folders;
  if (fs::exists(root / "store.json")) {
    folders.push_back(root);
  } else if (fs::is_directory(root)) {
    for (const fs::directory_entry& entry : fs::directory_iterator(root)) {
      if (fs::exists(entry.path() / "store.json")) {
        folders.push_back(entry.path());
      }
    }
  }
  if (folders.empty()) {
    std::cerr << "vector_check: no store.json under " << root.string() << "\n";
    return 1;
  }
  int failed = 0;
  for (const fs::path& folder : folders) {
    failed |= CheckFolder(folder);
  }
  return failed;
}
