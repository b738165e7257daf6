/** @file
  The attribute stream: the driver's records. Only the stream has numbers and values of platform settings.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <vector>

#include "capture/Tables.hpp"

namespace corvane::inspect {

struct StreamRecord {
  AttributeEntry Attribute;  // equals the entry of the attribute table
  inspect::Value Value;      // equals the entry of the value table
  std::uint16_t ValueSize = 0;
  std::uint32_t Token = 0;
  std::vector<std::uint64_t> PlatformValues;  // of an enumeration, parallel to its names
  bool PasswordInstalled = false;
};

struct Stream {
  std::uint32_t Size = 0;  // as announced
  std::uint64_t AttributeCount = 0;
  std::uint64_t NameCount = 0;
  std::uint64_t DisplayCount = 0;
  std::uint64_t HelpCount = 0;
  std::vector<StreamRecord> Records;  // of the occupied slots, in slot order
  bool Sound = false;                 // was readable to the end

  const StreamRecord* Find(std::uint16_t handle) const;
};

// Form of a string's current value in a record: followed by a zero, or preceded by its length.
enum class TextForm { Terminated, Counted };

// Reads one record, head and body. A record of an unknown type has no body.
StreamRecord ReadRecord(ByteReader& reader, TextForm form);

Stream DecodeStream(Bytes payload, Findings& findings);

}  // namespace corvane::inspect
