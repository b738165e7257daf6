/** @file
  The attribute service of AccessFixture, as a platform's would answer.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/access/AccessFixture.hpp"

AccessFixture* AccessFixture::current_ = nullptr;

AccessFixture::AccessFixture() {
  current_ = this;
  uefi.Install(gVaroRequestDispatchProtocolGuid, &dispatch);
  tables[0] = {0, 0, Join(Entry(16, std::string_view("Fan")), Entry(17, std::string_view("Asset[RegEx:^x$]")))};
  tables[1] = {1, 0, {}};
  tables[2] = {2, 0, {}};
}

void AccessFixture::Forget() {
  ReleaseCallingInterfaceInfo(mAccess.CallingInterface);
  mAccess.CallingInterface = nullptr;
  for (FetchedTable& table : mAccess.Tables) {
    if (table.Block != nullptr) {
      gBS->FreePool(const_cast<std::byte*>(table.Block));
    }
    table = {};
  }
  sent_.clear();
  announced_.clear();
  replaced.clear();
  seen_ = {};
}

void AccessFixture::NoteReplaced() {
  for (size_t i = 0; i < kServiceTables; ++i) {
    const std::byte* const before = std::exchange(seen_[i], mAccess.Tables[i].Block);
    if (before != nullptr && before != seen_[i]) {
      replaced.insert(before);
    }
  }
}

std::vector<Bytes> AccessFixture::Sent(UINT16 requestClass, UINT16 select) const {
  std::vector<Bytes> requests;
  std::copy_if(sent_.begin(), sent_.end(), std::back_inserter(requests), [&](const Bytes& request) {
    return Bytes(request.begin(), request.begin() + 4) == Join(requestClass, select);
  });
  return requests;
}

Bytes AccessFixture::SentBytes(UINT16 requestClass, UINT16 select, size_t from, size_t to) const {
  const auto requests = Sent(requestClass, select);
  return requests.size() == 1 ? Middle(requests[0], from, kSize - to) : Bytes{};
}

EFI_STATUS EFIAPI AccessFixture::Dispatch(DispatchDescriptor* descriptor) {
  RequestBlock& request = *mAccess.RequestBuffer;
  EXPECT_EQ(descriptor, &request.Descriptor);
  EXPECT_EQ(BytesAt(descriptor, 32),
            Join(U8(0x7C), Bytes(7), U64(reinterpret_cast<UINTN>(&request)), Bytes(8), U16(0), Bytes(6)));
  EXPECT_EQ(BytesAt(request.Results, 16), Join(U32(0xFFFFFFFD), Bytes(12)));
  AccessFixture& self = *current_;
  self.sent_.push_back(Buffer());
  self.NoteReplaced();
  if (const EFI_STATUS status = self.uefi.Enter(Service::PlatformCall); status != EFI_SUCCESS) {
    return status;
  }
  request.Results[0] = 0;
  if (request.Class != REQUEST_CLASS_ATTRIBUTES) {
    self.AnswerPassword(request);
  } else if (request.Select == REQUEST_SELECT_DIRECTORY) {
    self.AnswerDirectory(request);
  } else if (request.Select == REQUEST_SELECT_TABLE) {
    self.AnswerTable(request);
  } else {
    self.AnswerPayload(request);
  }
  return self.after ? self.after(request) : EFI_SUCCESS;
}

void AccessFixture::AnswerDirectory(RequestBlock& request) {
  Bytes answer =
      Join(U32(U32(28) + U32(16) * static_cast<UINT32>(tables.size())), Bytes(23), U8(unsigned(tables.size())));
  for (const auto& [id, table] : tables) {
    Append(answer, Join(table.Type, table.SubType, Bytes(5), id, Bytes(8)));
  }
  std::copy(answer.begin(), answer.end(), reinterpret_cast<std::uint8_t*>(&request.PayloadLength));
}

void AccessFixture::AnswerTable(RequestBlock& request) {
  auto* const payload = reinterpret_cast<std::uint8_t*>(&request + 1);
  const auto id = static_cast<UINT8>(request.Arguments[2]);
  const Bytes& content = tables.at(id).Content;
  if (content.size() <= 65439) {
    request.PayloadLength = static_cast<UINT32>(content.size() + 4);
    std::copy(content.begin(), content.end(), payload);
  } else if (announced_.insert(id).second) {
    request.PayloadLength = static_cast<UINT32>(content.size());
  } else {
    const size_t offset = request.Arguments[3];
    request.PayloadLength = static_cast<UINT32>(std::min(chunkSize, content.size() - offset));
    std::copy_n(content.begin() + static_cast<std::ptrdiff_t>(offset),
                std::min<size_t>(request.PayloadLength, kSize - kPayload), payload);
  }
}

void AccessFixture::AnswerPayload(RequestBlock& request) {
  auto* const buffer = reinterpret_cast<std::uint8_t*>(&request);
  const bool byName = buffer[105] != 0;
  const size_t key = size_t{buffer[114]} + size_t{buffer[115]} * 256 - (byName ? 2 : 0);
  const size_t rest = byName ? 118 + key : 118;
  if (request.Select == REQUEST_SELECT_SET) {
    buffer[rest + 2 + buffer[rest] + buffer[rest + 1] * 256U] = status;
  } else if (byName) {
    const Bytes answer = Join(U16(static_cast<unsigned>(namedValue.size())), namedValue);
    std::copy(answer.begin(), answer.end(), buffer + rest + 2);
    buffer[253] = status;
  } else {
    const Bytes& value = values[static_cast<UINT16>(buffer[116] + buffer[117] * 256)];
    std::copy(value.begin(), value.end(), buffer + 121);
  }
}

void AccessFixture::AnswerPassword(RequestBlock& request) {
  if (request.Select == REQUEST_SELECT_PASSWORD_QUERY) {
    request.Results[1] = passwordProperties[request.Class];
    return;
  }
  const std::string& password = passwords[request.Class];
  const bool right =
      !password.empty() && std::memcmp(&request.PayloadLength, password.c_str(), password.size() + 1) == 0;
  request.Results[0] = right ? 0 : 1;
  request.Results[1] = right ? 0xC0DE0000U + request.Class : 0;
}
