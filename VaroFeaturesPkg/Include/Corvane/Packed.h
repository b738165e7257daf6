/** @file
  Packing of the published wire structures: no padding, on every compiler that builds EDK II.

  A structure is enclosed in `#pragma pack (1)` / `#pragma pack ()` and carries CORVANE_PACKED, so that GCC and Clang
  also warn of pointers into its unaligned fields.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CORVANE_PACKED_H_
#define CORVANE_PACKED_H_

#if defined (__GNUC__)
#define CORVANE_PACKED  __attribute__ ((packed))
#else
#define CORVANE_PACKED
#endif

#endif
