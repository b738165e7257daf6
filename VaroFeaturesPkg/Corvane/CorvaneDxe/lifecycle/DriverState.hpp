/** @file
  DriverState: all that the driver keeps between two calls from the firmware.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/store/AttributeDatabase.hpp"
#include "lifecycle/OnPrereq.hpp"
#include "sources/FormSets.hpp"

extern "C" {
#include <Protocol/FormBrowserData.h>
#include <Protocol/HiiDatabase.h>
#include <Protocol/PublishedTables.h>
#include <Protocol/Settings.h>
#include <Protocol/TableTransport.h>
}

/// Where the attributes of this boot come from.
enum class AttributeOrigin : UINT8 {
  None,      // not known yet, or left to a cache that then could not be used
  Gathered,  // from form sets and the platform
  Cache,     // restored; the values are read again
};

struct DriverState {
  // Found once; the platform's.
  EFI_HII_DATABASE_PROTOCOL* HiiDatabase = nullptr;
  SettingsProtocol* Settings = nullptr;
  FormBrowserDataProtocol* FormBrowser = nullptr;
  TableTransportProtocol* Transport = nullptr;  // null = the tables are published, but not sent

  // Kept until boot services end: the published interface leads to them.
  TableDescriptor* Descriptors = nullptr;
  AttributeDatabase Database;
  TableDirectory* Directory = nullptr;
  PublishedTablesInterface* Published = nullptr;

  CHAR8* PlatformLangBuffer = nullptr;  // null = the platform names no language
  SetupSummary Setup{};

  PrereqCounters Prerequisites{};
  const PrereqRecord* FormSetsWait = nullptr;
  const PrereqRecord* TablesWait = nullptr;

  AttributeOrigin Origin = AttributeOrigin::None;
  bool FactoryModeFlag = false;      // a factory or manufacturing mode: nothing is cached, factory attributes exist
  bool OwnerPasswordFlag = false;    // the platform knows an owner password
  bool PlatformSettingFlag = false;  // the setting that allows the cache and the dependency list could be read
  bool FormFilterFlag = false;       // a question's own eligibility counts
  bool PublishInProgress = false;    // installing a protocol may deliver the signal again
};

static_assert(std::is_trivially_destructible_v<DriverState>, "nothing constructs or destroys globals in a DXE image");

/// The one module global: entry points name it, all other code is given what it needs.
extern DriverState mState;
