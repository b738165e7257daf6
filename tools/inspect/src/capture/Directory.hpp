/** @file
  The table directory and the table descriptors, as plain values.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "bytes/ByteReader.hpp"
#include "bytes/Findings.hpp"

namespace corvane::inspect {

struct DirectoryEntry {
  std::uint8_t TableType = 0;
  std::uint8_t SubType = 0;
  std::uint8_t Format = 0;
  std::uint8_t TableId = 0;
  std::uint16_t Length = 0;
  std::uint32_t AddressLow = 0;
};

struct Directory {
  std::string Signature;
  std::string Content;
  std::uint8_t Version = 0;
  std::uint16_t Length = 0;
  std::uint8_t Sum = 0;  // of the first Length bytes; 0 if the checksum is right
  std::vector<DirectoryEntry> Entries;
};

struct Descriptor {
  std::uint64_t Data = 0;
  std::uint8_t TableType = 0;
  std::uint32_t TableIndex = 0;
  std::uint16_t Limit = 0;
  std::uint16_t Capacity = 0;
  std::uint16_t Used = 0;
  std::uint16_t EntryCount = 0;
  std::uint32_t Checksum = 0;
  std::uint8_t PadLength = 0;
  std::uint8_t Finished = 0;
  std::uint8_t Reserved = 0;

  bool operator==(const Descriptor&) const = default;
};

std::optional<Directory> DecodeDirectory(Bytes payload, Findings& findings);
std::optional<std::vector<Descriptor>> DecodeDescriptors(Bytes payload, Findings& findings);

}  // namespace corvane::inspect
