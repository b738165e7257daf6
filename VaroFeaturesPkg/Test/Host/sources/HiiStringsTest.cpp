/** @file
  Tests of HiiStrings: languages, fall-back, the shared buffer.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <gtest/gtest.h>

#include <map>
#include <sstream>

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

TEST_F(HiiStringsTest, Language_WhenMissing_IsReplacedOnceByThePlatforms) {
  const std::tuple<const CHAR8*, EFI_STRING_ID, const CHAR8*, Text> rows[] = {
      {nullptr, both, nullptr, {u"English", true}},
      {"fr-FR", both, nullptr, {u"Fran\u00e7ais", true}},
      {"FR-fr", both, "x-UEFI", {u"Keyword", true}},
      {nullptr, english, "x-UEFI", {u"Only English, and longer than the texts before it", true}},
      {"fr-FR", english, "x-UEFI", {u"", false}},  // not a second retry
      {"fr-FR", english, nullptr, {u"", false}},
      {"fr-FR", french, "x-UEFI", {u"Seulement", true}},
      {"it-IT", both, nullptr, {u"", false}},
      {nullptr, both, "x-", {u"English", true}},  // a prefix is not a language
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

/// Every text of up to `longest` characters of an alphabet.
std::vector<std::string> EveryText(std::string_view alphabet, size_t longest) {
  std::vector<std::string> texts = {""};
  for (size_t begin = 0, length = 1; length <= longest; ++length) {
    const size_t end = texts.size();
    for (; begin < end; ++begin) {
      for (const char character : alphabet) {
        texts.push_back(texts[begin] + character);
      }
    }
  }
  return texts;
}

std::string Lower(std::string text) {
  std::ranges::transform(text, text.begin(), [](char character) { return character == 'A' ? 'a' : character; });
  return text;
}

TEST_F(HiiStringsTest, EveryShortListAndLanguage_AgreesWithAPlainComparison) {
  static std::string list;
  static size_t asked;
  uefi.HiiString.GetLanguages = [](const EFI_HII_STRING_PROTOCOL*, EFI_HII_HANDLE, CHAR8* languages,
                                   UINTN* size) -> EFI_STATUS {
    const UINTN room = std::exchange(*size, list.size() + 1);
    if (room < *size) {
      return EFI_BUFFER_TOO_SMALL;
    }
    std::copy(list.c_str(), list.c_str() + *size, languages);
    return EFI_SUCCESS;
  };
  uefi.HiiString.GetString = [](const EFI_HII_STRING_PROTOCOL*, const CHAR8*, EFI_HII_HANDLE, EFI_STRING_ID, EFI_STRING,
                                UINTN*, EFI_FONT_INFO**) -> EFI_STATUS {
    ++asked;
    return EFI_NOT_FOUND;
  };
  const std::vector<std::string> texts = EveryText("aA-; ", 5);
  std::map<std::string, std::vector<size_t>> variants;  // in upper and lower case
  for (size_t i = 0; i < texts.size(); ++i) {
    variants[Lower(texts[i])].push_back(i);
  }
  size_t listed = 0;
  for (const std::string& of : texts) {
    list = of;
    // The languages are separated by ';'. An empty one counts, except at the end of the list.
    std::vector<char> expected(texts.size());
    std::istringstream languages(Lower(list));
    for (std::string language; std::getline(languages, language, ';');) {
      for (const size_t variant : variants[language]) {
        expected[variant] = 1;
      }
    }
    HiiStrings strings("none of them");
    for (size_t language = 0; language < texts.size(); ++language) {
      asked = 0;
      static_cast<void>(strings.GetHiiString(&list, 1, texts[language].c_str()));
      if (asked != static_cast<size_t>(expected[language])) {
        FAIL() << '"' << list << "\" \"" << texts[language] << '"';
      }
      listed += asked;
    }
  }
  std::printf("%zu lists and languages, %zu found\n", texts.size() * texts.size(), listed);
}

TEST_F(HiiStringsTest, Size_ThatOverflows_IsRejected) {
  static UINTN size;
  uefi.HiiString.GetLanguages = [](const EFI_HII_STRING_PROTOCOL*, EFI_HII_HANDLE, CHAR8* languages,
                                   UINTN* needed) -> EFI_STATUS {
    EXPECT_EQ(languages, nullptr);
    *needed = size;
    return EFI_BUFFER_TOO_SMALL;
  };
  uefi.HiiString.GetString = [](const EFI_HII_STRING_PROTOCOL*, const CHAR8*, EFI_HII_HANDLE, EFI_STRING_ID,
                                EFI_STRING text, UINTN* needed, EFI_FONT_INFO**) -> EFI_STATUS {
    EXPECT_EQ(text, nullptr);
    *needed = size;
    return EFI_BUFFER_TOO_SMALL;
  };
  for (const UINTN reported : {MAX_UINT64, MAX_UINT64 - 1, UINTN{1} << 63, (UINTN{1} << 24) + 1}) {
    size = reported;
    HiiStrings strings("en-US");
    EXPECT_EQ(strings.GetHiiString(&size, 1).Status, EFI_OUT_OF_RESOURCES);
  }
  EXPECT_EQ(uefi.LivePoolBlocks(), 0U);
}

}  // namespace
