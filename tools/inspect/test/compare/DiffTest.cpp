/** @file
  Tests of what `inspect diff` tells of captures that differ in one thing.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <gmock/gmock.h>

#include "cache/CacheContent.hpp"
#include "compare/Diff.hpp"
#include "test/TestBoot.hpp"
#include "test/TestNotebook.hpp"

namespace corvane::inspect {
namespace {

// Like the notebook of the fixture, with a setup of two collections.
Notebook MakeSetup() {
  Notebook notebook;
  notebook.Names = Split(
      "SecureBoot|Off|On[ForceIf:Tpm=Off]|Hour|Asset[RegEx:^a$]|Security|Clock|Fan|Slow|Fast|Turbo|Boot "
      "order|A|B|Admin|"
      "On|Vault|Minute[ForceIfNot:Fan=Slow]",
      '|');
  notebook.Records = {
      {.Handle = 1, .Type = 2, .Name = 30, .Token = 1175, .SubType = 0, .MaxLength = 32},
      {.Handle = 6, .Type = 4, .Name = 27, .Handles = {28, 29}, .SubType = 2, .Order = {1, 0}},
      {.Name = 16, .Token = 1016, .Handles = {17, 18}, .Values = {66, 69}, .Current = 0},
      {.Type = 1, .Name = 20, .Token = 7, .MaxLength = 10, .Text = "x"},
      {.Type = 0x85, .Name = 21, .Handles = {16, 17}},
      {.Type = 3, .Name = 19, .Token = 8, .Default = 8, .Current = 8, .Lower = 5, .Upper = 50, .Step = 6},
      {.Name = 23, .Token = 9, .Handles = {24, 25, 26}, .Values = {1, 2, 300}, .Default = 1, .Current = 1},
      {.Type = 3, .Name = 33, .Token = 10, .Upper = 59},
      {.Type = 0x85, .Name = 22, .Handles = {19, 20, 21}},
  };
  return notebook;
}

std::string Diff(const Notebook& older, const Notebook& newer, bool values = true) {
  const Image a = DecodeImage(Encode(older));
  const Image b = DecodeImage(Encode(newer));
  return DiffAsText(DiffCatalogs(MakeCatalog(a), MakeCatalog(b), values), Style(false));
}

constexpr int kSecureBoot = 2, kAsset = 3, kSecurity = 4, kHour = 5, kFan = 6, kMinute = 7, kClock = 8;

// One change each, told in one line; those above the bar break what was written for the older one.
TEST(DiffTest, Diff_PrintsOneLineForEachChange) {
  using N = Notebook&;
  const std::pair<std::function<void(N)>, std::string> breaking[] = {
      {[](N n) { n.Records[kAsset].Type |= 0x80; }, "Asset (7) read-only: no -> yes"},
      {[](N n) { n.Records[kAsset].MaxLength = 9; }, "Asset (7) max-length: 10 -> 9"},
      {[](N n) { n.Records[kAsset].MinLength = 1; }, "Asset (7) min-length: 0 -> 1"},
      {[](N n) { n.Names[4] = "Asset[RegEx:^b$]"; }, "Asset (7) expression: ^a$ -> ^b$"},
      {[](N n) { n.Records[kHour].Lower = 6; }, "Hour (8) lower-bound: 5 -> 6"},
      {[](N n) { n.Records[kHour].Upper = 49; }, "Hour (8) upper-bound: 50 -> 49"},
      {[](N n) { n.Records[kHour].Step = 4; }, "Hour (8) step: 6 -> 4"},
      {[](N n) { n.Records[kHour].Token = 11; }, "Hour (11) token: 8 -> 11"},
      {[](N n) { n.Names[3] = "Stunde"; }, "Stunde (8) renamed: Hour -> Stunde"},
      {[](N n) { n.Records[kHour].Type = 1; }, "Hour (8) type: integer -> string"},
      {[](N n) { n.Names[5] = "Safety"; }, "Safety renamed: Security -> Safety"},
      {[](N n) { n.Names[33 - 16] += "[ForceIf:Hour=5]"; }, "Minute (10) forced-if: - -> [ForceIf:Hour=5]"},
      {[](N n) { n.Names[1] += "[ForceIfNot:A=B]"; }, "SecureBoot (1016) value-forced-if: - -> Off: [ForceIfNot:A=B]"},
      {[](N n) { n.Names[9] = "Quick"; }, "Fan (9) value-renamed: Fast -> Quick"},
      {[](N n) { n.Records[kFan].Values[2] = 3; }, "Fan (9) value-setting: Turbo = 300 -> Turbo = 3"},
      {[](N n) { n.Records[kFan].Handles.pop_back(), n.Records[kFan].Values.pop_back(); },
       "Fan (9) value-removed: Turbo -> -"},
      {[](N n) { n.Records.erase(n.Records.begin() + kMinute), n.Records[kMinute].Handles.pop_back(); },
       "Minute (10) removed: integer -> -"},
  };
  const std::pair<std::function<void(N)>, std::string> other[] = {
      {[](N n) { n.Records[kAsset].Text = "y"; }, "Asset (7) current: x -> y"},
      {[](N n) { n.Records[0].Installed = 1; }, "Admin (1175) current: not installed -> installed"},
      {[](N n) { n.Records[1].Order = {0}; }, "Boot order current: type 2 mode 3: B|A -> type 2 mode 3: A"},
      {[](N n) { n.Records[kHour].Upper = 51; }, "Hour (8) upper-bound: 50 -> 51"},
      {[](N n) { n.Records[kHour].Step = 3; }, "Hour (8) step: 6 -> 3"},
      {[](N n) { n.Records[kHour].Default = n.Records[kHour].Current = 9; }, "Hour (8) default: 8 -> 9"},
      {[](N n) { n.Records[kFan].Default = n.Records[kFan].Current = 0; }, "Fan (9) default: Fast -> Slow"},
      {[](N n) { n.Names[2] = "On"; }, "SecureBoot (1016) value-forced-if: On: [ForceIf:Tpm=Off] -> -"},
      {[](N n) {
         std::swap(n.Records[kFan].Handles[0], n.Records[kFan].Handles[2]);
         std::swap(n.Records[kFan].Values[0], n.Records[kFan].Values[2]);
       },
       "Fan (9) value-order: Slow|Fast|Turbo -> Turbo|Fast|Slow"},
      {[](N n) { n.Records[kFan].Handles.push_back(32), n.Records[kFan].Values.push_back(4); },
       "Fan (9) value-added: - -> Vault"},
      {[](N n) { std::swap(n.Records[kHour], n.Records[kFan]); }, "Fan (9) order: after Hour -> first"},
      {[](N n) {
         n.Records.insert(n.Records.begin() + kAsset, {.Name = 32, .Token = 12});
         n.Records[kSecurity + 1].Handles.push_back(18);
         n.Records[kClock + 1].Handles = {20, 21, 22};
       },
       "Vault (12) added: - -> enumeration"},
      {[](N n) {
         n.Records[kSecurity].Handles = {16}, n.Records[kClock].Handles = {17, 19, 20, 21};
       },
       "Asset (7) collection: Security -> Clock"},
  };
  const auto count = [](bool isBreaking) { return fmt::format("\n1 difference, {} breaking\n", isBreaking ? 1 : 0); };
  const auto check = [&](const auto& rows, const char* title, bool isBreaking) {
    for (const auto& [change, line] : rows) {
      Notebook newer = MakeSetup();
      change(newer);
      EXPECT_EQ(Diff(MakeSetup(), newer), title + ("\n  " + line) + count(isBreaking));
    }
  };
  check(breaking, "breaking", true);
  check(other, "other", false);
}

TEST(DiffTest, Diff_OfTheSameBuild_IsEmpty) {
  Notebook newer = MakeSetup();
  newer.Names.insert(newer.Names.begin(), "unused");  // every string handle is another
  for (RecordSpec& record : newer.Records) {
    ++record.Name;
    if (record.Type != 0x85) {
      std::ranges::for_each(record.Handles, [](UINT16& handle) { ++handle; });
    }
  }
  EXPECT_EQ(Diff(MakeSetup(), newer), "0 differences, 0 breaking\n");
  newer.Records[kHour].Current = 50;
  EXPECT_EQ(Diff(MakeSetup(), newer, false), "0 differences, 0 breaking\n");
  newer.Damage = [](Payloads& payloads) { payloads[7].clear(); };  // and no token is known
  EXPECT_THAT(Diff(MakeSetup(), newer), ::testing::HasSubstr("Hour current: 8 -> 50\n1 difference,"));
}

TEST(DiffTest, Diff_ExplainsALowByteFromTheCache) {
  Notebook older = MakeSetup();
  Notebook newer = MakeSetup();
  older.Records[kHour].Current = 720;
  newer.Records[kHour].Current = 720 & 0xFF;
  const std::string why = " (a boot from the cache reads the low byte alone)\n";
  EXPECT_THAT(Diff(older, newer), ::testing::HasSubstr("Hour (8) current: 720 -> 208" + why));
  EXPECT_THAT(Diff(newer, older), ::testing::HasSubstr("Hour (8) current: 208 -> 720" + why));
  newer.Records[kHour].Current = 209;
  EXPECT_THAT(Diff(older, newer), ::testing::HasSubstr("Hour (8) current: 720 -> 209\n"));
}

// A cache has no boot configuration, so one that it lacks was not removed.
TEST(DiffTest, Diff_OfABootAndItsCache_IsEmpty) {
  const Boot boot(Ordinary);
  Findings findings;
  const Image sent = boot.Decode();
  const Image cached = ImageOfCache(DecodeCache(ReadVariableStore(boot.Flash, findings)));
  ASSERT_LT(cached.Attributes.Entries.size(), sent.Attributes.Entries.size());
  EXPECT_EQ(DiffAsText(DiffCatalogs(MakeCatalog(sent), MakeCatalog(cached), true), Style(false)),
            "0 differences, 0 breaking\n");
  EXPECT_EQ(DiffAsText(DiffCatalogs(MakeCatalog(cached), MakeCatalog(sent), true), Style(false)),
            "0 differences, 0 breaking\n");
}

TEST(DiffTest, Diff_ComparesTextsKnownOnBothSides) {
  const Image image = DecodeImage(Encode(MakeSetup()));
  Catalog older = MakeCatalog(image);
  Catalog newer = older;
  for (Catalog* catalog : {&older, &newer}) {
    const bool isNewer = catalog == &newer;
    catalog->Attributes[0].Display = isNewer ? "New" : "Old";
    catalog->Attributes[1].Display = "Boot order";
    catalog->Attributes[isNewer ? 3 : 1].Help = "Help\x1b";
    catalog->Attributes[2].Display = isNewer ? std::optional<std::string>() : "Secure Boot";
  }
  EXPECT_EQ(DiffAsText(DiffCatalogs(older, newer, true), Style(true)),
            "\x1b[1mother\x1b[0m\n  Admin (1175) display-text: Old -> New\n  Boot order help-text: Help\\x1B -> \n"
            "2 differences, 0 breaking\n");
}

}  // namespace
}  // namespace corvane::inspect
