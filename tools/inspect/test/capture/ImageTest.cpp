/** @file
  Tests of inspect on captures of the driver's own tables, whole and damaged.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <cstdint>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "capture/Describe.hpp"
#include "capture/Image.hpp"
#include "command/Show.hpp"
#include "test/TestNotebook.hpp"

namespace corvane::inspect {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

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
TEST(InspectTest, Show_OfDamage_NamesItAndGuessesNothing) {
  using N = Notebook&;
  const std::tuple<std::function<void(N)>, std::string, std::string> rows[] = {
      {[](N) {}, kNotebookLines, ""},
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
      {[](N n) { n.Damage = [](Payloads& p) { p[7][36 + 1 + 3] ^= 1; }; }, kNotebookLines, "stream-differs "},
      {[](N n) { n.Damage = DamageCrc; }, kNotebookLines, "table-crc "},
      {[](N n) { n.Damage = [](Payloads& p) { ++p[0][24 + 2 * 16 + 8], --p[0][22]; }; }, kNotebookLines,
       "directory-entry "},
      {[](N n) { n.Damage = [](Payloads& p) { p[7][12] += 2; }; }, kNotebookLines, "table-cut "},
      {[](N n) { n.Damage = [](Payloads& p) { ++p[7][4]; }; }, kNotebookLines, "stream-malformed "},
  };
  for (const auto& [damage, line, codes] : rows) {
    Notebook notebook;
    damage(notebook);
    const Image image = DecodeImage(Encode(notebook));
    EXPECT_THAT(LinesOf(image), HasSubstr(line));
    EXPECT_EQ(CodesOf(image), codes) << line;
  }
}

TEST(InspectTest, Fill_CountsTheEntriesThatTablesLack) {
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
TEST(InspectTest, Stream_IsReadUpToItsLastSlot) {
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

TEST(InspectTest, Capture_CutAnywhere_IsUnusableOrHasFindings) {
  const Out whole = Encode({});
  std::size_t readable = 0;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    if (const auto image = Examine(Middle(whole, 0, whole.size() - length), length % 17 == 0)) {
      ++readable;
      EXPECT_NE(CodesOf(*image), "") << length;
      EXPECT_EQ(LinesOf(*image), kNotebookLines) << length;
    }
  }
  EXPECT_GT(readable, 400u);  // the records behind the value table can be missed
}

TEST(InspectTest, FlippedBit_ThatChangesALine_IsAFinding) {
  Out capture = Encode({});
  for (std::size_t bit = 0; bit < 8 * capture.size(); bit += 5) {  // two or one of every byte
    const auto mask = static_cast<std::uint8_t>(1U << (bit % 8));
    capture[bit / 8] ^= mask;
    if (const auto image = Examine(capture, bit % 31 == 0)) {
      EXPECT_TRUE(CodesOf(*image) != "" || LinesOf(*image) == kNotebookLines) << bit;
    }
    capture[bit / 8] ^= mask;
  }
}

}  // namespace
}  // namespace corvane::inspect
