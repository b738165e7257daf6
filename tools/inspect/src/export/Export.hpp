/** @file
  `inspect export --json` and `inspect import`: a capture as JSON that can be edited, and back, byte for byte.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "bytes/ByteReader.hpp"

namespace corvane::inspect {

inline constexpr const char* kExportFormat = "corvane-capture";
inline constexpr int kExportVersion = 1;

// The names of the record types in an export, by type.
inline constexpr const char* kExportRecords[] = {"directory", "descriptors", "strings", "attributes",
                                                 "values",    "display",     "help",    "stream"};

// The export is lossless: a record that its fields do not reproduce is exported as bytes. "followTables" is
// true if directory and descriptors agree with the tables. An import then updates both for edited tables.
// `ofCache`: the capture was made of a cache. The export says so.
std::string ExportJson(Bytes capture, bool ofCache = false);

bool LooksLikeExport(Bytes content);

// Updates lengths, counts, pads and checksums in directory and descriptors from the tables. A
// capture without these records is returned unchanged.
std::vector<std::uint8_t> FollowTables(std::vector<std::uint8_t> capture);

// Returns the capture. Throws UnusableInput with the place of the error in the document.
std::vector<std::uint8_t> ImportJson(Bytes document, bool* ofCache = nullptr);

// Returns the payload of one record of an export. `where` begins the message of an UnusableInput.
std::vector<std::uint8_t> ImportPayload(const nlohmann::ordered_json& record, const std::string& where);

}  // namespace corvane::inspect
