/** @file
  Values of the PCDs that EDK II's libraries read. In a firmware build, AutoGen.h has them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef EDK2_PCDS_H_
#define EDK2_PCDS_H_

#define _PCD_GET_MODE_32_PcdMaximumUnicodeStringLength  1000000
#define _PCD_GET_MODE_32_PcdMaximumAsciiStringLength    1000000
#define _PCD_GET_MODE_32_PcdMaximumLinkedListLength     1000000
#define _PCD_GET_MODE_BOOL_PcdVerifyNodeInList          0

#endif
