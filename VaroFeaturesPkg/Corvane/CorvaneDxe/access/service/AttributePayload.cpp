/** @file
  Layout of an AttributePayload.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "access/service/AttributePayload.hpp"

static_assert(sizeof(AttributePayload) == 22 && offsetof(AttributePayload, Length) == 12);

PayloadWriter::PayloadWriter(Request& request, const AttributeKey& key)
    : block_(request.Block()), payload_(request.Bytes(sizeof(RequestBlock))), rest_(payload_) {
  block_.PayloadLength = ATTRIBUTE_PAYLOAD_LENGTH + sizeof(UINT32);
  AttributePayload head{};
  CopyMem(head.Signature, ATTRIBUTE_PAYLOAD_SIGNATURE, sizeof(head.Signature));
  head.Length = ATTRIBUTE_PAYLOAD_LENGTH;
  head.Count = 1;
  size_t nameLength = 0;
  if (key.Name == nullptr) {
    head.KeySize = sizeof(head.Key.Handle);
    head.Key.Handle = key.Handle;
  } else {
    nameLength = AsciiLength(key.Name);
    head.ByName = 1;
    head.KeySize = static_cast<UINT16>(nameLength + sizeof(head.Key.NameLength));
    head.Key.NameLength = static_cast<UINT16>(nameLength);
  }
  rest_.PutValue(head);
  rest_.Put(std::as_bytes(std::span(key.Name, nameLength)));
}

void PayloadWriter::SetLength(UINT32 length) {
  block_.PayloadLength = length;
  reinterpret_cast<AttributePayload*>(payload_.data())->Length = length;
}

void PayloadWriter::Seal(size_t count) {
  payload_[offsetof(AttributePayload, Checksum)] =
      std::byte{CalculateCheckSum8(reinterpret_cast<const UINT8*>(payload_.data()), count)};
}
