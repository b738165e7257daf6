/** @file
  AttributePayload: what a value or set request says, and the checksum over it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "access/service/Request.hpp"
#include "uefi/ByteWriter.hpp"
#include "uefi/Text.hpp"

/// How a request names its attribute.
struct AttributeKey {
  UINT16 Handle = 0;
  const CHAR8* Name = nullptr;  // null = by handle
};

/// Lays out a request's payload. Its writer stands behind what names the attribute, for what the request adds.
class PayloadWriter {
 public:
  PayloadWriter(Request& request, const AttributeKey& key);

  /// A request to change an attribute found by its handle says how many bytes it carries; all others say the same.
  void SetLength(UINT32 length);

  [[nodiscard]] ByteWriter& Rest() { return rest_; }
  /// Offset in the RequestBuffer of what is put next.
  [[nodiscard]] size_t Offset() const { return sizeof(RequestBlock) + rest_.Used(); }

  /// Makes the first `count` bytes sum to 0.
  void Seal(size_t count);

 private:
  RequestBlock& block_;
  std::span<std::byte> payload_;
  ByteWriter rest_;
};
