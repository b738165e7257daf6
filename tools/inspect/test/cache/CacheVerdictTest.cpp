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

TEST(CacheVerdictTest, PreparedStoresGetTheirVerdicts) {
  struct Row {
    const char* What;
    Arrange After;  // the boot
    CacheOptions Options;
    CacheState State;
    const char* NextBoot;
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
      {"no help texts", set(u"HelpString", {}), {}, CacheState::Partial, "take turns"},
      {"no records", set(u"AttributesData", {}), {}, CacheState::Partial, "does not notice"},
      {"no version", set(u"BiosVersion", {}), {}, CacheState::Partial, "Without a version nothing is restored"},
      {"a bit of the records", flip(u"AttributesData"), {}, CacheState::Corrupt, "It trusts the version"},
      {"a bit of the version", flip(u"BiosVersion"), {}, CacheState::Corrupt, "no firmware's"},
      {"counters of a guess", set(u"AttributesCount", Out(32, 9)), {}, CacheState::Corrupt, "It trusts the version"},
      {"limit too small", nothing, {.Firmware = {}, .Limit = 100}, CacheState::Partial, "So does every boot after it"},
  };
  for (const Row& row : rows) {
    for (const bool authenticated : {true, false}) {
      FakeNotebook notebook;
      Ordinary(notebook);
      EXPECT_EQ(notebook.Boot(), EFI_SUCCESS);
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

}  // namespace
}  // namespace corvane::inspect
