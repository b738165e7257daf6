/** @file
  The operations that ask the service for a value, or to change one.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "access/service/AttributeParts.hpp"
#include "access/service/AttributePayload.hpp"
#include "access/service/FetchedTables.hpp"
#include "access/protocol/Operations.hpp"
#include "access/service/PasswordKey.hpp"
#include "access/service/TableWalk.hpp"
#include "access/service/ValueAccess.hpp"

static_assert(sizeof(AttributeInfo) == 8);

namespace {

constexpr size_t kAnswerEndByName =
    ATTRIBUTE_VALUE_BY_NAME_STATUS - sizeof(RequestBlock) - sizeof(AttributePayload) - 2;

/// The status that stands at `offset` of an answer.
EFI_STATUS AnswerAt(Request& request, size_t offset) {
  constexpr std::array<EFI_STATUS, 5> kStatuses = {EFI_SUCCESS, EFI_UNSUPPORTED, EFI_ACCESS_DENIED,
                                                   EFI_INVALID_PARAMETER, EFI_BUFFER_TOO_SMALL};
  const auto answer = std::to_integer<UINT8>(request.Bytes(offset)[0]);
  return answer < kStatuses.size() ? kStatuses[answer] : EFI_ABORTED;
}

/// What a request about an attribute needs before it can be made.
EFI_STATUS EnsureRequest() {
  const EFI_STATUS status = EnsureTable(mAccess, ServiceTable::Attributes);
  return !EFI_ERROR(status) && mAccess.RequestBuffer == nullptr ? EFI_OUT_OF_RESOURCES : status;
}

UINT32 KeyOf(const CHAR8* password) {
  return password == nullptr ? 0 : ObtainPasswordKey(mAccess, password);
}

/// Fills the parts of a record, or says how long it has to be.
EFI_STATUS FillInfo(const AttributeEntry& entry, std::byte* parts, UINT32& size) {
  const size_t valueSize = QueryValueSize(mAccess, entry.Handle, entry.Type);
  if (valueSize == 0) {
    return EFI_ABORTED;
  }
  const size_t needed = sizeof(AttributeInfo) + entry.Part.size() + valueSize;
  if (size < needed) {
    size = static_cast<UINT32>(needed);
    return EFI_BUFFER_TOO_SMALL;
  }
  CopyMem(parts, entry.Part.data(), entry.Part.size());
  const std::span<std::byte> value(parts + entry.Part.size(), valueSize);
  return FetchValue(mAccess, entry.Handle, entry.Type, value) ? EFI_SUCCESS : EFI_ABORTED;
}

/// The value part of a record with the given parts, as far as a set request carries it: of an enumeration the count and
/// the first index. Empty when the record is shorter.
std::span<const std::byte> ValueToSend(UINT8 type, std::span<const std::byte> parts) {
  ByteReader reader(parts);
  reader.Take(AttributePartSize(type, reader));
  return reader.Take(type == PLDM_BIOS_ATTRIBUTE_ENUMERATION ? 2 : ValuePartSize(type, reader));
}

/// What a set request carries: `Head` says of what kind `Value` is.
struct Change {
  AttributeKey Attribute;
  std::span<const std::byte> Head;
  std::span<const std::byte> Value;

  /// Bytes of the payload, the answer's status byte included.
  [[nodiscard]] size_t Length() const {
    const size_t nameLength = Attribute.Name == nullptr ? 0 : AsciiLength(Attribute.Name);
    return sizeof(AttributePayload) + nameLength + sizeof(UINT16) + Head.size() + Value.size() + sizeof(UINT8);
  }
};

/// Sends a change that fits the buffer. The status byte of the answer is what came of it, if the service `handled` it.
EFI_STATUS SendChange(const Change& change, UINT32 key, bool& handled) {
  Request request(mAccess, REQUEST_CLASS_ATTRIBUTES, REQUEST_SELECT_SET);
  request.Block().Arguments[1] = key;
  const auto length = static_cast<UINT32>(change.Length());
  PayloadWriter payload(request, change.Attribute);
  if (change.Attribute.Name == nullptr) {
    payload.SetLength(length);
  }
  payload.Rest().PutValue(static_cast<UINT16>(change.Head.size() + change.Value.size()));
  payload.Rest().Put(change.Head);
  payload.Rest().Put(change.Value);
  const size_t answer = payload.Offset();
  payload.Rest().PutValue(UINT8{0});
  payload.Seal(length);
  IgnoreStatus(request.Dispatch());  // whether the service handled it says more
  handled = request.Handled();
  return AnswerAt(request, answer);
}

}  // namespace

EFI_STATUS EFIAPI GetAttributeInfo(AttributeAccessProtocol* self, AttributeInfo* info, UINT32* size) {
  if (self == nullptr || info == nullptr || size == nullptr) {
    return EFI_INVALID_PARAMETER;
  }
  const EFI_STATUS status = EnsureTable(mAccess, ServiceTable::Attributes);
  if (EFI_ERROR(status)) {
    return status;
  }
  TableWalk walk(mAccess[ServiceTable::Attributes]);
  AttributeEntry entry{};
  while (NextAttribute(walk, entry)) {
    if (entry.Handle == info->Handle) {
      info->Type = NormaliseType(entry.Type);
      info->NameHandle = entry.NameHandle;
      return FillInfo(entry, reinterpret_cast<std::byte*>(info + 1), *size);
    }
    if (entry.Part.empty()) {
      return EFI_UNSUPPORTED;
    }
  }
  return EFI_SUCCESS;  // callers recognise a handle without attribute by the record left as it was
}

EFI_STATUS EFIAPI SetAttributeValue(AttributeAccessProtocol* self, AttributeInfo* info, UINT32 size,
                                    const CHAR8* password) {
  if (self == nullptr || info == nullptr || size == 0) {
    return EFI_INVALID_PARAMETER;
  }
  if (size <= sizeof(AttributeInfo)) {
    return EFI_BUFFER_TOO_SMALL;
  }
  if (const EFI_STATUS ready = EnsureRequest(); EFI_ERROR(ready)) {
    return ready;
  }
  if (info->Type != PLDM_BIOS_ATTRIBUTE_ENUMERATION && info->Type != PLDM_BIOS_ATTRIBUTE_STRING &&
      info->Type != PLDM_BIOS_ATTRIBUTE_INTEGER) {
    return EFI_ABORTED;
  }
  const auto type = static_cast<UINT8>(info->Type);
  const auto value = ValueToSend(type, {reinterpret_cast<const std::byte*>(info + 1), size - sizeof(AttributeInfo)});
  if (value.empty()) {
    return EFI_BUFFER_TOO_SMALL;
  }
  const bool isEnumeration = type == PLDM_BIOS_ATTRIBUTE_ENUMERATION;
  const std::array<std::byte, 2> head = {std::byte{type}, std::byte{1}};  // of an enumeration one value is sent
  const Change change{.Attribute = {.Handle = info->Handle},
                      .Head = std::span(head).first(isEnumeration ? 2 : 1),
                      .Value = isEnumeration ? value.last(1) : value};
  if (change.Length() > REQUEST_PAYLOAD_CAPACITY) {
    return EFI_INVALID_PARAMETER;
  }
  const UINT32 key = KeyOf(password);
  if (isEnumeration) {
    UINT32 needed = 0;
    IgnoreStatus(GetAttributeInfo(self, info, &needed));  // a failure leaves a size that no record has
    if (needed != size) {
      return EFI_BUFFER_TOO_SMALL;
    }
  }
  bool handled = false;
  const EFI_STATUS status = SendChange(change, key, handled);
  if (!handled) {
    return EFI_ABORTED;
  }
  return type == PLDM_BIOS_ATTRIBUTE_STRING ? EFI_SUCCESS : status;  // of a string callers read the value back
}

EFI_STATUS EFIAPI GetRequestBuffer(AttributeAccessProtocol*, VOID** buffer, UINT32* size) {
  if (buffer == nullptr) {
    return EFI_INVALID_PARAMETER;
  }
  if (mAccess.RequestBuffer == nullptr) {
    return EFI_OUT_OF_RESOURCES;
  }
  *buffer = mAccess.RequestBuffer;
  if (size != nullptr) {
    *size = REQUEST_BUFFER_SIZE;
  }
  return EFI_SUCCESS;
}

EFI_STATUS EFIAPI GetAttributeValueByName(AttributeAccessProtocol* self, const CHAR8* name, UINT8* buffer,
                                          UINT32* size) {
  if (self == nullptr || name == nullptr || size == nullptr) {
    return EFI_INVALID_PARAMETER;
  }
  if (const EFI_STATUS status = EnsureRequest(); EFI_ERROR(status)) {
    return status;
  }
  const size_t checksummed = ATTRIBUTE_CHECKSUM_VALUE_BY_NAME(AsciiLength(name));
  if (checksummed > REQUEST_PAYLOAD_CAPACITY) {
    return EFI_INVALID_PARAMETER;
  }
  Request request(mAccess, REQUEST_CLASS_ATTRIBUTES, REQUEST_SELECT_VALUE);
  PayloadWriter payload(request, {.Name = name});
  payload.Rest().PutValue(static_cast<UINT16>(kAnswerEndByName - AsciiLength(name)));
  payload.Seal(checksummed);
  if (const EFI_STATUS status = request.Dispatch(); EFI_ERROR(status)) {
    return status;
  }
  if (!request.Handled()) {
    return EFI_ABORTED;
  }
  // At the same place whatever the name's length, as services put it.
  if (const EFI_STATUS status = AnswerAt(request, ATTRIBUTE_VALUE_BY_NAME_STATUS); EFI_ERROR(status)) {
    return status;
  }
  ByteReader reader(request.Bytes(payload.Offset()));
  const UINT16 length = reader.Read<UINT16>();
  const std::span<const std::byte> value = reader.Take(length);
  if (!reader.Ok()) {
    return EFI_ABORTED;
  }
  if (*size < length) {
    *size = length;
    return EFI_BUFFER_TOO_SMALL;
  }
  if (buffer == nullptr && length != 0) {
    return EFI_INVALID_PARAMETER;
  }
  CopyMem(buffer, value.data(), length);
  return EFI_SUCCESS;
}

EFI_STATUS EFIAPI SetAttributeValueByName(AttributeAccessProtocol* self, const CHAR8* name, const CHAR8* value,
                                          const CHAR8* password) {
  if (self == nullptr || name == nullptr || value == nullptr) {
    return EFI_INVALID_PARAMETER;
  }
  if (const EFI_STATUS status = EnsureRequest(); EFI_ERROR(status)) {
    return status;
  }
  const std::span<const CHAR8> text(value, AsciiLength(value));
  const auto length = static_cast<UINT16>(text.size());
  const Change change{
      .Attribute = {.Name = name}, .Head = std::as_bytes(std::span(&length, 1)), .Value = std::as_bytes(text)};
  if (change.Length() > REQUEST_PAYLOAD_CAPACITY) {
    return EFI_INVALID_PARAMETER;
  }
  bool handled = false;
  return SendChange(change, KeyOf(password), handled);  // callers rely on the status byte alone
}
