/** @file
  CameraIdentifiersProtocol: the MIPI cameras of the platform. Optional; without it there are no camera attributes.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_CAMERA_IDENTIFIERS_H_
#define PROTOCOL_CAMERA_IDENTIFIERS_H_

#include <Uefi/UefiBaseType.h>
#include <Corvane/Packed.h>

#define VARO_CAMERA_IDENTIFIERS_PROTOCOL_GUID \
  { 0x28A48FC8, 0x77DE, 0x46BE, { 0xA1, 0x0B, 0x56, 0xA6, 0x43, 0xE6, 0x8E, 0x4E } }

#pragma pack (1)

///
/// The first identifier is read even when Count is 0: give an array of at least one, or NULL. Identifiers past the
/// fourth are not used.
///
typedef struct {
  UINT8          Count;
  CONST CHAR8    *CONST *Identifiers;   ///< Count NUL-terminated ASCII texts, each NULL or empty when not fitted
} CORVANE_PACKED CameraIdentifiersProtocol;

#pragma pack ()

extern EFI_GUID  gVaroCameraIdentifiersProtocolGuid;

#endif
