/** @file
  Tests of inspect on captures made by an encoder of their own.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <numeric>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "../../VaroFeaturesPkg/Test/Host/TestBytes.hpp"
#include "CommandLine.hpp"
#include "Describe.hpp"
#include "DiffTables.hpp"
#include "Image.hpp"
#include "Show.hpp"

namespace corvane::inspect {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

using Out = ::Bytes;

struct Attribute {
  std::uint16_t Handle;
  std::uint8_t Type;
  std::uint16_t Name;
  Out Bounds;                // after the head of its attribute entry
  std::optional<Out> Value;  // after the head of its value entry
  Out Record;                // after the head of its record in the stream
  std::uint32_t Token = 0;
};

Attribute Enumeration(std::uint16_t handle, std::uint16_t name, const std::vector<std::uint16_t>& values,
                      std::uint8_t byDefault, std::uint8_t current) {
  Out names = {U8(values.size())};
  Out numbers;
  for (const std::uint16_t value : values) {
    Append(names, value);
    Append(numbers, U64(value * 3U));
  }
  return {
      handle,        0, name, Join(names, U8(1), byDefault), Out{1, current}, Join(names, numbers, byDefault, current),
      1000U + handle};
}

Attribute Integer(std::uint16_t handle, std::uint16_t name, std::uint64_t upper, std::uint64_t current) {
  const Out bounds = Join(U64(5), upper, U32(3), U64(8));
  return {handle, 3, name, bounds, Join(current), Join(bounds, current), 2000};
}

Attribute Text(std::uint16_t handle, std::uint16_t name, std::string_view current) {
  const Out bounds = {1, 0, 0, 64, 0, 0, 0};
  return {handle, 0x81, name, bounds, Join(U16(current.size()), current), Join(bounds, current, U8(0))};
}

Attribute Password(std::uint16_t handle, std::uint16_t name, bool installed) {
  const Out bounds = {0, 0, 0, 32, 0, 0, 0};
  return {handle, 2, name, bounds, installed ? std::optional(Out(2)) : std::nullopt, Join(bounds, U8(installed))};
}

Attribute Collection(std::uint16_t handle, std::uint16_t name, const Out& members) {
  const Out bounds = Join(name, U8(255), U8(0));
  return {handle, 0x85, name, bounds, members, Join(bounds, members)};
}

struct Notebook {
  std::vector<std::string> Names{"Admin[RegEx:^\\\\x20$]",
                                 "System",
                                 "Boot order",
                                 "Varo:HDD:0001",
                                 "Varo:USB:0002",
                                 "SecureBoot",
                                 "Off[ForceIf:Tpm=Off]",
                                 "On",
                                 "Hour",
                                 "Asset",
                                 "Setup",
                                 "Profile",
                                 "Office",
                                 "Travel"};
  std::vector<std::u16string> Displays{u"Secure Boot", u"Prüfung \x4E2D", u""};
  std::vector<Attribute> Attributes{Password(1, 16, true),
                                    Password(2, 17, false),
                                    {6,
                                     4,
                                     18,
                                     {2, 3, 1, 2, 2, 19, 0, 20, 0},
                                     Out{2, 3, 2, 1, 0},
                                     Join(Out{2, 3, 1, 2, 2, 19, 0, 20, 0, 2, 3, 2, 1, 0}, Out(18))},
                                    Enumeration(16, 21, {22, 23}, 0, 1),
                                    Integer(17, 24, 0xFFFFFFFFFFFFFFFF, 300),
                                    Text(18, 25, "a\"b\\c\x01\xFF"),
                                    Collection(19, 26, {2, 16, 0, 18, 0}),
                                    {20, 6, 27, {2, 28, 0, 29, 0}, Out{1}, {2, 28, 0, 29, 0, 1}},
                                    Collection(21, 26, {0})};
  std::uint64_t CountedAttributes = 6;
  std::uint64_t LostNames = 0;       // counted in the store, absent from the string table
  std::uint32_t CrcDamage = 0;       // of the value table
  std::uint16_t ValueLengthLie = 0;  // in the directory
};

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

// CRC-32 bit by bit, from its definition.
std::uint32_t CrcOf(const Out& bytes) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const std::uint8_t byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) {
      crc = (crc >> 1) ^ ((crc & 1) * 0xEDB88320U);
    }
  }
  return ~crc;
}

struct BuiltTable {
  Out Bytes;
  std::size_t Entries;
  std::uint8_t Index;
  std::uint16_t Capacity;
  Out Kind;  // in the directory
};

Out Encode(const Notebook& notebook) {
  Out strings;
  for (std::size_t i = 0; i < notebook.Names.size(); ++i) {
    Append(strings, Join(U16(16 + i), U16(notebook.Names[i].size()), std::string_view(notebook.Names[i])));
  }
  Out displays = Join(U16(10), u"en-US");
  Out helps = displays;
  for (std::size_t i = 0; i < notebook.Displays.size(); ++i) {
    const std::u16string& text = notebook.Displays[i];
    Append(displays, Join(U16(16 + i), U16(2 * text.size()), std::u16string_view(text)));
    Append(helps, Join(U16(16 + i), U16(0)));
  }
  Out attributes;
  Out values;
  Out stream;
  std::size_t valueCount = 0;
  std::size_t slot = 0;
  for (const Attribute& attribute : notebook.Attributes) {
    const Out head = Join(attribute.Handle, attribute.Type);
    Append(attributes, Join(head, attribute.Name, attribute.Bounds));
    if (attribute.Value) {
      Append(values, Join(head, *attribute.Value));
      ++valueCount;
    }
    if (attribute.Handle < 256 && (attribute.Type & 0x7F) <= 6) {
      Append(stream, Join(Out(attribute.Handle - slot, 0xFF), head, attribute.Name, U16(1), attribute.Token));
      Append(stream, attribute.Record);
      slot = attribute.Handle + 1U;
    }
  }
  const std::size_t textCount = notebook.Displays.size();
  std::vector<BuiltTable> tables{{strings, notebook.Names.size(), 0, 7680, {0, 0, 1}},
                                 {attributes, notebook.Attributes.size(), 1, 3072, {1, 0, 0}},
                                 {values, valueCount, 2, 2048, {2, 0, 0}},
                                 {displays, textCount, 9, 10240, {3, 1, 4}},
                                 {helps, textCount, 10, 65535, {3, 0, 4}}};

  Out directory = Join("$ACI", U32(1), "PLDM", U16(104), U64(0), U8(0), U8(5));
  Out descriptors;
  for (BuiltTable& table : tables) {
    const bool isValues = table.Index == 2;
    const std::size_t pad = (4 - table.Bytes.size() % 4) % 4;
    Append(table.Bytes, Out(pad));
    const std::uint32_t crc = CrcOf(table.Bytes) ^ (isValues ? notebook.CrcDamage : 0);
    Append(table.Bytes, crc);
    const std::uint64_t address = 0x100000000 + table.Index * 0x1000U;
    const std::uint16_t size = U16(table.Bytes.size());
    Append(directory, Join(table.Kind, U32(0), U8(static_cast<std::size_t>(&table - tables.data())),
                           U16(size + (isValues ? notebook.ValueLengthLie : 0U)), U16(0), U32(address)));
    descriptors.resize(std::size_t{table.Index} * 28);
    Append(descriptors, Join(address, table.Index, U32(table.Index), size, table.Capacity, U16(0), U16(table.Entries),
                             crc, U8(pad), U8(1), U8(0)));
  }
  directory[22] = U8(0U - std::accumulate(directory.begin(), directory.end(), std::size_t{0}));
  directory.resize(200);

  Out capture;
  std::uint8_t type = 0;
  const auto send = [&](const Out& payload) {
    const Out guid = {0xD0, 0x21, 0x6C, 0xB6, 0xD7, 0x33, 0x27, 0x46, 0x84, 0xD5, 0x14, 0xE0, 0xA9, 0x04, 0x74, 0x56};
    Append(capture, Join(guid, U64(payload.size()), type++, payload));
  };
  send(directory);
  send(descriptors);
  for (const BuiltTable& table : tables) {
    send(table.Bytes);
  }
  send(Join(U32(stream.size()), notebook.CountedAttributes, U64(notebook.Names.size() + notebook.LostNames),
            U64(textCount), U64(0), stream));
  return capture;
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

TEST(InspectTest, ASoundCaptureHasOneLineAnAttributeAndNoFinding) {
  const Image image = DecodeImage(Encode({}));
  EXPECT_EQ(LinesOf(image), kLines);
  EXPECT_EQ(CodesOf(image), "");
}

// What each damage makes of the lines and of the findings; every CRC is right unless the row is about it.
TEST(InspectTest, DamageIsNamedAndShownWithoutGuessing) {
  struct Row {
    std::function<void(Notebook&)> Damage;
    std::string Line;  // expected among the lines
    std::string Codes;
  };
  const Row rows[] = {
      {[](Notebook& n) {
         n.Attributes[3] = Enumeration(16, 4711, {4712, 23}, 7, 0);
       },
       "16 ?4711 enumeration = ?4712 (default #7) {?4712|On}\n", "name-dangling name-dangling index-range "},
      {[](Notebook& n) { n.Attributes[3] = Enumeration(16, 21, {}, 0, 0); },
       "16 SecureBoot enumeration = #0 (default #0) {-}\n", "index-range index-range "},
      {[](Notebook& n) {
         n.Attributes[3].Value = Out{2, 1, 0};
       },
       "16 SecureBoot enumeration = On|Off[ForceIf:Tpm=Off] (default", "index-count stream-differs "},
      {[](Notebook& n) { n.Attributes[4].Value.reset(); }, "17 Hour integer = ? (default 8)",
       "value-missing table-cut "},
      {[](Notebook& n) { n.Attributes.back() = {21, 0x89, 26, {}, Out(), {}}; },
       "21 Setup type-9 ro = - (default -) {-}\n", "stream-malformed type-unknown "},
      {[](Notebook& n) {
         n.Attributes[6].Value = Out{2, 16, 0, 99, 0};
       },
       "= SecureBoot|?99 (default -)", "member-dangling stream-differs "},
      {[](Notebook& n) { n.Attributes[4].Record = Integer(17, 24, 9, 301).Record; }, "17 Hour integer = 300 ",
       "stream-differs stream-differs "},
      {[](Notebook& n) { n.Names[5] = "Se\ncure\xE9"; }, "16 Se\\x0Acure\\xE9 enumeration", ""},
      {[](Notebook& n) { n.CrcDamage = 4; }, kLines, "table-crc "},
      {[](Notebook& n) { n.ValueLengthLie = 1; }, kLines, "directory-entry "},
      {[](Notebook& n) { n.LostNames = 2; }, kLines, "table-cut "},
      {[](Notebook& n) { n.CountedAttributes = 7; }, kLines, "stream-malformed "},
  };
  for (const Row& row : rows) {
    Notebook notebook;
    row.Damage(notebook);
    const Image image = DecodeImage(Encode(notebook));
    EXPECT_THAT(LinesOf(image), HasSubstr(row.Line));
    EXPECT_EQ(CodesOf(image), row.Codes) << row.Line;
  }
}

TEST(InspectTest, FillCountsWhatTheTablesLackOfTheStore) {
  Notebook notebook;
  notebook.LostNames = 3;
  notebook.Attributes[7].Value.reset();
  std::ostringstream out;
  ShowFill(DecodeImage(Encode(notebook)), Style(false), out);
  EXPECT_THAT(out.str(), HasSubstr("strings          188      7680     2.4%       14  ok  full, 3 lost\n"));
  EXPECT_THAT(out.str(), HasSubstr("ok  full, 1 lost\ndisplay"));

  // Without the stream nothing proves a cut; a table whose largest entry would not fit again is suspect.
  notebook.Names[0] = std::string(3800, 'n');
  Out capture = Encode(notebook);
  capture.pop_back();
  ShowFill(DecodeImage(capture), Style(false), out);
  EXPECT_THAT(out.str(), HasSubstr("strings         3968      7680    51.7%       14  ok  full?\n"));
}

// The record of handle 255 begins with the byte that marks an empty slot, and handles beyond it are not in the stream.
TEST(InspectTest, TheStreamIsFollowedUpToItsLastSlot) {
  for (const int last : {254, 255, 256, 271}) {
    Notebook notebook;
    notebook.Attributes.clear();
    for (int handle = 16; handle <= last; ++handle) {
      notebook.Attributes.push_back(Password(static_cast<std::uint16_t>(handle), 16, true));
    }
    notebook.CountedAttributes = static_cast<std::uint64_t>(last - 15);
    const Image image = DecodeImage(Encode(notebook));
    EXPECT_EQ(image.Stream->Records.size(), static_cast<std::size_t>(std::min(last, 255) - 15));
    EXPECT_EQ(image.Attributes.Entries.size(), static_cast<std::size_t>(last - 15));
    EXPECT_EQ(CodesOf(image), last > 255 + 13 ? "table-length " : "") << last;
  }
}

void RenderEverything(const Image& image) {
  std::ostringstream out;
  ShowFill(image, Style(true), out);
  ShowTexts(image, Style(true), out);
  for (const AttributeEntry& attribute : image.Attributes.Entries) {
    ShowOne(image, attribute, out);
  }
  EXPECT_TRUE(nlohmann::json::accept(ImageAsJson(image)));
}

TEST(InspectTest, ACaptureCutAnywhereIsUnusableOrHasFindings) {
  const Out whole = Encode({});
  std::size_t readable = 0;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    try {
      const Image image = DecodeImage({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)});
      ++readable;
      EXPECT_NE(CodesOf(image), "") << length;
      EXPECT_EQ(LinesOf(image), kLines) << length;
      if (length % 17 == 0) {
        RenderEverything(image);
      }
    } catch (const UnusableInput& unusable) {
      EXPECT_THAT(unusable.what(), StartsWith("the capture ")) << length;
    }
  }
  EXPECT_GT(readable, 400u);  // the records behind the value table can be missed
}

TEST(InspectTest, NoFlippedBitChangesALineUnnoticed) {
  Out capture = Encode({});
  for (std::size_t bit = 0; bit < 8 * capture.size(); bit += 5) {  // two or one of every byte
    const auto mask = static_cast<std::uint8_t>(1U << (bit % 8));
    capture[bit / 8] ^= mask;
    try {
      const Image image = DecodeImage(capture);
      EXPECT_TRUE(!image.Findings.List().empty() || LinesOf(image) == kLines) << bit;
      if (bit % 31 == 0) {
        RenderEverything(image);
      }
    } catch (const UnusableInput&) {
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
    changed.Attributes[3] = Enumeration(16, 21, {22, 23}, 0, 0);
    changed.Attributes[1] = Password(2, 17, true);
    Save("b.bin", Encode(changed));
    changed.Displays[0] = u"Sicher";
    changed.CrcDamage = 1;
    Save("c.bin", Encode(changed));
  }
  ~CommandLineTest() override { std::filesystem::remove_all(folder_); }

  void Save(const std::string& name, const Out& bytes) {
    std::ofstream file(folder_ / name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }

  int Run(std::vector<std::string> arguments) {
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
  std::ostringstream out_;
  std::ostringstream err_;
};

TEST_F(CommandLineTest, ExitStatusAndOutputOfEachForm) {
  Save("empty.bin", {});
  Save("noise.bin", Out(100, 'x'));
  struct Row {
    std::vector<std::string> Arguments;
    int Status;
    ::testing::Matcher<std::string> Output;
    ::testing::Matcher<std::string> Errors;
  };
  const Row rows[] = {
      {{"show", "--no-tables", "a.bin"}, 0, kLines, ""},
      {{"show", "a.bin"}, 0, AllOf(StartsWith(kLines), HasSubstr("\n\ntable  "), EndsWith(" 3  ok\n")), ""},
      {{"show", "Admin", "a.bin"}, 0, StartsWith("1 Admin[RegEx:^\\\\x20$] password = installed"), ""},
      {{"show", "Admin[RegEx:^\\\\x20$]", "a.bin"}, 0, HasSubstr("\n  type            password (0x02)\n"), ""},
      {{"show", "SecureBoot", "a.bin"}, 0, HasSubstr("1: On (string 23), setting value 69\n"), ""},
      {{"show", "Setup", "a.bin"}, 0, AllOf(HasSubstr("19 Setup"), HasSubstr("\n21 Setup")), ""},
      {{"show", "Nobody", "a.bin"}, 2, "", EndsWith("a.bin: no attribute has the name \"Nobody\"\n")},
      {{"show", "--texts", "a.bin"},
       0,
       StartsWith("display texts (en-US)\n16 \"Secure Boot\"\n17 \"Prüfung 中\"\n"),
       ""},
      {{"show", "c.bin"}, 1, HasSubstr("  bad\ndisplay"), StartsWith("finding: table-crc: the values table has ")},
      {{"show", "missing.bin"}, 2, "", EndsWith("missing.bin: No such file or directory\n")},
      {{"show", folder_.string()}, 2, "", EndsWith(": is a directory\n")},
      {{"show", "empty.bin"}, 2, "", EndsWith("empty.bin: the capture is empty\n")},
      {{"show", "noise.bin"}, 2, "", HasSubstr("no transport record begins at offset 0\n")},
      {{"show"}, 2, "", HasSubstr("FILE")},
      {{"frobnicate"}, 2, "", HasSubstr("subcommand")},
      {{"--help"}, 0, HasSubstr("diff-tables"), ""},
      {{"diff-tables", "a.bin", "a.bin"},
       0,
       "strings: equal\nattributes: equal\nvalues: equal\ndisplay: equal\nhelp: equal\n",
       ""},
      {{"diff-tables", "a.bin", "b.bin", "--only", "values,help"},
       1,
       "values: differ from offset 5 on (64 and 68 bytes)\n  2 System: - -> installed\n"
       "  16 SecureBoot: On -> Off[ForceIf:Tpm=Off]\nhelp: equal\n",
       ""},
      {{"diff-tables", "b.bin", "c.bin", "--only", "strings,display"},
       1,
       "strings: equal\ndisplay: differ from offset 14 on (68 and 60 bytes)\n",
       ""},
      {{"diff-tables", "a.bin", "noise.bin"}, 2, "", HasSubstr("noise.bin: ")},
      {{"diff-tables", "a.bin", "b.bin", "--only", "colours"}, 2, "", HasSubstr("colours")},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Run(row.Arguments), row.Status) << ::testing::PrintToString(row.Arguments) << err_.str();
    EXPECT_THAT(out_.str(), row.Output) << ::testing::PrintToString(row.Arguments);
    EXPECT_THAT(err_.str(), row.Errors) << ::testing::PrintToString(row.Arguments);
  }
}

TEST_F(CommandLineTest, JsonHoldsTheWholeCapture) {
  ASSERT_EQ(Run({"show", "--json", "a.bin"}), 0);
  const auto json = nlohmann::json::parse(out_.str());
  struct Row {
    const char* Pointer;
    nlohmann::json Expected;
  };
  const Row rows[] = {
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
  for (const Row& row : rows) {
    EXPECT_EQ(json.at(nlohmann::json::json_pointer(row.Pointer)), row.Expected) << row.Pointer;
  }
}

}  // namespace
}  // namespace corvane::inspect
