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

// Nothing is lost: a record whose bytes do not come out of its fields again is exported as its bytes. "followTables" is
// true where directory and descriptors agree with the tables: they will then agree with edited tables too.
// `ofCache`: the capture was made of a cache, and is taken for one again.
std::string ExportJson(Bytes capture, bool ofCache = false);

bool LooksLikeExport(Bytes content);

// The capture with lengths, counts, pads and checksums in its directory and descriptors as its tables have them. A
// capture without these parts stays as it is.
std::vector<std::uint8_t> FollowTables(std::vector<std::uint8_t> capture);

// The capture; throws UnusableInput with the place in the document that it cannot use.
std::vector<std::uint8_t> ImportJson(Bytes document, bool* ofCache = nullptr);

// The payload that one record of an export stands for. `where` begins the message of an UnusableInput.
std::vector<std::uint8_t> ImportPayload(const nlohmann::ordered_json& record, const std::string& where);

}  // namespace corvane::inspect
