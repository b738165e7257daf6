/** @file
  Image: everything a capture holds, decoded, with what is wrong with it.

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
  std::vector<std::uint8_t> Capture;  // what the spans below lead into
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
  bool OfCache = false;  // made of a cache: there is no directory and no descriptor, and no table is cut

  Image() = default;
  Image(Image&&) = default;
  Image& operator=(Image&&) = default;

  // By name, with or without its annotations; names are not necessarily unique.
  std::vector<const AttributeEntry*> FindByName(std::string_view name) const;
  const TableFrame* FrameOf(TableId id) const;  // null where the capture lacks the table
  std::size_t EntryCountOf(TableId id) const;
};

// Throws UnusableInput.
Image DecodeImage(std::vector<std::uint8_t> capture, bool ofCache = false);

// How full a table is, and what the attribute stream says that it lacks.
struct TableFill {
  TableId Id{};
  std::size_t Used = 0;  // bytes of the finished table
  std::size_t Entries = 0;
  bool CrcOk = false;
  bool MaybeCut = false;                   // nothing proves a cut or its absence, and room is short
  std::optional<std::uint64_t> Lost;       // entries that did not fit; unknown without the attribute stream
  std::optional<std::uint16_t> FirstLost;  // handle of the first of them
};

std::vector<TableFill> MeasureFill(const Image& image);  // of the tables at hand

}  // namespace corvane::inspect
