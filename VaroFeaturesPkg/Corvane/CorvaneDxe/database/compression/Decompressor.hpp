/** @file
  Decoder of the UEFI compression format (UEFI specification, "Compression Algorithm").

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

/// What Decompress() needs for `source`. EFI_INVALID_PARAMETER without a whole header.
[[nodiscard]] EFI_STATUS DecompressGetInfo(std::span<const std::byte> source, UINT32& destinationSize,
                                           UINT32& scratchSize);

/// Fills the announced size of `destination`, or gives EFI_INVALID_PARAMETER when a buffer is too small or the stream
/// is corrupt; what `destination` then holds is of no use.
[[nodiscard]] EFI_STATUS Decompress(std::span<const std::byte> source, std::span<std::byte> destination,
                                    std::span<std::byte> scratch);
