/** @file
  Fuzz target of the cache: whatever its variables hold, the boot that restores them publishes sound tables, and the
  next one gathers anew when the cache was found wanting.

  Input: a byte of which bit i says that variable i stands there as it is, and is else compressed; the four compressed
  variables and the counters, a block each; the setting that is read for each token, a byte; the asset tag.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Fuzz/FuzzInput.hpp"
#include "Fuzz/PublishedTables.hpp"

namespace {

/// A stream of the UEFI compression format that says the bytes as they are: codes of eight bits for them and none for
/// anything else.
Bytes CompressedLiterally(const Bytes& content) {
  Bytes stream;
  UINT64 pending = 0;
  unsigned bits = 0;
  const auto put = [&](unsigned count, UINT64 value) {
    pending = pending << count | value;
    for (bits += count; bits >= 8; bits -= 8) {
      stream.push_back(static_cast<std::uint8_t>(pending >> (bits - 8)));
    }
  };
  constexpr size_t kLargestBlock = 0xFFFF;
  for (size_t done = 0; done < content.size();) {
    const size_t count = std::min(content.size() - done, kLargestBlock);
    put(16, count);
    put(10, 0 << 5 | 10);  // of the code lengths there is one, length 8
    put(9, 256);           // 256 bytes, each of that length
    put(8, 0);             // of the distances there is one
    for (const size_t end = done + count; done < end; ++done) {
      put(8, content[done]);
    }
  }
  put(7, 0);
  return Join(U32(stream.size()), U32(content.size()), stream);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  constexpr std::array<std::u16string_view, 4> kCompressed = {u"PldmString", u"DispString", u"HelpString",
                                                              u"AttributesData"};
  FakeNotebook notebook;
  LimitPool();
  notebook.Uefi.VariableSizeLimit = notebook.Uefi.VariableSpaceLimit = SIZE_MAX;
  FuzzInput input(data, size);
  const auto literal = input.Take();
  for (size_t i = 0; i < kCompressed.size(); ++i) {
    const Bytes content = input.Block();
    notebook.SetVariable(kCompressed[i], 7, (literal >> i & 1) != 0 ? content : CompressedLiterally(content));
  }
  notebook.SetVariable(u"AttributesCount", 7, input.Block());
  Bytes version(notebook.Version->begin(), notebook.Version->end());
  version.resize(2 * version.size());
  notebook.SetVariable(u"BiosVersion", 7, version);
  for (UINT32 token = 0; token < 2048 && input.More(); ++token) {
    notebook.Settings[token].Value = input.Take();
  }
  notebook.PlatformStrings[0] = input.Ascii();
  notebook.AddFormSet(u"Setup").Checkbox(300, u"Wake", u"Wake").Value(1);

  notebook.Boot();
  Require(notebook.Published() != nullptr && notebook.FormSetsParsed == 0, "not published from the cache");
  RequireSoundTables(notebook);
  const bool deleted = notebook.Variable(u"BiosVersion") == nullptr;
  RequireNothingLeft(notebook);

  notebook.Reboot();
  notebook.Boot();
  Require(notebook.Published() != nullptr && (notebook.FormSetsParsed != 0) == deleted, "the next boot");
  RequireSoundTables(notebook);
  RequireNothingLeft(notebook);
  return 0;
}
