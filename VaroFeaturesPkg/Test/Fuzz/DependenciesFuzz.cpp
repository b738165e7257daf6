/** @file
  Fuzz target of the dependencies: for any keywords and annotations, the list equals that of a plain evaluation.

  Input: keywords, each a text. Their identifiers count up.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <optional>

#include "Fuzz/FuzzInput.hpp"
#include "sources/Dependencies.hpp"

extern "C" {
#include <Corvane/AttributeCache.h>
}

namespace {

constexpr size_t kLongestName = 50;
constexpr size_t kMostKeywords = 257;

/// The expected identifiers of the list, or nothing if the evaluation is abandoned.
std::optional<std::vector<UINT32>> Evaluate(const std::vector<std::u16string>& keywords) {
  std::vector<std::u16string> mentioned;
  std::vector<std::u16string> plain = keywords;  // cut at "[" where there is an annotation
  for (size_t i = 0; i < keywords.size(); ++i) {
    const std::u16string& keyword = keywords[i];
    size_t at = keyword.find(u'[');
    if (at != keyword.npos && at > kLongestName) {
      return std::nullopt;
    }
    while (at != keyword.npos) {
      const size_t begin = keyword.find(u':', at);
      const size_t end = begin == keyword.npos ? begin : keyword.find(u'=', begin);
      if (end == keyword.npos) {
        break;
      }
      const std::u16string name = keyword.substr(begin + 1, end - begin - 1);
      if (name.size() > kLongestName) {
        return std::nullopt;
      }
      plain[i] = keyword.substr(0, keyword.find(u'['));
      if (std::find(mentioned.begin(), mentioned.end(), name) != mentioned.end()) {
        break;
      }
      mentioned.push_back(name);
      at = keyword.find(u'[', end);
    }
  }
  std::vector<UINT32> identifiers;
  for (const std::u16string& name : mentioned) {
    for (size_t i = 0; i < keywords.size(); ++i) {
      if (plain[i] == name) {
        identifiers.push_back(static_cast<UINT32>(i));
      }
    }
  }
  identifiers.resize(std::min<size_t>(identifiers.size(), ATTRIBUTE_DEPENDENCY_LIST_CAPACITY));
  return identifiers;
}

PoolPtr<CHAR16[]> InPool(const std::u16string& keyword) {
  PoolPtr<CHAR16[]> text = AllocateZeroedArray<CHAR16>(keyword.size() + 1);
  std::copy(keyword.begin(), keyword.end(), text.get());
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  FakeUefi uefi;
  FuzzInput input(data, size);
  std::vector<std::u16string> keywords;
  {
    Dependencies dependencies;
    for (UINT32 identifier = 0; input.More() && identifier < kMostKeywords + 10; ++identifier) {
      std::u16string keyword = input.Text();
      keyword.resize(std::min(keyword.size(), keyword.find(u'\0')));
      dependencies.RecordDependencyCandidate(identifier, InPool(keyword));
      if (keywords.size() < kMostKeywords) {
        keywords.push_back(keyword);
      }
    }
    const auto expected = Evaluate(keywords);
    Require(dependencies.BuildPidDepList() == (expected ? EFI_SUCCESS : EFI_ABORTED), "the status");
    Bytes list;
    for (const UINT32 identifier : expected.value_or(std::vector<UINT32>())) {
      Append(list, identifier);
    }
    const auto written = uefi.Variables.find({Ucs2(u"PidDepList"), gVaroAttributeVariableGuid});
    Require(written == uefi.Variables.end() ? list.empty() : written->second.Data == list, "the list");
  }
  Require(uefi.LivePoolBlocks() == 0, "a block was left");
  return 0;
}
