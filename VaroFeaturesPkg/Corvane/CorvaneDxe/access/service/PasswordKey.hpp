/** @file
  PasswordKey: the key that the service gives for a password.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "access/service/AccessState.hpp"

/// The key that lets a set request pass, or 0 when the service gives none.
[[nodiscard]] UINT32 ObtainPasswordKey(AccessState& access, const CHAR8* password);
