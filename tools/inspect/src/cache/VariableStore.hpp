/** @file
  VariableStore: the variables of a flash image, as EDK II keeps them (firmware volume, variable store, variables).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "bytes/ByteReader.hpp"
#include "bytes/Findings.hpp"

namespace corvane::inspect {

struct Variable {
  std::u16string Name;
  std::uint32_t Attributes = 0;
  Bytes Data;  // points into the flash image
};

struct VariableStore {
  bool Authenticated = false;       // variables carry time stamps and counters
  std::size_t HeaderSize = 0;       // of each variable
  std::size_t Size = 0;             // bytes, its own header included
  std::size_t Used = 0;             // up to the end of the last variable, deleted ones included
  std::size_t Live = 0;             // bytes of valid variables, which a reclaim keeps
  std::vector<Variable> Variables;  // valid variables of the driver

  const Variable* Find(std::u16string_view name) const;
  // Bytes that count against the store's limit for one variable: header, name and data.
  std::size_t Footprint(std::u16string_view name, std::size_t dataSize) const;
};

bool LooksLikeFlash(Bytes content);

// Throws UnusableInput if the image has no variable store.
VariableStore ReadVariableStore(Bytes flash, Findings& findings);

}  // namespace corvane::inspect
