/** @file
  What encoder and decoder of the UEFI compression format (UEFI specification, "Compression Algorithm") share.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

// A stream is 8 bytes of header, compressed and uncompressed size, and then blocks of prefix codes. A block names its
// number of codes and three alphabets: code lengths (T), bytes and match lengths (C), match distances (P).
constexpr UINT32 kCompressionHeaderSize = 8;

constexpr UINT32 kMinMatch = 3;
constexpr UINT32 kMaxMatch = 256;
constexpr UINT32 kWindowSize = 8192;

constexpr UINT32 kMaxCodeLength = 16;
constexpr UINT32 kLengthCodes = kMaxCodeLength + 3;             // T: three kinds of zero runs, then 1 to 16
constexpr UINT32 kByteCodes = 256 + kMaxMatch - kMinMatch + 1;  // C
constexpr UINT32 kDistanceCodes = 14;                           // P: significant bits of 0 to kWindowSize - 1
constexpr UINT32 kFirstMatchCode = 256;                         // of C: a match of kMinMatch bytes

constexpr UINT32 kBlockSizeBits = 16;
constexpr UINT32 kLengthCountBits = 5;
constexpr UINT32 kByteCountBits = 9;
constexpr UINT32 kDistanceCountBits = 4;

// Zero runs in the C lengths: one zero; 3 to 18 in 4 more bits; 20 and more in kByteCountBits more bits.
constexpr UINT32 kShortRunBase = 3;
constexpr UINT32 kShortRunBits = 4;
constexpr UINT32 kLongRunBase = 20;

// The T lengths name their own zeros once: 2 bits behind the third length.
constexpr UINT32 kGapAfter = 3;

static_assert(kByteCodes == 510 && kWindowSize == 1 << (kDistanceCodes - 1));
