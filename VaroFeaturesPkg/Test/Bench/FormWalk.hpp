/** @file
  A setup for the form walk: form sets with the attributes of a store, and the services that the walk asks for them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "Bench/BenchUefi.hpp"
#include "database/store/AttributeDatabase.hpp"

/// Walks form sets that have the enumerations of `model` as questions, into an empty database, and counts the
/// instructions as `what`. The services' own instructions do not count. Returns the number of attributes made.
size_t MeasureFormWalk(const AttributeDatabase& model, AttributeDatabase& database, const std::string& what);
