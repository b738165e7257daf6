/** @file
  Lookup tables of reflected CRCs.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

/// The CRCs of all bytes, for a polynomial of up to 32 bits.
void FillCrcTable(std::span<UINT32, 256> table, UINT32 reflectedPolynomial);
