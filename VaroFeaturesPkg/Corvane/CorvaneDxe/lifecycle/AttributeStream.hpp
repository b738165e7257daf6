/** @file
  The attribute stream: every record of the store, serialized for management software.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/store/AttributeDatabase.hpp"

/// Bytes that the stream is announced with.
[[nodiscard]] UINT32 AttributeStreamSize(const AttributeDatabase& database);

/// Lays the stream out in `room`, which is zero-filled and as long as announced; a record that would overrun it ends
/// the stream.
void EncodeAttributes(const AttributeDatabase& database, std::span<std::byte> room);
