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
  const CHAR8* Name;
  const CHAR8* DisplayName;
  UINT32 Token;
  std::span<const PlatformValue, 2> Values = kDisabledEnabled;
  UINT8 DefaultIndex = 0;
  bool ReadOnly = false;
  bool ToleratesNotFound = false;  // a platform without the setting has the attribute all the same, with value 0
  const CHAR16* Help = nullptr;
};

struct PlatformInteger {
  const CHAR8* Name;
  const CHAR8* DisplayName;
  UINT32 Token;
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
  const InternedPair texts = InternOwnTexts(database, attribute.Name, attribute.DisplayName);
  record->Head.NameHandle = Raw(texts.Name);
  if (attribute.Help != nullptr) {
    SetHelpString(database, attribute.Help, texts.Display);
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
    names[i] = Raw(InternOwnTexts(database, attribute.Values[i].Name, attribute.Values[i].DisplayName).Name);
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
  record->Head.NameHandle = Raw(InternOwnTexts(database, attribute.Name, attribute.DisplayName).Name);
  record->Head.ValueSize = 2;
  record->Head.Token = attribute.Token;
  record->UpperBound = attribute.UpperBound;
  record->ScalarIncrement = 1;
  record->DefaultValue = attribute.DefaultValue;
  record->CurrentValue = setting.Value() & kValueMask;
  database.AddAttribute(AsAttribute(std::move(record)));
}

/// A read-only text that no setting stands behind.
void BuildFixedText(AttributeDatabase& database, const CHAR8* name, const CHAR8* displayName, const CHAR8* text) {
  OwnedRecord<StringRecord> record = MakeRecord<StringRecord>(true);
  PoolPtr<CHAR8[]> copy = CopyAscii(text);
  if (!record || !copy) {
    return WarnDropped(name, EFI_OUT_OF_RESOURCES);
  }
  record->Head.NameHandle = Raw(InternOwnTexts(database, name, displayName).Name);
  record->StringType = PLDM_BIOS_STRING_TYPE_ASCII;
  record->MinLength = 1;
  record->MaxLength = 255;
  record->CurrentString = copy.release();
  database.AddAttribute(AsAttribute(std::move(record)));
}

void BuildGenerationAndVendor(AttributeDatabase& database) {
  constexpr CHAR8 kGeneration[] = "23Q1";  // year and quarter
  BuildFixedText(database, "Generation", "System Generation", kGeneration);
  BuildFixedText(database, "IBV", "Independent BIOS Vendor", "VARO");
}

}  // namespace

void BuildFactoryAttributes(AttributeDatabase& database, SettingsProtocol* settings) {
  BuildInteger(database, settings,
               {.Name = "CommonSystemId",
                .DisplayName = "Common System Identifier",
                .Token = 3633,
                .UpperBound = 0xFFFF,
                .DefaultValue = 0});
  BuildEnumeration(database, settings,
                   {.Name = "OverrideBatteryChargeFactory",
                    .DisplayName = "Override Battery Charging Limit in Factory",
                    .Token = 1751,
                    .DefaultIndex = 1});
  BuildEnumeration(database, settings,
                   {.Name = "ServiceResetConfig",
                    .DisplayName = "Service reset configuration",
                    .Token = 3728,
                    .Values = kServiceReset,
                    .ToleratesNotFound = true});
  BuildGenerationAndVendor(database);
  BuildInteger(database, settings,
               {.Name = "MfgModePxeAttribute",
                .DisplayName = "Manufacturing Mode PXE Attribute",
                .Token = 1756,
                .UpperBound = 6,
                .DefaultValue = 4});
  BuildEnumeration(database, settings, {.Name = "FrontFan", .DisplayName = "Front Fan", .Token = 1879});
  BuildInteger(database, settings,
               {.Name = "WlanCountryCode",
                .DisplayName = "WLAN Country Code",
                .Token = 9902,
                .UpperBound = 0xFFFF,
                .DefaultValue = 0x4150});
  BuildEnumeration(
      database, settings,
      {.Name = "AdvancedDebugMenu", .DisplayName = "Advanced Debug Menu", .Token = 1881, .ToleratesNotFound = true});
  BuildEnumeration(database, settings,
                   {.Name = "HEVC", .DisplayName = "High Efficiency Video Coding", .Token = 1469, .ReadOnly = true});
  BuildEnumeration(database, settings,
                   {.Name = "ChargePowerLimitFactoryFlag",
                    .DisplayName = "Charge Power Limit Factory Flag",
                    .Token = 12054,
                    .ToleratesNotFound = true,
                    .Help = u"A flag to configure charging performance limitation for EU products."_ucs2});
}

void BuildMasterPasswordLockout(AttributeDatabase& database, SettingsProtocol* settings) {
  BuildEnumeration(database, settings,
                   {.Name = "MasterPasswordLockout", .DisplayName = "Master Password Lockout", .Token = 1843});
}

void BuildAuxoraSupportLevel(AttributeDatabase& database, SettingsProtocol* settings) {
  BuildInteger(database, settings,
               {.Name = "AuxoraSupportLevel",
                .DisplayName = "Auxora Support Level",
                .Token = 1340,
                .UpperBound = 0xFFFF,
                .DefaultValue = 0,
                .ReadOnly = true});
}
