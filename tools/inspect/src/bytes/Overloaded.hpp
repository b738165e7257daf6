/** @file
  Overloaded: one visitor for std::visit made of one lambda for each alternative.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

namespace corvane::inspect {

template <typename... Visitors>
struct Overloaded : Visitors... {
  using Visitors::operator()...;
};
// Clang deduces this for aggregates from version 17 on only.
template <typename... Visitors>
Overloaded(Visitors...) -> Overloaded<Visitors...>;

}  // namespace corvane::inspect
