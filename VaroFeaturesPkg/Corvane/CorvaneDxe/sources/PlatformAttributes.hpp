/** @file
  Attributes that stand for numbered platform settings and fixed platform facts, not for setup questions.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/store/AttributeDatabase.hpp"
#include "uefi/Settings.hpp"

extern "C" {
#include <Corvane/OwnAttributes.h>
}

/// Builds what only a factory sees: system identifiers, charging and fan overrides, service switches.
void BuildFactoryAttributes(AttributeDatabase& database, SettingsProtocol* settings);

/// Each builds one attribute of every boot; a setting that cannot be read drops it.
void BuildMasterPasswordLockout(AttributeDatabase& database, SettingsProtocol* settings);
void BuildAuxoraSupportLevel(AttributeDatabase& database, SettingsProtocol* settings);

/// Builds a read-only text that nobody sets. Without memory it is dropped.
void BuildFixedText(AttributeDatabase& database, const OwnAttribute& attribute, const CHAR8* text, UINT16 minLength,
                    UINT16 maxLength);
