/** @file
  The firmware version that the cache is kept for.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Status.hpp"

/// The running firmware's version, ASCII; fails when the platform names none.
[[nodiscard]] Result<const CHAR8*> FirmwareVersion();
