/** @file
  ModeQueryProtocol: tells whether the platform is in one of its factory or manufacturing modes. Optional; without it
  the platform counts as being in none.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_MODE_QUERY_H_
#define PROTOCOL_MODE_QUERY_H_

#include <Uefi/UefiBaseType.h>

#define VARO_MODE_QUERY_PROTOCOL_GUID \
  { 0xF2FEFF56, 0xA85B, 0x4489, { 0x90, 0x99, 0x2D, 0x54, 0x41, 0x1D, 0xFC, 0x6D } }

#define MODE_QUERY_END  255   ///< ends a list of modes

/**
  Tells whether the platform is in any of the listed modes.

  @param[out]  Result  Non-zero when it is; 0 before the driver calls.
  @param[in]   ...     UINT32 mode numbers, then MODE_QUERY_END, then 0. The driver lists the modes 1 to 14.

  @retval EFI_SUCCESS  Result is valid.
  @retval others       The modes could not be read.
**/
typedef
EFI_STATUS
(EFIAPI *MODE_QUERY_ANY)(
  OUT UINT32  *Result,
  ...
  );

typedef struct {
  VOID              *Mode;      ///< the platform's own use; not called by the driver
  MODE_QUERY_ANY    QueryAny;
} ModeQueryProtocol;

extern EFI_GUID  gVaroModeQueryProtocolGuid;

#endif
