/** @file
  Tests of each subcommand's exit status and output.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "command/CommandLine.hpp"
#include "test/TestNotebook.hpp"

namespace corvane::inspect {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class CommandLineTest : public ::testing::Test {
 protected:
  CommandLineTest() {
    std::filesystem::create_directories(folder_);
    Save("a.bin", Encode({}));
    Notebook changed;
    changed.Records[3].Current = 0;
    changed.Records[1].Installed = 1;
    b_ = Encode(changed);
    Save("b.bin", b_);
    changed.Displays[0] = u"Sicher";
    changed.Damage = DamageCrc;
    Save("c.bin", Encode(changed));
  }
  ~CommandLineTest() override { std::filesystem::remove_all(folder_); }

  void Save(const std::string& name, const Out& bytes) {
    std::ofstream file(folder_ / name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }

  int Run(const std::string& line) { return RunTo(line, {}, out_); }

  int RunTo(const std::string& line, const Console& console, std::ostream& out) {
    std::vector<std::string> arguments = Split(line, ' ');
    std::vector<const char*> argv{"inspect"};
    for (std::string& argument : arguments) {
      if (argument.ends_with(".bin")) {
        argument = (folder_ / argument).string();
      }
      argv.push_back(argument.c_str());
    }
    out_.str("");
    err_.str("");
    return RunCommandLine(static_cast<int>(argv.size()), argv.data(), console, out, err_);
  }

  std::filesystem::path folder_ =
      std::filesystem::path(::testing::TempDir()) /
      (std::string("inspect_") + ::testing::UnitTest::GetInstance()->current_test_info()->name());
  Out b_;
  std::ostringstream out_;
  std::ostringstream err_;
};

TEST_F(CommandLineTest, EachCommandLine_HasItsExitStatusAndOutput) {
  Save("empty.bin", {});
  Save("noise.bin", Out(100, 'x'));
  struct Row {
    std::string Line;
    int Status;
    ::testing::Matcher<std::string> Output;
    ::testing::Matcher<std::string> Errors = "";
  };
  const Row rows[] = {
      {"show --no-tables a.bin", 0, kNotebookLines},
      {"show a.bin", 0, AllOf(StartsWith(kNotebookLines), HasSubstr("\n\ntable  "), EndsWith(" 3  ok\n"))},
      {"show Admin a.bin", 0, StartsWith("1 Admin[RegEx:^\\\\x20$] password = installed")},
      {"show Admin[RegEx:^\\\\x20$] a.bin", 0, HasSubstr("\n  type            password (0x02)\n")},
      {"show SecureBoot a.bin", 0, HasSubstr("1: On (string 23), setting value 69\n")},
      {"show Setup a.bin", 0, AllOf(HasSubstr("19 Setup"), HasSubstr("\n21 Setup"))},
      {"show 16 a.bin", 0, StartsWith("16 SecureBoot ")},
      {"show Nobody a.bin", 2, "", EndsWith("a.bin: no attribute has the name or handle \"Nobody\"\n")},
      {"show securebot a.bin", 2, "", EndsWith("handle \"securebot\" (near: \"SecureBoot\")\n")},
      {"show --texts a.bin", 0, StartsWith("display texts (en-US)\n16 \"Secure Boot\"\n17 \"Pr\u00FCfung \u4E2D\"\n")},
      {"show c.bin", 1, HasSubstr("  bad\ndisplay"), StartsWith("finding: table-crc: the values table has ")},
      {"show missing.bin", 2, "", EndsWith("missing.bin: No such file or directory\n")},
      {"show " + folder_.string(), 2, "", EndsWith(": is a directory\n")},
      {"show empty.bin", 2, "", EndsWith("empty.bin: the capture is empty\n")},
      {"show noise.bin", 2, "", HasSubstr("no transport record begins at offset 0\n")},
      {"show", 2, "", HasSubstr("FILE")},
      {"frobnicate", 2, "", EndsWith("there is no subcommand \"frobnicate\"\n")},
      {"exprot a.bin", 2, "", EndsWith("\"exprot\" (near: \"export\")\n")},
      {"--version", 0, "inspect 1.0.0\n"},
      {"lint a.bin --limit -1", 2, "", HasSubstr("-1 is not a number of bytes above 0")},
      {"cache a.bin --limit 0", 2, "", HasSubstr("0 is not a number of bytes above 0")},
      {"explain Setup a.bin", 2, "",
       EndsWith("2 attributes have the name \"Setup\": give one of the handles 19, 21\n")},
      {"explain 21 a.bin", 0, StartsWith("21 Setup\n")},
      {"explain Hour a.bin --set Hour=8", 0, HasSubstr("setting Hour=8 changes nothing else\n")},
      {"explain Hour a.bin --set Hour=4", 2, "", HasSubstr("\"4\" is not a number from 5 to ")},
      {"explain Hour a.bin --set Hour", 2, "", HasSubstr("\"Hour\" is not of the form NAME=VALUE")},
      {"explain Hour a.bin --set SecureBoot=Onn", 2, "", EndsWith("has no value \"Onn\" (near: \"On\")\n")},
      {"--help", 0, HasSubstr("diff-tables")},
      {"diff-tables a.bin a.bin", 0, "strings: equal\nattributes: equal\nvalues: equal\ndisplay: equal\nhelp: equal\n"},
      {"diff-tables a.bin b.bin --only values,help", 1,
       "values: differ from offset 5 on (64 and 68 bytes)\n  2 System: - -> installed\n"
       "  16 SecureBoot: On -> Off[ForceIf:Tpm=Off]\nhelp: equal\n"},
      {"diff-tables b.bin c.bin --only strings,display", 1,
       "strings: equal\ndisplay: differ from offset 14 on (68 and 60 bytes)\n"},
      {"diff a.bin a.bin", 0, "0 differences, 0 breaking\n"},
      {"diff a.bin b.bin --no-values", 0, "0 differences, 0 breaking\n"},
      {"diff --json a.bin b.bin", 1, HasSubstr("\"what\": \"current\",\n      \"old\": \"On\"")},
      {"diff a.bin c.bin", 1, HasSubstr("2 differences, 0 breaking\n"), EndsWith("c.bin: 1 finding (table-crc)\n")},
      {"export a.bin", 2, "", HasSubstr("--json, --redfish, --pldm or")},
      {"export --json a.bin", 0, StartsWith("{\n \"format\": \"corvane-capture\",\n \"version\": 1,\n")},
      {"export --json a.bin -o " + folder_.string(), 2, "", HasSubstr(": cannot be written: ")},
      {"export --redfish a.bin", 0,
       HasSubstr("\"what\": \"attribute\",\n      \"reason\": \"Redfish has no attribute type for a boot order"),
       "warning: \"Hour\" is 300, not one of 5 to 18446744073709551615 in steps of 3.\n"},
      {"export a.bin --pldm " + (folder_ / "pldm").string(), 0, "9 attributes of 9 exported\n",
       StartsWith("warning: ")},
      {"export --firmware-attributes " + (folder_ / "tree").string() + " a.bin", 0,
       EndsWith("\n4 attributes of 9 exported\n"), StartsWith("warning: ")},
      {"export --firmware-attributes " + (folder_ / "tree").string() + " a.bin", 2, "",
       EndsWith("tree/attributes: already exists; name another folder\n")},
      {"export --redfish --profile common a.bin", 2, "", HasSubstr("--profile requires --pldm")},
      {"import b.bin", 0, std::string(reinterpret_cast<const char*>(b_.data()), b_.size())},
      {"report a.bin --since c.bin --json", 1, HasSubstr("\"older\": \"" + (folder_ / "c.bin").string())},
      {"diff-tables a.bin noise.bin", 2, "", HasSubstr("noise.bin: ")},
      {"diff-tables a.bin b.bin --only colours", 2, "", HasSubstr("display")},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Run(row.Line), row.Status) << row.Line << err_.str();
    EXPECT_THAT(out_.str(), row.Output) << row.Line;
    EXPECT_THAT(err_.str(), row.Errors) << row.Line;
  }
}

TEST_F(CommandLineTest, Output_ThatCannotBeWritten_IsAFailure) {
  const char* lines[] = {"show a.bin",
                         "show --json a.bin",
                         "validate a.bin",
                         "lint a.bin",
                         "explain Hour a.bin",
                         "diff a.bin b.bin",
                         "diff-tables a.bin b.bin",
                         "export --json a.bin",
                         "export --redfish a.bin",
                         "import a.bin",
                         "report a.bin",
                         "--help",
                         "--version"};
  for (const char* line : lines) {
    std::ofstream full("/dev/full");
    EXPECT_EQ(RunTo(line, {}, full), 2) << line;
    EXPECT_THAT(err_.str(), EndsWith("the output cannot be written: No space left on device\n")) << line;
  }
}

TEST_F(CommandLineTest, Import_ToATerminal_WritesNothing) {
  EXPECT_EQ(RunTo("import a.bin", {.Terminal = true}, out_), 2);
  EXPECT_EQ(out_.str(), "");
}

TEST_F(CommandLineTest, Dash_IsStandardInput) {
  ASSERT_NE(std::freopen((folder_ / "a.bin").c_str(), "rb", stdin), nullptr);
  EXPECT_EQ(Run("show --no-tables -"), 0) << err_.str();
  EXPECT_EQ(out_.str(), kNotebookLines);
}

TEST_F(CommandLineTest, Json_HasTheWholeCapture) {
  ASSERT_EQ(Run("show --json a.bin"), 0);
  const auto json = nlohmann::json::parse(out_.str());
  const std::pair<const char*, nlohmann::json> rows[] = {
      {"/attributes/3/possible/1", {{"name", "On"}, {"nameHandle", 23}, {"value", 69}}},
      {"/attributes/3/current/indices", {1}},
      {"/attributes/3/token", 1016},
      {"/attributes/4/upper", 0xFFFFFFFFFFFFFFFF},
      {"/attributes/5/current/text", "a\"b\\c\x01ÿ"},
      {"/attributes/1/current", nullptr},
      {"/values/1/current/order", {1, 0}},
      {"/tables/0/lost", 0},
      {"/strings/13", {{"handle", 29}, {"text", "Travel"}}},
      {"/displayTexts/entries/1/text", "Prüfung 中"},
      {"/directory/entries/4/tableId", 4},
      {"/descriptors/9/capacity", 10240},
      {"/stream/records/0/installed", true},
      {"/stream/nameCount", 14},
      {"/findings", nlohmann::json::array()},
  };
  for (const auto& [pointer, expected] : rows) {
    EXPECT_EQ(json.at(nlohmann::json::json_pointer(pointer)), expected) << pointer;
  }
}

}  // namespace
}  // namespace corvane::inspect
