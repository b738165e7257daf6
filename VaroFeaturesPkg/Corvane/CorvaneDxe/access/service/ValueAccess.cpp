/** @file
  Current values, asked of the service.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "access/service/ValueAccess.hpp"

#include "access/service/AttributeParts.hpp"
#include "access/service/AttributePayload.hpp"

namespace {

constexpr UINT16 kAnswerRoom = 128;  // announced for the answer

/// Asks for a value with the given checksum range, and gives its part of the answer; empty when there is none.
std::span<const std::byte> AskForValue(Request& request, UINT16 handle, UINT8 type, size_t checksummed) {
  PayloadWriter payload(request, {.Handle = handle});
  payload.Rest().PutValue(kAnswerRoom);
  payload.Seal(checksummed);
  if (EFI_ERROR(request.Dispatch()) || !request.Handled()) {
    return {};
  }
  const std::span<const std::byte> answer = request.Bytes(ATTRIBUTE_VALUE_OFFSET);
  return ByteReader(answer).Take(ValuePartSize(type, ByteReader(answer)));
}

}  // namespace

size_t QueryValueSize(AccessState& access, UINT16 handle, UINT8 type) {
  if (access.RequestBuffer == nullptr) {
    return 0;
  }
  Request request(access, REQUEST_CLASS_ATTRIBUTES, REQUEST_SELECT_VALUE);
  return AskForValue(request, handle, type, ATTRIBUTE_CHECKSUM_VALUE_SIZE).size();
}

bool FetchValue(AccessState& access, UINT16 handle, UINT8 type, std::span<std::byte> room) {
  if (access.RequestBuffer == nullptr) {
    return false;
  }
  Request request(access, REQUEST_CLASS_ATTRIBUTES, REQUEST_SELECT_VALUE);
  const auto value = AskForValue(request, handle, type, ATTRIBUTE_CHECKSUM_VALUE);
  if (value.empty() || value.size() > room.size()) {
    return false;
  }
  CopyMem(room.data(), value.data(), value.size());
  return true;
}
