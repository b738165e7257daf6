/** @file
  Tests of the attribute cache: a round trip, what invalidates it, and what is made of damaged variables.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/DatabaseFixture.hpp"
#include "FakeUefi/ReferenceCompression.hpp"
#include "database/Cache.hpp"

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
    Put(database, {.Type = 0,
                   .Name = 17,
                   .ValueSize = 1,
                   .Token = 300,
                   .Handles = {16, 18},
                   .Values = {1, 0x1122334455667788},
                   .Default = 1,
                   .Current = 1});
    Put(database, {.Type = 1, .Name = 18, .Token = 9752, .MinLength = 1, .MaxLength = 9, .Text = "text"});
    Put(database, {.Type = 1, .Name = 18});
    Put(database, {.Type = 0x83,
                   .Name = 16,
                   .ValueSize = 2,
                   .Token = 301,
                   .Default = 3,
                   .Current = 4,
                   .Lower = 1,
                   .Upper = 9,
                   .Step = 2});
    Put(database, {.Type = 0x85, .Name = 17, .Handles = {16, 17, 18}});
  }
  static Bytes Expected() {
    const auto head = [](UINT16 handle, UINT8 type, UINT16 name, UINT16 size, UINT32 token) {
      return Join(handle, type, name, size, token);
    };
    return Join(head(1, 2, 16, 0, 1175), U8(0), U16(0), U16(32), U16(0), U8(1),  //
                head(16, 0, 17, 1, 300), U8(2), U16(16), U16(18), U64(1), U64(0x1122334455667788), U8(1), U8(1),
                head(17, 1, 18, 0, 9752), U8(1), U16(1), U16(9), U16(0), U16(4), "text",  //
                head(18, 1, 18, 0, 0), U8(1), U16(0), U16(0), U16(0), U16(0),             //
                head(19, 0x83, 16, 2, 301), U64(1), U64(9), U32(2), U64(3), U64(4),       //
                head(20, 0x85, 17, 0, 0), U16(17), U8(255), U8(0), U8(3), U16(16), U16(17), U16(18));
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
  EXPECT_EQ(ReferenceDecompress(Stored(kData)), Expected());
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
  ASSERT_TRUE(CacheIsValid());
  const size_t blocks = notebook.Uefi.LivePoolBlocks();
  RestoreCache(database);
  EXPECT_EQ(notebook.Uefi.Warnings(), 0U);
  EXPECT_EQ(Header(), Counters(5, 3, 2, 1));
  EXPECT_EQ(database.AttributeAt(6), nullptr);                    // never kept
  EXPECT_EQ(notebook.Uefi.LivePoolBlocks(), blocks + 6 + 4 + 6);  // records, their arrays, strings
  ASSERT_EQ(WriteCache(database), EFI_SUCCESS);
  EXPECT_EQ(ReferenceDecompress(Stored(kData)), Expected());
  EXPECT_EQ(TextOf(database, StringArray::Names, 16), "One");
  EXPECT_EQ(TextOf(database, StringArray::Display, 16), "*One");
  EXPECT_EQ(TextOf(database, StringArray::Help, 16), "(none)");
  EXPECT_EQ(TextOf(database, StringArray::Help, 17), "Help");
}

TEST_F(CacheTest, IsValidForItsVersionOnlyAndUntilMarkedBad) {
  struct Row {
    const char* Case;
    std::function<void()> Change;
    bool Valid;
  };
  const Row rows[] = {
      {"unchanged", [] {}, true},
      {"other version", [&] { notebook.Version = "1.2.4"; }, false},
      {"running version shorter", [&] { notebook.Version = "1.2"; }, false},
      {"running version longer", [&] { notebook.Version = "1.2.3.4"; }, false},
      {"cached version without terminator", [&] { Store(kVersion, Join("1.2.3")); }, false},
      {"cached version longer", [&] { Store(kVersion, Join("1.2.3x", Bytes(4))); }, false},
      {"no cached version", [&] { notebook.Uefi.Variables.clear(); }, false},
      {"no running version", [&] { notebook.Absent.insert(gVaroFirmwareVersionProtocolGuid); }, false},
      {"marked bad", [&] { notebook.SetVariable(kStatus, 7, {1}); }, false},
      {"marked otherwise", [&] { notebook.SetVariable(kStatus, 7, {0x80}); }, false},
      {"mark missing",
       [&] {
         notebook.Uefi.Variables.erase({Ucs2(kStatus), gVaroAttributeVariableGuid});
       },
       true},
      {"mark longer than a byte",
       [&] {
         notebook.SetVariable(kStatus, 7, {1, 1});
       },
       true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.Case);
    notebook.Absent.clear();
    notebook.Version = "1.2.3";
    Reboot();
    WriteFilled();
    row.Change();
    Reboot();
    EXPECT_EQ(CacheIsValid(), row.Valid);
  }
}

TEST_F(CacheTest, AFailedWriteLeavesNoVersionBehind) {
  // Writes in order: three lists, data, counters, status, version.
  for (size_t write = 1; write <= 7; ++write) {
    SCOPED_TRACE(write);
    notebook.Uefi.Variables.clear();
    Reboot();
    WriteFilled();
    notebook.Version = "2";  // an old cache stands under another version
    Reboot();
    PutText(database, StringArray::Names, u"New");
    PutText(database, StringArray::Display, u"New");
    Put(database, {.Type = 3});
    notebook.Uefi.Fail(Service::VariableWrite, write, EFI_DEVICE_ERROR);
    const EFI_STATUS status = WriteCache(database);
    if (write <= 3) {  // a list that is not written is deleted, and the next restore finds it missing
      EXPECT_EQ(status, EFI_SUCCESS);
      EXPECT_EQ(notebook.Variable(std::array{kNames, kDisplay, kHelp}.at(write - 1)), nullptr);
      EXPECT_NE(notebook.Variable(kVersion), nullptr);
    } else {
      for (const std::u16string_view name : {kNames, kDisplay, kHelp, kData, kCounters, kVersion}) {
        EXPECT_EQ(notebook.Variable(name), nullptr);
      }
      EXPECT_NE(notebook.Variable(kStatus), nullptr);
    }
  }
}

TEST_F(CacheTest, WithoutAVersionOrMemoryNothingStays) {
  Fill();
  notebook.Uefi.LookupStatus[gVaroFirmwareVersionProtocolGuid] = EFI_NOT_FOUND;
  IgnoreStatus(WriteCache(database));
  EXPECT_EQ(notebook.Variable(kData), nullptr);
  notebook.Uefi.LookupStatus.clear();
  const size_t blocks = notebook.Uefi.LivePoolBlocks();
  bool failed = true;
  for (size_t nth = 1; failed; ++nth) {
    const size_t calls = notebook.Uefi.Calls(Service::Allocation);
    notebook.Uefi.Fail(Service::Allocation, nth, EFI_OUT_OF_RESOURCES);
    IgnoreStatus(WriteCache(database));
    failed = notebook.Uefi.Calls(Service::Allocation) >= calls + nth;
    EXPECT_EQ(notebook.Uefi.LivePoolBlocks(), blocks) << nth;
    // Never a version over a cache without its data.
    EXPECT_EQ(notebook.Variable(kVersion) != nullptr, notebook.Variable(kData) != nullptr) << nth;
  }
}

TEST_F(CacheTest, DamagedVariablesAreTakenAsFarAsTheyAreGood) {
  const Bytes one = Join(U16(16), U16(8), std::u16string_view(u"One", 4));
  const Bytes head16 = Join(U16(16), U8(3), U16(16), U16(2), U32(5));
  const Bytes integer = Join(head16, Bytes(36));
  struct Row {
    const char* Case;
    std::function<void()> Damage;
    Bytes Counters;
    bool Deleted;
  };
  const auto all = Counters(5, 3, 2, 1);
  const Row rows[] = {
      // Without counters no string is restored, and of the records as many as there are reserved handles.
      {"no counters",
       [&] {
         notebook.Uefi.Variables.erase({Ucs2(kCounters), gVaroAttributeVariableGuid});
       },
       Counters(5, 0, 0, 0), true},
      {"short counters", [&] { Store(kCounters, Bytes(31, 1)); }, Counters(5, 0, 0, 0), true},
      {"counters of a name too few", [&] { Store(kCounters, Counters(5, 2, 2, 1)); }, Counters(5, 2, 2, 1), false},
      {"huge counters", [&] { Store(kCounters, Bytes(32, 0xFF)); }, all, false},
      {"names missing",
       [&] {
         notebook.Uefi.Variables.erase({Ucs2(kNames), gVaroAttributeVariableGuid});
       },
       Counters(5, 0, 2, 1), true},
      {"names that do not decompress", [&] { Store(kNames, Bytes(20, 0xFF)); }, Counters(5, 0, 2, 1), false},
      {"names shorter than a header", [&] { Store(kNames, Bytes(7)); }, Counters(5, 0, 2, 1), false},
      {"a name cut short", [&] { StoreCompressed(kNames, Join(one, U16(17), U16(9), Bytes(8))); }, Counters(5, 1, 2, 1),
       false},
      {"a name's head cut short",
       [&] {
         StoreCompressed(kNames, Join(one, Bytes{17, 0, 0}));
       },
       Counters(5, 1, 2, 1), false},
      {"a name at handle 15", [&] { StoreCompressed(kNames, Join(one, U16(15), U16(0))); }, Counters(5, 1, 2, 1),
       false},
      {"a name at handle 5120", [&] { StoreCompressed(kNames, Join(one, U16(5120), U16(0))); }, Counters(5, 1, 2, 1),
       false},
      {"data missing",
       [&] {
         notebook.Uefi.Variables.erase({Ucs2(kData), gVaroAttributeVariableGuid});
       },
       Counters(0, 3, 2, 1), false},
      {"data that does not decompress", [&] { Store(kData, Bytes(20, 0xFF)); }, Counters(0, 3, 2, 1), true},
      {"data announced huge", [&] { Store(kData, Join(U32(0), U32(0xFFFFFFFF))); }, Counters(0, 3, 2, 1), true},
      {"a record's head cut short", [&] { StoreCompressed(kData, Join(integer, Bytes(10))); }, Counters(1, 3, 2, 1),
       true},
      {"a record's body cut short", [&] { StoreCompressed(kData, Middle(integer, 0, 1)); }, Counters(0, 3, 2, 1), true},
      {"an enumeration longer than the data",
       [&] { StoreCompressed(kData, Join(integer, U16(17), Bytes(9), U8(255), Bytes(30))); }, Counters(1, 3, 2, 1),
       true},
      {"a string longer than the data",
       [&] { StoreCompressed(kData, Join(U16(16), U8(1), Bytes(15), U16(2), U8('a'))); }, Counters(0, 3, 2, 1), true},
      {"a record of no known type", [&] { StoreCompressed(kData, Join(integer, U16(17), U8(7), Bytes(80))); },
       Counters(1, 3, 2, 1), true},
      {"a boot configuration", [&] { StoreCompressed(kData, Join(integer, U16(6), U8(4), Bytes(80))); },
       Counters(1, 3, 2, 1), true},
      {"a record at handle 272", [&] { StoreCompressed(kData, Join(integer, U16(272), U8(3), Bytes(44))); },
       Counters(1, 3, 2, 1), true},
      {"a record at handle 0", [&] { StoreCompressed(kData, Join(integer, U16(0), U8(3), Bytes(44))); },
       Counters(1, 3, 2, 1), true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.Case);
    notebook.Uefi.Variables.clear();
    Reboot();
    WriteFilled();
    row.Damage();
    RestoreCache(database);
    EXPECT_EQ(Header(), row.Counters);
    EXPECT_EQ(notebook.Variable(kVersion) == nullptr, row.Deleted);
    EXPECT_NE(notebook.Variable(kStatus), nullptr);
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
  // A text without terminator gets one.
  StoreCompressed(kNames, Join(U16(16), U16(3), Bytes{'a', 0, 'b'}));
  Reboot();
  RestoreCache(database);
  EXPECT_EQ(TextOf(database, StringArray::Names, 16), "ab");
}

TEST_F(CacheTest, ARestoreWithoutMemoryIsHarmless) {
  WriteFilled();
  bool failed = true;
  for (size_t nth = 1; failed; ++nth) {
    const auto variables = notebook.Uefi.Variables;
    notebook.Uefi.Fail(Service::Allocation, nth, EFI_OUT_OF_RESOURCES);
    const size_t calls = notebook.Uefi.Calls(Service::Allocation);
    RestoreCache(database);
    failed = notebook.Uefi.Calls(Service::Allocation) >= calls + nth;
    EXPECT_EQ(failed, Header() != Counters(5, 3, 2, 1)) << nth;
    BuildTablesOf(database);
    Reboot();
    notebook.Uefi.Variables = variables;
  }
}

}  // namespace
