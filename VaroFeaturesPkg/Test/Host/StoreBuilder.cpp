/** @file
  Builds records and strings straight into an AttributeDatabase.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/StoreBuilder.hpp"

namespace {

template <typename T>
T* CopyOf(const std::vector<T>& elements) {
  T* const copy = AllocateZeroedArray<T>(elements.size()).release();
  std::copy(elements.begin(), elements.end(), copy);
  return copy;
}

PoolPtr<CHAR16[]> CopyOf(std::u16string_view text) {
  PoolPtr<CHAR16[]> copy = AllocateZeroedArray<CHAR16>(text.size() + 1);
  std::copy(text.begin(), text.end(), copy.get());
  return copy;
}

template <typename T>
T* Make() {
  return MakeRecord<T>().release();
}

AttributeRecord* MakeBody(const RecordSpec& spec) {
  const auto count = static_cast<UINT8>(spec.Handles.size());
  switch (PLDM_BIOS_ATTRIBUTE_BASE_TYPE(spec.Type)) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION: {
      auto* const record = Make<EnumerationRecord>();
      record->PossibleValueCount = count;
      record->PossibleValueNames = CopyOf(spec.Handles);
      record->PossibleValues = CopyOf(spec.Values);
      record->DefaultIndex = static_cast<UINT8>(spec.Default);
      record->CurrentIndex = static_cast<UINT8>(spec.Current);
      return &record->Head;
    }
    case PLDM_BIOS_ATTRIBUTE_STRING: {
      auto* const record = Make<StringRecord>();
      record->StringType = spec.SubType;
      record->MinLength = spec.MinLength;
      record->MaxLength = spec.MaxLength;
      record->DefaultLength = spec.DefaultLength;
      if (spec.Text) {
        record->CurrentString =
            CopyOf(std::vector<CHAR8>(spec.Text->c_str(), spec.Text->c_str() + spec.Text->size() + 1));
      }
      return &record->Head;
    }
    case PLDM_BIOS_ATTRIBUTE_PASSWORD: {
      auto* const record = Make<PasswordRecord>();
      record->PasswordType = spec.SubType;
      record->MinLength = spec.MinLength;
      record->MaxLength = spec.MaxLength;
      record->DefaultLength = spec.DefaultLength;
      record->PasswordInstalled = spec.Installed;
      return &record->Head;
    }
    case PLDM_BIOS_ATTRIBUTE_INTEGER: {
      auto* const record = Make<IntegerRecord>();
      record->LowerBound = spec.Lower;
      record->UpperBound = spec.Upper;
      record->ScalarIncrement = spec.Step;
      record->DefaultValue = spec.Default;
      record->CurrentValue = spec.Current;
      return &record->Head;
    }
    case PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING: {
      auto* const record = Make<BootConfigurationRecord>();
      record->BootConfigType = record->CurrentBootConfigType = spec.SubType;
      record->SupportedModes = record->CurrentMode = spec.Modes;
      record->MinSourceCount = 1;
      record->MaxSourceCount = record->PossibleSourceCount = count;
      record->PossibleSourceNames = CopyOf(spec.Handles);
      record->CurrentSourceCount = static_cast<UINT8>(spec.Order.size());
      std::copy(spec.Order.begin(), spec.Order.end(), record->CurrentSourceOrder);
      return &record->Head;
    }
    case PLDM_BIOS_ATTRIBUTE_COLLECTION: {
      auto* const record = Make<CollectionRecord>();
      const UINT8 info[] = {static_cast<UINT8>(spec.Name), static_cast<UINT8>(spec.Name >> 8), 255, 0};
      std::copy_n(info, sizeof(info), record->CollectionInfo);
      record->ItemCount = count;
      record->Items = CopyOf(spec.Handles);
      return &record->Head;
    }
    case PLDM_BIOS_ATTRIBUTE_CONFIG_SET: {
      auto* const record = Make<ConfigurationSetRecord>();
      record->ConfigCount = count;
      record->ConfigNames = CopyOf(spec.Handles);
      record->CurrentConfig = static_cast<UINT8>(spec.Current);
      return &record->Head;
    }
    default:
      return AllocateZeroed<AttributeRecord>().release();
  }
}

}  // namespace

AttributeRecord* Put(AttributeDatabase& database, const RecordSpec& spec) {
  AttributeRecord* const record = MakeBody(spec);
  record->Type = spec.Type;
  record->NameHandle = spec.Name;
  record->ValueSize = spec.ValueSize;
  record->Token = spec.Token;
  if (spec.Handle != 0 && spec.Handle < kFirstHandle) {
    database.PlaceAttribute(OwnedRecord<AttributeRecord>{record}, AttributeHandle{spec.Handle});
  } else {
    database.AddAttribute(OwnedRecord<AttributeRecord>{record});
  }
  return record;
}

StringHandle PutText(AttributeDatabase& database, StringArray array, std::u16string_view text) {
  return database.AddString(array, CopyOf(text));
}

void PutHelp(AttributeDatabase& database, UINT16 displayHandle, std::u16string_view text) {
  database.PlaceHelp(CopyOf(text), StringHandle{displayHandle});
}

std::string TextOf(const AttributeDatabase& database, StringArray array, UINT16 handle) {
  const CHAR16* const text = database.StoredText(array, StringHandle{handle});
  return text == nullptr ? std::string("(none)") : std::string(text, text + StringLength(text));
}
