/** @file
  Tests of the verdict on prepared variable stores.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cache/CacheVerdict.hpp"
#include "test/TestBoot.hpp"

namespace corvane::inspect {
namespace {

using ::testing::HasSubstr;

constexpr const char16_t* kSealed[] = {u"PldmString", u"DispString", u"HelpString", u"AttributesData",
                                       u"AttributesCount"};

Out DataOf(const FakeNotebook& notebook, std::u16string_view name) {
  const auto* variable = notebook.Variable(name);
  return variable == nullptr ? Out{} : variable->Data;
}

// Writes the version anew, with or without the CRC-32 of the variables as they are.
void WriteVersion(FakeNotebook& notebook, bool sealed) {
  Out all;
  for (const char16_t* name : kSealed) {
    Append(all, DataOf(notebook, name));
  }
  notebook.SetVariable(u"BiosVersion", 3, Join(Out{'1', '.', '2', '.', '3', 0}, U32(sealed ? Crc32(all) : 0)));
}

// The four counters: attributes, names, display texts, help texts.
Arrange Count(size_t counter, UINT64 value) {
  return [counter, value](FakeNotebook& notebook) {
    Out data = DataOf(notebook, u"AttributesCount");
    const Out bytes = Join(U64(value));
    std::copy(bytes.begin(), bytes.end(), data.begin() + static_cast<std::ptrdiff_t>(8 * counter));
    notebook.SetVariable(u"AttributesCount", 3, data);
  };
}

TEST(CacheVerdictTest, Cache_OfEachPreparedStore_GetsItsVerdict) {
  struct Row {
    const char* What;
    Arrange After;  // the boot
    CacheOptions Options;
    CacheState State;
    const char* NextBoot;
    bool Sealed = false;
  };
  const auto set = [](std::u16string_view name, const Out& data) {
    return
        [name, data](FakeNotebook& notebook) { notebook.SetVariable(name, name == u"AttCacheStatus" ? 7 : 3, data); };
  };
  const auto flip = [](std::u16string_view name) {
    return [name](FakeNotebook& notebook) {
      Out data = notebook.Variable(name)->Data;
      data[std::min<size_t>(data.size() / 2, 12)] ^= 1;  // of a stream its codes, without which nothing can be told
      notebook.SetVariable(name, 3, data);
    };
  };
  const auto foreign = [](std::u16string_view name) {
    return [name](FakeNotebook& notebook) { notebook.SetVariable(name, 7, notebook.Variable(name)->Data); };
  };
  const auto nothing = [](FakeNotebook&) {};
  const Row rows[] = {
      {"cold",
       [](FakeNotebook& notebook) { notebook.Uefi.Variables.clear(); },
       {},
       CacheState::Absent,
       "writes the cache"},
      {"warm", nothing, {.Firmware = "1.2.3", .Limit = 9999}, CacheState::Valid, "It restores the attributes"},
      {"updated", nothing, {.Firmware = "1.2.30", .Limit = {}}, CacheState::Stale, "gathers all attributes"},
      {"marked bad", set(u"AttCacheStatus", {9}), {}, CacheState::MarkedBad, "clears the mark"},
      {"no help texts", set(u"HelpString", {}), {}, CacheState::Partial, "alternate forever"},
      {"no records", set(u"AttributesData", {}), {}, CacheState::Partial, "deletes \"BiosVersion\". The boot after it"},
      {"no version", set(u"BiosVersion", {}), {}, CacheState::Partial, "Without a version nothing is restored"},
      {"a bit of the records", flip(u"AttributesData"), {}, CacheState::Corrupt, "It trusts the version"},
      {"a bit of the version", flip(u"BiosVersion"), {}, CacheState::Corrupt, "belongs to no firmware"},
      {"counters of a guess", set(u"AttributesCount", Out(32, 9)), {}, CacheState::Corrupt, "It trusts the version"},
      {"a bit of the texts", flip(u"HelpString"), {}, CacheState::Corrupt, "deletes \"HelpString\". The boot after"},
      {"a display text too many", Count(2, 3), {}, CacheState::Corrupt, "deletes \"DispString\" and \"HelpString\". "},
      {"a display text too few", Count(2, 90), {}, CacheState::Corrupt, "deletes \"DispString\" and \"HelpString\". "},
      {"more names than handles", Count(1, 5105), {}, CacheState::Corrupt, "deletes \"PldmString\". "},
      {"records left over", Count(0, 0), {}, CacheState::Corrupt, "It detects this"},
      {"an attribute too few", Count(0, 99), {}, CacheState::Corrupt, "It does not detect this"},
      {"foreign attributes of a list", foreign(u"DispString"), {}, CacheState::Partial, "It detects this"},
      {"foreign attributes of the records", foreign(u"AttributesData"), {}, CacheState::Partial, "\"BiosVersion\""},
      {"foreign attributes of the counters", foreign(u"AttributesCount"), {}, CacheState::Partial, "It detects this"},
      {"foreign attributes of the version", foreign(u"BiosVersion"), {}, CacheState::Partial, "nothing is restored"},
      {"sealed", nothing, {}, CacheState::Valid, "restores the attributes", true},
      {"sealed, without help texts", set(u"HelpString", {}), {}, CacheState::Partial, "seal is broken", true},
      {"sealed, a bit of a list", flip(u"PldmString"), {}, CacheState::Corrupt, "seal is broken", true},
      {"sealed, foreign attributes", foreign(u"DispString"), {}, CacheState::Partial, "seal is broken", true},
      {"sealed, another counter", Count(3, 99), {}, CacheState::Corrupt, "seal is broken", true},
      {"sealed, marked bad", set(u"AttCacheStatus", {1}), {}, CacheState::MarkedBad, "clears the mark", true},
      {"limit too small",
       nothing,
       {.Firmware = {}, .Limit = 100},
       CacheState::Partial,
       "Every later boot does the same"},
  };
  for (const Row& row : rows) {
    for (const bool authenticated : {true, false}) {
      FakeNotebook notebook;
      Ordinary(notebook);
      FakeFormSet& form = notebook.AddFormSet(u"More");
      form.Numeric(400, u"One", u"One").Bounds(0, 9);
      form.Numeric(401, u"Two", u"Two").Bounds(0, 9);
      EXPECT_EQ(notebook.Boot(), EFI_SUCCESS);
      WriteVersion(notebook, row.Sealed);
      row.After(notebook);
      const Out flash = Join(Out(512), FlashOf(notebook, authenticated), Out(1024, 0xFF));
      const CacheReport report = ReportCache(flash, row.Options);
      EXPECT_STREQ(NameOf(report.Verdict.State), NameOf(row.State)) << row.What << ": " << report.Verdict.Reason;
      EXPECT_THAT(report.Verdict.NextBoot, HasSubstr(row.NextBoot)) << row.What;
      EXPECT_EQ(report.Store.Authenticated, authenticated);
      EXPECT_TRUE(report.Findings.List().empty());
    }
  }
}

Image RestoredAfter(const Arrange& damage) {
  FakeNotebook notebook;
  Ordinary(notebook);
  EXPECT_EQ(notebook.Boot(), EFI_SUCCESS);
  damage(notebook);
  const Out flash = FlashOf(notebook);
  Findings findings;
  return ImageOfCache(DecodeCache(ReadVariableStore(flash, findings)));
}

// No later string gets the handle of a name that was lost.
TEST(CacheImageTest, LostTexts_KeepTheirHandlesAndAreEmpty) {
  const Image whole = RestoredAfter([](FakeNotebook&) {});
  const size_t names = whole.Strings.Entries.size();
  std::uint16_t highest = 0;
  for (const AttributeEntry& attribute : whole.Attributes.Entries) {
    highest = std::max(highest, attribute.NameHandle);
  }
  ASSERT_GT(names, 10u);
  const std::pair<Arrange, std::pair<size_t, size_t>> rows[] = {
      // names in the table, names that are not empty
      {[](FakeNotebook& notebook) { notebook.SetVariable(u"PldmString", 3, {}); }, {names, 0}},
      {[](FakeNotebook& notebook) { notebook.SetVariable(u"PldmString", 7, Out(9)); }, {names, 0}},
      {Count(1, 2), {highest - 15u, 2}},
      {Count(1, names + 7), {names + 7, names}},
  };
  for (const auto& [damage, expected] : rows) {
    const Image image = RestoredAfter(damage);
    const auto named = std::ranges::count_if(image.Strings.Entries, [](const auto& entry) { return entry.Text != ""; });
    EXPECT_EQ(std::pair(image.Strings.Entries.size(), static_cast<size_t>(named)), expected);
    EXPECT_EQ(image.Stream->NameCount, expected.first);
    EXPECT_EQ(image.Attributes.Entries.size(), whole.Attributes.Entries.size());
  }
  const Image noRecords = RestoredAfter([](FakeNotebook& notebook) { notebook.SetVariable(u"AttributesData", 3, {}); });
  EXPECT_EQ(noRecords.Stream->AttributeCount, 0u);
  EXPECT_EQ(noRecords.Strings.Entries.size(), names);
  EXPECT_THROW(RestoredAfter([](FakeNotebook& notebook) { notebook.SetVariable(u"AttributesCount", 3, Out(31)); }),
               UnusableInput);
}

}  // namespace
}  // namespace corvane::inspect
