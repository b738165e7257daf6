/** @file
  Tests of the attributes that stand for platform settings, passwords and cameras.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/NotebookFixture.hpp"

namespace {

using PlatformAttributesTest = NotebookFixture;

void GiveFactorySettings(FakeNotebook& notebook) {
  notebook.FactoryMode = true;
  for (const UINT32 setting : {3633, 1751, 3728, 1756, 1879, 9902, 1881, 1469, 12054}) {
    notebook.Settings[setting] = {1};
  }
}

TEST_F(PlatformAttributesTest, FactoryMode_AddsItsAttributesBeforeTheOthers) {
  GiveFactorySettings(notebook);
  notebook.Settings[3728] = {2};
  notebook.Settings[9902] = {0x4150};
  notebook.Settings[1340] = {0x12345};  // the low 16 bits count
  Gather();
  const Texts expected = {
      "16 CommonSystemId #3633/2 int 0..65535/1 0,1",
      "17 OverrideBatteryChargeFactory #1751/1 enum Disabled=0|Enabled=1 1,1",
      "18 ServiceResetConfig #3728/1 enum Disabled=0|ProjectVariablesPreserve=2 0,1",
      "19 Generation! #0/0 str 1..255 23Q1",
      "20 IBV! #0/0 str 1..255 VARO",
      "21 MfgModePxeAttribute #1756/2 int 0..6/1 4,1",
      "22 FrontFan #1879/1 enum Disabled=0|Enabled=1 0,1",
      "23 WlanCountryCode #9902/2 int 0..65535/1 16720,16720",
      "24 AdvancedDebugMenu #1881/1 enum Disabled=0|Enabled=1 0,1",
      "25 HEVC! #1469/1 enum Disabled=0|Enabled=1 0,1",
      "26 ChargePowerLimitFactoryFlag #12054/1 enum Disabled=0|Enabled=1 0,1",
      "27 MasterPasswordLockout #1843/1 enum Disabled=0|Enabled=1 0,0",
      "28 AuxoraSupportLevel! #1340/2 int 0..65535/1 0,9029",
  };
  EXPECT_EQ(Attributes(), expected);
  EXPECT_EQ(notebook.SettingsRead.back(), (std::pair<UINT32, UINT64>{1340, 8}));
  std::string displays;
  for (const std::string& text : Strings(StringArray::Display)) {
    displays += text + "|";
  }
  EXPECT_EQ(displays,
            "Common System Identifier|Override Battery Charging Limit in Factory|Disabled|Enabled|"
            "Service reset configuration|Project Variables Preserve|System Generation|Independent BIOS Vendor|"
            "Manufacturing Mode PXE Attribute|Front Fan|WLAN Country Code|Advanced Debug Menu|"
            "High Efficiency Video Coding|Charge Power Limit Factory Flag|Master Password Lockout|"
            "Auxora Support Level|");
  // The only help text, beside its display text.
  EXPECT_EQ(Database().Store()->Header.HelpCount, 1U);
  EXPECT_EQ(TextOf(Database(), StringArray::Help, 16 + 13),
            "A flag to configure charging performance limitation for EU products.");
}

TEST_F(PlatformAttributesTest, UnreadableSetting_DropsItsAttribute) {
  GiveFactorySettings(notebook);
  const std::set<UINT32> tolerant = {3728, 1881, 12054};  // with value 0
  for (const UINT32 setting : {3633, 1751, 3728, 1756, 1879, 9902, 1881, 1469, 12054, 1843, 1340}) {
    for (const EFI_STATUS status : {EFI_NOT_FOUND, EFI_DEVICE_ERROR}) {
      const FakeSetting before = std::exchange(notebook.Settings[setting], {1, status});
      GatherAnew();
      const bool kept = status == EFI_NOT_FOUND && tolerant.contains(setting);
      EXPECT_EQ(ByToken(setting).empty(), !kept) << setting;
      EXPECT_EQ(Attributes().size(), kept ? 13U : 12U) << setting;
      EXPECT_EQ(notebook.Uefi.Warnings("dropped"), kept ? 0U : 1U) << setting;
      notebook.Settings[setting] = before;
    }
  }
  // A value outside the possible ones selects the first, not the default.
  notebook.Settings[1751] = {7};
  GatherAnew();
  EXPECT_EQ(ByToken(1751), "17 OverrideBatteryChargeFactory #1751/1 enum Disabled=0|Enabled=1 1,0");
}

TEST_F(PlatformAttributesTest, Cameras_KeepTheirNumbers) {
  const std::tuple<std::vector<const CHAR8*>, std::optional<UINT8>, Texts> rows[] = {
      {{"a", "", nullptr, "dd"}, std::nullopt, {"17 MIPICam1! #3732/0 str 0..2 a", "18 MIPICam4! #3735/0 str 0..3 dd"}},
      {{"a", "b", "c", "d", "e", "f"},
       std::nullopt,
       {"17 MIPICam1! #3732/0 str 0..2 a", "18 MIPICam2! #3733/0 str 0..2 b", "19 MIPICam3! #3734/0 str 0..2 c",
        "20 MIPICam4! #3735/0 str 0..2 d"}},
      {{"a", "b"}, UINT8{0}, {"17 MIPICam1! #3732/0 str 0..2 a"}},
      {{"a", "b"}, UINT8{1}, {"17 MIPICam1! #3732/0 str 0..2 a"}},
      {std::vector<const CHAR8*>(), UINT8{3}, Texts()},
  };
  for (const auto& [identifiers, count, cameras] : rows) {
    notebook.Cameras = identifiers;
    notebook.CameraCount = count;
    GatherAnew();
    Texts attributes = Attributes();
    attributes.pop_back();
    attributes.erase(attributes.begin());
    EXPECT_EQ(attributes, cameras);
    EXPECT_EQ(Database().Store()->Header.DisplayCount, 4 + cameras.size());
  }
}

class PasswordsTest : public NotebookFixture {
 protected:
  void SetUp() override {
    notebook.Settings[1621] = {0x10021};
    notebook.Settings[1623] = {34};
    notebook.Settings[1874] = {35};
  }
  static FakePassword Entry(UINT32 kind, UINT32 state, EFI_GUID owner = gVaroSystemPasswordsGuid) {
    return {{kind, owner}, state};
  }
  Texts Passwords() {
    notebook.Reboot();
    notebook.Boot();
    return {Attribute(1), Attribute(2), Attribute(3)};
  }
  const std::string suffix = R"([RegEx:^\\133\\x20-\\x7e\\135{0,32}$])";
};

TEST_F(PasswordsTest, Passwords_AreTwoOrThreeWithLengthAndState) {
  notebook.Passwords = {Entry(1, 1), Entry(0, 3), Entry(2, 2), Entry(0, 0, gVaroSettingsNamespaceGuid), Entry(7, 1)};
  EXPECT_THAT(Passwords(), ElementsAre("1 AdminPassword" + suffix + " #1175/0 pw 33 1",
                                       "2 SystemPassword" + suffix + " #1174/0 pw 34 1", ""));
  const auto displays = Strings(StringArray::Display);
  EXPECT_THAT(Texts(displays.end() - 3, displays.end()),
              ElementsAre("Admin Password", "System Password", "System boot configuration"));
  notebook.PasswordService.OwnerPassword = 9;
  EXPECT_THAT(Passwords(), ElementsAre("1 AdminPassword" + suffix + " #1175/0 pw 35 1",
                                       "2 SystemPassword" + suffix + " #1174/0 pw 35 1",
                                       "3 OwnerPassword" + suffix + " #1176/0 pw 35 0"));
  notebook.PasswordService.Revision = 3;  // knows no owner password
  EXPECT_EQ(Passwords().back(), "");
}

TEST_F(PasswordsTest, LaterEntries_WinAndFailuresMeanNotInstalled) {
  notebook.Passwords = {Entry(1, 1), Entry(1, 0), Entry(0, 0), Entry(0, 1)};
  notebook.Settings[1621].Status = EFI_DEVICE_ERROR;
  EXPECT_THAT(Passwords(), ElementsAre("1 AdminPassword" + suffix + " #1175/0 pw 0 0",
                                       "2 SystemPassword" + suffix + " #1174/0 pw 34 1", ""));
  for (EFI_GUID* const absent : {&gVaroPasswordDirectoryProtocolGuid, &gVaroPasswordStateProtocolGuid}) {
    notebook.Absent = {*absent};
    EXPECT_EQ(Passwords().at(1), "2 SystemPassword" + suffix + " #1174/0 pw 34 0");
  }
  notebook.Absent.clear();
  notebook.Failing[gVaroPasswordStateProtocolGuid] = EFI_DEVICE_ERROR;
  EXPECT_EQ(Passwords().at(1), "2 SystemPassword" + suffix + " #1174/0 pw 34 0");
  // An entry after the announced number is not read.
  notebook.Failing.clear();
  static PASSWORD_STATE_QUERY all;
  all = std::exchange(
      notebook.Uefi.Find<PasswordStateQueryProtocol>(gVaroPasswordDirectoryProtocolGuid)->Query,
      [](PasswordStateQueryProtocol* self, UINT32 question, UINT32 entry, UINT64* size, VOID* answer) -> EFI_STATUS {
        const EFI_STATUS status = all(self, question, entry, size, answer);
        *static_cast<UINT32*>(answer) -= question == PasswordQueryEntryCount ? 1 : 0;
        return status;
      });
  EXPECT_EQ(Passwords().at(1), "2 SystemPassword" + suffix + " #1174/0 pw 34 0");
}

}  // namespace
