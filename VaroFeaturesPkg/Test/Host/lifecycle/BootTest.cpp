/** @file
  Tests of whole boots: what is published and sent, cold and from the cache, and when services fail.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <numeric>

#include "Host/NotebookFixture.hpp"
#include "lifecycle/BuildPass.hpp"

namespace {

constexpr std::array<size_t, 5> kTables = {TABLE_STRINGS, TABLE_ATTRIBUTES, TABLE_VALUES, TABLE_DISPLAY, TABLE_HELP};

class BootTest : public NotebookFixture {
 protected:
  BootTest() {
    FakeFormSet& setup = notebook.AddFormSet(u"System Setup");
    setup.OneOf(300, u"BootMode", u"Boot Mode")
        .Help(u"How the system starts.")
        .Option(1, u"Uefi", u"UEFI")
        .Option(2, u"Legacy", u"Legacy")
        .Value(2);
    setup.Checkbox(301, u"SecureBoot[ForceIf:BootMode=Uefi]", u"Secure Boot").Value(1);
    setup.Numeric(1142, u"AutoOnHour", u"Hour").Bounds(0, 23).Value(7);
    setup.String(9752, u"Asset", u"Asset Tag").Text("tag 1").Bounds(0, 64);
    notebook.AddFormSet(u"Other").Numeric(302, u"Volume", u"Volume").Bounds(0, 100000).Value(300, 2);
    notebook.BootOptions = {{1, true, u"Disk", FakeBootOption::Bbs(2)}, {0, false, u"Net", {}}};
    notebook.Passwords = {{{PASSWORD_KIND_ADMIN, gVaroSystemPasswordsGuid}, 1}};
    notebook.Cameras = {"CAM-A"};
    notebook.PlatformStrings[0] = "tag 1";
  }
  void RebootAndBoot() {
    notebook.Reboot();
    EXPECT_EQ(notebook.Boot(), EFI_SUCCESS);
  }
  std::map<size_t, Bytes> Tables() {
    std::map<size_t, Bytes> tables;
    for (const size_t index : kTables) {
      tables[index] = notebook.Table(index);
    }
    return tables;
  }
  /// The value entry of a token, without its handle and type.
  Bytes ValueOf(UINT32 token, size_t length) {
    const UINT16 handle = Database().FindAttributeByToken(token)->Handle;
    const Bytes table = notebook.Table(TABLE_VALUES);
    const Bytes head = Join(handle, UINT8{Database().AttributeAt(handle)->Type});
    const auto found = std::search(table.begin(), table.end(), head.begin(), head.end());
    return Bytes(found + 3, found + 3 + static_cast<std::ptrdiff_t>(length));
  }
  /// Frees all that the published interface leads to. What is left over is the driver's own: two waits of two blocks,
  /// the platform language, the boot options that the published views lead into, and the attribute access protocol with
  /// its request buffer.
  size_t BlocksBesidesPublished() {
    const PublishedTablesInterface published = *notebook.Published();
    const auto free = [&](const void* block) {
      if (block != nullptr) {
        gBS->FreePool(const_cast<void*>(block));
      }
    };
    for (size_t slot = 0; slot < ATTRIBUTE_STORE_SLOT_COUNT; ++slot) {
      if (slot < ATTRIBUTE_STORE_HANDLE_LIMIT) {
        FreeRecord(static_cast<AttributeRecord*>(published.Store->Slots[slot]));
      } else {
        free(published.Store->Slots[slot]);
      }
    }
    for (const size_t index : kTables) {
      free(reinterpret_cast<const void*>(UINTN{published.Descriptors[index].Data}));
    }
    free(notebook.Published());
    free(published.Directory);
    free(published.Descriptors);
    free(published.Store);
    return notebook.Uefi.LivePoolBlocks();
  }
  static constexpr size_t kOwnBlocks = 2 * 2 + 1 + 1 + 2;
};

TEST_F(BootTest, EightRecordsCarryDirectoryDescriptorsTablesAndStream) {
  EXPECT_EQ(notebook.Boot(), EFI_SUCCESS);
  ASSERT_EQ(notebook.Records.size(), 8U);
  const Bytes guid = {0xD0, 0x21, 0x6C, 0xB6, 0xD7, 0x33, 0x27, 0x46, 0x84, 0xD5, 0x14, 0xE0, 0xA9, 0x04, 0x74, 0x56};
  for (size_t type = 0; type < 8; ++type) {
    const Bytes& record = notebook.Records[type];
    EXPECT_EQ(Bytes(record.begin(), record.begin() + 25),
              Join(guid, U64(record.size() - 25), static_cast<UINT8>(type)));
  }
  const PublishedTablesInterface& published = *notebook.Published();
  EXPECT_EQ(notebook.Payload(0), BytesAt(published.Directory, 200));
  EXPECT_EQ(notebook.Payload(1), BytesAt(published.Descriptors, 308));
  EXPECT_EQ(Middle(notebook.Payload(1), 3 * 28, 2 * 28), Bytes(6 * 28));
  EXPECT_EQ(published.Store, Database().Store());

  Bytes directory = Join("$ACI", U8(1), Bytes(3), "PLDM", U16(104), Bytes(8), notebook.Payload(0)[22], U8(5));
  const Bytes kinds[] = {{0, 0, 1}, {1, 0, 0}, {2, 0, 0}, {3, 1, 4}, {3, 0, 4}};
  for (unsigned i = 0; i < kTables.size(); ++i) {
    const Bytes table = notebook.Table(kTables[i]);
    EXPECT_EQ(notebook.Payload(2 + i), table);
    const UINT64 address = published.Descriptors[kTables[i]].Data;
    Append(directory, Join(kinds[i], U32(0), U8(i), U16(static_cast<unsigned>(table.size())), U16(0),
                           static_cast<UINT32>(address)));
  }
  EXPECT_EQ(notebook.Payload(0), Join(directory, Bytes(96)));
  EXPECT_EQ(std::accumulate(directory.begin(), directory.end(), 0) % 256, 0);

  const Bytes stream = notebook.Payload(7);
  EXPECT_EQ(Middle(stream, 0, stream.size() - 36),
            Join(static_cast<UINT32>(stream.size() - 36), BytesAt(&published.Store->Header, 32)));
  EXPECT_EQ(Middle(stream, 36, stream.size() - 37), Bytes{0xFF});
  EXPECT_EQ(Middle(stream, 37, stream.size() - 48), BytesAt(Database().AttributeAt(1), 11));
}

TEST_F(BootTest, NothingIsLostOrLeftBehind) {
  notebook.Boot();
  EXPECT_EQ(BlocksBesidesPublished(), kOwnBlocks);
  EXPECT_EQ(notebook.Uefi.Warnings(), 0U);
  RebootAndBoot();
  EXPECT_EQ(notebook.FormSetsParsed, 0U);
  EXPECT_EQ(BlocksBesidesPublished(), kOwnBlocks);
  EXPECT_EQ(notebook.Uefi.Warnings(), 0U);
}

TEST_F(BootTest, AWarmBootEqualsTheColdOneButForValuesThatChanged) {
  notebook.Boot();
  const auto cold = Tables();
  const auto variables = notebook.Uefi.Variables;
  notebook.QuestionOf(302).CurrentValue = 200;  // below 256, to come back as it is
  RebootAndBoot();
  auto warm = Tables();
  EXPECT_EQ(notebook.FormSetsParsed, 0U);
  EXPECT_EQ(ValueOf(302, 8), Join(U64(200)));
  warm[TABLE_VALUES] = {};
  auto expected = cold;
  expected[TABLE_VALUES] = {};
  EXPECT_EQ(warm, expected);
  for (const auto& [key, variable] : variables) {
    EXPECT_EQ(notebook.Uefi.Variables[key].Data, variable.Data);  // not written again
  }

  notebook.QuestionOf(302).CurrentValue = 300;  // above 255 the low byte comes back
  notebook.QuestionOf(1142).CurrentValue = 0x12;
  notebook.QuestionOf(300).CurrentValue = 1;
  notebook.QuestionOf(301).CurrentValue = 5;  // none of the values: the cached one stays
  notebook.PlatformStrings[0] = "changed";
  RebootAndBoot();
  EXPECT_EQ(ValueOf(302, 8), Join(U64(300 & 0xFF)));
  EXPECT_EQ(ValueOf(1142, 8), Join(U64(12)));
  EXPECT_EQ(ValueOf(300, 2), (Bytes{1, 0}));
  EXPECT_EQ(ValueOf(301, 2), (Bytes{1, 1}));
  EXPECT_EQ(ValueOf(9752, 9), Join(U16(7), "changed"));

  notebook.QuestionOf(302).CurrentValue = 300;
  notebook.SetVariable(u"AttCacheStatus", 7, {1});
  RebootAndBoot();
  EXPECT_EQ(notebook.FormSetsParsed, 2U);
  EXPECT_EQ(ValueOf(302, 8), Join(U64(300)));
  EXPECT_EQ(notebook.Variable(u"AttCacheStatus")->Data, Bytes{0});
}

TEST_F(BootTest, WhenTheCacheIsUsedAndWritten) {
  struct Row {
    const char* Case;
    std::function<void()> Change;
    bool Parsed;
    bool Written;
    bool Published;
  };
  const Row rows[] = {
      {"same version", [] {}, false, false, true},
      {"other version", [&] { notebook.Version = "9"; }, true, true, true},
      {"factory mode", [&] { notebook.FactoryMode = true; }, true, false, true},
      {"platform setting unreadable", [&] { notebook.Settings[0x2618].Status = EFI_NOT_FOUND; }, true, false, true},
      {"no asset tag protocol", [&] { notebook.Absent.insert(gVaroAssetTagLengthProtocolGuid); }, false, false, false},
      {"asset tag protocol fails", [&] { notebook.Failing[gVaroAssetTagLengthProtocolGuid] = EFI_DEVICE_ERROR; }, false,
       false, false},
      {"both, without a cache",
       [&] {
         notebook.Absent.insert(gVaroAssetTagLengthProtocolGuid);
         notebook.Version = "9";
       },
       true, true, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.Case);
    notebook.Uefi.Variables.clear();
    RebootAndBoot();
    row.Change();
    GatherAnew();
    const size_t writes = notebook.Uefi.Calls(Service::VariableWrite);
    notebook.SignalTablesRequested();
    EXPECT_EQ(notebook.FormSetsParsed != 0, row.Parsed);
    EXPECT_EQ(notebook.Uefi.Calls(Service::VariableWrite) - writes, row.Written ? 7U : 0U);
    EXPECT_EQ(notebook.Published() != nullptr, row.Published);
    notebook.Version = "1.2.3";
    notebook.FactoryMode = false;
    notebook.Settings[0x2618].Status = EFI_SUCCESS;
    notebook.Absent.clear();
    notebook.Failing.clear();
  }
}

TEST_F(BootTest, TheTwoPassesActOnTheirOwnLookAtTheCache) {
  notebook.Boot();
  // Valid at first, invalid then: nothing was gathered and nothing is written.
  notebook.Reboot();
  Gather();
  notebook.SetVariable(u"AttCacheStatus", 7, {1});
  notebook.SignalTablesRequested();
  EXPECT_EQ(Database().GetAttributeCount(), 0U);
  EXPECT_EQ(notebook.Variable(u"AttCacheStatus")->Data, Bytes{1});
  EXPECT_EQ(notebook.Uefi.Calls(Service::VariableWrite), 0U);
  EXPECT_EQ(notebook.Records.size(), 8U);
  // Invalid at first, valid then: what was gathered stands.
  notebook.Reboot();
  Gather();
  const UINT64 gathered = Database().GetAttributeCount();
  notebook.SetVariable(u"AttCacheStatus", 7, {0});
  notebook.SignalTablesRequested();
  EXPECT_EQ(Database().GetAttributeCount(), gathered);
  EXPECT_EQ(notebook.Uefi.Calls(Service::VariableWrite), 1U);  // the dependency list of the first pass
  EXPECT_EQ(ValueOf(302, 8), Join(U64(300)));
}

TEST_F(BootTest, NestedAndLaterCallsPublishNothingAgain) {
  notebook.Start();
  // While the interface is being installed, while a record is sent, and afterwards.
  EFI_EVENT installed = nullptr;
  VOID* key = nullptr;
  const auto again = [](EFI_EVENT, VOID*) { EXPECT_EQ(BuildAndPublishTables(gImageHandle, gST), EFI_SUCCESS); };
  ASSERT_EQ(gBS->CreateEvent(EVT_NOTIFY_SIGNAL, TPL_NOTIFY, again, nullptr, &installed), EFI_SUCCESS);
  ASSERT_EQ(gBS->RegisterProtocolNotify(&gVaroPublishedTablesProtocolGuid, installed, &key), EFI_SUCCESS);
  notebook.OnSend = [] { EXPECT_EQ(BuildAndPublishTables(gImageHandle, gST), EFI_SUCCESS); };
  notebook.SignalFormSetsUpdated();
  notebook.SignalTablesRequested();
  EXPECT_EQ(BuildAndPublishTables(gImageHandle, gST), EFI_SUCCESS);
  EXPECT_EQ(notebook.Records.size(), 8U);
  EXPECT_FALSE(mState.PublishInProgress);
}

TEST_F(BootTest, SendsThatFailDoNotStopTheOthers) {
  for (UINT8 type = 0; type < 8; ++type) {
    notebook.SendStatus[type] = EFI_DEVICE_ERROR;
  }
  notebook.Boot();
  EXPECT_EQ(notebook.Records.size(), 8U);
  EXPECT_EQ(notebook.Uefi.Warnings("not sent"), 8U);
  EXPECT_FALSE(mState.PublishInProgress);
}

/// Boots again and again, cold and then warm, each time with the next call of a service failing.
class BootFailureTest : public BootTest, public testing::WithParamInterface<std::tuple<Service, FakeUefi::Later>> {};

TEST_P(BootFailureTest, EveryBootEndsWellAndTheNextOneIsWhole) {
  const auto [service, later] = GetParam();
  RebootAndBoot();
  const auto cold = Tables();
  notebook.QuestionOf(302).CurrentValue = 200;
  const auto cached = notebook.Uefi.Variables;
  for (const bool warm : {false, true}) {
    bool failed = true;
    for (size_t nth = 1; failed; ++nth) {
      SCOPED_TRACE(std::string(warm ? "warm " : "cold ") + std::to_string(nth));
      notebook.Uefi.Variables.clear();
      if (warm) {
        notebook.Uefi.Variables = cached;
      }
      notebook.Reboot();
      notebook.InstallProtocols();
      notebook.Uefi.Fail(service, nth, service == Service::ProtocolLookup ? EFI_NOT_FOUND : EFI_OUT_OF_RESOURCES,
                         later);
      notebook.Boot();
      failed = notebook.Uefi.Calls(service) >= nth;
      ASSERT_EQ(notebook.QuestionListsOut, 0U);
      ASSERT_LE(notebook.Records.size(), 8U);
      if (notebook.Published() != nullptr) {
        ASSERT_LE(BlocksBesidesPublished(), kOwnBlocks);
      }
      // However it went, the boot after the next is as the first, cache and all.
      if (nth % 8 == 1) {
        notebook.SetVariable(u"AttCacheStatus", 7, {1});
        notebook.QuestionOf(302).CurrentValue = 300;
        RebootAndBoot();
        ASSERT_EQ(Tables(), cold);
        notebook.QuestionOf(302).CurrentValue = 200;
      }
    }
  }
}

std::string NameOfFailure(const testing::TestParamInfo<std::tuple<Service, FakeUefi::Later>>& failure) {
  static const Texts kServices = {"Allocation",   "VariableRead", "VariableWrite", "ProtocolLookup",
                                  "Registration", "HiiString",    "PlatformCall"};
  const auto [service, later] = failure.param;
  return kServices.at(static_cast<size_t>(service)) + (later == FakeUefi::Later::Fail ? "FromThenOn" : "Once");
}

INSTANTIATE_TEST_SUITE_P(Services, BootFailureTest,
                         testing::Combine(testing::Values(Service::Allocation, Service::VariableRead,
                                                          Service::VariableWrite, Service::ProtocolLookup,
                                                          Service::Registration, Service::HiiString,
                                                          Service::PlatformCall),
                                          testing::Values(FakeUefi::Later::Succeed, FakeUefi::Later::Fail)),
                         NameOfFailure);

}  // namespace
