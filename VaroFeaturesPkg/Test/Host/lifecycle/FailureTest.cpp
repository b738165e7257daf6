/** @file
  Tests of boots in which calls of the firmware's and the platform's services fail, each call in turn and neighbouring
  ones together, and of the boots after them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/NotebookFixture.hpp"

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

/// Lines of the attributes that every boot gathers again, cache or not, or those of all others.
std::set<std::string> LinesOf(const Reading& reading, bool anew) {
  std::set<std::string> lines = reading.Lines;
  std::erase_if(lines, [anew](const std::string& line) {
    return anew != (line.find(" password = ") != line.npos || line.find(" boot-configuration = ") != line.npos);
  });
  return lines;
}

enum class Kind { Cold, Warm, Factory };
constexpr std::pair<Kind, const char*> kKinds[] = {
    {Kind::Cold, "cold"}, {Kind::Warm, "warm"}, {Kind::Factory, "factory"}};
constexpr UINT32 kFactorySettings[] = {3633, 1751, 3728, 1756, 1879, 9902, 1881, 1469, 12054};

class FailureTest : public NotebookFixture {
 protected:
  FailureTest() {
    Furnish(notebook);
    for (const UINT32 setting : kFactorySettings) {
      notebook.Settings[setting] = {};
    }
    for (const auto& [kind, name] : kKinds) {
      Prepare(kind);
      notebook.Boot();
      fresh_[kind] = Read();
      calls_[kind] = notebook.Uefi.AllCalls();
      EXPECT_FALSE(Warned(""));
      cached_ = kind == Kind::Cold ? notebook.Uefi.Variables : cached_;
      EXPECT_THAT(BlocksLeftBehind(notebook), IsEmpty());
    }
  }

  /// Sets up the state before a boot of this kind.
  void Prepare(Kind kind) {
    notebook.FactoryMode = kind == Kind::Factory;
    notebook.Uefi.Variables = kind == Kind::Warm ? cached_ : decltype(cached_)();
    notebook.Reboot();
  }
  [[nodiscard]] bool Warned(std::string_view text) const { return notebook.Uefi.Warnings(text) != 0; }

  /// Checks a boot and returns what it published; `fresh` if it published nothing. `unseen`: a call that finds a signal
  /// failed. `unheard`: a call failed with a status that the platform may return, so texts and values may differ.
  Reading ExpectEndedWell(EFI_STATUS started, const Reading& fresh, bool unseen, bool unheard) {
    // The boot publishes, or a message gives the reason. A signal that is not found has not come.
    const bool built = notebook.Published() != nullptr || Warned("PublishedTablesProtocolGuid not installed");
    EXPECT_TRUE(built || EFI_ERROR(started) || Warned("no attribute is gathered or published") ||
                Warned(": nothing is published") || Warned("the wait for it goes on") || unseen);
    // Every record is sent to the transport, or a message reports it as dropped.
    const size_t dropped = notebook.Uefi.Warnings("record dropped") + notebook.Uefi.Warnings("directory dropped");
    EXPECT_EQ(notebook.Records.size() + dropped, built ? 8U : 0U);
    Reading now = fresh;
    if (notebook.Records.size() == 8) {
      now = Read();
      // A message reports what is missing.
      EXPECT_TRUE((now.Lines == fresh.Lines && now.Texts == fresh.Texts) || Warned("") || unheard);
      if (!Warned("CorvaneDxe: table")) {
        // Without memory a name has handle 0, and a restored record leaves its slot empty.
        EXPECT_THAT(now.Findings, testing::IsSubsetOf({"name-dangling", "member-dangling"}));
      }
    }
    for (size_t table = 0; mState.Descriptors != nullptr && table < TABLE_DESCRIPTOR_COUNT; ++table) {
      EXPECT_EQ(mState.Descriptors[table].Data != 0, mState.Descriptors[table].Limit != 0);
    }
    EXPECT_EQ(notebook.QuestionListsOut, 0U);
    EXPECT_THAT(BlocksLeftBehind(notebook), IsEmpty());
    return now;
  }

  /// The next boot publishes the same as a fresh one. Or it restores what the cold boot published and gathers the rest.
  /// Or it reports and deletes a damaged cache, and the boot after it publishes the same as a fresh one.
  void ExpectNextBootWhole(Kind kind, const Reading& fresh, const Reading& now) {
    notebook.Reboot();
    notebook.Boot();
    if (Reading next = Read(); kind != Kind::Cold || LinesOf(next, false) != LinesOf(now, false)) {
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

  std::map<Kind, Reading> fresh_;
  std::map<Kind, size_t> calls_;  ///< of all services
  decltype(FakeUefi::Variables) cached_;
};

class SingleFailureTest : public FailureTest, public testing::WithParamInterface<std::tuple<Failure, Later>> {};

TEST_P(SingleFailureTest, Boot_WhenCallsFail_EndsCleanlyAndTheNextOneIsComplete) {
  const auto [failure, later] = GetParam();
  const auto [service, status] = failure;
  const bool unseen = service == Service::ProtocolLookup && status == EFI_NOT_FOUND;
  const bool unheard = service == Service::HiiString || service == Service::PlatformCall;
  size_t boots = 0;
  for (const auto& [kind, name] : kKinds) {
    const Reading& fresh = fresh_[kind];
    bool failed = true;
    for (size_t nth = 1; failed; ++nth) {
      SCOPED_TRACE("service " + std::to_string(static_cast<int>(service)) + ", " + name + ", call " +
                   std::to_string(nth) + (later == Later::Fail ? " and later" : ""));
      Prepare(kind);
      notebook.Uefi.Fail(service, nth, status, later);
      const EFI_STATUS started = notebook.Boot();
      failed = notebook.Uefi.Calls(service) >= nth;
      boots += failed ? 1 : 0;
      const bool cut = Warned("CorvaneDxe: table");
      const Reading now = ExpectEndedWell(started, fresh, unseen, unheard);
      if (kind == Kind::Cold && later == Later::Succeed && !cut &&
          (service == Service::Allocation || service == Service::HiiString)) {
        // One block or text less costs a cold boot one attribute, and a collection its member.
        std::set<std::string> lost = fresh.Lines;
        std::erase_if(lost, [&](const std::string& line) { return now.Lines.contains(line); });
        EXPECT_LE(lost.size(), 2U);
      }
      ExpectNextBootWhole(kind, fresh, now);
    }
  }
  std::printf("%zu boots with %s\n", boots,
              later == Later::Fail ? "a failed call and all later ones" : "a failed call");
}

INSTANTIATE_TEST_SUITE_P(Services, SingleFailureTest,
                         testing::Combine(testing::ValuesIn(kFailures), testing::Values(Later::Succeed, Later::Fail)));

class PairFailureTest : public FailureTest, public testing::WithParamInterface<size_t> {};

TEST_P(PairFailureTest, Boot_WhenCallsFail_EndsCleanlyAndTheNextOneIsComplete) {
  const size_t apart = GetParam();
  size_t boots = 0;
  for (const auto& [kind, name] : kKinds) {
    for (size_t nth = 1; nth + apart <= calls_[kind]; ++nth, ++boots) {
      SCOPED_TRACE(name + std::string(", calls ") + std::to_string(nth) + " and " + std::to_string(nth + apart));
      Prepare(kind);
      notebook.Uefi.FailCalls({nth, nth + apart});
      const EFI_STATUS started = notebook.Boot();
      const Reading now = ExpectEndedWell(started, fresh_[kind], false, true);
      ExpectNextBootWhole(kind, fresh_[kind], now);
    }
  }
  std::printf("%zu boots with two failed calls, %zu apart\n", boots, apart);
}

INSTANTIATE_TEST_SUITE_P(Apart, PairFailureTest, testing::Range<size_t>(1, 4));

}  // namespace
