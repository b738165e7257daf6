/** @file
  Tests of HiiStrings: languages, fall-back, the shared buffer.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <gtest/gtest.h>

#include "FakeUefi/FakeUefi.hpp"
#include "sources/HiiStrings.hpp"

extern "C" EFI_GUID gEfiHiiStringProtocolGuid;

namespace {

class HiiStringsTest : public testing::Test {
 protected:
  HiiStringsTest() {
    package = uefi.AddPackageList();
    other = uefi.AddPackageList();
    both = uefi.AddString(package, {{"en-US", u"English"}, {"x-UEFI", u"Keyword"}, {"fr-FR", u"Fran\u00e7ais"}});
    english = uefi.AddString(package, {{"en-US", u"Only English, and longer than the texts before it"}});
    french = uefi.AddString(package, {{"fr-FR", u"Seulement"}});
    uefi.AddString(other, {{"de-DE", u"Deutsch"}});
    uefi.Install(gEfiHiiStringProtocolGuid, &uefi.HiiString);
  }
  static std::pair<std::u16string, bool> Get(HiiStrings& strings, EFI_HII_HANDLE from, EFI_STRING_ID id,
                                             const CHAR8* language = nullptr) {
    const HiiText text = strings.GetHiiString(from, id, language);
    return {std::u16string(text.Text, text.Text + StringLength(text.Text)), !EFI_ERROR(text.Status)};
  }
  using Text = std::pair<std::u16string, bool>;

  FakeUefi uefi;
  EFI_HII_HANDLE package = nullptr;
  EFI_HII_HANDLE other = nullptr;
  EFI_STRING_ID both = 0;
  EFI_STRING_ID english = 0;
  EFI_STRING_ID french = 0;
};

TEST_F(HiiStringsTest, ALanguageThatCannotBeHadIsReplacedOnceByThePlatforms) {
  const std::tuple<const CHAR8*, EFI_STRING_ID, const CHAR8*, Text> rows[] = {
      {nullptr, both, nullptr, {u"English", true}},
      {"fr-FR", both, nullptr, {u"Fran\u00e7ais", true}},
      {"FR-fr", both, "x-UEFI", {u"Keyword", true}},
      {nullptr, english, "x-UEFI", {u"Only English, and longer than the texts before it", true}},
      {"fr-FR", english, "x-UEFI", {u"", false}},  // not a second retry
      {"fr-FR", english, nullptr, {u"", false}},
      {"fr-FR", french, "x-UEFI", {u"Seulement", true}},
      {"it-IT", both, nullptr, {u"", false}},
      {nullptr, both, "x-", {u"English", true}},  // no language begins another
      {nullptr, 0, nullptr, {u"", false}},
      {nullptr, 99, "x-UEFI", {u"", false}},
  };
  for (const auto& [platform, id, asked, expected] : rows) {
    HiiStrings strings(platform);
    EXPECT_EQ(Get(strings, package, id, asked), expected);
    // And the same with a buffer in use and another package list in between.
    Get(strings, other, 2);
    EXPECT_EQ(Get(strings, package, id, asked), expected);
  }
  EXPECT_EQ(uefi.LivePoolBlocks(), 0U);
}

}  // namespace
