/** @file
  Request: one request to the attribute service, in the RequestBuffer.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "access/service/AccessState.hpp"
#include "uefi/ByteReader.hpp"

/// Bytes of an answer that counts its own length field.
constexpr size_t kAnswerCapacity = REQUEST_BUFFER_SIZE - offsetof(RequestBlock, PayloadLength);

/// The RequestBuffer while one request is prepared, dispatched and read. Whatever the outcome, nothing of it stays
/// behind: a request may hold a password or its key.
class Request {
 public:
  /// Lays out the block. The buffer must be there, and is used by one request at a time.
  Request(AccessState& access, UINT16 requestClass, UINT16 select);
  Request(const Request&) = delete;
  Request& operator=(const Request&) = delete;
  ~Request() { ZeroMem(&block_, REQUEST_BUFFER_SIZE); }

  [[nodiscard]] RequestBlock& Block() { return block_; }

  /// Prepares the payload area for an answer of any length.
  void FillPayload();

  /// The status of the delivery.
  EFI_STATUS Dispatch() { return dispatcher_.Dispatch(&block_.Descriptor); }
  [[nodiscard]] bool Handled() const { return block_.Results[0] == 0; }

  /// Reads the payload length of the answer. The service may change the buffer at any time, so a caller that checks the
  /// length reads it once.
  [[nodiscard]] UINT32 PayloadLength() const { return static_cast<const volatile RequestBlock&>(block_).PayloadLength; }

  /// Bytes from `offset` of the buffer to its end.
  [[nodiscard]] std::span<std::byte> Bytes(size_t offset) {
    return std::span(reinterpret_cast<std::byte*>(&block_), REQUEST_BUFFER_SIZE).subspan(offset);
  }
  /// From the length field of the payload on.
  [[nodiscard]] std::span<std::byte> Answer() { return Bytes(offsetof(RequestBlock, PayloadLength)); }

 private:
  RequestBlock& block_;
  RequestDispatchProtocol& dispatcher_;
};
