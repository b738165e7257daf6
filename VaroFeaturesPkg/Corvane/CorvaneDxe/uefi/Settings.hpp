/** @file
  Reads of the platform's numbered settings.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Status.hpp"

extern "C" {
#include <Protocol/Settings.h>
}

/// Bytes of the buffer that every setting is read into.
constexpr UINT64 kSettingCapacity = 8;

/// Reads setting `token`, announcing `size` bytes. The value is the whole zero-filled buffer, little-endian. Without
/// the protocol, or with a size above the buffer's, the read fails.
[[nodiscard]] Result<UINT64> ReadSetting(SettingsProtocol* settings, UINT32 token, UINT64 size = kSettingCapacity);
