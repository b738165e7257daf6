/** @file
  BootOptionSourceProtocol: the boot options and their priorities. Optional; without it there is no attribute "System
  boot configuration".

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_BOOT_OPTION_SOURCE_H_
#define PROTOCOL_BOOT_OPTION_SOURCE_H_

#include <Uefi/UefiBaseType.h>
#include <Corvane/Packed.h>

#define VARO_BOOT_OPTION_SOURCE_PROTOCOL_GUID \
  { 0x04484E87, 0xD0EA, 0x4F15, { 0xA5, 0x66, 0xB2, 0x96, 0xB0, 0xE3, 0x8E, 0xCB } }

//
// Arguments of the driver's one call.
//
#define BOOT_OPTION_SOURCE_CLASS   1
#define BOOT_OPTION_SOURCE_SELECT  6

#pragma pack (1)

///
/// Head of the block of boot options. OptionCount UINT16 priorities follow, one for each option, the lowest first to
/// boot; then the options one after the other, each as UEFI's EFI_LOAD_OPTION without optional data: UINT32 attributes,
/// UINT16 length of the device paths in bytes, NUL-terminated UCS-2 description, device paths. Nothing is aligned.
///
typedef struct {
  UINT32    OptionCount;   ///< at most 16; more are refused with EFI_UNSUPPORTED
} CORVANE_PACKED BootOptionBlock;

#pragma pack ()

/**
  Gives the boot options.

  @param[in]   Class   BOOT_OPTION_SOURCE_CLASS.
  @param[in]   Select  BOOT_OPTION_SOURCE_SELECT.
  @param[out]  Size    Bytes of the block.
  @param[out]  Block   The block in boot services pool. The caller owns it.

  @retval EFI_SUCCESS  Block is valid.
  @retval others       There is no block.
**/
typedef
EFI_STATUS
(EFIAPI *BOOT_OPTION_SOURCE_GET)(
  IN  UINT32            Class,
  IN  UINT32            Select,
  OUT UINT64            *Size,
  OUT BootOptionBlock   **Block
  );

typedef struct {
  VOID                      *Source[2];   ///< the platform's own use; not called by the driver
  BOOT_OPTION_SOURCE_GET    GetOptions;
} BootOptionSourceProtocol;

extern EFI_GUID  gVaroBootOptionSourceProtocolGuid;

#endif
