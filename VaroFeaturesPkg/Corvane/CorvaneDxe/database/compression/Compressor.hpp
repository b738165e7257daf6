/** @file
  Encoder of the UEFI compression format (UEFI specification, "Compression Algorithm").

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

/// Compresses `source` into `destination`, which may be null. `destinationSize` is the room there and becomes the size
/// needed, header included, whether or not it was enough. EFI_BUFFER_TOO_SMALL when it was not: what `destination` then
/// holds is of no use. EFI_OUT_OF_RESOURCES leaves `destinationSize` alone.
[[nodiscard]] EFI_STATUS Compress(std::span<const std::byte> source, std::byte* destination, UINT32& destinationSize);
