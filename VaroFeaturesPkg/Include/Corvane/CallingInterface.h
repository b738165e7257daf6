/** @file
  SMBIOS structure type 218: the platform's calling interface and its tokens, as the driver reads it.

  The structure is found through an SMBIOS 2.x entry point alone. There may be several; the first gives address and
  capabilities, all of them give tokens.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CORVANE_CALLING_INTERFACE_H_
#define CORVANE_CALLING_INTERFACE_H_

#include <Base.h>
#include <Corvane/Packed.h>

#define SMBIOS_TYPE_CALLING_INTERFACE  218

#define CALLING_INTERFACE_TOKEN_END    0xFFFF   ///< ends the list
#define CALLING_INTERFACE_TOKEN_NONE   0        ///< is skipped

#pragma pack (1)

typedef struct {
  UINT16    TokenId;
  UINT8     Data[4];   ///< the platform's
} CORVANE_PACKED CallingInterfaceToken;

///
/// Formatted area. Tokens follow up to Length, which is at least 12 where there are any.
///
typedef struct {
  UINT8     Type;           ///< SMBIOS_TYPE_CALLING_INTERFACE
  UINT8     Length;
  UINT16    Handle;
  UINT16    IoAddress;      ///< goes into every DispatchDescriptor
  UINT8     IoCode;
  UINT32    Capabilities;
} CORVANE_PACKED CallingInterfaceStructure;

#pragma pack ()

#endif
