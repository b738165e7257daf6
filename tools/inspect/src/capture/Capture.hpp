/** @file
  Splits a capture into its transport records. Payloads are not decoded here.

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

// The payload of each record type; empty if the record is missing or cut.
using RecordPayloads = std::array<std::optional<Bytes>, kRecordTypes>;

std::vector<std::uint8_t> ReadFile(const std::filesystem::path& path);  // "-": standard input; throws UnusableInput

struct CaptureRecord {
  std::size_t Offset = 0;  // of its header
  std::uint8_t Type = 0;
  Bytes Payload;
};

// Lists the complete records up to the first offset at which no record begins.
std::vector<CaptureRecord> ListRecords(Bytes capture, Findings& findings);

// Throws UnusableInput if the string, attribute or value table is missing.
RecordPayloads SplitCapture(Bytes capture, Findings& findings);

}  // namespace corvane::inspect
