/** @file
  Tests of the attribute cache: a round trip, what invalidates it, and what is made of damaged variables.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/DatabaseFixture.hpp"

namespace {

constexpr std::u16string_view kData = u"" ATTRIBUTE_CACHE_ATTRIBUTES_DATA;
constexpr std::u16string_view kCounters = u"" ATTRIBUTE_CACHE_COUNTERS;
constexpr std::u16string_view kNames = u"" ATTRIBUTE_CACHE_NAMES;
constexpr std::u16string_view kDisplay = u"" ATTRIBUTE_CACHE_DISPLAY_STRINGS;
constexpr std::u16string_view kHelp = u"" ATTRIBUTE_CACHE_HELP_STRINGS;
constexpr std::u16string_view kStatus = u"" ATTRIBUTE_CACHE_STATUS;
constexpr std::u16string_view kVersion = u"" ATTRIBUTE_CACHE_BIOS_VERSION;

class CacheTest : public testing::Test {
 protected:
  CacheTest() { Reboot(); }

  void Reboot() {
    notebook.Reboot();
    notebook.InstallProtocols();
    database = {};
    EXPECT_EQ(database.AllocateStore(), EFI_SUCCESS);
  }
  /// A store with a record of every type and all kinds of strings.
  void Fill() {
    for (const std::u16string_view name : {u"One", u"", u"Three\u0142"}) {
      PutText(database, StringArray::Names, name);
    }
    for (const std::u16string_view text : {u"*One", u"Two"}) {
      PutText(database, StringArray::Display, text);
    }
    PutHelp(database, 17, u"Help");
    Put(database, {.Handle = 1, .Type = 2, .Name = 16, .Token = 1175, .SubType = 0, .MaxLength = 32, .Installed = 1});
    Put(database, {.Handle = 6, .Type = 4, .Name = 16, .Handles = {16}, .SubType = 2, .Order = {0}});
    Put(database, {.Type = 0, .Name = 17, .Token = 300, .Handles = {16, 18}, .Values = {1, 2}, .Current = 1});
    Put(database, {.Type = 1, .Name = 18, .Token = 9752, .MinLength = 1, .MaxLength = 9, .Text = "text"});
    Put(database, {.Type = 1, .Name = 18});
    Put(database, {.Type = 0x83, .Name = 16, .Token = 301, .Default = 3, .Current = 4, .Lower = 1, .Upper = 9});
    Put(database, {.Type = 0x85, .Name = 17, .Handles = {16, 17, 18}});
  }
  void WriteFilled() {
    Fill();
    ASSERT_EQ(WriteCache(database), EFI_SUCCESS);
    Reboot();
  }
  [[nodiscard]] Bytes Stored(std::u16string_view name) const {
    const FakeUefi::Variable* const variable = notebook.Variable(name);
    return variable == nullptr ? Bytes() : variable->Data;
  }
  void Store(std::u16string_view name, const Bytes& data) { notebook.SetVariable(name, 3, data); }
  void StoreCompressed(std::u16string_view name, const Bytes& content) { Store(name, ReferenceCompress(content)); }
  static Bytes Counters(UINT64 attributes, UINT64 names, UINT64 display, UINT64 help) {
    return Join(attributes, names, display, help);
  }
  [[nodiscard]] Bytes Header() const { return BytesAt(&database.Store()->Header, 32); }

  FakeNotebook notebook;
  AttributeDatabase database;
};

TEST_F(CacheTest, WritesCompressedListsAndTheVersionLast) {
  Fill();
  ASSERT_EQ(WriteCache(database), EFI_SUCCESS);
  EXPECT_EQ(ReferenceDecompress(Stored(kNames)),
            Join(U16(16), U16(8), std::u16string_view(u"One", 4), U16(17), U16(2), U16(0), U16(18), U16(14),
                 std::u16string_view(u"Three\u0142", 7)));
  EXPECT_EQ(ReferenceDecompress(Stored(kDisplay)),
            Join(U16(16), U16(10), std::u16string_view(u"*One", 5), U16(17), U16(8), std::u16string_view(u"Two", 4)));
  EXPECT_EQ(ReferenceDecompress(Stored(kHelp)),
            Join(U16(16), U16(0), U16(17), U16(10), std::u16string_view(u"Help", 5)));
  EXPECT_EQ(Stored(kCounters), Counters(5, 3, 2, 1));
  EXPECT_EQ(Stored(kStatus), Bytes{0});
  EXPECT_EQ(Stored(kVersion), Join("1.2.3", Bytes(5)));
  for (const std::u16string_view name : {kNames, kDisplay, kHelp, kData, kCounters, kVersion}) {
    EXPECT_EQ(notebook.Variable(name)->Attributes, 3U);
  }
  EXPECT_EQ(notebook.Variable(kStatus)->Attributes, 7U);
}

TEST_F(CacheTest, RestoresWhatWasWritten) {
  WriteFilled();
  const auto written = notebook.Uefi.Variables;
  const size_t blocks = notebook.Uefi.LivePoolBlocks();
  RestoreCache(database);
  EXPECT_EQ(notebook.Uefi.Warnings(), 0U);
  EXPECT_EQ(Header(), Counters(5, 3, 2, 1));
  EXPECT_EQ(database.AttributeAt(6), nullptr);                    // never kept
  EXPECT_EQ(notebook.Uefi.LivePoolBlocks(), blocks + 6 + 4 + 6);  // records, their arrays, strings
  EXPECT_EQ(TextOf(database, StringArray::Help, 16), "(none)");
  ASSERT_EQ(WriteCache(database), EFI_SUCCESS);
  for (const auto& [key, variable] : written) {
    EXPECT_EQ(notebook.Uefi.Variables[key].Data, variable.Data);
  }
}

TEST_F(CacheTest, IsValidForItsVersionOnlyAndUntilMarkedBad) {
  const std::tuple<const char*, std::function<void()>, bool> rows[] = {
      {"unchanged", [] {}, true},
      {"running version shorter", [&] { notebook.Version = "1.2"; }, false},
      {"running version longer", [&] { notebook.Version = "1.2.3.4"; }, false},
      {"cached version longer", [&] { Store(kVersion, Join("1.2.3x", Bytes(4))); }, false},
      {"no running version", [&] { notebook.Absent.insert(gVaroFirmwareVersionProtocolGuid); }, false},
      {"no text of it", [&] { notebook.Version.reset(); }, false},
      {"marked otherwise", [&] { notebook.SetVariable(kStatus, 7, {0x80}); }, false},
      {"mark longer than a byte", [&] { notebook.SetVariable(kStatus, 7, Bytes(2, 1)); }, true},
  };
  for (const auto& [what, change, valid] : rows) {
    SCOPED_TRACE(what);
    notebook.Absent.clear();
    notebook.Version = "1.2.3";
    Reboot();
    WriteFilled();
    change();
    Reboot();
    EXPECT_EQ(CacheIsValid(), valid);
  }
}

TEST_F(CacheTest, DamagedContentIsTakenAsFarAsItIsGood) {
  const Bytes name = Join(U16(16), U16(8), std::u16string_view(u"One", 4));
  const auto head = [](unsigned handle, unsigned type) { return Join(U16(handle), U8(type), Bytes(8)); };
  const Bytes integer = Join(head(16, 3), Bytes(36));
  const Bytes oneName = Counters(5, 1, 2, 1);
  const Bytes noRecord = Counters(0, 3, 2, 1);
  const Bytes oneRecord = Counters(1, 3, 2, 1);
  const std::tuple<const char*, std::u16string_view, Bytes, Bytes, bool> rows[] = {
      {"a name too few", kCounters, Counters(5, 2, 2, 1), Counters(5, 2, 2, 1), false},
      {"huge counters", kCounters, Bytes(32, 0xFF), Counters(5, 3, 2, 1), false},
      {"a name cut short", kNames, Join(name, U16(17), U16(9), Bytes(8)), oneName, false},
      {"a name's head cut short", kNames, Join(name, Bytes{17, 0, 0}), oneName, false},
      {"a name at handle 15", kNames, Join(name, U16(15), U16(0)), oneName, false},
      {"a name at handle 5120", kNames, Join(name, U16(5120), U16(0)), oneName, false},
      {"a record's head cut short", kData, Join(integer, Bytes(10)), oneRecord, true},
      {"a record's body cut short", kData, Middle(integer, 0, 1), noRecord, true},
      {"more values than data", kData, Join(integer, head(17, 0), U8(9), Bytes(89)), oneRecord, true},
      {"more text than data", kData, Join(head(16, 1), Bytes(7), U16(2), "a"), noRecord, true},
      {"a record of no known type", kData, Join(integer, head(17, 7), Bytes(80)), oneRecord, true},
      {"a boot configuration", kData, Join(integer, head(6, 4), Bytes(80)), oneRecord, true},
      {"a record at handle 272", kData, Join(integer, head(272, 3), Bytes(36)), oneRecord, true},
      {"a record at handle 0", kData, Join(integer, head(0, 3), Bytes(36)), oneRecord, true},
      {"no data", kData, {}, noRecord, true},
  };
  for (const auto& [what, variable, content, restored, deleted] : rows) {
    SCOPED_TRACE(what);
    notebook.Uefi.Variables.clear();
    Reboot();
    WriteFilled();
    Store(variable, variable == kCounters ? content : ReferenceCompress(content));
    RestoreCache(database);
    EXPECT_EQ(Header(), restored);
    EXPECT_EQ(notebook.Variable(kVersion) == nullptr, deleted);
    BuildTablesOf(database);
  }
}

TEST_F(CacheTest, RestoredRecordsKeepTheirOddities) {
  WriteFilled();
  const auto head = [](unsigned handle, unsigned type) { return Join(U16(handle), U8(type), Bytes(8)); };
  StoreCompressed(kData, Join(head(15, 3), Bytes(36),                                         // counts from 15 on
                              head(14, 0), U8(0), Bytes(2),                                   // does not
                              head(3, 5), Bytes(4), U8(1), U16(16),                           // always counts
                              head(77, 6), U8(1), U16(16), U8(3),                             // goes to slot 8
                              head(16, 1), Bytes(7), U16(3), "abc", head(16, 2), Bytes(8)));  // replaced
  const size_t blocks = notebook.Uefi.LivePoolBlocks();
  RestoreCache(database);
  EXPECT_EQ(database.GetAttributeCount(), 3U);
  EXPECT_EQ(database.AttributeAt(8)->Handle, 77);
  EXPECT_EQ(As<ConfigurationSetRecord>(*database.AttributeAt(8)).CurrentConfig, 3);
  EXPECT_EQ(database.AttributeAt(14)->Handle, 14);
  EXPECT_EQ(database.AttributeAt(16)->Type, 2);
  EXPECT_EQ(notebook.Uefi.LivePoolBlocks(), blocks + 5 + 4 + 6);
  // Of more records than are counted, as many as there are reserved handles come on top.
  Bytes many;
  for (unsigned handle = 16; handle < 40; ++handle) {
    Append(many, Join(head(handle, 3), Bytes(36)));
  }
  StoreCompressed(kData, many);
  Store(kCounters, Counters(3, 3, 2, 1));
  Reboot();
  RestoreCache(database);
  EXPECT_EQ(database.GetAttributeCount(), 15U + 3);
  // A block that announces more than there can be is not even allocated. A text without terminator gets one.
  Store(kData, Join(U32(0), U32(0xFFFFFFFF)));
  StoreCompressed(kNames, Join(U16(16), U16(3), Bytes{'a', 0, 'b'}));
  Reboot();
  RestoreCache(database);
  EXPECT_EQ(database.GetAttributeCount(), 0U);
  EXPECT_EQ(TextOf(database, StringArray::Names, 16), "ab");
}

}  // namespace
