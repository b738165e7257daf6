/** @file
  EDK II's own encoder and decoder of the UEFI compression format.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "FakeUefi/ReferenceCompression.hpp"

extern "C" {
#include <Library/UefiDecompressLib.h>
// Declared in BaseTools' headers, whose base types conflict with MdePkg's.
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
  Bytes output(size + size_t{1});  // EDK II asserts a destination, even for no bytes
  Bytes scratch(scratchSize);
  const bool refused = RETURN_ERROR(UefiDecompress(source.data(), output.data(), scratch.data()));
  output.resize(refused ? 0 : size);
  return output;
}

Bytes CompressLiterally(const Bytes& content) {
  Bytes stream;
  UINT64 pending = 0;
  unsigned bits = 0;
  const auto put = [&](unsigned count, UINT64 value) {
    pending = pending << count | value;
    for (bits += count; bits >= 8; bits -= 8) {
      stream.push_back(static_cast<std::uint8_t>(pending >> (bits - 8)));
    }
  };
  constexpr size_t kLargestBlock = 0xFFFF;
  for (size_t done = 0; done < content.size();) {
    const size_t count = std::min(content.size() - done, kLargestBlock);
    put(16, count);
    put(10, 0 << 5 | 10);  // of the code lengths there is one, length 8
    put(9, 256);           // 256 bytes, each of that length
    put(8, 0);             // of the distances there is one
    for (const size_t end = done + count; done < end; ++done) {
      put(8, content[done]);
    }
  }
  put(7, 0);
  Bytes block(2 * sizeof(UINT32));
  const std::array<UINT32, 2> sizes = {static_cast<UINT32>(stream.size()), static_cast<UINT32>(content.size())};
  std::memcpy(block.data(), sizes.data(), block.size());
  block.insert(block.end(), stream.begin(), stream.end());
  return block;
}
