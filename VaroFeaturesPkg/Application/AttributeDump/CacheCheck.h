/** @file
  CacheCheck: decodes the attribute cache with the firmware's own decompressor.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CACHE_CHECK_H_
#define CACHE_CHECK_H_

#include <Uefi/UefiBaseType.h>

/**
  Prints a line for each compressed variable of the cache.

  @retval EFI_SUCCESS  All of them decode to their announced lengths.
**/
EFI_STATUS
CheckCache (
  VOID
  );

#endif
