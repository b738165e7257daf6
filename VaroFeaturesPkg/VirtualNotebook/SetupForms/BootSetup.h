/** @file
  Variable "BootSetup", which two form sets show.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef BOOT_SETUP_H_
#define BOOT_SETUP_H_

typedef struct {
  UINT8     OptionList;
  UINT8     FastBoot;
  UINT8     BootDelay;
  UINT8     UsbBoot;
  UINT8     NetworkBoot;
  UINT8     HttpBoot;
  UINT16    HttpBootServer[60];
  UINT8     OrderLock;
  UINT8     StartScreen;
  UINT8     OnProblems;
  UINT8     BootRetries;
  UINT8     OneTimeMenu;
  UINT8     KindOrder[3];
} BootSetup;

#endif
