/** @file
  The attribute stream: the driver's records with what no table has, platform setting numbers and values among it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <vector>

#include "capture/Tables.hpp"

namespace corvane::inspect {

struct StreamRecord {
  AttributeEntry Attribute;  // as the attribute table should have it
  inspect::Value Value;      // as the value table should have it
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
  bool Sound = false;                 // read to its end

  const StreamRecord* Find(std::uint16_t handle) const;
};

// How a string's current value stands in a record: with a zero behind it, or with its length before it.
enum class TextForm { Terminated, Counted };

// One record, head and body; empty after the head when the type is unknown.
StreamRecord ReadRecord(ByteReader& reader, TextForm form);

Stream DecodeStream(Bytes payload, Findings& findings);

}  // namespace corvane::inspect
