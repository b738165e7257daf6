/** @file
  Attributes that stand for numbered platform settings and fixed platform facts.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "sources/PlatformAttributes.hpp"

#include "sources/Interning.hpp"

namespace {

struct PlatformValue {
  const CHAR8* Name;
  const CHAR8* DisplayName;
  UINT64 Value;
};

constexpr std::array kDisabledEnabled = {PlatformValue{"Disabled", "Disabled", 0},
                                         PlatformValue{"Enabled", "Enabled", 1}};
constexpr std::array kServiceReset = {PlatformValue{"Disabled", "Disabled", 0},
                                      PlatformValue{"ProjectVariablesPreserve", "Project Variables Preserve", 2}};

struct PlatformEnumeration {
  OwnAttribute Own;
  std::span<const PlatformValue, 2> Values = kDisabledEnabled;
  UINT8 DefaultIndex = 0;
  bool ReadOnly = false;
  bool ToleratesNotFound = false;  // a platform without the setting has the attribute all the same, with value 0
  const CHAR16* Help = nullptr;
};

struct PlatformInteger {
  OwnAttribute Own;
  UINT64 UpperBound;
  UINT64 DefaultValue;
  bool ReadOnly = false;
};

/// The low 16 bits of a setting are its value.
constexpr UINT64 kValueMask = 0xFFFF;

void WarnDropped([[maybe_unused]] const CHAR8* name, [[maybe_unused]] EFI_STATUS status) {
  DEBUG((DEBUG_WARN, "CorvaneDxe: attribute \"%a\" dropped: %r\n", name, status));
}

void BuildEnumeration(AttributeDatabase& database, SettingsProtocol* settings, const PlatformEnumeration& attribute) {
  const Result<UINT64> setting = ReadSetting(settings, attribute.Own.Token);
  if (!setting.Ok() && !(attribute.ToleratesNotFound && setting.Status() == EFI_NOT_FOUND)) {
    return WarnDropped(attribute.Own.Name, setting.Status());
  }
  constexpr UINT8 kCount = decltype(attribute.Values)::extent;
  OwnedRecord<EnumerationRecord> record = MakeEnumeration(kCount, attribute.ReadOnly);
  if (!record) {
    return WarnDropped(attribute.Own.Name, EFI_OUT_OF_RESOURCES);
  }
  const InternedPair texts = InternOwnTexts(database, attribute.Own.Name, attribute.Own.DisplayText);
  record->Head.NameHandle = Raw(texts.Name);
  if (attribute.Help != nullptr) {
    SetHelpString(database, attribute.Help, texts.Display);
  }
  record->Head.ValueSize = 1;
  record->Head.Token = attribute.Own.Token;
  const UINT64 current = setting.Value() & kValueMask;  // 0 when the setting was not found
  for (UINT8 i = 0; i < kCount; ++i) {
    const PlatformValue& value = attribute.Values[i];
    record->PossibleValueNames[i] = Raw(InternOwnTexts(database, value.Name, value.DisplayName).Name);
    record->PossibleValues[i] = value.Value;
    if (value.Value == current) {
      record->CurrentIndex = i;  // no two values are equal
    }
  }
  record->DefaultIndex = attribute.DefaultIndex;
  database.AddAttribute(AsAttribute(std::move(record)));
}

void BuildInteger(AttributeDatabase& database, SettingsProtocol* settings, const PlatformInteger& attribute) {
  const Result<UINT64> setting = ReadSetting(settings, attribute.Own.Token);
  if (!setting.Ok()) {
    return WarnDropped(attribute.Own.Name, setting.Status());
  }
  OwnedRecord<IntegerRecord> record = MakeRecord<IntegerRecord>(attribute.ReadOnly);
  if (!record) {
    return WarnDropped(attribute.Own.Name, EFI_OUT_OF_RESOURCES);
  }
  record->Head.NameHandle = Raw(InternOwnTexts(database, attribute.Own.Name, attribute.Own.DisplayText).Name);
  record->Head.ValueSize = 2;
  record->Head.Token = attribute.Own.Token;
  record->UpperBound = attribute.UpperBound;
  record->ScalarIncrement = 1;
  record->DefaultValue = attribute.DefaultValue;
  record->CurrentValue = setting.Value() & kValueMask;
  database.AddAttribute(AsAttribute(std::move(record)));
}

void BuildGenerationAndVendor(AttributeDatabase& database) {
  constexpr CHAR8 kGeneration[] = "23Q1";  // year and quarter
  BuildFixedText(database, OWN_GENERATION, kGeneration, 1, 255);
  BuildFixedText(database, OWN_VENDOR, "VARO", 1, 255);
}

}  // namespace

void BuildFixedText(AttributeDatabase& database, const OwnAttribute& attribute, const CHAR8* text, UINT16 minLength,
                    UINT16 maxLength) {
  OwnedRecord<StringRecord> record = MakeRecord<StringRecord>(true);
  PoolPtr<CHAR8[]> copy = CopyAscii(text);
  if (!record || !copy) {
    return WarnDropped(attribute.Name, EFI_OUT_OF_RESOURCES);
  }
  record->Head.NameHandle = Raw(InternOwnTexts(database, attribute.Name, attribute.DisplayText).Name);
  record->Head.Token = attribute.Token;
  record->StringType = PLDM_BIOS_STRING_TYPE_ASCII;
  record->MinLength = minLength;
  record->MaxLength = maxLength;
  record->CurrentString = copy.release();
  database.AddAttribute(AsAttribute(std::move(record)));
}

void BuildFactoryAttributes(AttributeDatabase& database, SettingsProtocol* settings) {
  BuildInteger(database, settings, {.Own = OWN_COMMON_SYSTEM_ID, .UpperBound = 0xFFFF, .DefaultValue = 0});
  BuildEnumeration(database, settings, {.Own = OWN_OVERRIDE_BATTERY_CHARGE, .DefaultIndex = 1});
  BuildEnumeration(database, settings, {.Own = OWN_SERVICE_RESET, .Values = kServiceReset, .ToleratesNotFound = true});
  BuildGenerationAndVendor(database);
  BuildInteger(database, settings, {.Own = OWN_MANUFACTURING_PXE, .UpperBound = 6, .DefaultValue = 4});
  BuildEnumeration(database, settings, {.Own = OWN_FRONT_FAN});
  BuildInteger(database, settings, {.Own = OWN_WLAN_COUNTRY, .UpperBound = 0xFFFF, .DefaultValue = 0x4150});
  BuildEnumeration(database, settings, {.Own = OWN_ADVANCED_DEBUG_MENU, .ToleratesNotFound = true});
  BuildEnumeration(database, settings, {.Own = OWN_HEVC, .ReadOnly = true});
  BuildEnumeration(
      database, settings,
      {.Own = OWN_CHARGE_POWER_LIMIT, .ToleratesNotFound = true, .Help = u"" OWN_CHARGE_POWER_LIMIT_HELP u""_ucs2});
}

void BuildMasterPasswordLockout(AttributeDatabase& database, SettingsProtocol* settings) {
  BuildEnumeration(database, settings, {.Own = OWN_MASTER_PASSWORD_LOCKOUT});
}

void BuildAuxoraSupportLevel(AttributeDatabase& database, SettingsProtocol* settings) {
  BuildInteger(database, settings,
               {.Own = OWN_SUPPORT_LEVEL, .UpperBound = 0xFFFF, .DefaultValue = 0, .ReadOnly = true});
}
