/** @file
  PasswordCheckProtocol: compares a text with a password of the platform, for Platform/AttributeServiceDxe. Optional;
  without it, nobody can open attributes that a password locks.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_PASSWORD_CHECK_H_
#define PROTOCOL_PASSWORD_CHECK_H_

#include <Uefi/UefiBaseType.h>

#define VARO_PASSWORD_CHECK_PROTOCOL_GUID \
  { 0x837C3FA7, 0x0AC2, 0x473A, { 0xA7, 0xA4, 0x97, 0xA3, 0xF1, 0x98, 0x37, 0xA1 } }

typedef struct _PasswordCheckProtocol PasswordCheckProtocol;

/**
  Tells whether a text is a password. No copy of either is left in memory.

  @param[in]  This    The protocol.
  @param[in]  Kind    PASSWORD_KIND_ADMIN or PASSWORD_KIND_SYSTEM.
  @param[in]  Text    ASCII, unterminated.
  @param[in]  Length  Its characters.

  @retval EFI_SUCCESS  It is.
  @retval others       It is not, or the platform cannot tell.
**/
typedef
EFI_STATUS
(EFIAPI *PASSWORD_CHECK)(
  IN PasswordCheckProtocol  *This,
  IN UINT32                 Kind,
  IN CONST CHAR8            *Text,
  IN UINTN                  Length
  );

struct _PasswordCheckProtocol {
  PASSWORD_CHECK    Check;
};

extern EFI_GUID  gVaroPasswordCheckProtocolGuid;

#endif
