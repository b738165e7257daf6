/** @file
  Any bytes as a name with annotations: nothing of it is lost or made up, and its expression cannot run away.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "Require.hpp"
#include "capture/Keywords.hpp"
#include "judge/Expression.hpp"

using namespace corvane::inspect;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view name(reinterpret_cast<const char*>(data), size);
  const Keyword keyword = ParseKeyword(name);
  std::string whole = keyword.Bare;
  for (const Annotation& annotation : keyword.Annotations) {
    whole += annotation.Text;
    const Expression expression(annotation.Expression);
    expression.Matches(keyword.Bare);
  }
  Require(name.starts_with(whole) &&
          (whole.size() == size) <= (keyword.Problem.empty() || !keyword.Annotations.empty()));
  return 0;
}
