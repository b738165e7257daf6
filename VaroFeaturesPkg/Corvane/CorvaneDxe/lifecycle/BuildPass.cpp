/** @file
  The build pass: the order in which sources, cache, tables and publication follow.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "lifecycle/BuildPass.hpp"

#include "database/cache/Cache.hpp"
#include "database/tables/TableBuilder.hpp"
#include "lifecycle/PerformancePhase.hpp"
#include "lifecycle/Publication.hpp"
#include "lifecycle/TableDirectory.hpp"
#include "sources/BootConfiguration.hpp"
#include "sources/Cameras.hpp"
#include "sources/Passwords.hpp"
#include "sources/PlatformAttributes.hpp"
#include "uefi/Protocols.hpp"

extern "C" {
#include <Protocol/AssetTagLength.h>
#include <Protocol/TablesRequested.h>
}

namespace {

bool MayUseCache(const DriverState& state) {
  return !state.FactoryModeFlag && state.PlatformSettingFlag;
}

/// Returns true if the cache cannot be used, so that the attributes must be gathered in this boot.
bool CheckCache(const DriverState& state, SealCheck sealCheck) {
  return !MayUseCache(state) || !CacheIsValid(sealCheck);
}

/// Asks for the bounds of the asset tag and formats the name that they give its attribute. If the cache is valid, an
/// error here stops publication.
EFI_STATUS QueryAssetTagLength() {
  AssetTagLengthProtocol* protocol = nullptr;
  EFI_STATUS status = LocateProtocol(gVaroAssetTagLengthProtocolGuid, protocol);
  UINT64 minimum = 0;
  UINT64 maximum = 10;
  if (EFI_ERROR(status) || protocol == nullptr) {
    DEBUG((DEBUG_WARN,
           "CorvaneDxe: gVaroAssetTagLengthProtocolGuid not found: with a valid cache nothing is published\n"));
  } else {
    status = protocol->GetLength(1, nullptr, &minimum, &maximum);
  }
  // Kept as it is: the name is formatted and not used. No attribute carries the bounds of the asset tag yet.
  std::array<CHAR16, 50> name{};
  TextWriter{name}
      .Put(ViewOf(u"Asset[RegEx:^\\\\133\\\\x20-~\\\\135{"_ucs2))
      .PutDecimal(minimum)
      .Put(ViewOf(u","_ucs2))
      .PutDecimal(maximum)
      .Put(ViewOf(u"}$]"_ucs2));
  return status;
}

EFI_STATUS GatherFormSets(DriverState& state) {
  HiiStrings strings(state.PlatformLangBuffer);
  Dependencies dependencies;
  FormSets formSets(state.Database, strings, dependencies, state.Setup,
                    {.FactoryMode = state.FactoryModeFlag,
                     .PlatformSetting = state.PlatformSettingFlag,
                     .FormFilter = state.FormFilterFlag});
  const EFI_STATUS status = formSets.Walk(state.FormBrowser);
  if (!EFI_ERROR(status) && MayUseCache(state)) {
    IgnoreStatus(dependencies.BuildPidDepList());  // the tables stand without the list
  }
  return status;
}

void GatherPlatformAttributes(DriverState& state) {
  if (state.FactoryModeFlag) {
    BuildFactoryAttributes(state.Database, state.Settings);
  }
  BuildMasterPasswordLockout(state.Database, state.Settings);
  IgnoreStatus(BuildCameras(state.Database));  // a notebook may have none
  BuildAuxoraSupportLevel(state.Database, state.Settings);
}

EFI_STATUS PublishOnce(DriverState& state) {
  void* signal = nullptr;
  const EFI_STATUS status = LocateProtocol(gVaroTablesRequestedProtocolGuid, signal);
  if (EFI_ERROR(status)) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: gVaroTablesRequestedProtocolGuid cannot be looked up: %r: nothing is published\n",
           status));
    return status;
  }
  if (state.Published != nullptr || state.PublishInProgress) {
    return status;
  }
  state.PublishInProgress = true;
  // The cache may have become valid or invalid since the attributes were gathered. It is restored only into an empty
  // database, and only gathered attributes are written to it. The first pass checked the seal of a cache that is
  // restored.
  const bool gathered = state.Origin == AttributeOrigin::Gathered;
  const bool rebuild = CheckCache(state, gathered ? SealCheck::Done : SealCheck::Skipped);
  if (!rebuild && !gathered) {
    RestoreCache(state.Database);
    state.Origin = AttributeOrigin::Cache;
  } else if (!gathered) {
    DEBUG(
        (DEBUG_WARN, "CorvaneDxe: the cache became invalid after the first pass: its attributes are not published\n"));
  }
  BuildPasswords(state.Database, state.Settings, state.OwnerPasswordFlag);
  BootConfigurationState bootConfiguration{};
  PoolPtr<BootOptionBlock> bootOptions;
  if (!EFI_ERROR(ReadBootOptions(bootConfiguration, bootOptions))) {
    BuildBootConfiguration(state.Database, bootConfiguration);
  }
  state.Database.ReleaseIndexes();  // an index exists if no string was restored
  TableWriter writer(state.Descriptors);
  ValueEntries values(state.Settings, state.Origin == AttributeOrigin::Cache);
  IgnoreStatus(TableBuilder(state.Database, writer, values).BuildTables());  // what could be built is published
  state.Directory = BuildTableDirectory(state.Descriptors);
  if (rebuild && gathered && MayUseCache(state)) {
    IgnoreStatus(WriteCache(state.Database));  // without a cache the next boot gathers again
  }
  const EFI_STATUS published = PublishTables(state, bootConfiguration);
  if (state.Published != nullptr) {
    static_cast<void>(bootOptions.release());  // to the published views, which lead into it
  }
  state.PublishInProgress = false;
  return published;
}

}  // namespace

EFI_STATUS BuildBiosAttributesData(DriverState& state) {
  const PerformancePhase phase("BuildBiosAttributesData");
  EFI_STATUS status = QueryAssetTagLength();
  if (!CheckCache(state, SealCheck::Done)) {
    return status;
  }
  state.Origin = AttributeOrigin::Gathered;
  status = GatherFormSets(state);
  if (!EFI_ERROR(status)) {
    GatherPlatformAttributes(state);
  }
  state.Database.ReleaseIndexes();
  return status;
}

EFI_STATUS EFIAPI BuildAndPublishTables(EFI_HANDLE, EFI_SYSTEM_TABLE*) {
  return PublishOnce(mState);
}
