/** @file
  Tests of the waits for protocols.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "FakeUefi/FakeUefi.hpp"
#include "lifecycle/OnPrereq.hpp"

namespace {

constexpr EFI_GUID kOne{1, 0, 0, {}};
constexpr EFI_GUID kTwo{2, 0, 0, {}};

int gRuns = 0;
EFI_TPL gTpl = 0;
EFI_STATUS gAnswer = EFI_SUCCESS;
EFI_STATUS EFIAPI CountRun(EFI_HANDLE image, EFI_SYSTEM_TABLE* table) {
  EXPECT_EQ(image, gImageHandle);
  EXPECT_EQ(table, gST);
  ++gRuns;
  gTpl = FakeUefi::Current().Tpl();
  return gAnswer;
}

class OnPrereqTest : public testing::Test {
 protected:
  OnPrereqTest() {
    gRuns = 0;
    gAnswer = EFI_SUCCESS;
  }
  PrereqRecord* Register(std::initializer_list<const EFI_GUID*> guids, PrereqRecord* parent = nullptr) {
    return RegisterOnPrereq(counters, parent, CountRun, gImageHandle, gST, std::span(guids.begin(), guids.size()));
  }
  FakeUefi uefi;
  PrereqCounters counters{};
};

TEST_F(OnPrereqTest, Wait_RunsOnceWhenAllProtocolsAreInstalled) {
  const PrereqRecord* const record = Register({&kOne, &kTwo});
  uefi.Install(kTwo, nullptr);
  EXPECT_EQ(gRuns, 0);
  uefi.Install(kOne, nullptr);
  EXPECT_EQ(gRuns, 1);
  EXPECT_EQ(gTpl, UINTN{TPL_CALLBACK});
  EXPECT_TRUE(record->Done);
  uefi.Install(kOne, nullptr);
  EXPECT_EQ(gRuns, 1);
}

TEST_F(OnPrereqTest, Wait_SeesEarlierProtocolsButNoneOnTwoHandles) {
  uefi.Install(kOne, nullptr);
  Register({&kOne});
  EXPECT_EQ(gRuns, 1);
  uefi.Install(kOne, nullptr);
  Register({&kOne});
  uefi.Install(kOne, nullptr);
  EXPECT_EQ(gRuns, 1);
  EXPECT_EQ(uefi.Warnings("more than one handle"), 2U);
}

TEST_F(OnPrereqTest, Group_IsDoneAfterOneSuccess) {
  PrereqRecord* const parent = Register({&kOne});
  const PrereqRecord* const child = Register({&kTwo}, parent);
  const PrereqRecord* const stranger = Register({&kTwo});
  EXPECT_EQ(child->GroupId, parent->GroupId);
  EXPECT_NE(stranger->GroupId, parent->GroupId);
  EXPECT_EQ(stranger->RecordId, 3U);
  uefi.Install(kOne, nullptr);
  EXPECT_TRUE(child->Done);
  EXPECT_FALSE(stranger->Done);
  EXPECT_EQ(Register({&kTwo}, parent), parent);  // done: nothing is registered
  uefi.Install(kTwo, nullptr);
  EXPECT_EQ(gRuns, 2);
}

TEST_F(OnPrereqTest, Failure_EndsOnlyItsOwnRecord) {
  PrereqRecord* const parent = Register({&kOne});
  const PrereqRecord* const child = Register({&kTwo}, parent);
  gAnswer = EFI_DEVICE_ERROR;
  uefi.Install(kOne, nullptr);
  EXPECT_TRUE(parent->Done);
  EXPECT_FALSE(child->Done);
  uefi.Install(kTwo, nullptr);
  EXPECT_EQ(gRuns, 2);
}

TEST_F(OnPrereqTest, Record_WithoutItsSignature_IsIgnored) {
  PrereqRecord* const record = Register({&kOne});
  PrereqRecord* const member = Register({&kTwo}, record);
  member->Signature = 0;
  uefi.Install(kTwo, nullptr);
  EXPECT_EQ(gRuns, 0);
  EXPECT_EQ(Register({&kOne}, member), member);
  EXPECT_NONFATAL_FAILURE(uefi.Install(kOne, nullptr), "OnPrereqDxe(107): CR has Bad Signature");
}

}  // namespace
