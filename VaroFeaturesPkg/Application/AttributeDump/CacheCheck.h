/** @file
  CacheCheck: lists the driver's variables and decodes the attribute cache with the firmware's own decompressor.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CACHE_CHECK_H_
#define CACHE_CHECK_H_

#include <Uefi/UefiBaseType.h>

/**
  Prints a line for each of the driver's variables.

  @retval EFI_SUCCESS           All are there, and those that are compressed decode to their announced lengths.
  @retval EFI_VOLUME_CORRUPTED  The line of at least one says why not.
**/
EFI_STATUS
CheckCache (
  VOID
  );

#endif
