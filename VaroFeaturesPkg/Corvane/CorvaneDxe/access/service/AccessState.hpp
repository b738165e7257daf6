/** @file
  AccessState: all that the attribute access protocol keeps between two calls.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "access/smbios/CallingInterface.hpp"

extern "C" {
#include <Protocol/AttributeAccess.h>
#include <Protocol/RequestDispatch.h>
}

/// A table of the service: a UINT32 that counts bytes from the block's start on, then the entries as they were sent.
struct FetchedTable {
  const std::byte* Block = nullptr;  // null = not fetched
  size_t Size = 0;                   // of the block; four more than it counts when the table came in chunks
};

/// In the order of their directory types; of the texts, by sub-type.
enum class ServiceTable : size_t { Strings, Attributes, Values, Help, Display };
constexpr size_t kServiceTables = 5;

struct AccessState {
  AttributeAccessProtocol* Interface = nullptr;      // the installed record
  RequestBlock* RequestBuffer = nullptr;             // REQUEST_BUFFER_SIZE bytes, or null
  RequestDispatchProtocol* Dispatcher = nullptr;     // located when a table is first wanted
  CallingInterfaceInfo* CallingInterface = nullptr;  // built when a table is first wanted
  std::array<FetchedTable, kServiceTables> Tables{};

  [[nodiscard]] FetchedTable& operator[](ServiceTable table) { return Tables[static_cast<size_t>(table)]; }
};
static_assert(std::is_trivially_destructible_v<AccessState>, "nothing constructs or destroys globals in a DXE image");

/// The state behind the operations: their callers hand in no more than the interface, which an image loaded later may
/// have replaced.
extern AccessState mAccess;
