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
#include <iterator>

#include <nlohmann/json.hpp>

#include "Host/DatabaseFixture.hpp"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

/// What the expected streams hold where nothing is written: the fill of a block that EDK II's DEBUG pool gave out.
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

/// Takes those of the fields, given as key and place in turn, that the entry has.
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

class VectorCheck : public DatabaseFixture {
 public:
  explicit VectorCheck(fs::path folder) : folder_(std::move(folder)) {}

 private:
  void TestBody() override {
    const json store = json::parse(ReadFile(folder_ / "store.json"));
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
    int compared = 0;
    for (const auto& [name, bytes] : made) {
      if (fs::exists(folder_ / name)) {
        ++compared;
        EXPECT_EQ(bytes, ReadFile(folder_ / name)) << name;
      }
    }
    EXPECT_NE(compared, 0);
    std::printf("%s: %d files compared\n", folder_.c_str(), compared);
  }

  fs::path folder_;
};

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (argc != 2) {
    std::fprintf(stderr, "usage: vector_check DIRECTORY\n");
    return 2;
  }
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(argv[1])) {
    if (const fs::path folder = entry.path().parent_path(); entry.path().filename() == "store.json") {
      testing::RegisterTest("VectorCheck", folder.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                            [folder]() -> VectorCheck* { return new VectorCheck(folder); });
    }
  }
  return testing::UnitTest::GetInstance()->total_test_count() == 0 ? 1 : RUN_ALL_TESTS();
}
