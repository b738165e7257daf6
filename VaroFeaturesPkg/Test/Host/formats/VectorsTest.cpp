/** @file
  Tests of the published and cached formats against files made by an independent encoder; see vectors/README.md.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <filesystem>
#include <fstream>
#include <iterator>

#include <nlohmann/json.hpp>

#include "Host/DatabaseFixture.hpp"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

/// Bytes of the expected streams that the driver does not write hold this value: EDK II's DEBUG fill of new pool
/// memory.
constexpr UINT8 kUnwritten = 0xAF;

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

/// Reads fields of an entry, given as key and variable in turn. A variable keeps its value if the entry lacks its key.
template <typename Field, typename... More>
void Take(const json& entry, const char* key, Field& field, More&... more) {
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
    const Bytes text = FromHex(entry["text"]);
    spec.Text = std::string(text.begin(), text.end());
  }
  if (entry.contains("order")) {
    spec.Order = FromHex(entry["order"]);
    spec.Order.resize(entry["cur_count"]);
  }
  return spec;
}

class VectorsTest : public DatabaseFixture, public testing::WithParamInterface<const char*> {};

TEST_P(VectorsTest, DatabaseOfStore_PublishesAndCachesTheExpectedBytes) {
  const fs::path folder = fs::path(VECTORS) / GetParam();
  const json store = json::parse(ReadFile(folder / "store.json"));
  for (const auto& [array, key] : {std::pair(StringArray::Names, "names"), {StringArray::Display, "displays"}}) {
    for (int handle = kFirstHandle; store[key].contains(std::to_string(handle)); ++handle) {
      PutText(database, array, Wide(store[key][std::to_string(handle)]));
    }
  }
  for (const auto& [handle, text] : store["helps"].items()) {
    PutHelp(database, U16(std::stoul(handle)), Wide(text));
  }
  for (const json& entry : store["attributes"]) {
    Put(database, SpecOf(entry));
  }
  BuildTables();
  WriteOut();
  std::map<std::string, Bytes> made = {
      {"string.table", Table(TABLE_STRINGS)},     {"attribute.table", Table(TABLE_ATTRIBUTES)},
      {"value.table", Table(TABLE_VALUES)},       {"display.table", Table(TABLE_DISPLAY)},
      {"help.table", Table(TABLE_HELP)},          {"attributes.stream", Stream(kUnwritten)},
      {"counts.bin", Cached(u"AttributesCount")},
  };
  for (const std::string list : {"PldmString", "DispString", "HelpString", "AttributesData"}) {
    made[list + ".list"] = ReferenceDecompress(Cached(Wide(list)));
  }
  for (const auto& [name, bytes] : made) {
    EXPECT_EQ(bytes, ReadFile(folder / name)) << name;
  }
}

INSTANTIATE_TEST_SUITE_P(Stores, VectorsTest, testing::Values("notebook", "factory"),
                         [](const auto& store) { return std::string(store.param); });

}  // namespace
