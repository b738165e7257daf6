/** @file
  Tests of operations, and of the unload, in which calls of the firmware's services and of the attribute service fail:
  each in turn, and neighbouring ones together.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/access/AccessFixture.hpp"
#include "uefi/Status.hpp"

namespace {

using Later = FakeUefi::Later;

struct Failure {
  Service Kind;
  EFI_STATUS Status;
};
constexpr Failure kFailures[] = {
    {Service::Allocation, EFI_OUT_OF_RESOURCES},   {Service::ProtocolLookup, EFI_NOT_FOUND},
    {Service::ProtocolLookup, EFI_DEVICE_ERROR},   {Service::PlatformCall, EFI_DEVICE_ERROR},
    {Service::PlatformCall, EFI_WARN_STALE_DATA},  // nobody answered
    {Service::Registration, EFI_OUT_OF_RESOURCES},
};
constexpr size_t kReach = 6;  // how far apart the two calls of a pair are at most

/// What a caller gets: the status and the content of its buffers.
using Outcome = std::pair<EFI_STATUS, Bytes>;

class AccessFailureTest : public AccessFixture {
 protected:
  struct Operation {
    const char* Name;
    std::function<Outcome()> Call;
  };

  AccessFailureTest() {
    tables[1].Content =
        Join(Attribute(16, 3, 16, Bytes(28)), Attribute(18, 0, 99, Join(U8(2), U16(20), U16(21), U8(1), U8(0))));
    tables[9] = {3, 1, Join(U16(0), Entry(16, std::u16string_view(u"Fan")))};
    tables[10] = {3, 0, Join(U16(0), Entry(16, std::u16string_view(u"Help")), Bytes(70000))};
    values = {{16, Join(U64(7))}, {18, Join(U8(1), U8(1))}};
    namedValue = Join("on");
    passwords = {{REQUEST_CLASS_ADMIN_PASSWORD, "secret"}};
  }

  /// A machine that has just started, with the protocol installed.
  void Restart() {
    Forget();
    uefi.Reboot();
    mAccess = {};
    uefi.Install(gVaroRequestDispatchProtocolGuid, &dispatch);
    Install();
    uefi.FailCalls({});
  }
  static Outcome Into(size_t size, const std::function<EFI_STATUS(void*, UINT32&)>& call) {
    Bytes room(size + 4, 0xEE);
    auto length = static_cast<UINT32>(size);
    const EFI_STATUS result = call(room.data(), length);
    return {result, Join(length, room)};
  }

  const std::vector<Operation> operations_ = {
      {"GetAttributeString",
       [this] {
         return Into(8, [this](void* room, UINT32& size) {
           return protocol->GetAttributeString(protocol, 16, static_cast<CHAR8*>(room), &size);
         });
       }},
      {"FindAttributeHandle",
       [this] {
         return Into(2, [this](void* room, UINT32&) {
           return protocol->FindAttributeHandle(protocol, "Fan", static_cast<UINT16*>(room));
         });
       }},
      {"GetTextStringA",
       [this] {
         return Into(20, [this](void* room, UINT32& size) {
           return protocol->GetTextStringA(protocol, 16, static_cast<CHAR16*>(room), &size);
         });
       }},
      {"GetTextStringB",
       [this] {
         return Into(20, [this](void* room, UINT32& size) {
           return protocol->GetTextStringB(protocol, 16, static_cast<CHAR16*>(room), &size);
         });
       }},
      {"GetAttributeHandles",
       [this] {
         return Into(20, [this](void* room, UINT32& size) {
           return protocol->GetAttributeHandles(protocol, static_cast<UINT16*>(room), &size);
         });
       }},
      {"GetAttributeInfo",
       [this] {
         return Into(60, [this](void* room, UINT32& size) {
           static_cast<AttributeInfo*>(room)->Handle = 18;
           return protocol->GetAttributeInfo(protocol, static_cast<AttributeInfo*>(room), &size);
         });
       }},
      {"SetAttributeValue",
       [this] {
         Bytes record = Join(U32(0), U16(18), U16(0), U8(2), U16(20), U16(21), U8(1), U8(0), U8(1), U8(1));
         return Outcome{protocol->SetAttributeValue(protocol, reinterpret_cast<AttributeInfo*>(record.data()),
                                                    static_cast<UINT32>(record.size()), "secret"),
                        {}};
       }},
      {"GetRequestBuffer",
       [this] {
         void* buffer = nullptr;
         const EFI_STATUS result = protocol->GetRequestBuffer(protocol, &buffer, nullptr);
         return Outcome{result, {buffer == mAccess.RequestBuffer}};
       }},
      {"GetAttributeValueByName",
       [this] {
         return Into(8, [this](void* room, UINT32& size) {
           return protocol->GetAttributeValueByName(protocol, "Fan", static_cast<UINT8*>(room), &size);
         });
       }},
      {"SetAttributeValueByName",
       [this] {
         return Outcome{protocol->SetAttributeValueByName(protocol, "Fan", "off", "secret"), {}};
       }},
      {"unload",
       [] {
         return Outcome{UnloadAttributeAccess(gImageHandle), {}};
       }},
  };

  /// Runs one operation with the faults that `fail` sets up. The caller gets the usual result, an error, or nothing.
  /// Nothing stays in the request buffer. The next operation without faults works, and nothing leaks. With
  /// `unanswered`, a call that nobody handles counts as delivered: the table is then the old content of the buffer.
  void Try(const Operation& operation, const Outcome& whole, bool unanswered, const std::function<void()>& fail) {
    Restart();
    const void* const record = mAccess.Interface;
    const void* const buffer = mAccess.RequestBuffer;
    fail();
    const Outcome had = operation.Call();
    ++tries_;
    NoteReplaced();
    EXPECT_EQ(Buffer(), Bytes(kSize));
    // A table that could not be kept is an empty one: no attribute, no handle but the last, 0.
    const bool nothing = std::all_of(had.second.begin() + (had.second.empty() ? 0 : 4), had.second.end(),
                                     [](UINT8 byte) { return byte == 0xEE || byte == 0 || byte == 18; });
    EXPECT_TRUE(had == whole || EFI_ERROR(had.first) || nothing);
    for (const Failure& failure : kFailures) {
      uefi.Fail(failure.Kind, SIZE_MAX / 2, EFI_SUCCESS);
    }
    uefi.FailCalls({});
    if (mAccess.Interface != nullptr) {
      if (unanswered || operation.Name == std::string_view("GetTextStringA")) {
        const auto before = replaced;
        Forget();  // the first chunks of a table are kept
        replaced = before;
      }
      EXPECT_EQ(operation.Call(), whole);
      NoteReplaced();
      IgnoreStatus(UnloadAttributeAccess(gImageHandle));
    }
    for (const auto& [block, size] : uefi.PoolBlocks()) {
      EXPECT_TRUE(block == buffer || replaced.contains(block) ||
                  (block == record && uefi.Find<void>(gVaroAttributeAccessProtocolGuid) == record))
          << size << " bytes are left";
    }
  }

  size_t tries_ = 0;
};

TEST_F(AccessFailureTest, Operation_WhenCallsFail_EndsCleanlyAndTheNextOneWorks) {
  size_t pairs = 0;
  for (const Operation& operation : operations_) {
    Restart();
    std::map<Service, size_t> before;
    for (const Failure& failure : kFailures) {
      before[failure.Kind] = uefi.Calls(failure.Kind);
    }
    const size_t allBefore = uefi.AllCalls();
    const Outcome whole = operation.Call();
    const size_t calls = uefi.AllCalls() - allBefore;
    std::map<Service, size_t> callsOf;
    for (const Failure& failure : kFailures) {
      callsOf[failure.Kind] = uefi.Calls(failure.Kind) - before[failure.Kind];
    }
    for (const Failure& failure : kFailures) {
      for (const Later later : {Later::Succeed, Later::Fail}) {
        for (size_t nth = 1; nth <= callsOf[failure.Kind]; ++nth) {
          SCOPED_TRACE(operation.Name + std::string(", service ") + std::to_string(static_cast<int>(failure.Kind)) +
                       ", call " + std::to_string(nth) + (later == Later::Fail ? " and later" : ""));
          Try(operation, whole, failure.Status == EFI_WARN_STALE_DATA,
              [&] { uefi.Fail(failure.Kind, nth, failure.Status, later); });
        }
      }
    }
    for (size_t nth = 1; nth <= calls; ++nth) {
      for (size_t apart = 1; apart <= kReach; ++apart, ++pairs) {
        SCOPED_TRACE(operation.Name + std::string(", calls ") + std::to_string(nth) + " and " +
                     std::to_string(nth + apart));
        Try(operation, whole, false, [&] { uefi.FailCalls({nth, nth + apart}); });
      }
    }
  }
  std::printf("%zu operations: %zu times one call failed or it and all later ones, %zu times two\n", operations_.size(),
              tries_ - pairs, pairs);
}

}  // namespace
