/** @file
  Walks over the entries of a fetched table.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "access/service/AccessState.hpp"
#include "uefi/ByteReader.hpp"

/// Reads a fetched table entry by entry. An entry that runs past the block ends the walk as if the table ended there.
class TableWalk {
 public:
  explicit TableWalk(const FetchedTable& table);

  /// True when another entry begins before the table's end.
  [[nodiscard]] bool More() const { return reader_.Rest().size() > behind_; }
  [[nodiscard]] ByteReader& Reader() { return reader_; }

 private:
  ByteReader reader_;
  size_t behind_;  // bytes of the block at or behind the end, which stands three bytes before the counted one
};

/// An entry of the string table or of a text table.
struct TextEntry {
  UINT16 Handle;
  std::span<const std::byte> Text;
};

/// Reads the next entry; false at the end.
[[nodiscard]] bool NextText(TableWalk& walk, TextEntry& entry);

/// The text of the first entry with this handle; null data when there is none.
[[nodiscard]] std::span<const std::byte> FindText(TableWalk walk, UINT16 handle);

struct AttributeEntry {
  UINT16 Handle;
  UINT8 Type;
  UINT16 NameHandle;
  std::span<const std::byte> Part;  // what is particular to the type; empty for an unknown one, which no walk gets past
};

/// Reads the next entry; false at the end.
[[nodiscard]] bool NextAttribute(TableWalk& walk, AttributeEntry& entry);
