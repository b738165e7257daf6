/** @file
  Walks over the entries of a fetched table.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "access/service/TableWalk.hpp"

#include "access/service/AttributeParts.hpp"

TableWalk::TableWalk(const FetchedTable& table) : reader_({table.Block, table.Size}), behind_(table.Size) {
  constexpr size_t kNoEntry = 3;
  const UINT32 total = reader_.Read<UINT32>();
  behind_ -= std::min<size_t>(behind_, total > kNoEntry ? total - kNoEntry : 0);
}

bool NextText(TableWalk& walk, TextEntry& entry) {
  if (!walk.More()) {
    return false;
  }
  entry.Handle = walk.Reader().Read<UINT16>();
  const UINT16 length = walk.Reader().Read<UINT16>();
  entry.Text = walk.Reader().Take(length);
  return walk.Reader().Ok();
}

std::span<const std::byte> FindText(TableWalk walk, UINT16 handle) {
  TextEntry entry{};
  while (NextText(walk, entry)) {
    if (entry.Handle == handle) {
      return entry.Text;
    }
  }
  return {};
}

bool NextAttribute(TableWalk& walk, AttributeEntry& entry) {
  if (!walk.More()) {
    return false;
  }
  entry.Handle = walk.Reader().Read<UINT16>();
  entry.Type = walk.Reader().Read<UINT8>();
  entry.NameHandle = walk.Reader().Read<UINT16>();
  entry.Part = walk.Reader().Take(AttributePartSize(entry.Type, walk.Reader()));
  return walk.Reader().Ok();
}
