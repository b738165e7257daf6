/** @file
  ResultFiles: the files that a boot leaves on its disk for whoever started it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef RESULT_FILES_H_
#define RESULT_FILES_H_

#include <Uefi.h>

/**
  Writes records.bin, timings.txt and platform.txt onto the first volume that takes them.

  @param[in]  Requested  Performance counter when the tables were asked for.
**/
EFI_STATUS
WriteResultFiles (
  IN UINT64  Requested
  );

#endif
