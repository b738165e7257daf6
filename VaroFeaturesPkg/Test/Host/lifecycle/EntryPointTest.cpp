/** @file
  Tests of the driver's start and of the stage that gathers the attributes.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/NotebookFixture.hpp"

namespace {

using EntryPointTest = NotebookFixture;

TEST_F(EntryPointTest, MissingProtocol_IsNamedAndStopsOnlyItsPart) {
  const EFI_STATUS missing = EFI_NOT_FOUND;
  const std::tuple<EFI_GUID, EFI_STATUS, bool, const char*> rows[] = {
      {gEfiHiiDatabaseProtocolGuid, missing, false, "gEfiHiiDatabaseProtocolGuid"},
      {gVaroSettingsProtocolGuid, missing, false, "gVaroSettingsProtocolGuid"},
      {gVaroFormBrowserDataProtocolGuid, missing, false, "gVaroFormBrowserDataProtocolGuid"},
      {gVaroTableTransportProtocolGuid, missing, false, "gVaroTableTransportProtocolGuid"},
      {gEfiHiiStringProtocolGuid, EFI_SUCCESS, true, "EFI_HII_STRING_PROTOCOL"},
      {gVaroAssetTagLengthProtocolGuid, EFI_SUCCESS, true, "gVaroAssetTagLengthProtocolGuid"},
      {gVaroFirmwareVersionProtocolGuid, EFI_SUCCESS, true, ""},
      {gVaroCameraIdentifiersProtocolGuid, EFI_SUCCESS, true, "gVaroCameraIdentifiersProtocolGuid"},
      {gVaroBootOptionSourceProtocolGuid, EFI_SUCCESS, true, "gVaroBootOptionSourceProtocolGuid"},
      {gVaroPasswordDirectoryProtocolGuid, EFI_SUCCESS, true, "gVaroPasswordDirectoryProtocolGuid"},
      {gVaroPasswordServiceProtocolGuid, EFI_SUCCESS, true, nullptr},
      {gVaroModeQueryProtocolGuid, EFI_SUCCESS, true, nullptr},
      {gVaroSettingDefaultsProtocolGuid, EFI_SUCCESS, true, nullptr},
  };
  notebook.AddFormSet(u"Setup").Checkbox(300, u"K", u"P");
  for (const auto& [guid, status, published, message] : rows) {
    const bool isTransport = SameGuid(guid, gVaroTableTransportProtocolGuid);
    for (const bool signal : {false, true}) {  // a protocol without an interface counts as missing, except a transport
      if (signal && isTransport) {
        continue;
      }
      notebook.Uefi.Variables.clear();
      notebook.Reboot();
      notebook.Absent = {guid};
      if (signal) {
        notebook.Uefi.Install(guid, nullptr);
      }
      EXPECT_EQ(notebook.Boot(), status) << message;
      EXPECT_EQ(notebook.Published() != nullptr, published) << message;
      EXPECT_EQ(notebook.Records.size(), published ? 8U : 0U);
      if (message != nullptr && *message != 0) {
        EXPECT_EQ(notebook.Uefi.Warnings(message), 1U) << message;
      }
      if (!published) {  // nothing waits, so nothing happens later
        EXPECT_EQ(notebook.Uefi.Warnings(), 1U);
        EXPECT_EQ(notebook.FormSetsParsed, 0U);
      }
    }
  }
}

TEST_F(EntryPointTest, Transport_WithAWarningOrNoInterface_PublishesWithoutSending) {
  notebook.Uefi.LookupStatus[gVaroTableTransportProtocolGuid] = EFI_WARN_STALE_DATA;
  EXPECT_EQ(notebook.Boot(), EFI_WARN_STALE_DATA);
  EXPECT_NE(notebook.Published(), nullptr);
  EXPECT_THAT(notebook.Records, IsEmpty());
  EXPECT_EQ(notebook.Uefi.Warnings("gVaroTableTransportProtocolGuid"), 1U);

  notebook.Uefi.LookupStatus.clear();
  notebook.Reboot();
  notebook.Absent = {gVaroTableTransportProtocolGuid};
  notebook.Uefi.Install(gVaroTableTransportProtocolGuid, nullptr);
  EXPECT_EQ(notebook.Boot(), EFI_SUCCESS);
  EXPECT_NE(notebook.Published(), nullptr);
  EXPECT_THAT(notebook.Records, IsEmpty());
  EXPECT_EQ(notebook.Uefi.Warnings("gVaroTableTransportProtocolGuid"), 1U);
}

TEST_F(EntryPointTest, RequiredProtocol_WithAWarningAndNoInterface_IsNotFound) {
  for (const EFI_GUID& guid :
       {gEfiHiiDatabaseProtocolGuid, gVaroSettingsProtocolGuid, gVaroFormBrowserDataProtocolGuid}) {
    notebook.Reboot();
    notebook.Absent = {guid};
    notebook.Uefi.Install(guid, nullptr);
    notebook.Uefi.LookupStatus = {{guid, EFI_WARN_STALE_DATA}};
    EXPECT_EQ(notebook.Boot(), EFI_NOT_FOUND);
    EXPECT_EQ(notebook.Published(), nullptr);
  }
}

TEST_F(EntryPointTest, PasswordService_WithAWarning_DoesNotCount) {
  notebook.PasswordService.OwnerPassword = 1;
  for (const EFI_STATUS status : {EFI_STATUS{EFI_SUCCESS}, EFI_STATUS{EFI_WARN_STALE_DATA}}) {
    notebook.Reboot();
    notebook.Uefi.LookupStatus[gVaroPasswordServiceProtocolGuid] = status;
    notebook.Boot();
    EXPECT_EQ(Attribute(3) != "", status == EFI_SUCCESS);
  }
}

TEST_F(EntryPointTest, Language_ThatNoPackageHas_IsReported) {
  notebook.AddFormSet(u"Setup").Checkbox(300, u"K", u"P");
  for (const auto& [language, warnings] : {std::pair("", 2U), std::pair("en", 1U), std::pair("en-US", 0U)}) {
    notebook.PlatformLanguage = language;
    notebook.Uefi.Variables.clear();
    notebook.Reboot();
    notebook.Boot();
    EXPECT_EQ(notebook.Uefi.Warnings("texts of "), warnings) << language;
  }
}

TEST_F(EntryPointTest, Signals_InstalledBeforeTheDriver_Count) {
  notebook.InstallProtocols();
  notebook.SignalTablesRequested();
  notebook.SignalFormSetsUpdated();
  notebook.Start();
  EXPECT_EQ(notebook.Records.size(), 8U);
}

TEST_F(EntryPointTest, Modes_AreReadOnceAndAFailureMeansNone) {
  notebook.FactoryMode = true;
  notebook.Settings[3633] = {};
  Gather();
  EXPECT_THAT(notebook.ModesAsked, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 255, 0));
  EXPECT_NE(ByToken(3633), "");
  EXPECT_EQ(notebook.SettingsRead.front(), (std::pair<UINT32, UINT64>{0x2618, 8}));
  EXPECT_THAT(notebook.Uefi.Measurements,
              ElementsAre("start CallbackOnAllFormSetsUpdated CRV2", "start BuildBiosAttributesData CRV2",
                          "end BuildBiosAttributesData CRV2", "end CallbackOnAllFormSetsUpdated CRV2"));
  notebook.Failing[gVaroModeQueryProtocolGuid] = EFI_DEVICE_ERROR;
  GatherAnew();
  EXPECT_EQ(ByToken(3633), "");
}

TEST_F(EntryPointTest, Unload_WhileAWaitIsArmed_IsReported) {
  notebook.Start();
  EXPECT_EQ(notebook.Uefi.LoadedImage.Unload(gImageHandle), EFI_SUCCESS);
  EXPECT_EQ(notebook.Uefi.Warnings("unloaded while a notification is pending"), 1U);
}

}  // namespace
