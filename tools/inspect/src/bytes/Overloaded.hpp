/** @file
  Overloaded: combines one lambda for each alternative into one visitor for std::visit.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

namespace corvane::inspect {

template <typename... Visitors>
struct Overloaded : Visitors... {
  using Visitors::operator()...;
};
// Clang before version 17 does not deduce this for aggregates.
template <typename... Visitors>
Overloaded(Visitors...) -> Overloaded<Visitors...>;

}  // namespace corvane::inspect
