/** @file
  The attribute cache: the database in NV variables, valid for one firmware version (Corvane/AttributeCache.h).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/store/AttributeDatabase.hpp"

/// Whether CacheIsValid reads the whole cache to compare it with its seal.
enum class SealCheck : UINT8 { Skipped, Done };

/// Returns true if the cache is of the running firmware version and is not marked as bad. With SealCheck::Done, a
/// sealed cache must also match its seal.
[[nodiscard]] bool CacheIsValid(SealCheck sealCheck);

/// Fills an empty database from the cache. A missing or malformed part is left out, and the boot goes on with the rest.
/// Damage is deleted, so that one of the next two boots gathers again.
void RestoreCache(AttributeDatabase& database);

/// Writes the database to the cache. The firmware version is written last and marks the cache as complete. A failure
/// deletes the cache.
EFI_STATUS WriteCache(const AttributeDatabase& database);

/// Deletes the cache. Returns the status of the last deletion.
EFI_STATUS DeleteCache();
