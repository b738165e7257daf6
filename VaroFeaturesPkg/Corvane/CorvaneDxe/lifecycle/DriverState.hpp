/** @file
  DriverState: all that the driver keeps between two calls from the firmware.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/AttributeDatabase.hpp"
#include "lifecycle/OnPrereq.hpp"
#include "sources/FormSets.hpp"

extern "C" {
#include <Protocol/FormBrowserData.h>
#include <Protocol/HiiDatabase.h>
#include <Protocol/PublishedTables.h>
#include <Protocol/Settings.h>
#include <Protocol/TableTransport.h>
}

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

  CHAR8* PlatformLang = nullptr;  // null = the platform names no language
  SetupSummary Setup{};

  PrereqCounters Prerequisites{};
  const PrereqRecord* FormSetsWait = nullptr;
  const PrereqRecord* TablesWait = nullptr;

  bool FactoryMode = false;        // a factory or manufacturing mode: nothing is cached, factory attributes exist
  bool OwnerPassword = false;      // the platform knows an owner password
  bool PlatformSetting = false;    // the setting that allows cache and dependency list could be read
  bool FormFilter = false;         // a question's own eligibility counts
  bool RebuiltByFormSets = false;  // what the first pass found: the database was gathered, not left to the cache
  bool PublishInProgress = false;  // installing a protocol may deliver the signal again
};

static_assert(std::is_trivially_destructible_v<DriverState>, "nothing constructs or destroys globals in a DXE image");

/// The one module global: entry points name it, all other code is given what it needs.
extern DriverState mState;
