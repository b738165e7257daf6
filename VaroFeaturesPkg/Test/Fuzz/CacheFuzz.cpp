/** @file
  Fuzz target of the cache: whatever its variables hold, each boot publishes sound tables, and damage heals within three
  boots.

  Input: a byte whose bit i means that variable i is stored as it is, not compressed; a byte whose bit i means that
  variable i has hostile attributes, and those attributes; the four compressed variables and the counters, a block each;
  the setting that is read for each token, a byte; the asset tag.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Fuzz/FuzzInput.hpp"
#include "FakeUefi/ReferenceCompression.hpp"
#include "Fuzz/PublishedTables.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  constexpr std::array<std::u16string_view, 4> kCompressed = {u"PldmString", u"DispString", u"HelpString",
                                                              u"AttributesData"};
  FakeNotebook notebook;
  LimitPool();
  notebook.Uefi.VariableSizeLimit = notebook.Uefi.VariableSpaceLimit = SIZE_MAX;
  FuzzInput input(data, size);
  const auto literal = input.Take();
  const auto hostile = input.Take();
  const UINT32 attributes = input.Take() % 8;
  constexpr UINT32 kOwn = 3;
  const auto put = [&](size_t i, std::u16string_view name, const Bytes& data) {
    const UINT32 used = (hostile >> i & 1) != 0 ? attributes : kOwn;
    if (!data.empty()) {  // planted as an operating system or another driver may, without the rules of SetVariable
      notebook.Uefi.Variables[{Ucs2(name), gVaroAttributeVariableGuid}] = {used, data};
    }
  };
  for (size_t i = 0; i < kCompressed.size(); ++i) {
    const Bytes content = input.Block();
    put(i, kCompressed[i], (literal >> i & 1) != 0 ? content : CompressLiterally(content));
  }
  put(4, u"AttributesCount", input.Block());
  Bytes version(notebook.Version->begin(), notebook.Version->end());
  version.resize(2 * version.size());
  put(5, u"BiosVersion", version);
  put(6, u"AttCacheStatus", {0});
  for (UINT32 token = 0; token < 2048 && input.More(); ++token) {
    notebook.Settings[token].Value = input.Take();
  }
  notebook.PlatformStrings[0] = input.Ascii();
  notebook.AddFormSet(u"Setup").Checkbox(300, u"Wake", u"Wake").Value(1);

  const auto isOwn = [&](std::u16string_view name) {
    const FakeUefi::Variable* const variable = notebook.Variable(name);
    return variable != nullptr && variable->Attributes == kOwn;
  };
  const auto countOwn = [&] {
    return std::ranges::count_if(notebook.Uefi.Variables, [](const auto& variable) {
      return SameGuid(variable.first.second, gVaroAttributeVariableGuid);
    });
  };
  bool whole = false;  // restored without a deletion, or gathered
  for (int boot = 1; boot <= 3; ++boot) {
    const bool gathers = !isOwn(u"BiosVersion");
    const auto before = countOwn();
    notebook.Boot();
    Require(notebook.Published() != nullptr && (notebook.FormSetsParsed != 0) == gathers, "what a boot gathers");
    RequireSoundTables(notebook);
    RequireNothingLeft(notebook);
    whole = gathers || countOwn() == before;
    notebook.Reboot();
  }
  Require(whole, "damage that does not heal");
  return 0;
}
