/** @file
  Tests of what leaves a capture for other programs: the lossless export and the Redfish documents.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <gmock/gmock.h>

#include "Export.hpp"
#include "Expression.hpp"
#include "Redfish.hpp"
#include "Report.hpp"
#include "TestNotebook.hpp"

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

TEST(ExportTest, EveryByteComesBackWhateverIsWrongWithThem) {
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

TEST(ExportTest, AnEditedExportIsACaptureWithItsEdits) {
  Json json = Json::parse(ExportOf(Encode({})));
  json["records"][2]["entries"][8]["text"] = "Stunde";
  json["records"][3]["entries"][4]["upper"] = 23;
  const Image image = DecodeImage(Import(json.dump()));
  EXPECT_TRUE(image.Strings.Frame.CrcOk() && image.Attributes.Frame.CrcOk());
  EXPECT_EQ(image.FindByName("Stunde").at(0)->Bounds, Bounds(IntegerBounds{5, 23, 3, 8}));
}

TEST(ExportTest, WhatCannotBeImportedIsNamedByItsPlace) {
  using J = Json&;
  const std::pair<std::function<void(J)>, std::string> rows[] = {
      {[](J j) { j = 5; }, "the export is no object"},
      {[](J j) { j["version"] = 2; }, "the export is not of the format corvane-capture, version 1"},
      {[](J j) { j["records"] = "x"; }, "the export.records is no array"},
      {[](J j) { j["records"][0]["record"] = "tables"; }, "the export.records[0].record names no record"},
      {[](J j) { j["records"][0]["content"] = "PLDMX"; }, "records[0].content has 5 characters, not 4"},
      {[](J j) { j["records"][0]["entries"].insert(j["records"][0]["entries"].end(), 9, Json::object()); },
       "records[0].entries has more than 11 items"},
      {[](J j) { j["records"][2]["entries"][1]["text"] = "\u0394"; },
       "records[2].entries[1].text has a character above U+00FF"},
      {[](J j) { j["records"][2]["entries"][1]["text"] = std::string(70000, 'x'); }, "has more than 65535 bytes"},
      {[](J j) { j["records"][3]["entries"][3]["type"] = 256; },
       "records[3].entries[3].type is no whole number from 0 to 255"},
      {[](J j) { j["records"][3]["entries"][3]["handle"] = -1; }, "handle is no whole number from 0 to 65535"},
      {[](J j) { j["records"][3]["entries"][3].erase("possible"); }, "possible is missing"},
      {[](J j) { j["records"][3]["entries"][3]["possible"] = std::vector<int>(256); }, "has more than 255 items"},
      {[](J j) { j["records"][7]["entries"][0]["installed"] = 1; }, "installed is neither true nor false"},
      {[](J j) { j["records"][7]["entries"][2]["order"] = std::vector<int>(21); }, "has more than 20 items"},
      {[](J j) { j["records"][7]["entries"][3]["settings"] = {1}; }, "settings has 1 items, not 2"},
      {[](J j) { j["records"][7]["entries"][5]["text"] = std::string(1, '\0'); }, "has a character U+0000"},
      {[](J j) { j["records"][7]["entries"][5]["handle"] = 3; }, "has the handle 3 where one from 18 to below 22"},
      {[](J j) { j["records"][7]["entries"][5] = nullptr; }, "records[7].entries[5] is no object"},
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

TEST(ExpressionTest, CompilesAndMatchesWithinLimits) {
  EXPECT_TRUE(Expression("^[\\x20-\\x7e]{0,3}$").Matches("abc"));
  EXPECT_FALSE(Expression("^[\\x20-\\x7e]{0,3}$").Matches("abcd"));
  EXPECT_EQ(Expression("^[a-z{0,32}$").Problem(), "missing terminating ] for character class at offset 12");
  EXPECT_NE(Expression(std::string(60000, '(')).Problem(), "");
  EXPECT_FALSE(Expression("(a+)+(a+)+(a+)+$").Matches(std::string(400, 'a') + 'b'));
}

// Collections become menus, annotations conditions and expressions; whatever has no place is listed.
TEST(RedfishTest, EachPartIsMappedOrListed) {
  Notebook notebook;
  notebook.Names = Split(
      "Admin[RegEx:^\\\\133\\\\x20-\\\\x7e\\\\135{0,32}$]|Boot order|Disk|Secure "
      "Boot|Off|On[ForceIf:Hour=7][ForceIfNot:"
      "Hour=9]|Hour|Asset[RegEx:(]|Net/work|Profile[ForceIf:Secure Boot=Off]|Office|Travel|Caf\xE9|Rest",
      '|');
  notebook.Records[0] = {.Handle = 1, .Type = 2, .Name = 16, .MaxLength = 32};
  notebook.Records[1] = {.Handle = 2, .Type = 2, .Name = 28};
  notebook.Records[2] = {.Handle = 6, .Type = 4, .Name = 17, .Handles = {18}, .Order = {0}};
  notebook.Records[3] = {.Name = 19, .Handles = {20, 21, 20}, .Values = {1, 2, 3}, .Default = 1, .Current = 0};
  notebook.Records[4].Name = 22;
  notebook.Records[5].Name = 23;
  notebook.Records[6] = {.Type = 0x85, .Name = 24, .Handles = {16, 18}};
  notebook.Records[7] = {.Type = 6, .Name = 25, .Handles = {26, 27}, .Current = 1};
  notebook.Records[8] = {.Name = 29, .Handles = {26, 99}, .Values = {1, 2}, .Current = 1};
  const Image image = DecodeImage(Encode(notebook));
  const RedfishExport result = ExportRedfish(MakeCatalog(image), {});
  const auto at = [](const Json& json, const std::string& pointer) { return json.at(Json::json_pointer(pointer)); };
  const Json entries = result.Registry["RegistryEntries"];
  const std::pair<const char*, Json> rows[] = {
      {"/Attributes/0",
       {{"AttributeName", "Admin"},
        {"Type", "Password"},
        {"DisplayName", "Admin"},
        {"ReadOnly", false},
        {"DisplayOrder", 1},
        {"MenuPath", "./"},
        {"MinLength", 0},
        {"MaxLength", 32},
        {"ValueExpression", "^[\\x20-\\x7e]{0,32}$"}}},
      {"/Attributes/1/AttributeName", "SecureBoot"},
      {"/Attributes/1/UefiKeywordName", "Secure Boot"},
      {"/Attributes/1/MenuPath", "./Network"},
      {"/Attributes/1/Value/1/ValueName", "On"},
      {"/Attributes/1/DefaultValue", "On"},
      {"/Attributes/2/UpperBound", 0xFFFFFFFFFFFFFFFF},
      {"/Attributes/3/ReadOnly", true},
      {"/Attributes/3/MaxLength", 64},
      {"/Attributes/4/Type", "Enumeration"},
      {"/Menus/0/MenuName", "Network"},
      {"/Dependencies/0",
       {{"DependencyFor", "Hour"},
        {"Type", "Map"},
        {"Dependency",
         {{"MapFrom",
           {{{"MapFromAttribute", "Hour"},
             {"MapFromProperty", "CurrentValue"},
             {"MapFromCondition", "EQU"},
             {"MapFromValue", 7}},
            {{"MapFromAttribute", "Hour"},
             {"MapFromProperty", "CurrentValue"},
             {"MapFromCondition", "NEQ"},
             {"MapFromValue", 9},
             {"MapTerms", "OR"}}}},
          {"MapToAttribute", "SecureBoot"},
          {"MapToProperty", "CurrentValue"},
          {"MapToValue", "On"}}}}},
      {"/Dependencies/1/DependencyFor", "SecureBoot"},
      {"/Dependencies/1/Dependency/MapToProperty", "ReadOnly"},
  };
  for (const auto& [pointer, expected] : rows) {
    EXPECT_EQ(at(entries, pointer), expected) << pointer;
  }
  EXPECT_EQ(result.Bios["Attributes"], (Json{{"Admin", nullptr},
                                             {"SecureBoot", "Off"},
                                             {"Hour", 300},
                                             {"Asset", "a\"b\\c\x01\u00FF"},
                                             {"Profile", "Travel"},
                                             {"Rest", nullptr}}));
  std::string left;
  for (const LeftOut& one : result.Left) {
    left += fmt::format("{} {}\n", one.What, one.Attribute);
  }
  EXPECT_EQ(left,
            "attribute Caf\u00E9\nattribute Boot order\nvalue Secure Boot\nexpression Asset\nvalue Rest\n"
            "current Rest\n");
}

// A name is what the firmware made it: it may look like the end of the script that carries it.
TEST(ReportTest, NoTextOfACaptureIsMarkup) {
  Notebook notebook;
  notebook.Names[5] = "</script><img>@SCRIPT@";
  const Image image = DecodeImage(Encode(notebook));
  const std::string page = ReportPage(ReportData({"a<b.bin", image}, Lint(image, nullptr, {}), {}));
  EXPECT_THAT(page, ::testing::Not(HasSubstr("</script><img>")));
  const std::size_t begin = page.find("id=\"data\">") + 10;
  const Json data = Json::parse(page.substr(begin, page.find("</script>", begin) - begin));
  EXPECT_EQ(data["attributes"][3]["name"], "</script><img>@SCRIPT@");
  EXPECT_EQ(data["input"], "a<b.bin");
  EXPECT_EQ(data["groups"][1]["members"], (Json{3, 5}));
  EXPECT_EQ(
      data["edges"][0],
      (Json{{"from", "Tpm"}, {"value", "Off"}, {"not", false}, {"to", "</script><img>@SCRIPT@"}, {"forced", "Off"}}));
}

}  // namespace
}  // namespace corvane::inspect
