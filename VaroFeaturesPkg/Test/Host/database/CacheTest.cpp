/** @file
  Tests of the attribute cache: a round trip, what invalidates it, and the restore of damaged variables.

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
  void WriteFilledAgain() {
    notebook.Uefi.Variables.clear();
    Reboot();
    WriteFilled();
  }
  [[nodiscard]] Bytes Stored(std::u16string_view name) const {
    const FakeUefi::Variable* const variable = notebook.Variable(name);
    return variable == nullptr ? Bytes() : variable->Data;
  }
  void Store(std::u16string_view name, const Bytes& data) { notebook.SetVariable(name, 3, data); }
  /// Creates a variable with any attributes, as another driver may.
  void Plant(std::u16string_view name, UINT32 attributes, const Bytes& data) {
    notebook.Uefi.Variables[{Ucs2(name), gVaroAttributeVariableGuid}] = {attributes, data};
  }
  void StoreCompressed(std::u16string_view name, const Bytes& content) { Store(name, ReferenceCompress(content)); }
  static Bytes Counters(UINT64 attributes, UINT64 names, UINT64 display, UINT64 help) {
    return Join(attributes, names, display, help);
  }
  [[nodiscard]] Bytes Header() const { return BytesAt(&database.Store()->Header, 32); }

  FakeNotebook notebook;
  AttributeDatabase database;
};

TEST_F(CacheTest, Write_CompressesTheListsAndWritesTheVersionLast) {
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
  // EDK II's CRC-32 as the second source.
  Bytes sealed = Join(Stored(kNames), Stored(kDisplay), Stored(kHelp), Stored(kData), Stored(kCounters));
  EXPECT_EQ(Stored(kVersion), Join("1.2.3", U8(0), U32(CalculateCrc32(sealed.data(), sealed.size()))));
  for (const std::u16string_view name : {kNames, kDisplay, kHelp, kData, kCounters, kVersion}) {
    EXPECT_EQ(notebook.Variable(name)->Attributes, 3U);
  }
  EXPECT_EQ(notebook.Variable(kStatus)->Attributes, 7U);
}

TEST_F(CacheTest, Restore_ReproducesTheWrittenDatabase) {
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

TEST_F(CacheTest, IsValid_OnlyForItsVersionAndUntilMarkedBad) {
  const std::tuple<const char*, std::function<void()>, bool> rows[] = {
      {"unchanged", [] {}, true},
      {"running version shorter", [&] { notebook.Version = "1.2"; }, false},
      {"running version longer", [&] { notebook.Version = "1.2.3.4"; }, false},
      {"cached version longer", [&] { Store(kVersion, Join("1.2.3x", Bytes(4))); }, false},
      {"no running version", [&] { notebook.Absent.insert(gVaroFirmwareVersionProtocolGuid); }, false},
      {"no text of it", [&] { notebook.Version.reset(); }, false},
      {"marked otherwise", [&] { notebook.SetVariable(kStatus, 7, {0x80}); }, false},
      {"mark longer than a byte", [&] { notebook.SetVariable(kStatus, 7, Bytes(2, 1)); }, true},
      {"marked with other attributes", [&] { Plant(kStatus, 3, {1}); }, false},
      {"seal of zeros",
       [&] {
         Store(kVersion, Join("1.2.3", Bytes(5)));
         Store(kNames, {1});
       },
       true},
      {"no seal",
       [&] {
         Store(kVersion, Join("1.2.3", U8(0)));
         Store(kNames, {1});
       },
       true},
      {"a seal cut short",
       [&] {
         Store(kVersion, Join("1.2.3", Bytes{0, 1, 2, 3}));
         Store(kNames, {1});
       },
       true},
      {"another seal", [&] { Store(kVersion, Join("1.2.3", U8(0), U32(1))); }, false},
      {"a list changed", [&] { Store(kHelp, Join(Stored(kHelp), U8(0))); }, false},
      {"a list missing",
       [&] {
         notebook.Uefi.Variables.erase({Ucs2(kDisplay), gVaroAttributeVariableGuid});
       },
       false},
      {"counters changed", [&] { Store(kCounters, Counters(5, 3, 2, 2)); }, false},
      {"version with other attributes", [&] { Plant(kVersion, 7, Stored(kVersion)); }, false},
      {"data with other attributes", [&] { Plant(kData, 7, Stored(kData)); }, false},
  };
  for (const auto& [what, change, valid] : rows) {
    SCOPED_TRACE(what);
    notebook.Absent.clear();
    notebook.Version = "1.2.3";
    Reboot();
    WriteFilled();
    change();
    Reboot();
    EXPECT_EQ(CacheIsValid(SealCheck::Done), valid);
  }
}

TEST_F(CacheTest, Restore_OfDamagedContent_TakesTheGoodPart) {
  const Bytes name = Join(U16(16), U16(8), std::u16string_view(u"One", 4));
  const auto head = [](unsigned handle, unsigned type) { return Join(U16(handle), U8(type), Bytes(8)); };
  const Bytes integer = Join(head(16, 3), Bytes(36));
  const Bytes noName = Counters(5, 3, 2, 1);  // handles stay taken
  const Bytes noRecord = Counters(0, 3, 2, 1);
  const Bytes oneRecord = Counters(1, 3, 2, 1);
  const Bytes nothing = Counters(0, 0, 0, 0);
  enum { Nothing, List, Version, All };
  const std::tuple<const char*, std::u16string_view, Bytes, Bytes, int> rows[] = {
      {"a name too few", kCounters, Counters(5, 2, 2, 1), Counters(5, 3, 2, 1), List},  // a record uses handle 18
      {"a name too many", kCounters, Counters(5, 4, 2, 1), Counters(5, 4, 2, 1), List},
      {"a record too few", kCounters, Counters(4, 3, 2, 1), noName, Nothing},
      {"huge counters", kCounters, Bytes(32, 0xFF), Counters(5, 5104, 5104, 1), List},
      {"counters cut short", kCounters, Bytes(31), nothing, All},
      {"a name cut short", kNames, Join(name, U16(17), U16(9), Bytes(8)), noName, List},
      {"a name's head cut short", kNames, Join(name, Bytes{17, 0, 0}), noName, List},
      {"a name at handle 15", kNames, Join(name, U16(15), U16(0)), noName, List},
      {"a name at handle 5120", kNames, Join(name, U16(5120), U16(0)), noName, List},
      {"a name at handle 5119", kNames, Join(name, name, U16(5119), U16(0)), Counters(5, 5104, 2, 1), Nothing},
      {"no names", kNames, {}, noName, List},
      {"a record's head cut short", kData, Join(integer, Bytes(10)), oneRecord, All},
      {"a record's body cut short", kData, Middle(integer, 0, 1), noRecord, All},
      {"more values than data", kData, Join(integer, head(17, 0), U8(9), Bytes(89)), oneRecord, All},
      {"more text than data", kData, Join(head(16, 1), Bytes(7), U16(2), "a"), noRecord, All},
      {"a record of no known type", kData, Join(integer, head(17, 7), Bytes(80)), oneRecord, All},
      {"a boot configuration", kData, Join(integer, head(6, 4), Bytes(80)), oneRecord, All},
      {"a record at handle 272", kData, Join(integer, head(272, 3), Bytes(36)), oneRecord, All},
      {"a record at handle 0", kData, Join(integer, head(0, 3), Bytes(36)), oneRecord, All},
      {"no data", kData, {}, noRecord, All},
  };
  for (const auto& [what, variable, content, restored, deleted] : rows) {
    SCOPED_TRACE(what);
    WriteFilledAgain();
    Store(variable, variable == kCounters ? content : ReferenceCompress(content));
    const size_t before = notebook.Uefi.Variables.size();
    RestoreCache(database);
    EXPECT_EQ(Header(), restored);
    EXPECT_EQ(notebook.Variable(kVersion) == nullptr, deleted == All);
    if (deleted == List) {
      EXPECT_EQ(notebook.Variable(kNames), nullptr);
    }
    if (deleted == Nothing) {
      EXPECT_EQ(notebook.Uefi.Variables.size(), before);
    }
    BuildTablesOf(database);
  }
}

TEST_F(CacheTest, Restore_OfMoreRecordsThanCounted_DeletesTheCache) {
  WriteFilled();
  // Whatever is counted, no more records are read than there are handles.
  const std::tuple<unsigned, UINT64, UINT64, bool> rows[] = {
      {24, 9, 24, false}, {24, 8, 23, true}, {24, 0, 15, true}, {271, 65535, 24, false}, {272, 65535, 24, true}};
  for (const auto& [records, counted, restored, deleted] : rows) {
    Bytes many;
    for (unsigned i = 0; i < records; ++i) {
      Append(many, Join(U16(16 + i % 24), U8(3), Bytes(8), Bytes(36)));
    }
    Reboot();
    notebook.SetVariable(kVersion, 3, Join("1.2.3", Bytes(5)));
    StoreCompressed(kData, many);
    Store(kCounters, Counters(counted, 3, 2, 1));
    RestoreCache(database);
    EXPECT_EQ(database.GetAttributeCount(), restored);
    EXPECT_EQ(notebook.Variable(kVersion) == nullptr, deleted);
    WriteFilledAgain();
  }
  // Collections count at the reserved handles, too. At most 256 records are counted.
  Bytes many;
  for (unsigned handle = 1; handle < 272; ++handle) {
    Append(many, Join(U16(handle), U8(5), Bytes(8), Bytes(5)));
  }
  StoreCompressed(kData, many);
  Store(kCounters, Counters(256, 3, 2, 1));
  RestoreCache(database);
  EXPECT_EQ(database.GetAttributeCount(), 256U);
}

TEST_F(CacheTest, Restore_WithoutAVariable_DeletesTheCacheOrTheVersion) {
  enum { One, All, Version };
  const std::tuple<std::u16string_view, int> missing[] = {
      {kNames, All}, {kDisplay, All}, {kHelp, All}, {kCounters, All}, {kData, Version}};
  for (const bool otherAttributes : {false, true}) {
    for (const auto& [name, deleted] : missing) {
      WriteFilledAgain();
      if (otherAttributes) {
        Plant(name, 7, Stored(name));
      } else {
        notebook.Uefi.Variables.erase({Ucs2(name), gVaroAttributeVariableGuid});
      }
      RestoreCache(database);
      EXPECT_EQ(notebook.Variable(kVersion), nullptr);
      EXPECT_EQ(notebook.Variable(kHelp) == nullptr, deleted == All);
      EXPECT_EQ(database.GetAttributeCount(), deleted == Version || name == kCounters ? 0U : 5U);
    }
  }
  // Counters far too high and a list of more entries than there are handles: the walk ends at the handles there are.
  Bytes many;
  for (int i = 0; i < 20000; ++i) {
    Append(many, Join(U16(16), U16(0)));
  }
  WriteFilledAgain();
  StoreCompressed(kNames, many);
  Store(kCounters, Counters(5, 20000, 2, 1));
  const size_t calls = notebook.Uefi.Calls(Service::Allocation);
  RestoreCache(database);
  EXPECT_EQ(database.GetNameCount(), 5104U);
  EXPECT_LT(notebook.Uefi.Calls(Service::Allocation) - calls, 5200U);
  EXPECT_EQ(notebook.Variable(kNames), nullptr);
}

TEST_F(CacheTest, Restore_KeepsUsedHandlesFromNewStrings) {
  WriteFilled();
  Store(kNames, {1, 2, 3});  // the names are lost, and the record of handle 18 stays
  StoreCompressed(kDisplay,
                  Join(U16(16), U16(4), std::u16string_view(u"a", 2), U16(40), U16(4), std::u16string_view(u"b", 2)));
  RestoreCache(database);
  EXPECT_EQ(Header(), Counters(5, 3, 25, 1));
  EXPECT_EQ(TextOf(database, StringArray::Names, 18), "(none)");
  EXPECT_STREQ(reinterpret_cast<const char*>(database.GetNameString(StringHandle{18})), "");
  EXPECT_EQ(Raw(PutText(database, StringArray::Names, u"New")), 19);
  EXPECT_EQ(Raw(PutText(database, StringArray::Display, u"New")), 41);
}

TEST_F(CacheTest, Restore_WithoutMemoryForOneItem_RestoresTheOthers) {
  WriteFilled();
  const auto written = notebook.Uefi.Variables;
  size_t lostTexts = 0;
  size_t lostRecords = 0;
  size_t blocks = 0;
  for (size_t nth = 1;; ++nth) {
    SCOPED_TRACE(nth);
    Reboot();
    notebook.Uefi.Variables = written;
    notebook.Uefi.Fail(Service::Allocation, nth, EFI_OUT_OF_RESOURCES);
    RestoreCache(database);
    if (notebook.Uefi.Calls(Service::Allocation) < nth) {
      break;
    }
    blocks = nth;
    const bool whole = notebook.Uefi.Variables.size() == written.size();
    if (Header() == Counters(5, 3, 2, 1) && whole) {
      for (const UINT16 handle : std::array<UINT16, 2>{16, 18}) {  // 17 is empty
        lostTexts += TextOf(database, StringArray::Names, handle) == "(none)" ? 1 : 0;
      }
      for (UINT16 handle = 16; handle < 21; ++handle) {
        lostRecords += database.AttributeAt(handle) == nullptr ? 1 : 0;
      }
    }
    BuildTablesOf(database);
  }
  EXPECT_EQ(lostTexts, 2U + 4U);    // each alone; and both without the block of the content or the scratch block
  EXPECT_EQ(lostRecords, 5U + 4U);  // each alone, and once more for each array and text of a record
  EXPECT_GT(blocks, 20U);
}

TEST_F(CacheTest, Write_ReplacesVariablesWithOtherAttributes) {
  // An operating system has created all of them, and a valid cache lies in them.
  WriteFilled();
  for (auto& [key, variable] : notebook.Uefi.Variables) {
    variable.Attributes = key.first == Ucs2(kStatus) ? 3 : 7;
  }
  EXPECT_FALSE(CacheIsValid(SealCheck::Done));
  Fill();
  EXPECT_EQ(WriteCache(database), EFI_SUCCESS);
  for (const std::u16string_view name : {kVersion, kData, kCounters, kNames, kDisplay, kHelp}) {
    EXPECT_EQ(notebook.Variable(name)->Attributes, 3U);
  }
  EXPECT_EQ(notebook.Variable(kStatus)->Attributes, 7U);
  Reboot();
  EXPECT_TRUE(CacheIsValid(SealCheck::Done));
}

TEST_F(CacheTest, Write_WhenAListIsProtected_WritesNoVersion) {
  WriteFilled();
  Fill();
  notebook.Uefi.Protected.insert(Ucs2(kDisplay));
  IgnoreStatus(WriteCache(database));
  EXPECT_EQ(notebook.Variable(kVersion), nullptr);
  EXPECT_GE(notebook.Uefi.Warnings("\"DispString\" cannot be deleted"), 1U);
}

TEST_F(CacheTest, Restore_CountsAndPlacesUnusualRecordsAsBefore) {
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
  // A block that announces too many bytes is not allocated. A text without a terminator gets one.
  Store(kData, Join(U32(0), U32(0xFFFFFFFF)));
  Store(kCounters, Counters(3, 1, 2, 1));
  StoreCompressed(kNames, Join(U16(16), U16(3), Bytes{'a', 0, 'b'}));
  Reboot();
  RestoreCache(database);
  EXPECT_EQ(database.GetAttributeCount(), 0U);
  EXPECT_EQ(TextOf(database, StringArray::Names, 16), "ab");
}

}  // namespace
