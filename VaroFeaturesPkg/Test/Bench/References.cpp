/** @file
  EDK II's codec, and the plain linear scan.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Bench/References.hpp"

#include "database/store/Handles.hpp"
#include "uefi/Pool.hpp"

extern "C" {
#include <Library/UefiDecompressLib.h>
// Declared in BaseTools' headers, whose base types conflict with MdePkg's.
RETURN_STATUS EfiCompress(UINT8* source, UINT32 sourceSize, UINT8* destination, UINT32* destinationSize);
}

size_t ReferenceCompress(const Bytes& source, Bytes& stream) {
  auto size = static_cast<UINT32>(stream.size());
  auto* const input = reinterpret_cast<UINT8*>(const_cast<std::byte*>(source.data()));
  EfiCompress(input, static_cast<UINT32>(source.size()), reinterpret_cast<UINT8*>(stream.data()), &size);
  return size;
}

bool ReferenceDecompress(const Bytes& stream, Bytes& output, Bytes& scratch) {
  return !RETURN_ERROR(UefiDecompress(stream.data(), output.data(), scratch.data()));
}

LinearStrings::~LinearStrings() {
  for (CHAR16* const text : texts_) {
    FreeBlock(text);
  }
}

UINT16 LinearStrings::Intern(const CHAR16* text) {
  auto* const cleaned = static_cast<CHAR16*>(AllocateZeroedBytes(StringLength(text) + 1, sizeof(CHAR16)));
  CleanString(cleaned, text);
  for (size_t i = 0; i < texts_.size(); ++i) {
    if (StrCmp(texts_[i], cleaned) == 0) {
      FreeBlock(cleaned);
      return static_cast<UINT16>(i + kFirstHandle);
    }
  }
  texts_.push_back(cleaned);
  return static_cast<UINT16>(texts_.size() - 1 + kFirstHandle);
}
