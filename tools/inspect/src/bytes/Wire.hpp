/** @file
  The driver's public wire headers. The headers define macros with common names: include this last, in sources only.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

extern "C" {
#include <Base.h>
#include <Corvane/AttributeRecord.h>
#include <Corvane/OwnAttributes.h>
#include <Corvane/TableDescriptor.h>
#include <Corvane/TableDirectory.h>
#include <Corvane/TransportRecord.h>
#include <IndustryStandard/PldmBios.h>
}
