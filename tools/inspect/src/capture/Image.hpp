/** @file
  Image: a decoded capture, with its findings.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <optional>
#include <vector>

#include "bytes/Findings.hpp"
#include "capture/Capture.hpp"
#include "capture/Directory.hpp"
#include "capture/Stream.hpp"
#include "capture/Tables.hpp"

namespace corvane::inspect {

struct Image {
  std::vector<std::uint8_t> Capture;  // the spans below point into this
  RecordPayloads Payloads;
  std::optional<inspect::Directory> Directory;
  std::optional<std::vector<Descriptor>> Descriptors;
  Table<StringEntry> Strings;
  Table<AttributeEntry> Attributes;
  Table<ValueEntry> Values;
  std::optional<TextTable> Display;
  std::optional<TextTable> Help;
  std::optional<inspect::Stream> Stream;
  inspect::Findings Findings;
  bool OfCache = false;  // made of a cache: no directory, no descriptors, no table is cut

  Image() = default;
  Image(Image&&) = default;
  Image& operator=(Image&&) = default;

  // Finds attributes by name, with or without annotations. Several attributes may have one name.
  std::vector<const AttributeEntry*> FindByName(std::string_view name) const;
  const TableFrame* FrameOf(TableId id) const;  // null if the capture lacks the table
  std::size_t EntryCountOf(TableId id) const;
};

// Throws UnusableInput.
Image DecodeImage(std::vector<std::uint8_t> capture, bool ofCache = false);

// How full a table is, and how many entries it lacks according to the attribute stream.
struct TableFill {
  TableId Id{};
  std::size_t Used = 0;  // bytes of the finished table
  std::size_t Entries = 0;
  bool CrcOk = false;
  bool MaybeCut = false;                   // the table is nearly full, and no stream proves or disproves a cut
  std::optional<std::uint64_t> Lost;       // entries that did not fit; needs the attribute stream
  std::optional<std::uint16_t> FirstLost;  // handle of the first lost entry
};

std::vector<TableFill> MeasureFill(const Image& image);  // of the tables that the capture has

}  // namespace corvane::inspect
