/** @file
  ValueEntries: one attribute's entry of a value table (DSP0247).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/store/AttributeRecords.hpp"
#include "database/tables/TableWriter.hpp"
#include "uefi/Settings.hpp"

class ValueEntries {
 public:
  /// `restored` says that the records come from the cache: their current values are then read anew from the platform.
  ValueEntries(SettingsProtocol* settings, bool restored) : settings_(settings), restored_(restored) {}

  /// Appends the entry, or nothing for a password that is not installed. EFI_BUFFER_TOO_SMALL when it does not fit.
  [[nodiscard]] EFI_STATUS AppendValueEntry(TableWriter& writer, UINT32 index, AttributeRecord& record) const;

  /// The bytes that an entry is taken to need. A collection counts without its members.
  [[nodiscard]] static size_t ValueEntrySize(const AttributeRecord& record);

 private:
  void RefreshEnumeration(EnumerationRecord& record) const;
  void RefreshInteger(IntegerRecord& record) const;

  SettingsProtocol* settings_;
  bool restored_;
};
