/** @file
  Attributes that stand for numbered platform settings and fixed platform facts.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "sources/PlatformAttributes.hpp"

#include "sources/Interning.hpp"

namespace {

struct PlatformValue {
  const CHAR16* Name;
  const CHAR16* DisplayName;
  UINT64 Value;
};

constexpr std::array kDisabledEnabled = {PlatformValue{u"Disabled"_ucs2, u"Disabled"_ucs2, 0},
                                         PlatformValue{u"Enabled"_ucs2, u"Enabled"_ucs2, 1}};
constexpr std::array kServiceReset = {
    PlatformValue{u"Disabled"_ucs2, u"Disabled"_ucs2, 0},
    PlatformValue{u"ProjectVariablesPreserve"_ucs2, u"Project Variables Preserve"_ucs2, 2}};

struct PlatformEnumeration {
  const CHAR16* Name;
  const CHAR16* DisplayName;
  UINT32 Token;
  std::span<const PlatformValue, 2> Values = kDisabledEnabled;
  UINT8 DefaultIndex = 0;
  bool ReadOnly = false;
  bool ToleratesNotFound = false;  // a platform without the setting has the attribute all the same, with value 0
  const CHAR16* Help = nullptr;
};

struct PlatformInteger {
  const CHAR16* Name;
  const CHAR16* DisplayName;
  UINT32 Token;
  UINT64 UpperBound;
  UINT64 DefaultValue;
  bool ReadOnly = false;
};

/// The low 16 bits of a setting are its value.
constexpr UINT64 kValueMask = 0xFFFF;

void WarnDropped([[maybe_unused]] const CHAR16* name, [[maybe_unused]] EFI_STATUS status) {
  DEBUG((DEBUG_WARN, "CorvaneDxe: attribute \"%s\" dropped: %r\n", name, status));
}

void BuildEnumeration(AttributeDatabase& database, SettingsProtocol* settings, const PlatformEnumeration& attribute) {
  const Result<UINT64> setting = ReadSetting(settings, attribute.Token);
  if (!setting.Ok() && !(attribute.ToleratesNotFound && setting.Status() == EFI_NOT_FOUND)) {
    return WarnDropped(attribute.Name, setting.Status());
  }
  OwnedRecord<EnumerationRecord> record = MakeRecord<EnumerationRecord>(attribute.ReadOnly);
  const size_t count = attribute.Values.size();
  PoolPtr<UINT16[]> names = AllocateZeroedArray<UINT16>(count);
  PoolPtr<UINT64[]> values = AllocateZeroedArray<UINT64>(count);
  if (!record || !names || !values) {
    return WarnDropped(attribute.Name, EFI_OUT_OF_RESOURCES);
  }
  record->Head.NameHandle = Raw(InternName(database, attribute.Name));
  const StringHandle display = InternDisplayString(database, attribute.DisplayName).Handle;
  if (attribute.Help != nullptr) {
    SetHelpString(database, attribute.Help, display);
  }
  record->Head.ValueSize = 1;
  record->Head.Token = attribute.Token;
  const UINT64 current = setting.Value() & kValueMask;  // 0 when the setting was not found
  for (size_t i = count; i > 0; --i) {
    values[i - 1] = attribute.Values[i - 1].Value;
    if (values[i - 1] == current) {
      record->CurrentIndex = static_cast<UINT8>(i - 1);  // backwards, so that the first match stays
    }
  }
  for (size_t i = 0; i < count; ++i) {
    names[i] = Raw(InternName(database, attribute.Values[i].Name));
    InternDisplayString(database, attribute.Values[i].DisplayName);
  }
  record->PossibleValueCount = static_cast<UINT8>(count);
  record->PossibleValueNames = names.release();
  record->PossibleValues = values.release();
  record->DefaultIndex = attribute.DefaultIndex;
  database.AddAttribute(AsAttribute(std::move(record)));
}

void BuildInteger(AttributeDatabase& database, SettingsProtocol* settings, const PlatformInteger& attribute) {
  const Result<UINT64> setting = ReadSetting(settings, attribute.Token);
  if (!setting.Ok()) {
    return WarnDropped(attribute.Name, setting.Status());
  }
  OwnedRecord<IntegerRecord> record = MakeRecord<IntegerRecord>(attribute.ReadOnly);
  if (!record) {
    return WarnDropped(attribute.Name, EFI_OUT_OF_RESOURCES);
  }
  record->Head.NameHandle = Raw(InternName(database, attribute.Name));
  InternDisplayString(database, attribute.DisplayName);
  record->Head.ValueSize = 2;
  record->Head.Token = attribute.Token;
  record->UpperBound = attribute.UpperBound;
  record->ScalarIncrement = 1;
  record->DefaultValue = attribute.DefaultValue;
  record->CurrentValue = setting.Value() & kValueMask;
  database.AddAttribute(AsAttribute(std::move(record)));
}

/// A read-only text that no setting stands behind.
void BuildFixedText(AttributeDatabase& database, const CHAR16* name, const CHAR16* displayName, const CHAR8* text) {
  OwnedRecord<StringRecord> record = MakeRecord<StringRecord>(true);
  PoolPtr<CHAR8[]> copy = CopyAscii(text);
  if (!record || !copy) {
    return WarnDropped(name, EFI_OUT_OF_RESOURCES);
  }
  record->Head.NameHandle = Raw(InternName(database, name));
  InternDisplayString(database, displayName);
  record->StringType = PLDM_BIOS_STRING_TYPE_ASCII;
  record->MinLength = 1;
  record->MaxLength = 255;
  record->CurrentString = copy.release();
  database.AddAttribute(AsAttribute(std::move(record)));
}

void BuildGenerationAndVendor(AttributeDatabase& database) {
  constexpr CHAR8 kGeneration[] = "23Q1";  // year and quarter
  BuildFixedText(database, u"Generation"_ucs2, u"System Generation"_ucs2, kGeneration);
  BuildFixedText(database, u"IBV"_ucs2, u"Independent BIOS Vendor"_ucs2, "VARO");
}

}  // namespace

void BuildFactoryAttributes(AttributeDatabase& database, SettingsProtocol* settings) {
  BuildInteger(database, settings,
               {.Name = u"CommonSystemId"_ucs2,
                .DisplayName = u"Common System Identifier"_ucs2,
                .Token = 3633,
                .UpperBound = 0xFFFF,
                .DefaultValue = 0});
  BuildEnumeration(database, settings,
                   {.Name = u"OverrideBatteryChargeFactory"_ucs2,
                    .DisplayName = u"Override Battery Charging Limit in Factory"_ucs2,
                    .Token = 1751,
                    .DefaultIndex = 1});
  BuildEnumeration(database, settings,
                   {.Name = u"ServiceResetConfig"_ucs2,
                    .DisplayName = u"Service reset configuration"_ucs2,
                    .Token = 3728,
                    .Values = kServiceReset,
                    .ToleratesNotFound = true});
  BuildGenerationAndVendor(database);
  BuildInteger(database, settings,
               {.Name = u"MfgModePxeAttribute"_ucs2,
                .DisplayName = u"Manufacturing Mode PXE Attribute"_ucs2,
                .Token = 1756,
                .UpperBound = 6,
                .DefaultValue = 4});
  BuildEnumeration(database, settings, {.Name = u"FrontFan"_ucs2, .DisplayName = u"Front Fan"_ucs2, .Token = 1879});
  BuildInteger(database, settings,
               {.Name = u"WlanCountryCode"_ucs2,
                .DisplayName = u"WLAN Country Code"_ucs2,
                .Token = 9902,
                .UpperBound = 0xFFFF,
                .DefaultValue = 0x4150});
  BuildEnumeration(database, settings,
                   {.Name = u"AdvancedDebugMenu"_ucs2,
                    .DisplayName = u"Advanced Debug Menu"_ucs2,
                    .Token = 1881,
                    .ToleratesNotFound = true});
  BuildEnumeration(
      database, settings,
      {.Name = u"HEVC"_ucs2, .DisplayName = u"High Efficiency Video Coding"_ucs2, .Token = 1469, .ReadOnly = true});
  BuildEnumeration(database, settings,
                   {.Name = u"ChargePowerLimitFactoryFlag"_ucs2,
                    .DisplayName = u"Charge Power Limit Factory Flag"_ucs2,
                    .Token = 12054,
                    .ToleratesNotFound = true,
                    .Help = u"A flag to configure charging performance limitation for EU products."_ucs2});
}

void BuildMasterPasswordLockout(AttributeDatabase& database, SettingsProtocol* settings) {
  BuildEnumeration(
      database, settings,
      {.Name = u"MasterPasswordLockout"_ucs2, .DisplayName = u"Master Password Lockout"_ucs2, .Token = 1843});
}

void BuildAuxoraSupportLevel(AttributeDatabase& database, SettingsProtocol* settings) {
  BuildInteger(database, settings,
               {.Name = u"AuxoraSupportLevel"_ucs2,
                .DisplayName = u"Auxora Support Level"_ucs2,
                .Token = 1340,
                .UpperBound = 0xFFFF,
                .DefaultValue = 0,
                .ReadOnly = true});
}
