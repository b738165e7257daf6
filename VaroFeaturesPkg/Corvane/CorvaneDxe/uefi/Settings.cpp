/** @file
  Reads of the platform's numbered settings.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "uefi/Settings.hpp"

Result<UINT64> ReadSetting(SettingsProtocol* settings, UINT32 token, UINT64 size) {
  if (settings == nullptr || size > kSettingCapacity) {
    return Failure{EFI_UNSUPPORTED};
  }
  UINT64 value = 0;
  static_assert(sizeof(value) == kSettingCapacity);
  const EFI_STATUS status = settings->Read(settings, token, &gVaroSettingsNamespaceGuid, &size, &value);
  if (EFI_ERROR(status)) {
    return Failure{status};
  }
  return value;
}
