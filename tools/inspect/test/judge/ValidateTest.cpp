/** @file
  Tests of what validate reports of damaged captures.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "judge/Validate.hpp"
#include "test/TestBoot.hpp"

namespace corvane::inspect {
namespace {

using ::testing::HasSubstr;

// Damage to one place of the records as sent; 25 bytes of each are its header. What a table's checksum would show alone
// is mended in the table and its descriptor.
void Mend(Records& sent, std::size_t type) {
  Out& record = sent[type];
  const std::uint32_t crc = Crc32(::corvane::inspect::Bytes(record).subspan(25, record.size() - 29));
  const std::size_t descriptor = 25 + 28 * (type < 5 ? type - 2 : type + 4);
  for (std::size_t i = 0; i < 4; ++i) {
    record[record.size() - 4 + i] = sent[1][descriptor + 21 + i] = static_cast<std::uint8_t>(crc >> (8 * i));
  }
}

// Takes the last entry out of a table, and out of all that is said of the table.
void DropLast(Records& sent, std::size_t type, std::size_t entrySize) {
  const std::size_t descriptor = 25 + 28 * (type < 5 ? type - 2 : type + 4);
  Out& record = sent[type];
  const std::size_t pad = sent[1][descriptor + 25];
  record.resize(record.size() - 4 - pad - entrySize);
  const std::size_t newPad = (4 - (record.size() - 25) % 4) % 4;
  record.resize(record.size() + newPad + 4);
  const std::size_t length = record.size() - 25;
  const auto put = [&](Out& out, std::size_t at, std::size_t value, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i) {
      out[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
  };
  put(record, 16, length, 8);
  put(sent[1], descriptor + 13, length, 2);
  sent[1][descriptor + 25] = static_cast<std::uint8_t>(newPad);
  --sent[1][descriptor + 19];
  const std::size_t entry = 25 + 24 + 16 * (type - 2) + 8;
  for (std::size_t i = 0; i < 2; ++i) {
    sent[0][25 + 22] = static_cast<std::uint8_t>(sent[0][25 + 22] + sent[0][entry + i] - (length >> (8 * i)));
  }
  put(sent[0], entry, length, 2);
  Mend(sent, type);
}

TEST(DamageTest, Damage_OfEachKind_IsFoundOrHarmless) {
  using R = Records&;
  const char* kHarmless = "harmless";
  const std::pair<const char*, std::function<void(R)>> rows[] = {
      {"capture-cut", [](R r) { r[7].pop_back(); }},
      {"record-missing", [](R r) { r.pop_back(); }},
      {"record-order", [](R r) { std::swap(r[5], r[6]); }},
      {"record-repeated", [](R r) { r[1] = r[0]; }},
      {"record-type", [](R r) { r[6][24] = 8; }},
      {"capture-framing", [](R r) { r[7][0] ^= 1; }},
      {"capture-framing", [](R r) { ++r[5][16]; }},
      {"capture-cut",
       [](R r) {
         r.push_back({1, 2, 3});
       }},
      {"directory-head",
       [](R r) {
         r[0][25] ^= 1;
         r[0][25 + 22] ^= 1;
       }},
      {"directory-checksum", [](R r) { ++r[0][25 + 22]; }},
      {"directory-entry",
       [](R r) {
         ++r[0][25 + 24 + 8];
         --r[0][25 + 22];
       }},
      {"directory-entry",
       [](R r) {
         ++r[0][25 + 24 + 12];
         --r[0][25 + 22];
       }},
      {"directory-length",
       [](R r) {
         ++r[0][25 + 12];
         --r[0][25 + 22];
       }},
      {kHarmless, [](R r) { r[0].back() ^= 1; }},  // behind the entries, nothing is written
      {"descriptor", [](R r) { ++r[1][25 + 8]; }},
      {"descriptor", [](R r) { ++r[1][25 + 15]; }},
      {"descriptor", [](R r) { ++r[1][25 + 19]; }},
      {"descriptor", [](R r) { ++r[1][25 + 3 * 28]; }},
      {kHarmless, [](R r) { ++r[1][25 + 7]; }},  // an address of memory long gone
      {"table-crc", [](R r) { ++r[2][25 + 4]; }},
      {"handle-order",
       [](R r) {
         ++r[2][25];
         Mend(r, 2);
       }},
      {"table-malformed",
       [](R r) {
         r[2][25 + 3] = 0xFF;
         Mend(r, 2);
       }},
      {"stream-differs",
       [](R r) {
         r[3][25 + 2] ^= 0x80;
         Mend(r, 3);
       }},
      {"stream-differs",
       [](R r) {
         ++r[3][25 + 3];
         Mend(r, 3);
       }},
      {"type-unknown",
       [](R r) {
         r[3][25 + 2] = 9;
         Mend(r, 3);
       }},
      {"stream-differs",
       [](R r) {
         r[4][25 + 3] ^= 1;
         Mend(r, 4);
       }},
      {"table-crc", [](R r) { r[4].back() ^= 1; }},
      {"table-language",
       [](R r) {
         r[5][25 + 2] = 'f';
         Mend(r, 5);
       }},
      {"table-crc", [](R r) { ++r[6][25 + 20]; }},
      {"stream-length", [](R r) { ++r[7][25]; }},
      {"table-cut", [](R r) { ++r[7][25 + 12]; }},
      {"stream-malformed", [](R r) { ++r[7][25 + 4]; }},
      {"stream-malformed", [](R r) { r[7][25 + 36 + 1 + 2] = 0x77; }},
      {"table-surplus", [](R r) { --r[7][25 + 20]; }},
      {"table-cut", [](R r) { DropLast(r, 2, 4 + 13); }},  // "Varo:HDD:0001"
      {"table-cut", [](R r) { DropLast(r, 3, 33); }},      // the support level
      {"table-cut", [](R r) { DropLast(r, 4, 11); }},
      {"table-cut", [](R r) { DropLast(r, 5, 4 + 26); }},
      {"table-cut", [](R r) { DropLast(r, 6, 4); }},
  };
  const Boot boot(Ordinary);
  const auto all = [](const Image& image) {
    std::string lines;
    for (const AttributeEntry& attribute : image.Attributes.Entries) {
      lines += AttributeLine(image, attribute) + '\n';
    }
    return lines + TextsOf(image);
  };
  const std::string whole = all(boot.Decode());
  for (const auto& [expected, damage] : rows) {
    Records sent = boot.Sent;
    damage(sent);
    std::string codes;
    try {
      const Image image = DecodeImage(Joined(sent));
      const Validation validation = Validate(image, false);
      for (const Finding& finding : validation.Problems.List()) {
        codes += finding.Code + " ";
      }
      codes += codes.empty() && all(image) == whole ? kHarmless : "";
    } catch (const UnusableInput& unusable) {
      codes = unusable.what();
    }
    EXPECT_THAT(codes, HasSubstr(expected));
  }
  EXPECT_GE(std::size(rows), 30u);
}

}  // namespace
}  // namespace corvane::inspect
