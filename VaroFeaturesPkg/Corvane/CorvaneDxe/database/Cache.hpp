/** @file
  The attribute cache: the database kept in NV variables from one boot to the next of the same firmware version
  (Corvane/AttributeCache.h).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/AttributeDatabase.hpp"

/// True when the cache stands for the running firmware version and nobody has marked it bad.
[[nodiscard]] bool CacheIsValid();

/// Fills an empty database from the cache. What is missing or malformed ends there, and the boot goes on with the rest;
/// where that is recorded, the cache is deleted so that the next boot gathers anew.
void RestoreCache(AttributeDatabase& database);

/// Writes the database to the cache, the firmware version last as the mark that all the rest is there. A failure
/// deletes the cache.
EFI_STATUS WriteCache(const AttributeDatabase& database);

/// Deletes the cache; the status of the last deletion.
EFI_STATUS DeleteCache();
