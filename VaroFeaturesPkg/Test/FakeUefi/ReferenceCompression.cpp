/** @file
  EDK II's own encoder and decoder of the UEFI compression format.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "FakeUefi/ReferenceCompression.hpp"

extern "C" {
#include <Library/UefiDecompressLib.h>
// Declared in BaseTools' headers, whose base types cannot stand beside MdePkg's.
RETURN_STATUS EfiCompress(UINT8* source, UINT32 sourceSize, UINT8* destination, UINT32* destinationSize);
}

Bytes ReferenceCompress(const Bytes& source) {
  Bytes input = source;
  UINT32 size = 0;
  EfiCompress(input.data(), static_cast<UINT32>(input.size()), nullptr, &size);
  Bytes stream(size);
  EfiCompress(input.data(), static_cast<UINT32>(input.size()), stream.data(), &size);
  return stream;
}

Bytes ReferenceDecompress(const Bytes& source) {
  UINT32 size = 0;
  UINT32 scratchSize = 0;
  if (RETURN_ERROR(UefiDecompressGetInfo(source.data(), static_cast<UINT32>(source.size()), &size, &scratchSize))) {
    return {};
  }
  Bytes output(size + size_t{1});  // EDK II asserts that there is a destination, for no bytes too
  Bytes scratch(scratchSize);
  const bool refused = RETURN_ERROR(UefiDecompress(source.data(), output.data(), scratch.data()));
  output.resize(refused ? 0 : size);
  return output;
}
