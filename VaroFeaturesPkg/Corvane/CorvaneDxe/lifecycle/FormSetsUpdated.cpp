/** @file
  What the driver does once every form set of the setup is published.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "lifecycle/FormSetsUpdated.hpp"

#include "lifecycle/BuildPass.hpp"
#include "lifecycle/DriverState.hpp"
#include "lifecycle/PerformancePhase.hpp"
#include "uefi/Protocols.hpp"
#include "uefi/Settings.hpp"
#include "uefi/Variables.hpp"

extern "C" {
#include <Guid/GlobalVariable.h>
#include <Protocol/ModeQuery.h>
#include <Protocol/TablesRequested.h>
}

namespace {

// The cache and the dependency list are used only if this setting can be read. Its value does not matter.
constexpr UINT32 kCachePermissionSetting = 0x2618;

bool QueryFactoryMode() {
  const auto* const modes = FindProtocol<ModeQueryProtocol>(gVaroModeQueryProtocolGuid);
  if (modes == nullptr) {
    DEBUG(
        (DEBUG_WARN, "CorvaneDxe: gVaroModeQueryProtocolGuid not found: the platform counts as in no factory mode\n"));
    return false;
  }
  UINT32 result = 0;
  if (EFI_ERROR(modes->QueryAny(&result, UINT32{1}, UINT32{2}, UINT32{3}, UINT32{4}, UINT32{5}, UINT32{6}, UINT32{7},
                                UINT32{8}, UINT32{9}, UINT32{10}, UINT32{11}, UINT32{12}, UINT32{13}, UINT32{14},
                                UINT32{MODE_QUERY_END}, UINT32{0}))) {
    return false;
  }
  return result != 0;
}

/// Returns the platform's language, terminated, or null if it could not be read.
CHAR8* ReadPlatformLang() {
  Result<VariableContent> language = ReadVariable(u"PlatformLang"_ucs2, gEfiGlobalVariableGuid);
  auto* const text = reinterpret_cast<CHAR8*>(language.Value().Data.release());  // to the driver's state
  if (text != nullptr && *text == 0) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: \"PlatformLang\" is empty: the texts of all setup questions are empty\n"));
  }
  return text;
}

EFI_STATUS GatherAttributes(DriverState& state, EFI_HANDLE imageHandle, EFI_SYSTEM_TABLE* systemTable) {
  const PerformancePhase phase("CallbackOnAllFormSetsUpdated");
  state.FactoryModeFlag = QueryFactoryMode();
  state.FormFilterFlag = true;
  state.PlatformSettingFlag = ReadSetting(state.Settings, kCachePermissionSetting).Ok();
  EFI_STATUS status = LocateProtocol(gEfiHiiDatabaseProtocolGuid, state.HiiDatabase);
  if (EFI_ERROR(status)) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: gEfiHiiDatabaseProtocolGuid not found: no attribute is gathered or published\n"));
    return status;
  }
  state.PlatformLangBuffer = ReadPlatformLang();
  status = state.Database.AllocateStore();
  if (!EFI_ERROR(status)) {
    status = BuildBiosAttributesData(state);
  }
  if (EFI_ERROR(status)) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: attributes not gathered: %r: nothing is published\n", status));
    return status;
  }
  constexpr std::array<const EFI_GUID*, 1> kAwaited = {&gVaroTablesRequestedProtocolGuid};
  state.TablesWait =
      RegisterOnPrereq(state.Prerequisites, nullptr, BuildAndPublishTables, imageHandle, systemTable, kAwaited);
  if (state.TablesWait == nullptr) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: cannot wait for the tables to be wanted: nothing is published\n"));
  }
  return status;
}

}  // namespace

EFI_STATUS EFIAPI CallbackOnAllFormSetsUpdated(EFI_HANDLE imageHandle, EFI_SYSTEM_TABLE* systemTable) {
  return GatherAttributes(mState, imageHandle, systemTable);
}
