/** @file
  Tests of inspect on captures of the driver's own tables, whole and damaged.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "CommandLine.hpp"
#include "Describe.hpp"
#include "DiffTables.hpp"
#include "Image.hpp"
#include "Show.hpp"
#include "TestNotebook.hpp"

namespace corvane::inspect {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* kLines =
    R"(1 Admin[RegEx:^\\x20$] password = installed (default length 0) {0..32}
2 System password = not installed (default length 0) {0..32}
6 Boot order boot-configuration = Varo:USB:0002|Varo:HDD:0001 (default -) {Varo:HDD:0001|Varo:USB:0002}
16 SecureBoot enumeration = On (default Off[ForceIf:Tpm=Off]) {Off[ForceIf:Tpm=Off]|On}
17 Hour integer = 300 (default 8) {5..18446744073709551615 step 3}
18 Asset string ro = "a\x22b\x5Cc\x01\xFF" (default length 0) {0..64}
19 Setup collection ro = SecureBoot|Asset (default -) {-}
20 Profile configuration-set = Travel (default -) {Office|Travel}
21 Setup collection ro = - (default -) {-}
)";

// The value table's, there and in its descriptor.
void DamageCrc(Payloads& payloads) {
  payloads[4].back() ^= 4;
  payloads[1][2 * 28 + 24] ^= 4;
}

std::string LinesOf(const Image& image) {
  std::ostringstream out;
  ShowAttributes(image, out);
  return out.str();
}

std::string CodesOf(const Image& image) {
  std::string codes;
  for (const Finding& finding : image.Findings.List()) {
    codes += finding.Code + " ";
  }
  return codes;
}

// What each damage makes of the lines and of the findings; every CRC is right unless the row is about it.
TEST(InspectTest, DamageIsNamedAndShownWithoutGuessing) {
  using N = Notebook&;
  const std::tuple<std::function<void(N)>, std::string, std::string> rows[] = {
      {[](N) {}, kLines, ""},
      {[](N n) {
         n.Records[3] = {.Name = 4711, .Handles = {4712, 23}, .Values = {1, 2}, .Default = 7};
       },
       "16 ?4711 enumeration = ?4712 (default #7) {?4712|On}\n", "name-dangling name-dangling index-range "},
      {[](N n) { n.Records[3] = {.Name = 21}; }, "16 SecureBoot enumeration = #0 (default #0) {-}\n",
       "index-range index-range "},
      {[](N n) { n.Records.push_back({.Type = 1, .Name = 25, .Text = std::string(2100, 'x')}); },
       "22 Asset string = ? (default length 0)", "value-missing table-cut "},
      {[](N n) { n.Records.back().Type = 0x89; }, "21 Setup type-9 ro = - (default -) {-}\n",
       "stream-malformed type-unknown "},
      {[](N n) { n.Records[6].Handles.back() = 99; }, "= SecureBoot|?99 (default -)", "member-dangling "},
      {[](N n) { n.Names[5] = "Se\ncure\xE9"; }, "16 Se\\x0Acure\\xE9 enumeration", ""},
      {[](N n) { n.Damage = [](Payloads& p) { p[7][36 + 1 + 3] ^= 1; }; }, kLines, "stream-differs "},
      {[](N n) { n.Damage = DamageCrc; }, kLines, "table-crc "},
      {[](N n) { n.Damage = [](Payloads& p) { ++p[0][24 + 2 * 16 + 8], --p[0][22]; }; }, kLines, "directory-entry "},
      {[](N n) { n.Damage = [](Payloads& p) { p[7][12] += 2; }; }, kLines, "table-cut "},
      {[](N n) { n.Damage = [](Payloads& p) { ++p[7][4]; }; }, kLines, "stream-malformed "},
  };
  for (const auto& [damage, line, codes] : rows) {
    Notebook notebook;
    damage(notebook);
    const Image image = DecodeImage(Encode(notebook));
    EXPECT_THAT(LinesOf(image), HasSubstr(line));
    EXPECT_EQ(CodesOf(image), codes) << line;
  }
}

TEST(InspectTest, FillCountsWhatTheTablesLackOfTheStore) {
  Notebook notebook;
  notebook.Records.resize(14, {.Type = 1, .Name = 25, .Text = std::string(500, 'x')});
  notebook.Damage = [](Payloads& payloads) { payloads[7][12] += 3; };  // names that the store counts
  std::ostringstream out;
  ShowFill(DecodeImage(Encode(notebook)), Style(false), out);
  EXPECT_THAT(out.str(), HasSubstr("strings          188      7680     2.4%       14  ok  full, 3 lost\n"));
  EXPECT_THAT(out.str(), HasSubstr("ok  full, 2 lost\ndisplay"));

  // Without the stream nothing proves a cut; a table whose largest entry would not fit again is suspect.
  notebook.Names[0] = std::string(3800, 'n');
  Out capture = Encode(notebook);
  capture.pop_back();
  ShowFill(DecodeImage(capture), Style(false), out);
  EXPECT_THAT(out.str(), HasSubstr("strings         3968      7680    51.7%       14  ok  full?\n"));
}

// The record of handle 255 begins with the byte that marks an empty slot, and handles beyond it are not in the stream.
TEST(InspectTest, TheStreamIsFollowedUpToItsLastSlot) {
  for (const std::size_t count : {239, 240, 241}) {
    Notebook notebook;
    notebook.Records.assign(count, {.Type = 2, .Name = 16, .Installed = 1});
    const Image image = DecodeImage(Encode(notebook));
    EXPECT_EQ(image.Stream->Records.size(), std::min<std::size_t>(count, 240));
    EXPECT_EQ(image.Attributes.Entries.size(), count);
    EXPECT_EQ(CodesOf(image), "") << count;
  }
}

// Decodes and shows what can be read; what cannot has to be the capture's fault.
std::optional<Image> Examine(const Out& capture, bool inFull) {
  try {
    Image image = DecodeImage(capture);
    const Pairing pairing = PairTexts(image);
    std::ostringstream out;
    for (const AttributeEntry& attribute : image.Attributes.Entries) {
      if (inFull) {
        ShowOne(image, pairing, attribute, out);
      }
    }
    if (inFull) {
      ShowFill(image, Style(true), out);
      ShowTexts(image, Style(true), out);
      EXPECT_TRUE(nlohmann::json::accept(ImageAsJson(image, pairing)));
    }
    return image;
  } catch (const UnusableInput& unusable) {
    EXPECT_THAT(unusable.what(), StartsWith("the capture "));
    return std::nullopt;
  }
}

TEST(InspectTest, ACaptureCutAnywhereIsUnusableOrHasFindings) {
  const Out whole = Encode({});
  std::size_t readable = 0;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    if (const auto image = Examine(Middle(whole, 0, whole.size() - length), length % 17 == 0)) {
      ++readable;
      EXPECT_NE(CodesOf(*image), "") << length;
      EXPECT_EQ(LinesOf(*image), kLines) << length;
    }
  }
  EXPECT_GT(readable, 400u);  // the records behind the value table can be missed
}

TEST(InspectTest, NoFlippedBitChangesALineUnnoticed) {
  Out capture = Encode({});
  for (std::size_t bit = 0; bit < 8 * capture.size(); bit += 5) {  // two or one of every byte
    const auto mask = static_cast<std::uint8_t>(1U << (bit % 8));
    capture[bit / 8] ^= mask;
    if (const auto image = Examine(capture, bit % 31 == 0)) {
      EXPECT_TRUE(CodesOf(*image) != "" || LinesOf(*image) == kLines) << bit;
    }
    capture[bit / 8] ^= mask;
  }
}

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

  int Run(const std::string& line) {
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
    return RunCommandLine(static_cast<int>(argv.size()), argv.data(), false, out_, err_);
  }

  std::filesystem::path folder_ =
      std::filesystem::path(::testing::TempDir()) /
      (std::string("inspect_") + ::testing::UnitTest::GetInstance()->current_test_info()->name());
  Out b_;
  std::ostringstream out_;
  std::ostringstream err_;
};

TEST_F(CommandLineTest, ExitStatusAndOutputOfEachForm) {
  Save("empty.bin", {});
  Save("noise.bin", Out(100, 'x'));
  struct Row {
    std::string Line;
    int Status;
    ::testing::Matcher<std::string> Output;
    ::testing::Matcher<std::string> Errors = "";
  };
  const Row rows[] = {
      {"show --no-tables a.bin", 0, kLines},
      {"show a.bin", 0, AllOf(StartsWith(kLines), HasSubstr("\n\ntable  "), EndsWith(" 3  ok\n"))},
      {"show Admin a.bin", 0, StartsWith("1 Admin[RegEx:^\\\\x20$] password = installed")},
      {"show Admin[RegEx:^\\\\x20$] a.bin", 0, HasSubstr("\n  type            password (0x02)\n")},
      {"show SecureBoot a.bin", 0, HasSubstr("1: On (string 23), setting value 69\n")},
      {"show Setup a.bin", 0, AllOf(HasSubstr("19 Setup"), HasSubstr("\n21 Setup"))},
      {"show Nobody a.bin", 2, "", EndsWith("a.bin: no attribute has the name \"Nobody\"\n")},
      {"show --texts a.bin", 0, StartsWith("display texts (en-US)\n16 \"Secure Boot\"\n17 \"Pr\u00FCfung \u4E2D\"\n")},
      {"show c.bin", 1, HasSubstr("  bad\ndisplay"), StartsWith("finding: table-crc: the values table has ")},
      {"show missing.bin", 2, "", EndsWith("missing.bin: No such file or directory\n")},
      {"show " + folder_.string(), 2, "", EndsWith(": is a directory\n")},
      {"show empty.bin", 2, "", EndsWith("empty.bin: the capture is empty\n")},
      {"show noise.bin", 2, "", HasSubstr("no transport record begins at offset 0\n")},
      {"show", 2, "", HasSubstr("FILE")},
      {"frobnicate", 2, "", HasSubstr("subcommand")},
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
      {"diff a.bin c.bin", 1, HasSubstr("2 differences, 0 breaking\n"), EndsWith("c.bin: 1 findings (table-crc)\n")},
      {"export a.bin", 2, "", HasSubstr("--json or --redfish")},
      {"export --json a.bin", 0, StartsWith("{\n \"format\": \"corvane-capture\",\n \"version\": 1,\n")},
      {"export --json a.bin -o " + folder_.string(), 2, "", HasSubstr(": cannot be written: ")},
      {"export --redfish a.bin", 0, HasSubstr("\"what\": \"attribute\",\n      \"reason\": \"a boot order")},
      {"import b.bin", 0, std::string(reinterpret_cast<const char*>(b_.data()), b_.size())},
      {"report a.bin --since c.bin --json", 1, HasSubstr("\"older\": \"" + (folder_ / "c.bin").string())},
      {"diff-tables a.bin noise.bin", 2, "", HasSubstr("noise.bin: ")},
      {"diff-tables a.bin b.bin --only colours", 2, "", HasSubstr("colours")},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Run(row.Line), row.Status) << row.Line << err_.str();
    EXPECT_THAT(out_.str(), row.Output) << row.Line;
    EXPECT_THAT(err_.str(), row.Errors) << row.Line;
  }
}

TEST_F(CommandLineTest, JsonHoldsTheWholeCapture) {
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
