/** @file
  The password attributes, at their reserved handles.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/store/AttributeDatabase.hpp"
#include "uefi/Settings.hpp"

/// Places the admin and the system password, and the owner password where the platform has one; where not, its handle
/// is emptied.
void BuildPasswords(AttributeDatabase& database, SettingsProtocol* settings, bool ownerPassword);
