/** @file
  A capture taken apart into its transport records; nothing inside a payload is looked at.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <vector>

#include "bytes/ByteReader.hpp"
#include "bytes/Findings.hpp"

namespace corvane::inspect {

inline constexpr std::size_t kRecordTypes = 8;

// The payload of each record type; an absent one was not found whole.
using RecordPayloads = std::array<std::optional<Bytes>, kRecordTypes>;

std::vector<std::uint8_t> ReadFile(const std::filesystem::path& path);  // "-": standard input; throws UnusableInput

struct CaptureRecord {
  std::size_t Offset = 0;  // of its header
  std::uint8_t Type = 0;
  Bytes Payload;
};

// Those that are whole, up to where no further one begins.
std::vector<CaptureRecord> ListRecords(Bytes capture, Findings& findings);

// Throws UnusableInput when the string, attribute and value tables are not all there.
RecordPayloads SplitCapture(Bytes capture, Findings& findings);

}  // namespace corvane::inspect
