/** @file
  EDK II's own encoder and decoder of the UEFI compression format, for comparison.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "FakeUefi/FakeUefi.hpp"

/// The stream of EDK II's encoder (BaseTools).
Bytes ReferenceCompress(const Bytes& source);

/// What EDK II's decoder (MdePkg) makes of a stream; empty when it refuses it.
Bytes ReferenceDecompress(const Bytes& source);

/// A stream of the UEFI compression format that holds the bytes as they are: eight bits for each byte.
Bytes CompressLiterally(const Bytes& content);
