/** @file
  PasswordServiceProtocol: tells whether the platform knows an owner password. Optional; without it, or with a revision
  below 4, there are the admin and the system password only.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_PASSWORD_SERVICE_H_
#define PROTOCOL_PASSWORD_SERVICE_H_

#include <Uefi/UefiBaseType.h>

#define VARO_PASSWORD_SERVICE_PROTOCOL_GUID \
  { 0x6C49A35B, 0x12F2, 0x44C0, { 0xA1, 0xEF, 0xD8, 0xFA, 0x38, 0x74, 0x79, 0x01 } }

#define PASSWORD_SERVICE_OWNER_REVISION  4   ///< first revision that fills OwnerPassword

typedef struct {
  UINT32    Revision;
  UINT8     Service[9];      ///< the service's own use; not read by the driver
  UINT8     OwnerPassword;   ///< non-zero = the owner password exists
} PasswordServiceProtocol;

extern EFI_GUID  gVaroPasswordServiceProtocolGuid;

#endif
