/** @file
  Tests of the exports for other software: PLDM tables and the firmware-attributes tree.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "export/FirmwareAttributes.hpp"
#include "export/Pldm.hpp"
#include "test/TestNotebook.hpp"

namespace corvane::inspect {
namespace {

using ::testing::IsSupersetOf;

// "what name" of each part, a line each.
std::string LeftOf(const ExportResult& result) {
  std::string left;
  for (const LeftOut& one : result.Left) {
    left += fmt::format("{} {}\n", one.What, one.Attribute);
  }
  return left;
}

Out ContentOf(const ExportFile& file) {
  return {file.Content.begin(), file.Content.end()};
}

// A reader of the standard needs the default text after its length, and a string for every handle.
TEST(PldmTest, Tables_HaveWholeEntriesAndResolvedHandles) {
  Notebook notebook;
  notebook.Records[5].DefaultLength = 4;                                // Asset
  notebook.Records[7].Handles = {28, 99};                               // Profile
  notebook.Records.push_back({.Type = 1, .Name = 98, .Text = "lost"});  // without a name
  const Image image = DecodeImage(Encode(notebook));
  const std::pair<bool, std::string> rows[] = {
      {false, "attribute Profile\nattribute ?98\ndefault Asset\n"},
      {true,
       "attribute Admin[RegEx:^\\\\x20$]\nattribute System\nattribute Boot order\nattribute Setup\nattribute Profile\n"
       "attribute Setup\nattribute ?98\ndefault Asset\n"},
  };
  for (const auto& [common, left] : rows) {
    const ExportResult result = ExportPldm(image, common);
    EXPECT_EQ(LeftOf(result), left);
    Findings findings;
    const Out strings = ContentOf(result.Files[0]);
    const Out attributes = ContentOf(result.Files[1]);
    const Out values = ContentOf(result.Files[2]);
    const auto names = DecodeStringTable(strings, findings);
    const auto entries = DecodeAttributeTable(attributes, findings);
    EXPECT_EQ(DecodeValueTable(values, findings).Entries.size() + (common ? 0 : 1), result.Attributes);  // System
    EXPECT_TRUE(findings.List().empty());
    ASSERT_EQ(entries.Entries.size(), result.Attributes);
    EXPECT_EQ(entries.Find(18)->Bounds, Bounds(LengthBounds{1, 0, 64, 0}));
    EXPECT_EQ(entries.Find(17)->Bounds, image.Attributes.Find(17)->Bounds);
    EXPECT_EQ(names.Find(99), nullptr);
    EXPECT_EQ(names.Find(26) != nullptr, !common);  // the name of a collection
  }
}

TEST(FirmwareAttributesTest, EachAttribute_IsAFolderOrListedAsLeftOut) {
  Notebook notebook;
  notebook.Names[0] = "AdminPassword[RegEx:x]";
  notebook.Names.insert(notebook.Names.end(), {"a/b", "One;Two", "Split"});
  notebook.Displays = {u"Secure Boot"};
  notebook.Records[3].Default = 1;
  notebook.Records[7].Type = 0x86;
  notebook.Records.push_back({.Type = 1, .Name = 30, .Text = ""});
  notebook.Records.push_back({.Name = 32, .Handles = {31, 23}, .Values = {0, 1}});
  notebook.Records.push_back({.Type = 1, .Name = 21, .Text = "twice"});
  const Image image = DecodeImage(Encode(notebook));
  const ExportResult result = ExportFirmwareAttributes(MakeCatalog(image), "de");
  EXPECT_EQ(LeftOf(result),
            "attribute System\nattribute Boot order\nattribute a/b\nattribute SecureBoot\nattribute Split\n");
  std::vector<std::string> files;
  for (const ExportFile& file : result.Files) {
    files.push_back(fmt::format("{} {:o} {}", file.Path, file.Mode, file.Content));
  }
  EXPECT_THAT(files, IsSupersetOf({
                         "attributes/SecureBoot/type 444 enumeration\n",
                         "attributes/SecureBoot/display_name_language_code 444 de\n",
                         "attributes/SecureBoot/current_value 644 On\n",
                         "attributes/SecureBoot/default_value 444 On\n",
                         "attributes/SecureBoot/possible_values 444 Off;On\n",
                         "attributes/Hour/type 444 integer\n",
                         "attributes/Hour/min_value 444 5\n",
                         "attributes/Hour/max_value 444 18446744073709551615\n",
                         "attributes/Hour/scalar_increment 444 3\n",
                         "attributes/Hour/default_value 444 8\n",
                         "attributes/Asset/current_value 444 a\"b\\c\x01\u00FF\n",
                         "attributes/Asset/max_length 444 64\n",
                         "attributes/Profile/current_value 444 Travel\n",
                         "authentication/AdminPassword/is_enabled 444 1\n",
                         "authentication/AdminPassword/role 444 bios-admin\n",
                         "authentication/AdminPassword/max_password_length 444 32\n",
                         "authentication/AdminPassword/current_password 200 \n",
                     }));
  EXPECT_EQ(result.Attributes, 5u);
}

}  // namespace
}  // namespace corvane::inspect
