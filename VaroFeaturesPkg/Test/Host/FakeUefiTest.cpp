/** @file
  FakeUefi: what the tests of the driver take for granted.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <gtest/gtest.h>

#include "FakeUefi/FakeNotebook.hpp"
#include "uefi/Variables.hpp"

namespace {

constexpr EFI_GUID kGuid{0x1234, 0, 0, {}};

TEST(FakeUefiTest, VariablesKeepToTheirAttributes) {
  FakeUefi uefi;
  EFI_GUID vendor = kGuid;
  const std::array<std::byte, 3> data{};
  const auto size = [&](const CHAR16* name) {
    const Result<VariableContent> content = ReadVariable(name, vendor);
    return content.Ok() ? static_cast<int>(content.Value().Size) : -1;
  };
  ASSERT_EQ(WriteVariable(u"Kept"_ucs2, vendor, kNonVolatile, data), EFI_SUCCESS);
  ASSERT_EQ(WriteVariable(u"Lost"_ucs2, vendor, EFI_VARIABLE_BOOTSERVICE_ACCESS, data), EFI_SUCCESS);
  EXPECT_EQ(WriteVariable(u"Kept"_ucs2, vendor, kNonVolatileRuntime, data), EFI_INVALID_PARAMETER);
  EXPECT_EQ(WriteVariable(u"None"_ucs2, vendor, kNonVolatile, {}), EFI_NOT_FOUND);
  uefi.Reboot();
  EXPECT_EQ(size(u"Kept"_ucs2), 3);
  EXPECT_EQ(size(u"Lost"_ucs2), -1);
  EXPECT_EQ(WriteVariable(u"Kept"_ucs2, vendor, kNonVolatile, {}), EFI_SUCCESS);
  EXPECT_EQ(size(u"Kept"_ucs2), -1);
  uefi.VariableSpaceLimit = 20;
  EXPECT_EQ(WriteVariable(u"Kept"_ucs2, vendor, kNonVolatile, std::array<std::byte, 11>{}), EFI_OUT_OF_RESOURCES);
}

TEST(FakeUefiTest, NotificationsWaitForTheTplAndRunInOrder) {
  FakeUefi uefi;
  static std::string order;
  order.clear();
  const auto event = [](EFI_TPL tpl, const char* name) {
    EFI_EVENT made = nullptr;
    EXPECT_EQ(gBS->CreateEvent(
                  EVT_NOTIFY_SIGNAL, tpl, [](EFI_EVENT, VOID* context) { order += static_cast<const char*>(context); },
                  const_cast<char*>(name), &made),
              EFI_SUCCESS);
    return made;
  };
  EFI_EVENT const first = event(TPL_CALLBACK, "1");
  EFI_EVENT const second = event(TPL_CALLBACK, "2");
  EFI_EVENT const urgent = event(TPL_NOTIFY, "!");
  EFI_GUID guid = kGuid;
  void* key = nullptr;
  ASSERT_EQ(gBS->RegisterProtocolNotify(&guid, first, &key), EFI_SUCCESS);
  const EFI_TPL old = gBS->RaiseTPL(TPL_CALLBACK);
  uefi.Install(kGuid, nullptr);
  for (EFI_EVENT const signalled : {second, first, urgent, urgent}) {
    gBS->SignalEvent(signalled);
  }
  EXPECT_EQ(order, "!!");
  gBS->RestoreTPL(old);
  EXPECT_EQ(order, "!!12");
}

}  // namespace
