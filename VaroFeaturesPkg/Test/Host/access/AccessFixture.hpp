/** @file
  Fixture of tests that call the attribute access protocol: an attribute service that a test can make misbehave.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include <numeric>

#include "FakeUefi/FakeUefi.hpp"
#include "Host/TestBytes.hpp"
#include "access/service/AccessState.hpp"
#include "access/protocol/AttributeAccess.hpp"

extern "C" {
#include <Corvane/TableDirectory.h>
#include <IndustryStandard/PldmBios.h>
}

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class AccessFixture : public testing::Test {
 protected:
  static constexpr size_t kSize = REQUEST_BUFFER_SIZE;
  static constexpr size_t kPayload = 96;  ///< offset of the payload

  AccessFixture();
  ~AccessFixture() override { mAccess = {}; }

  void Install() {
    ASSERT_EQ(InstallAttributeAccessProtocol(gImageHandle, UnloadAttributeAccess), EFI_SUCCESS);
    protocol = uefi.Find<AttributeAccessProtocol>(gVaroAttributeAccessProtocolGuid);
    ASSERT_NE(protocol, nullptr);
  }
  /// As if no table had been fetched yet.
  void Forget();

  /// The requests of a class and select that were dispatched, each the whole buffer.
  [[nodiscard]] std::vector<Bytes> Sent(UINT16 requestClass, UINT16 select) const;
  /// Bytes `from` to `to` of the only such request.
  [[nodiscard]] Bytes SentBytes(UINT16 requestClass, UINT16 select, size_t from, size_t to) const;
  [[nodiscard]] static Bytes Buffer() { return BytesAt(mAccess.RequestBuffer, kSize); }

  /// An entry of a string table, or of a text table with a u"" text.
  template <typename Text>
  static Bytes Entry(unsigned handle, Text text) {
    return Join(U16(handle), U16(static_cast<unsigned>(text.size() * sizeof(text[0]))), text);
  }
  static Bytes Attribute(unsigned handle, unsigned type, unsigned name, const Bytes& part) {
    return Join(U16(handle), U8(type), U16(name), part);
  }

  FakeUefi uefi;
  AttributeAccessProtocol* protocol = nullptr;
  RequestDispatchProtocol dispatch{Dispatch};

  // The service.

  struct Table {
    UINT8 Type;
    UINT8 SubType;
    Bytes Content;
  };
  std::map<UINT8, Table> tables;   ///< by id
  std::map<UINT16, Bytes> values;  ///< value part, by attribute handle
  Bytes namedValue;                ///< what every name's value is
  UINT8 status = 0;                ///< status byte of values by name and of changes
  std::map<UINT16, UINT32> passwordProperties{{9, 0x2000}, {10, 0x2000}};
  std::map<UINT16, std::string> passwords;         ///< of class 9 and 10; its key is 0xC0DE0000 + class
  size_t chunkSize = kSize - kPayload;             ///< of chunked tables
  std::function<EFI_STATUS(RequestBlock&)> after;  ///< may change the answer; returns the status of the dispatch
  std::set<const void*> replaced;                  ///< blocks that a later fetch replaced; they stay allocated
  void NoteReplaced();

 private:
  static EFI_STATUS EFIAPI Dispatch(DispatchDescriptor* descriptor);
  void AnswerDirectory(RequestBlock& request);
  void AnswerTable(RequestBlock& request);
  void AnswerPayload(RequestBlock& request);
  void AnswerPassword(RequestBlock& request);

  static AccessFixture* current_;

  std::vector<Bytes> sent_;
  std::set<UINT8> announced_;
  std::array<const std::byte*, kServiceTables> seen_{};
};
