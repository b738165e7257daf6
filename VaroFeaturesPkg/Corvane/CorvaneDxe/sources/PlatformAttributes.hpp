/** @file
  Attributes that stand for numbered platform settings and fixed platform facts, not for setup questions.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/AttributeDatabase.hpp"
#include "uefi/Settings.hpp"

/// Builds what only a factory sees: system identifiers, charging and fan overrides, service switches.
void BuildFactoryAttributes(AttributeDatabase& database, SettingsProtocol* settings);

/// Each builds one attribute of every boot; a setting that cannot be read drops it.
void BuildMasterPasswordLockout(AttributeDatabase& database, SettingsProtocol* settings);
void BuildAuxoraSupportLevel(AttributeDatabase& database, SettingsProtocol* settings);
