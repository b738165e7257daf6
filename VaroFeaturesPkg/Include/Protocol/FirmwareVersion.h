/** @file
  FirmwareVersionProtocol: the version of the running firmware, the key of the attribute cache. Provided by the
  platform; without it the cache is neither trusted nor written.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_FIRMWARE_VERSION_H_
#define PROTOCOL_FIRMWARE_VERSION_H_

#include <Uefi/UefiBaseType.h>

#define VARO_FIRMWARE_VERSION_PROTOCOL_GUID \
  { 0x8BB59471, 0x823C, 0x4A11, { 0xB6, 0x10, 0xCE, 0x39, 0x85, 0x79, 0x3E, 0xB1 } }

typedef struct {
  CONST CHAR8    *Version;   ///< NUL-terminated ASCII; may be followed by more
} FirmwareVersionData;

typedef struct {
  CONST FirmwareVersionData    *Data;
} FirmwareVersionProtocol;

extern EFI_GUID  gVaroFirmwareVersionProtocolGuid;

#endif
