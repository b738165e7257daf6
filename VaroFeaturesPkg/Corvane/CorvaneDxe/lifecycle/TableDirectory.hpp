/** @file
  Building of the TableDirectory.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Pool.hpp"

extern "C" {
#include <Corvane/TableDescriptor.h>
#include <Corvane/TableDirectory.h>
}

/// The tables that are listed and sent, by descriptor, in this order.
inline constexpr std::array<UINT32, 5> kPublishedTables = {TABLE_STRINGS, TABLE_ATTRIBUTES, TABLE_VALUES, TABLE_DISPLAY,
                                                           TABLE_HELP};

/// The directory of the published tables in a block that the caller keeps, or null without memory.
[[nodiscard]] TableDirectory* BuildTableDirectory(const TableDescriptor* descriptors);
