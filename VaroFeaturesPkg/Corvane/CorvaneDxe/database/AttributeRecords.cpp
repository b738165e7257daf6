/** @file
  AttributeRecord: freeing a record with what it owns.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "database/AttributeRecords.hpp"

namespace {

void FreeIfAny(void* block) {
  if (block != nullptr) {
    gBS->FreePool(block);
  }
}

}  // namespace

void FreeRecord(AttributeRecord* record) {
  if (record == nullptr) {
    return;
  }
  switch (BaseType(*record)) {
    case AttributeType::Enumeration:
      FreeIfAny(As<EnumerationRecord>(*record).PossibleValueNames);
      FreeIfAny(As<EnumerationRecord>(*record).PossibleValues);
      break;
    case AttributeType::String:
      FreeIfAny(As<StringRecord>(*record).CurrentString);
      break;
    case AttributeType::BootConfiguration:
      FreeIfAny(As<BootConfigurationRecord>(*record).PossibleSourceNames);
      break;
    case AttributeType::Collection:
      FreeIfAny(As<CollectionRecord>(*record).Items);
      break;
    case AttributeType::ConfigurationSet:
      FreeIfAny(As<ConfigurationSetRecord>(*record).ConfigNames);
      break;
    case AttributeType::Password:
    case AttributeType::Integer:
      break;
  }
  gBS->FreePool(record);
}
