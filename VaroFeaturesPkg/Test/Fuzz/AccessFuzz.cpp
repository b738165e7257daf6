/** @file
  Fuzz target of the attribute access protocol: whatever the service answers, no operation writes past its caller's
  buffer, the request buffer is zeroed afterwards, no password stays in freed memory, and nothing leaks.

  Input: the service's five tables, a block each with a byte in front that says how often it is repeated; then
  operations, each a byte, with what they are called with. An answer of the service takes a byte of the same bytes: 0 is
  a correct one, any other value selects a fault.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Fuzz/FuzzInput.hpp"
#include "access/service/AccessState.hpp"
#include "access/protocol/AttributeAccess.hpp"
#include "access/service/FetchedTables.hpp"

extern "C" {
#include <Corvane/TableDirectory.h>
}

namespace {

constexpr std::string_view kSecret = "gL7#wQz!04-Kp:Vx";
constexpr size_t kSecretPart = 6;  // characters that identify the secret

/// The machine and the service of one run.
struct Machine {
  FuzzInput Input;
  std::array<Bytes, kServiceTables> Tables;
  std::array<const std::byte*, kServiceTables> Seen{};
  std::set<const void*> Replaced;  // blocks that a later fetch replaced; they stay allocated
  EFI_FREE_POOL FreePool = nullptr;
};
Machine* machine = nullptr;

/// Compares byte by byte. The library's search would show the secret to the fuzzer, and the fuzzer would put it into an
/// answer.
bool HoldsSecret(const void* block, size_t size) {
  const auto* const bytes = static_cast<const char*>(block);
  size_t matched = 0;
  for (size_t i = 0; i < size && matched < kSecretPart; ++i) {
    matched = bytes[i] == kSecret[matched] ? matched + 1 : bytes[i] == kSecret[0] ? 1 : 0;
  }
  return matched == kSecretPart;
}

void NoteReplaced() {
  for (size_t i = 0; i < kServiceTables; ++i) {
    const std::byte* const now = mAccess.Tables[i].Block;
    if (machine->Seen[i] != nullptr && machine->Seen[i] != now) {
      machine->Replaced.insert(machine->Seen[i]);
    }
    machine->Seen[i] = now;
  }
}

void AnswerDirectory(RequestBlock& request) {
  TableDirectory directory{};
  directory.EntryCount = kServiceTables;
  for (UINT8 i = 0; i < kServiceTables; ++i) {
    directory.Entries[i].TableType = std::min<UINT8>(i, TABLE_DIRECTORY_TYPE_TEXT);
    directory.Entries[i].SubType = i > TABLE_DIRECTORY_TYPE_TEXT ? 1 : 0;
    directory.Entries[i].TableId = i;
  }
  request.PayloadLength = sizeof(UINT32) + sizeof(directory);
  std::memcpy(&request + 1, &directory, sizeof(directory));
}

void AnswerTable(RequestBlock& request) {
  const Bytes& table = machine->Tables[request.Arguments[2] % kServiceTables];
  const size_t offset = std::min<size_t>(request.Arguments[3], table.size());
  const size_t length = std::min<size_t>(table.size() - offset, REQUEST_PAYLOAD_CAPACITY);
  std::copy_n(table.begin() + static_cast<std::ptrdiff_t>(offset), length,
              reinterpret_cast<std::uint8_t*>(&request + 1));
  const bool chunked = table.size() + sizeof(UINT32) > REQUEST_PAYLOAD_CAPACITY;
  request.PayloadLength = static_cast<UINT32>(!chunked      ? table.size() + sizeof(UINT32)
                                              : offset == 0 ? table.size()
                                                            : length);
}

/// Puts bytes of the input anywhere into the buffer.
void Scribble(RequestBlock& request) {
  const size_t offset = machine->Input.Take<std::uint16_t>();
  const Bytes bytes = machine->Input.Bytes(std::min<size_t>(machine->Input.Take(), REQUEST_BUFFER_SIZE - offset));
  std::copy(bytes.begin(), bytes.end(), reinterpret_cast<std::uint8_t*>(&request) + offset);
}

EFI_STATUS EFIAPI Dispatch(DispatchDescriptor* descriptor) {
  NoteReplaced();
  RequestBlock& request = *mAccess.RequestBuffer;
  Require(descriptor == &request.Descriptor && request.Results[0] == REQUEST_NOT_HANDLED, "a request");
  const bool verifies = request.Class != REQUEST_CLASS_ATTRIBUTES && request.Select == REQUEST_SELECT_PASSWORD_VERIFY;
  Require(verifies || !HoldsSecret(&request, REQUEST_BUFFER_SIZE), "a password in another request");
  if (request.Class != REQUEST_CLASS_ATTRIBUTES) {
    request.Results[1] = verifies ? 0xC0DE : machine->Input.Take<std::uint16_t>();
  } else if (request.Select == REQUEST_SELECT_DIRECTORY) {
    AnswerDirectory(request);
  } else if (request.Select == REQUEST_SELECT_TABLE) {
    AnswerTable(request);
  } else {
    Scribble(request);  // a value
  }
  request.Results[0] = 0;
  const auto wrong = machine->Input.Take();
  if ((wrong & 1) != 0) {
    request.PayloadLength = machine->Input.Take<std::uint32_t>();
  }
  if ((wrong & 2) != 0) {
    Scribble(request);
  }
  if ((wrong & 4) != 0) {
    request.Results[0] = 1;
  }
  return (wrong & 8) == 0 ? EFI_SUCCESS : (wrong & 16) != 0 ? EFI_WARN_STALE_DATA : EFI_DEVICE_ERROR;
}

/// A caller's buffer of `size` bytes and those that the operation may write after them; or none.
struct Room {
  Room(size_t size, size_t besides) : Size(static_cast<UINT32>(size)), Buffer(size + besides, 0x5A) {}
  UINT32 Size;
  Bytes Buffer;
};

void CallOperation(FuzzInput& input, AttributeAccessProtocol& access) {
  const auto operation = input.Take();
  const auto handle = input.Take<std::uint16_t>();
  const auto size = input.Take<std::uint16_t>();
  const std::string password(kSecret.substr(0, kSecretPart + input.Take() % (kSecret.size() - kSecretPart)));
  const char* const given = (operation & 0x80) != 0 ? password.c_str() : nullptr;
  const bool noBuffer = (operation & 0x40) != 0;
  switch (operation % 12) {
    case 0: {
      Room room(size, sizeof(CHAR8));
      access.GetAttributeString(&access, handle, noBuffer ? nullptr : reinterpret_cast<CHAR8*>(room.Buffer.data()),
                                &room.Size);
      break;
    }
    case 1: {
      UINT16 found = 0;
      const std::string name = input.Ascii();
      access.FindAttributeHandle(&access, noBuffer ? nullptr : name.c_str(), &found);
      break;
    }
    case 2:
    case 3: {
      Room room(size, sizeof(CHAR16));
      (operation % 12 == 2 ? access.GetTextStringA : access.GetTextStringB)(
          &access, handle, noBuffer ? nullptr : reinterpret_cast<CHAR16*>(room.Buffer.data()), &room.Size);
      break;
    }
    case 4: {
      Room room(size, sizeof(UINT16));
      access.GetAttributeHandles(&access, noBuffer ? nullptr : reinterpret_cast<UINT16*>(room.Buffer.data()),
                                 &room.Size);
      break;
    }
    case 5: {
      Room room(std::max<size_t>(size, sizeof(AttributeInfo)), 0);
      room.Size = size;
      auto* const info = reinterpret_cast<AttributeInfo*>(room.Buffer.data());
      info->Handle = handle;
      access.GetAttributeInfo(&access, info, &room.Size);
      break;
    }
    case 6: {
      Bytes record = input.Bytes(std::min<size_t>(size, 0x300));
      record.resize(std::max(record.size(), sizeof(AttributeInfo)));
      auto* const info = reinterpret_cast<AttributeInfo*>(record.data());
      info->Handle = handle;
      access.SetAttributeValue(&access, info, static_cast<UINT32>(record.size()), given);
      break;
    }
    case 7: {
      void* buffer = nullptr;
      UINT32 length = 0;
      access.GetRequestBuffer(&access, &buffer, &length);
      Require(buffer == mAccess.RequestBuffer, "the request buffer");
      break;
    }
    case 8: {
      Room room(size, 0);
      const std::string name = input.Ascii();
      access.GetAttributeValueByName(&access, name.c_str(), noBuffer ? nullptr : room.Buffer.data(), &room.Size);
      break;
    }
    case 9: {
      const std::string name = input.Ascii();
      const std::string value = input.Ascii();
      access.SetAttributeValueByName(&access, name.c_str(), value.c_str(), given);
      break;
    }
    default:
      ReleaseFetchedTables(mAccess);
      machine->Seen = {};
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  FakeUefi uefi;
  LimitPool();
  Machine run{.Input = {data, size}};
  machine = &run;
  run.FreePool = gBS->FreePool;
  gBS->FreePool = [](VOID* block) -> EFI_STATUS {
    const auto known = FakeUefi::Current().PoolBlocks().find(block);
    Require(known == FakeUefi::Current().PoolBlocks().end() || !HoldsSecret(block, known->second),
            "a password in memory that is given back");
    return machine->FreePool(block);
  };
  for (Bytes& table : run.Tables) {
    const auto times = run.Input.Take();
    const Bytes part = run.Input.Block();
    for (unsigned i = 0; i <= times && table.size() < 4 * REQUEST_BUFFER_SIZE; ++i) {
      Append(table, part);
    }
  }
  mAccess = {};
  RequestDispatchProtocol dispatch{Dispatch};
  uefi.Install(gVaroRequestDispatchProtocolGuid, &dispatch);
  Require(InstallAttributeAccessProtocol(gImageHandle, UnloadAttributeAccess) == EFI_SUCCESS, "not installed");
  AttributeAccessProtocol& access = *uefi.Find<AttributeAccessProtocol>(gVaroAttributeAccessProtocolGuid);
  const Bytes zeroed(REQUEST_BUFFER_SIZE);
  for (int calls = 0; run.Input.More() && calls < 24; ++calls) {
    CallOperation(run.Input, access);
    NoteReplaced();
    Require(std::memcmp(mAccess.RequestBuffer, zeroed.data(), zeroed.size()) == 0, "the request buffer is not zeroed");
  }
  const void* const buffer = mAccess.RequestBuffer;
  Require(UnloadAttributeAccess(gImageHandle) == EFI_SUCCESS, "not unloaded");
  for (const auto& [block, length] : uefi.PoolBlocks()) {
    Require(block == buffer || run.Replaced.contains(block), "a block was left");
  }
  return 0;
}
