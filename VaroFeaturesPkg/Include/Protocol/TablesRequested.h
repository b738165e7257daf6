/** @file
  TablesRequestedGuid: the platform installs this protocol, without an interface, on exactly one handle when the tables
  are wanted, at the latest before the boot option is started. The driver then builds and publishes them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_TABLES_REQUESTED_H_
#define PROTOCOL_TABLES_REQUESTED_H_

#include <Uefi/UefiBaseType.h>

#define VARO_TABLES_REQUESTED_PROTOCOL_GUID \
  { 0x1A3E76AA, 0xA540, 0x41A1, { 0x8D, 0xD5, 0xF1, 0x1A, 0x81, 0xB7, 0xEE, 0x3A } }

extern EFI_GUID  gVaroTablesRequestedProtocolGuid;

#endif
