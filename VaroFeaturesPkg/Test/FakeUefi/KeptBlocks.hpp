/** @file
  KeptBlocks: the pool that a driver may keep to the end of boot services.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "FakeUefi/FakeNotebook.hpp"

/// Frees what a booted driver keeps: what it publishes, the boot options that the published views lead into, its
/// attribute access protocol, its waits and the platform's language. Gives the sizes of the blocks left after that,
/// which nobody owns.
[[nodiscard]] std::multiset<size_t> BlocksLeftBehind(FakeNotebook& notebook);
