/** @file
  Tests of the lossless export and of the import.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "bytes/Findings.hpp"
#include "capture/Image.hpp"
#include "export/Export.hpp"
#include "test/TestNotebook.hpp"

namespace corvane::inspect {
namespace {

using ::testing::HasSubstr;
using Json = nlohmann::ordered_json;

std::string ExportOf(const Out& capture) {
  return ExportJson(capture);
}

Out Import(const std::string& json) {
  return ImportJson({reinterpret_cast<const std::uint8_t*>(json.data()), json.size()});
}

TEST(ExportTest, ExportAndImport_OfAnyCapture_GiveTheSameBytes) {
  Notebook notebook;
  notebook.Displays.push_back({char16_t{0xD83D}, char16_t{0xDE00}});
  const Out whole = Encode(notebook);
  const std::string json = ExportOf(whole);
  EXPECT_EQ(Import(json), whole);
  EXPECT_THAT(json, ::testing::Not(HasSubstr("\"bytes\"")));  // all of it is told by fields
  EXPECT_EQ(ExportOf(Import(json)), json);
  for (std::size_t bit = 0; bit < 8 * whole.size(); bit += 101) {
    Out damaged = whole;
    damaged[bit / 8] ^= static_cast<std::uint8_t>(1U << (bit % 8));
    ASSERT_EQ(Import(ExportOf(damaged)), damaged) << bit;
    damaged.resize(bit / 8);
    ASSERT_EQ(Import(ExportOf(damaged)), damaged) << bit;
  }
  notebook.Displays.push_back({char16_t{0xD83D}});  // half a character is in no JSON
  const Out half = Encode(notebook);
  EXPECT_THAT(ExportOf(half), HasSubstr("\"record\": \"display\",\n   \"bytes\": \"0a00"));
  EXPECT_EQ(Import(ExportOf(half)), half);
}

TEST(ExportTest, Import_OfAnEditedExport_HasTheEdits) {
  Json json = Json::parse(ExportOf(Encode({})));
  json["records"][2]["entries"][8]["text"] = "Stunde";
  json["records"][3]["entries"][4]["upper"] = json["records"][7]["entries"][4]["upper"] = 23;
  const Image image = DecodeImage(Import(json.dump()));
  for (const Finding& finding : image.Findings.List()) {
    ADD_FAILURE() << finding.Code << ": " << finding.Text;
  }
  EXPECT_EQ(image.FindByName("Stunde").at(0)->Bounds, Bounds(IntegerBounds{5, 23, 3, 8}));
}

TEST(ExportTest, Import_OfAWrongExport_NamesThePlace) {
  using J = Json&;
  const std::pair<std::function<void(J)>, std::string> rows[] = {
      {[](J j) { j = 5; }, "the export is not an object"},
      {[](J j) { j["version"] = 2; }, "the export is not of the format corvane-capture, version 1"},
      {[](J j) { j["records"] = "x"; }, "the export.records is not an array"},
      {[](J j) { j["records"][0]["record"] = "tables"; }, "the export.records[0].record names no record"},
      {[](J j) { j["records"][0]["content"] = "PLDMX"; }, "records[0].content has 5 characters, not 4"},
      {[](J j) { j["records"][0]["entries"].insert(j["records"][0]["entries"].end(), 9, Json::object()); },
       "records[0].entries has more than 11 items"},
      {[](J j) { j["records"][2]["entries"][1]["text"] = "\u0394"; },
       "records[2].entries[1].text has a character above U+00FF"},
      {[](J j) { j["records"][2]["entries"][1]["text"] = std::string(70000, 'x'); }, "has more than 65535 bytes"},
      {[](J j) { j["records"][3]["entries"][3]["type"] = 256; },
       "records[3].entries[3].type is not a whole number from 0 to 255"},
      {[](J j) { j["records"][3]["entries"][3]["handle"] = -1; }, "handle is not a whole number from 0 to 65535"},
      {[](J j) { j["records"][3]["entries"][3].erase("possible"); }, "possible is missing"},
      {[](J j) { j["records"][3]["entries"][3]["possible"] = std::vector<int>(256); }, "has more than 255 items"},
      {[](J j) { j["records"][7]["entries"][0]["installed"] = 1; }, "installed is neither true nor false"},
      {[](J j) { j["records"][7]["entries"][2]["order"] = std::vector<int>(21); }, "has more than 20 items"},
      {[](J j) { j["records"][7]["entries"][3]["settings"] = {1}; }, "settings has 1 items, not 2"},
      {[](J j) { j["records"][7]["entries"][5]["text"] = std::string(1, '\0'); }, "has a character U+0000"},
      {[](J j) { j["records"][7]["entries"][5]["handle"] = 3; }, "has the handle 3, not one from 18 to 21"},
      {[](J j) { j["records"][7]["entries"][5] = nullptr; }, "records[7].entries[5] is not an object"},
      {[](J j) {
         j["records"][4] = {{"record", 9}, {"bytes", "0g"}};
       },
       "is not made of pairs of hexadecimal digits"},
      {[](J j) {
         j["records"][4] = {{"record", 9}};
       },
       "records[4].bytes is missing"},
  };
  for (const auto& [edit, message] : rows) {
    Json json = Json::parse(ExportOf(Encode({})));
    edit(json);
    try {
      Import(json.dump());
      ADD_FAILURE() << message;
    } catch (const UnusableInput& unusable) {
      EXPECT_THAT(unusable.what(), HasSubstr(message));
    }
  }
  EXPECT_THROW(Import("{\"format\": "), UnusableInput);
  bool ofCache = false;
  const std::string cache = ExportJson(Encode({}), true);
  ImportJson({reinterpret_cast<const std::uint8_t*>(cache.data()), cache.size()}, &ofCache);
  EXPECT_TRUE(ofCache);
}

}  // namespace
}  // namespace corvane::inspect
