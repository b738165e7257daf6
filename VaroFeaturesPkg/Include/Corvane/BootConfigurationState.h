/** @file
  BootConfigurationState: the boot options of the attribute "System boot configuration", member 3 of
  PublishedTablesInterface. The block is always there; it is all zero in a boot without a usable boot option source.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CORVANE_BOOT_CONFIGURATION_STATE_H_
#define CORVANE_BOOT_CONFIGURATION_STATE_H_

#include <Uefi.h>
#include <Protocol/DevicePath.h>

#define BOOT_OPTION_CAPACITY       16
#define BOOT_OPTION_NOT_IN_ORDER   255

///
/// View of one boot option. Pointers lead into the block of the boot option source. That block may leave Description
/// unaligned.
///
typedef struct {
  UINT32                            Attributes;            ///< of the UEFI load option; LOAD_OPTION_ACTIVE is bit 0
  UINT16                            DevicePathLength;      ///< bytes
  UINT8                             DevicePathValid;       ///< 1 = every node lies within DevicePathLength
  UINT8                             Reserved;              ///< 0
  CONST VOID                        *Description;          ///< NUL-terminated UCS-2, unaligned
  CONST EFI_DEVICE_PATH_PROTOCOL    *DevicePath;
} BootOptionView;

typedef struct {
  UINT8             OptionCount;                            ///< N, at most BOOT_OPTION_CAPACITY
  UINT8             CurrentCount;                           ///< K, number of active options
  UINT8             Reserved[6];                            ///< 0
  UINT8             PriorityOrder[BOOT_OPTION_CAPACITY];    ///< option at each position, by ascending priority
  UINT8             CurrentOrder[BOOT_OPTION_CAPACITY];     ///< position of each active option, in option order
  BootOptionView    Options[BOOT_OPTION_CAPACITY];          ///< N options in the order of the source
} BootConfigurationState;

#endif
