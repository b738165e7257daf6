/** @file
  Tests of the Redfish documents.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "export/Redfish.hpp"
#include "test/TestNotebook.hpp"

namespace corvane::inspect {
namespace {

using Json = nlohmann::ordered_json;

// Collections become menus, annotations conditions and expressions; whatever has no place is listed.
TEST(RedfishTest, EachPart_IsMappedOrListedAsLeftOut) {
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
  const RedfishExport result = ExportRedfish(MakeCatalog(image), {.SettingsUri = "/later", .Language = "de"});
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
            "attribute Caf\u00E9\nattribute Boot order\nvalue Secure Boot\nvalue Rest\ncurrent Rest\n"
            "expression Asset\n");
  EXPECT_EQ(result.Registry["Language"], "de");
  EXPECT_EQ(at(result.Bios, "/@Redfish.Settings/SettingsObject"), (Json{{"@odata.id", "/later"}}));
}

}  // namespace
}  // namespace corvane::inspect
