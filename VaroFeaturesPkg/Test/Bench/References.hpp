/** @file
  What the driver's routines are measured against: EDK II's own encoder and decoder, and the plain search of a text
  among all texts.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "Bench/BenchUefi.hpp"

/// EDK II's encoder of the EFI variant, called once into a buffer that is large enough.
size_t ReferenceCompress(const Bytes& source, Bytes& stream);

/// False when EDK II's decoder refuses the stream.
bool ReferenceDecompress(const Bytes& stream, Bytes& output, Bytes& scratch);

/// Texts with handles from 16 on, each looked for from the first one.
class LinearStrings {
 public:
  ~LinearStrings();
  /// The handle of the cleaned text, which is kept unless it is there.
  UINT16 Intern(const CHAR16* text);

 private:
  std::vector<CHAR16*> texts_;
};
