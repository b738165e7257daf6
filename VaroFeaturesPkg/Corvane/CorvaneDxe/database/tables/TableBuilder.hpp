/** @file
  TableBuilder: the string, attribute, value, display and help tables built from the database (DSP0247).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "database/store/AttributeDatabase.hpp"
#include "database/tables/TableWriter.hpp"
#include "database/tables/ValueEntries.hpp"

class TableBuilder {
 public:
  TableBuilder(AttributeDatabase& database, TableWriter& writer, ValueEntries& values)
      : database_(database), writer_(writer), values_(values) {}

  /// Builds and finishes all tables. A table that is full is cut before the first entry that does not fit.
  EFI_STATUS BuildTables();

 private:
  EFI_STATUS BuildStringTable();
  EFI_STATUS BuildAttributeTable();
  EFI_STATUS BuildValueTable();
  EFI_STATUS BuildDisplayTable();
  EFI_STATUS BuildHelpTable();

  [[nodiscard]] static EFI_STATUS AppendAttributeEntry(TableDescriptor& table, const AttributeRecord& record);
  [[nodiscard]] EFI_STATUS StartTextTable(UINT32 index);
  /// One entry for every live handle, with or without a text; of names in eight bits a character, else in sixteen.
  void AppendTexts(UINT32 index, StringArray array);

  AttributeDatabase& database_;
  TableWriter& writer_;
  ValueEntries& values_;
};
