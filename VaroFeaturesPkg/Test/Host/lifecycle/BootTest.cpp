/** @file
  Tests of whole boots: what is published and sent, cold and from the cache, and when services fail.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/NotebookFixture.hpp"
#include "lifecycle/BuildPass.hpp"

namespace {

class BootTest : public NotebookFixture {
 protected:
  BootTest() { Furnish(notebook); }
  Reading RebootAndRead() {
    notebook.Reboot();
    EXPECT_EQ(notebook.Boot(), EFI_SUCCESS);
    return Read();
  }
};

TEST_F(BootTest, Records_CarryThePublishedTables) {
  EXPECT_EQ(notebook.Boot(), EFI_SUCCESS);
  ASSERT_EQ(notebook.Records.size(), 8U);
  const Bytes guid = {0xD0, 0x21, 0x6C, 0xB6, 0xD7, 0x33, 0x27, 0x46, 0x84, 0xD5, 0x14, 0xE0, 0xA9, 0x04, 0x74, 0x56};
  for (size_t type = 0; type < 8; ++type) {
    const Bytes& record = notebook.Records[type];
    EXPECT_EQ(Bytes(record.begin(), record.begin() + 25), Join(guid, U64(record.size() - 25), U8(type)));
  }
  const PublishedTablesInterface& published = *notebook.Published();
  EXPECT_EQ(notebook.Payload(0), BytesAt(published.Directory, 200));
  EXPECT_EQ(Middle(notebook.Payload(0), 0, 176),
            Join("$ACI", U8(1), Bytes(3), "PLDM", U16(104), Bytes(8), notebook.Payload(0)[22], U8(5)));
  EXPECT_EQ(Middle(notebook.Payload(0), 104, 0), Bytes(96));
  EXPECT_EQ(notebook.Payload(1), BytesAt(published.Descriptors, 308));
  EXPECT_EQ(Middle(notebook.Payload(7), 4, notebook.Payload(7).size() - 36), BytesAt(&published.Store->Header, 32));
  EXPECT_EQ(published.Store, Database().Store());

  EXPECT_THAT(Read().Findings, IsEmpty());  // of directory, descriptors, tables and stream
}

TEST_F(BootTest, WarmBoot_EqualsTheColdOneExceptForChangedValues) {
  notebook.Boot();
  const Reading cold = Read();
  const auto records = notebook.Records;
  RebootAndRead();
  EXPECT_EQ(notebook.FormSetsParsed, 0U);
  EXPECT_EQ(notebook.Uefi.Calls(Service::VariableWrite), 0U);
  for (size_t type = 2; type < 7; ++type) {
    EXPECT_EQ(notebook.Records[type], records[type]) << type;
  }

  notebook.QuestionOf(302).CurrentValue = 300;  // above 255 the low byte comes back
  notebook.QuestionOf(1142).CurrentValue = 0x12;
  notebook.QuestionOf(300).CurrentValue = 1;
  notebook.QuestionOf(301).CurrentValue = 5;  // none of the values: the cached one stays
  notebook.PlatformStrings[0] = "changed";
  Reading warm = RebootAndRead();
  const std::map<std::string, std::string> changes = {
      {"Asset string = \"tag 1\"", "Asset string = \"changed\""},
      {"AutoOnHour integer = 7", "AutoOnHour integer = 12"},
      {"BootMode enumeration = Legacy", "BootMode enumeration = Uefi"},
      {"Volume integer = 200", "Volume integer = 44"},
  };
  for (std::string line : cold.Lines) {
    for (const auto& [before, after] : changes) {
      if (line.starts_with(before)) {
        line = after + line.substr(before.size());
      }
    }
    EXPECT_THAT(warm.Lines, Contains(line));
  }
  notebook.SetVariable(u"AttCacheStatus", 7, {1});  // everything is read anew
  EXPECT_THAT(RebootAndRead().Lines, Contains(testing::StartsWith("Volume integer = 300")));
  EXPECT_EQ(notebook.FormSetsParsed, 2U);
}

TEST_F(BootTest, Publication_WhenCalledAgain_PublishesNothing) {
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

}  // namespace
