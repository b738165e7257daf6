/** @file
  References for the driver's routines: EDK II's own encoder and decoder, and a plain search of a text among all
  texts.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "Bench/BenchUefi.hpp"

/// EDK II's encoder of the EFI variant, called once into a buffer that is large enough.
size_t ReferenceCompress(const Bytes& source, Bytes& stream);

/// False when EDK II's decoder refuses the stream.
bool ReferenceDecompress(const Bytes& stream, Bytes& output, Bytes& scratch);

/// Texts with handles from 16 on. Each search begins at the first one.
class LinearStrings {
 public:
  ~LinearStrings();
  /// Returns the handle of the cleaned text. Stores a new text.
  UINT16 Intern(const CHAR16* text);

 private:
  std::vector<CHAR16*> texts_;
};
