/** @file
  Fetching of the service's tables.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "access/service/FetchedTables.hpp"

#include "access/service/Request.hpp"
#include "uefi/Protocols.hpp"

extern "C" {
#include <Corvane/TableDirectory.h>
}

namespace {

/// Gives a table its block. An earlier one stays: an answer of it may still be in use.
void KeepTable(FetchedTable& table, PoolPtr<std::byte[]> block, size_t size) {
  table = {.Block = block.get(), .Size = block ? size : 0};
  static_cast<void>(block.release());
}

/// Copies an answer, its length field included, of `length` bytes: the length that the answer had when it was checked.
/// The service may still write to the buffer.
PoolPtr<std::byte[]> CopyAnswer(Request& request, UINT32 length) {
  return PoolPtr<std::byte[]>{static_cast<std::byte*>(CopyBytes(request.Answer().data(), length))};
}

/// Asks for a table from `offset` on.
EFI_STATUS AskForTable(Request& request, UINT8 tableId, UINT32 offset) {
  request.FillPayload();
  request.Block().Arguments[2] = tableId;
  request.Block().Arguments[3] = offset;
  return request.Dispatch();
}

void FetchWhole(AccessState& access, UINT8 tableId, FetchedTable& table) {
  Request request(access, REQUEST_CLASS_ATTRIBUTES, REQUEST_SELECT_TABLE);
  if (EFI_ERROR(AskForTable(request, tableId, 0))) {
    return;
  }
  if (const UINT32 length = request.PayloadLength(); length <= kAnswerCapacity) {
    KeepTable(table, CopyAnswer(request, length), length);
  }
}

/// Adds the chunk from `offset` on to `block`. Returns its bytes; 0 ends the fetch.
UINT32 FetchChunk(AccessState& access, UINT8 tableId, UINT32 offset, std::span<std::byte> block) {
  Request request(access, REQUEST_CLASS_ATTRIBUTES, REQUEST_SELECT_TABLE);
  if (EFI_ERROR(AskForTable(request, tableId, offset))) {
    return 0;
  }
  const UINT32 answered = request.PayloadLength();
  if (answered > REQUEST_PAYLOAD_CAPACITY) {
    return 0;
  }
  const auto length = static_cast<UINT32>(std::min<size_t>(answered, block.size() - offset));
  CopyMem(block.data() + offset, request.Bytes(sizeof(RequestBlock)).data(), length);
  return length;
}

/// A table that is announced first: whole when it fits one answer, else in chunks.
void FetchAnnounced(AccessState& access, UINT8 tableId, FetchedTable& table) {
  UINT32 announced = 0;
  {
    Request request(access, REQUEST_CLASS_ATTRIBUTES, REQUEST_SELECT_TABLE);
    if (EFI_ERROR(AskForTable(request, tableId, 0))) {
      return;
    }
    announced = request.PayloadLength();
  }
  if (announced < kAnswerCapacity) {
    FetchWhole(access, tableId, table);
    return;
  }
  // The count is that of the table alone, so that readers of a chunked table stop four bytes earlier.
  const size_t size = sizeof(announced) + size_t{announced};
  PoolPtr<std::byte[]> block = AllocateZeroedArray<std::byte>(size);
  if (block) {
    CopyMem(block.get(), &announced, sizeof(announced));
    UINT32 offset = 0;
    UINT32 length = 0;
    do {
      length = FetchChunk(access, tableId, offset, {block.get() + sizeof(announced), announced});
      offset += length;
    } while (length != 0 && offset < announced);
  }
  KeepTable(table, std::move(block), size);
}

/// Fetches what a directory entry lists, if it is one of the five tables.
void FetchListed(AccessState& access, const TableDirectoryEntry& entry) {
  static_assert(static_cast<size_t>(ServiceTable::Values) == TABLE_DIRECTORY_TYPE_VALUES);
  static_assert(static_cast<size_t>(ServiceTable::Display) == TABLE_DIRECTORY_TYPE_TEXT + 1);
  if (entry.TableType < TABLE_DIRECTORY_TYPE_TEXT) {
    FetchWhole(access, entry.TableId, access.Tables[entry.TableType]);
  } else if (entry.TableType == TABLE_DIRECTORY_TYPE_TEXT && entry.SubType <= 1) {
    FetchAnnounced(access, entry.TableId, access.Tables[size_t{TABLE_DIRECTORY_TYPE_TEXT} + entry.SubType]);
  }
}

bool IsServiceReady(AccessState& access) {
  if (access.RequestBuffer == nullptr) {
    return false;
  }
  PoolPtr<std::byte[]> directory;
  size_t directoryLength = 0;
  {
    Request request(access, REQUEST_CLASS_ATTRIBUTES, REQUEST_SELECT_DIRECTORY);
    request.FillPayload();
    if (EFI_ERROR(request.Dispatch()) || !request.Handled()) {
      return false;
    }
    const UINT32 length = request.PayloadLength();
    if (length > kAnswerCapacity) {
      return false;
    }
    directory = CopyAnswer(request, length);
    directoryLength = length;
  }
  if (!directory) {
    return false;
  }
  ByteReader reader({directory.get(), directoryLength});
  reader.Take(sizeof(UINT32) + offsetof(TableDirectory, EntryCount));
  for (UINT8 count = reader.Read<UINT8>(); count > 0; --count) {
    const auto entry = reader.ReadStruct<TableDirectoryEntry>();
    if (!reader.Ok()) {
      break;
    }
    FetchListed(access, entry);
  }
  return true;
}

}  // namespace

EFI_STATUS EnsureReady(AccessState& access) {
  if (access.CallingInterface == nullptr) {
    access.CallingInterface = BuildCallingInterfaceInfo();
  }
  if (access.Dispatcher == nullptr) {
    const EFI_STATUS status = LocateProtocol(gVaroRequestDispatchProtocolGuid, access.Dispatcher);
    if (EFI_ERROR(status)) {
      return status;
    }
    if (access.Dispatcher == nullptr) {
      return EFI_NOT_FOUND;  // installed as a mere signal
    }
  }
  return IsServiceReady(access) ? EFI_SUCCESS : EFI_NOT_READY;
}

EFI_STATUS EnsureTable(AccessState& access, ServiceTable table) {
  return access[table].Block != nullptr ? EFI_SUCCESS : EnsureReady(access);
}

void ReleaseFetchedTables(AccessState& access) {
  for (size_t table = access.Tables.size(); table-- > 0;) {  // display texts first, strings last
    FreeBlock(access.Tables[table].Block);
    access.Tables[table] = {};
  }
  ReleaseCallingInterfaceInfo(access.CallingInterface);
  access.CallingInterface = nullptr;
}
