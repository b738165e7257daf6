/** @file
  OwnAttributes: the attributes that CorvaneDxe makes itself, from platform settings and services. All others come from
  setup questions. Names, texts and tokens are the same on every platform.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CORVANE_OWN_ATTRIBUTES_H_
#define CORVANE_OWN_ATTRIBUTES_H_

#include <Base.h>

typedef struct {
  CONST CHAR8    *Name;          ///< as published, with its bracketed suffix
  CONST CHAR8    *DisplayText;
  UINT32         Token;          ///< number of the platform setting; 0 = none
} OwnAttribute;

//
// Each of these initializes an OwnAttribute.
//
#define OWN_COMMON_SYSTEM_ID         { "CommonSystemId", "Common System Identifier", 3633 }
#define OWN_OVERRIDE_BATTERY_CHARGE \
  { "OverrideBatteryChargeFactory", "Override Battery Charging Limit in Factory", 1751 }
#define OWN_SERVICE_RESET            { "ServiceResetConfig", "Service reset configuration", 3728 }
#define OWN_GENERATION               { "Generation", "System Generation", 0 }
#define OWN_VENDOR                   { "IBV", "Independent BIOS Vendor", 0 }
#define OWN_MANUFACTURING_PXE        { "MfgModePxeAttribute", "Manufacturing Mode PXE Attribute", 1756 }
#define OWN_FRONT_FAN                { "FrontFan", "Front Fan", 1879 }
#define OWN_WLAN_COUNTRY             { "WlanCountryCode", "WLAN Country Code", 9902 }
#define OWN_ADVANCED_DEBUG_MENU      { "AdvancedDebugMenu", "Advanced Debug Menu", 1881 }
#define OWN_HEVC                     { "HEVC", "High Efficiency Video Coding", 1469 }
#define OWN_CHARGE_POWER_LIMIT \
  { "ChargePowerLimitFactoryFlag", "Charge Power Limit Factory Flag", OWN_CHARGE_POWER_LIMIT_TOKEN }
#define OWN_MASTER_PASSWORD_LOCKOUT  { "MasterPasswordLockout", "Master Password Lockout", 1843 }
#define OWN_CAMERA_1                 { "MIPICam1", "MIPI Camera 1", 3732 }
#define OWN_CAMERA_2                 { "MIPICam2", "MIPI Camera 2", 3733 }
#define OWN_CAMERA_3                 { "MIPICam3", "MIPI Camera 3", 3734 }
#define OWN_CAMERA_4                 { "MIPICam4", "MIPI Camera 4", 3735 }
#define OWN_SUPPORT_LEVEL            { "AuxoraSupportLevel", "Auxora Support Level", 1340 }

#define OWN_PASSWORD_EXPRESSION      "[RegEx:^\\\\133\\\\x20-\\\\x7e\\\\135{0,32}$]"
#define OWN_ADMIN_PASSWORD           { "AdminPassword" OWN_PASSWORD_EXPRESSION, "Admin Password", 1175 }
#define OWN_SYSTEM_PASSWORD          { "SystemPassword" OWN_PASSWORD_EXPRESSION, "System Password", 1174 }
#define OWN_OWNER_PASSWORD           { "OwnerPassword" OWN_PASSWORD_EXPRESSION, "Owner Password", 1176 }
#define OWN_BOOT_CONFIGURATION       { "System boot configuration", "System boot configuration", 0 }

//
// The only own attribute with a help text.
//
#define OWN_CHARGE_POWER_LIMIT_TOKEN  12054
#define OWN_CHARGE_POWER_LIMIT_HELP  "A flag to configure charging performance limitation for EU products."

//
// Attributes that follow those of the setup, in the order of creation.
//
#define OWN_ADDED_ATTRIBUTES \
  OWN_COMMON_SYSTEM_ID, OWN_OVERRIDE_BATTERY_CHARGE, OWN_SERVICE_RESET, OWN_GENERATION, OWN_VENDOR, \
  OWN_MANUFACTURING_PXE, OWN_FRONT_FAN, OWN_WLAN_COUNTRY, OWN_ADVANCED_DEBUG_MENU, OWN_HEVC, OWN_CHARGE_POWER_LIMIT, \
  OWN_MASTER_PASSWORD_LOCKOUT, OWN_CAMERA_1, OWN_CAMERA_2, OWN_CAMERA_3, OWN_CAMERA_4, OWN_SUPPORT_LEVEL

//
// Attributes with a fixed handle, which Corvane/AttributeStore.h names.
//
#define OWN_PLACED_ATTRIBUTES \
  OWN_ADMIN_PASSWORD, OWN_SYSTEM_PASSWORD, OWN_OWNER_PASSWORD, OWN_BOOT_CONFIGURATION

#endif
