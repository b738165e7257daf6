/** @file
  CallingInterfaceInfo: the platform's calling interface, out of its SMBIOS structures of type 218.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "access/smbios/SmbiosWalker.hpp"

extern "C" {
#include <Corvane/CallingInterface.h>
}

struct CallingInterfaceInfo {
  UINT32 TokenCount;
  CallingInterfaceToken* Tokens;  // in ascending order of their ids, equal ones as they were met
  UINT16 IoAddress;               // 0 when there is no such structure
  UINT8 IoCode;
  UINT32 Capabilities;
  SmbiosWalker* Walker;  // null when there is no table
};

/// What the platform's structures say; without any the record is zero. Null without memory. Ends with
/// ReleaseCallingInterfaceInfo.
[[nodiscard]] CallingInterfaceInfo* BuildCallingInterfaceInfo();
void ReleaseCallingInterfaceInfo(CallingInterfaceInfo* info);
