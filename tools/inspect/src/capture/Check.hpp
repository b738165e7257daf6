/** @file
  Cross-checks of a decoded image: directory and descriptors against tables, tables against each other and the stream.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include "capture/Image.hpp"

namespace corvane::inspect {

void CheckImage(Image& image);  // adds to the image's findings

}  // namespace corvane::inspect
