/** @file
  Tests of boots in which calls of the firmware's and the platform's services fail, each call in turn, and of the boots
  after them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/NotebookFixture.hpp"
#include "access/AccessState.hpp"

namespace {

using Later = FakeUefi::Later;

using Failure = std::pair<Service, EFI_STATUS>;
constexpr Failure kFailures[] = {
    {Service::Allocation, EFI_OUT_OF_RESOURCES},    {Service::VariableRead, EFI_DEVICE_ERROR},
    {Service::VariableRead, EFI_NOT_FOUND},         {Service::VariableRead, EFI_BUFFER_TOO_SMALL},
    {Service::VariableWrite, EFI_OUT_OF_RESOURCES}, {Service::ProtocolLookup, EFI_NOT_FOUND},
    {Service::ProtocolLookup, EFI_DEVICE_ERROR},    {Service::Registration, EFI_OUT_OF_RESOURCES},
    {Service::HiiString, EFI_DEVICE_ERROR},         {Service::HiiString, EFI_BUFFER_TOO_SMALL},
    {Service::PlatformCall, EFI_DEVICE_ERROR},      {Service::PlatformCall, EFI_NOT_FOUND},
    {Service::PlatformCall, EFI_BUFFER_TOO_SMALL},  {Service::PlatformCall, EFI_WARN_STALE_DATA},
};

/// Lines of the attributes that every boot makes anew, cache or not, or those of all others.
std::set<std::string> LinesOf(const Reading& reading, bool anew) {
  std::set<std::string> lines = reading.Lines;
  std::erase_if(lines, [anew](const std::string& line) {
    return anew != (line.find(" password = ") != line.npos || line.find(" boot-configuration = ") != line.npos);
  });
  return lines;
}

class FailureTest : public NotebookFixture, public testing::WithParamInterface<std::tuple<Failure, Later>> {
 protected:
  FailureTest() { Furnish(notebook); }

  /// Frees all that outlives the boot: nothing else may be left. The driver keeps what it publishes, the boot options
  /// that the published views lead into, its attribute access protocol, its waits and the platform's language.
  void ExpectNothingLeftBehind() {
    std::multiset<size_t> own;
    for (UINT32 wait = 0; wait < mState.Prerequisites.Record; ++wait) {
      own.insert({sizeof(PrereqRecord), sizeof(EFI_GUID) + 1});
    }
    if (mState.Published != nullptr && mState.Published->BootConfiguration->OptionCount != 0) {
      own.insert(sizeof(UINT32) + 2 * (sizeof(UINT16) + 6) + 2 * sizeof(u"Disk") - 2 + 13);
    }
    FreeStore(Database().Store());
    for (size_t table = 0; mState.Descriptors != nullptr && table < TABLE_DESCRIPTOR_COUNT; ++table) {
      EXPECT_EQ(mState.Descriptors[table].Data != 0, mState.Descriptors[table].Limit != 0);
      FreeBlock(reinterpret_cast<const void*>(UINTN{mState.Descriptors[table].Data}));
    }
    for (const void* const block :
         std::initializer_list<const void*>{mAccess.Interface, mAccess.RequestBuffer, mState.Published,
                                            mState.Descriptors, mState.Directory, mState.PlatformLang}) {
      FreeBlock(block);
    }
    std::multiset<size_t> left;
    for (const auto& [block, size] : notebook.Uefi.PoolBlocks()) {
      left.insert(size);
    }
    EXPECT_EQ(left, own);
  }
  [[nodiscard]] bool Warned(std::string_view text) const { return notebook.Uefi.Warnings(text) != 0; }
};

TEST_P(FailureTest, EveryBootEndsWellAndTheNextOneIsWhole) {
  const auto [failure, later] = GetParam();
  const auto [kind, status] = failure;
  notebook.Boot();
  const Reading fresh = Read();
  const auto cached = notebook.Uefi.Variables;
  ExpectNothingLeftBehind();
  EXPECT_FALSE(Warned(""));
  for (const bool warm : {false, true}) {
    bool failed = true;
    for (size_t nth = 1; failed; ++nth) {
      SCOPED_TRACE("service " + std::to_string(static_cast<int>(kind)) + (warm ? ", warm, call " : ", cold, call ") +
                   std::to_string(nth) + (later == Later::Fail ? " and later" : ""));
      notebook.Uefi.Variables.clear();
      if (warm) {
        notebook.Uefi.Variables = cached;
      }
      notebook.Reboot();
      notebook.Uefi.Fail(kind, nth, status, later);
      const EFI_STATUS started = notebook.Boot();
      failed = notebook.Uefi.Calls(kind) >= nth;

      // Published, or not and told why. A signal that is not found has not come.
      const bool built = notebook.Published() != nullptr || Warned("PublishedTablesProtocolGuid not installed");
      EXPECT_TRUE(built || EFI_ERROR(started) || Warned("no attribute is gathered or published") ||
                  Warned(": nothing is published") || Warned("the wait for it goes on") ||
                  (kind == Service::ProtocolLookup && status == EFI_NOT_FOUND));
      // Every record is offered to the transport, or dropped and that is told.
      const size_t dropped = notebook.Uefi.Warnings("record dropped") + notebook.Uefi.Warnings("directory dropped");
      EXPECT_EQ(notebook.Records.size() + dropped, built ? 8U : 0U);
      Reading now = fresh;
      if (notebook.Records.size() == 8) {
        now = Read();
        // What is missing is told, but for texts and values that the platform cannot give: others stand for them.
        EXPECT_TRUE((now.Lines == fresh.Lines && now.Texts == fresh.Texts) || Warned("") ||
                    kind == Service::HiiString || kind == Service::PlatformCall);
        if (!Warned("CorvaneDxe: table")) {
          EXPECT_THAT(now.Findings, testing::IsSubsetOf({"name-dangling"}));  // a name without memory has handle 0
          // One block or text less costs a cold boot one attribute, and a collection its member.
          std::set<std::string> lost = fresh.Lines;
          std::erase_if(lost, [&](const std::string& line) { return now.Lines.contains(line); });
          EXPECT_TRUE(warm || later == Later::Fail || lost.size() <= 2 ||
                      (kind != Service::Allocation && kind != Service::HiiString));
        }
      }
      EXPECT_EQ(notebook.QuestionListsOut, 0U);
      ExpectNothingLeftBehind();

      // The next boot is as a fresh one. Or the cache of a cold boot kept what that one published, and the rest is made
      // anew. Or it is found wanting, which is told, and deleted, and the boot after it is as a fresh one.
      notebook.Reboot();
      notebook.Boot();
      if (Reading next = Read(); warm || LinesOf(next, false) != LinesOf(now, false)) {
        if (Warned("cache deleted")) {
          notebook.Reboot();
          notebook.Boot();
          next = Read();
        }
        EXPECT_EQ(next.Lines, fresh.Lines);
        EXPECT_EQ(next.Texts, fresh.Texts);
      } else {
        EXPECT_EQ(LinesOf(next, true), LinesOf(fresh, true));
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Services, FailureTest,
                         testing::Combine(testing::ValuesIn(kFailures), testing::Values(Later::Succeed, Later::Fail)));

}  // namespace
