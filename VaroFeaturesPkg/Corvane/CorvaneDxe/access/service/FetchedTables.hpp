/** @file
  FetchedTables: the service's tables, fetched when one is first wanted.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "access/service/AccessState.hpp"
#include "uefi/Status.hpp"

/// Finds the service and fetches its tables. EFI_NOT_READY when it does not answer, or the status of locating
/// RequestDispatchProtocol.
[[nodiscard]] EFI_STATUS EnsureReady(AccessState& access);

/// EnsureReady, unless the table is there. Success does not mean that it is: the service may list none.
[[nodiscard]] EFI_STATUS EnsureTable(AccessState& access, ServiceTable table);

/// Frees tables and calling interface.
void ReleaseFetchedTables(AccessState& access);
