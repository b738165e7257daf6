/** @file
  Variable "PowerSetup", which two form sets show.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef POWER_SETUP_H_
#define POWER_SETUP_H_

typedef struct {
  UINT8     AutoOnSunday;
  UINT8     AutoOnMonday;
  UINT8     AutoOnTuesday;
  UINT8     AutoOnWednesday;
  UINT8     AutoOnThursday;
  UINT8     AutoOnFriday;
  UINT8     AutoOnWeekend;
  UINT8     AutoOnHour;
  UINT8     AutoOnMinute;
  UINT8     PrimaryBattery;
  UINT8     ChargeStart;
  UINT8     ChargeStop;
  UINT8     SlowChargeLimit;
  UINT8     SecondChargeStart;
  UINT8     SecondChargeStop;
  UINT8     BatteryAlarm;
  UINT8     PeakHours;
  UINT16    IdleMinutes;
  UINT8     BlockSleep;
  UINT8     WakeOnLan;
  UINT8     DeepSleep;
  UINT8     WakeOnAc;
  UINT8     WakeOnDock;
  UINT8     UsbWake;
  UINT8     LidStart;
  UINT8     Engineering;
} PowerSetup;

#endif
