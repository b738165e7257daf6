/** @file
  Any bytes as an export: what is taken in comes out of another export again.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "Require.hpp"
#include "bytes/Findings.hpp"
#include "export/Export.hpp"

using namespace corvane::inspect;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const std::vector<std::uint8_t> capture = ImportJson({data, size});
    const std::string exported = ExportJson(capture);
    Require(ImportJson({reinterpret_cast<const std::uint8_t*>(exported.data()), exported.size()}) == capture);
  } catch (const UnusableInput&) {
  }
  return 0;
}
