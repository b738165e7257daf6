/** @file
  ValueAccess: current values, asked of the service.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "access/service/AccessState.hpp"

/// Bytes of the value part of an attribute; 0 when the service does not give it.
[[nodiscard]] size_t QueryValueSize(AccessState& access, UINT16 handle, UINT8 type);

/// Copies the value part into `room`; false when the service does not give it or there is more of it than room.
[[nodiscard]] bool FetchValue(AccessState& access, UINT16 handle, UINT8 type, std::span<std::byte> room);
