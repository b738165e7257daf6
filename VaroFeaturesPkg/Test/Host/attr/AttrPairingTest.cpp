/** @file
  Tests of the pairing of attributes with their texts: the driver gathers a setup, attr is shown its tables.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <optional>

#include "FakeUefi/FakeNotebook.hpp"
#include "Host/attr/AttrFixture.hpp"

extern "C" {
#include <Attr/TextReplay.h>
}

namespace {

using Arrange = std::function<void(FakeNotebook&)>;

/// The service of a notebook with a given setup, as the driver published its tables.
class GatheredFixture : public AttrFixture {
 public:
  /// The texts that `info` prints for a name: "display|help", or "" for none.
  std::string Texts(const std::u16string& name) {
    const std::string printed = Run({u"info", name});
    std::string texts;
    for (const std::string_view label : {"Display:  ", "Help:     "}) {
      const size_t at = printed.find(label);
      if (at != std::string::npos) {
        texts +=
            (texts.empty() ? "" : "|") + printed.substr(at + label.size(), printed.find('\n', at) - at - label.size());
      }
    }
    EXPECT_EQ(printed.substr(0, 2), "0 ");
    return texts;
  }
  void TestBody() override {}

  static std::unique_ptr<GatheredFixture> Of(const Arrange& setup) {
    std::array<Bytes, TABLE_DESCRIPTOR_COUNT> contents;
    {
      FakeNotebook notebook;
      setup(notebook);
      EXPECT_EQ(notebook.Boot(), EFI_SUCCESS);
      for (size_t index = 0; index < contents.size(); ++index) {
        const TableDescriptor& descriptor = notebook.Published()->Descriptors[index];
        const Bytes table = BytesAt(reinterpret_cast<const void*>(UINTN{descriptor.Data}), descriptor.Limit);
        contents[index] = Middle(table, 0, size_t{descriptor.PadLength} + 4);
      }
    }
    auto fixture = std::make_unique<GatheredFixture>();
    fixture->tables = {{0, {0, 0, contents[TABLE_STRINGS]}},
                       {1, {1, 0, contents[TABLE_ATTRIBUTES]}},
                       {3, {3, 0, contents[TABLE_HELP]}},
                       {4, {3, 1, contents[TABLE_DISPLAY]}}};
    // Every value is the first one: pairing looks at none.
    fixture->after = [](RequestBlock& request) -> EFI_STATUS {
      if (request.Select == REQUEST_SELECT_VALUE) {
        reinterpret_cast<std::uint8_t*>(&request)[121] = 0;
      }
      return EFI_SUCCESS;
    };
    fixture->Install();
    return fixture;
  }
};

struct Expected {
  std::u16string Name;
  std::string Texts;
};

void ExpectTexts(const Arrange& setup, const std::vector<Expected>& expected) {
  const auto gathered = GatheredFixture::Of(setup);
  for (const auto& [name, texts] : expected) {
    EXPECT_EQ(gathered->Texts(name), texts) << testing::PrintToString(name);
  }
}

const std::u16string kTooLong(175, u'x');

void Ordinary(FakeNotebook& notebook) {
  notebook.Settings[1843] = {};
  FakeFormSet& power = notebook.AddFormSet(u"Power Setup");
  power.Numeric(300, u"Start", u"Start").Help(u"When it starts.").Bounds(1, 9);
  power.OneOf(301, u"Mode", u"Mode").Help(u"How.").Option(1, u"Enabled", u"On").Option(2, u"Auto", u"Automatic");
  power.Checkbox(302, u"Lamp", u"Lamp").Help(u"Light.");
  power.String(303, u"Tag", u"Start").Help(u"Not kept.").Bounds(0, 9).Text("a");
  FakeFormSet& other = notebook.AddFormSet(u"Other");
  other.Checkbox(304, u"Lock[ForceIf:Lamp=Enabled]", u"Lock it").Help(u"Lock.");
  other.OneOf(305, u"Pick", u"Pick").Option(0, u"Disabled", u"Off").Option(1, u"Enabled", u"Other on");
}

TEST(AttrPairingTest, EachAttributeHasTheTextsOfItsQuestion) {
  ExpectTexts(Ordinary, {{u"Start", "Start|When it starts."},
                         {u"Mode", "Mode|How."},
                         {u"Lamp", "Lamp|Light."},
                         {u"Tag", "Start"},  // the same prompt again, and no help
                         {u"PowerSetup", "Power Setup"},
                         {u"Lock", "Lock it|Lock."},
                         {u"Pick", "Pick"},
                         {u"Other", "Other"},
                         {u"MasterPasswordLockout", "Master Password Lockout"},
                         {u"AdminPassword", "Admin Password"}});
}

TEST(AttrPairingTest, NothingIsSaidWhereTheTableDoesNotTell) {
  // A prompt that was too long leaves no text: any question up to the next text that is known can be the one without.
  ExpectTexts(
      [](FakeNotebook& notebook) {
        Ordinary(notebook);
        notebook.FormSets.front().Questions.emplace_front(EFI_IFR_NUMERIC_OP, 310, u"Long", kTooLong).Help(u"Long.");
      },
      {{u"Long", ""},
       {u"Start", ""},
       {u"Lamp", ""},
       {u"Tag", "Start"},
       {u"PowerSetup", "Power Setup"},
       {u"Lock", "Lock it|Lock."},
       {u"MasterPasswordLockout", "Master Password Lockout"}});
  // Without an attribute of the driver's own behind them, nothing tells how many texts the questions made.
  ExpectTexts(
      [](FakeNotebook& notebook) {
        Ordinary(notebook);
        notebook.Settings[1843].Status = EFI_DEVICE_ERROR;
        notebook.Settings[1340].Status = EFI_DEVICE_ERROR;
      },
      {{u"Start", ""}, {u"Lock", ""}, {u"AdminPassword", "Admin Password"}});
  // Texts of questions that found no room among the attributes.
  ExpectTexts(
      [](FakeNotebook& notebook) {
        notebook.Settings[1843] = {};
        FakeFormSet& set = notebook.AddFormSet(u"Many");
        for (char16_t i = 0; i < 243; ++i) {
          const std::u16string name{static_cast<char16_t>(u'A' + i / 16), static_cast<char16_t>(u'A' + i % 16)};
          set.Checkbox(UINT32{i} + 2000, name, name);
        }
      },
      {{u"AA", ""}, {u"Many", ""}});
}

// What is claimed for a step is the truth for every setup whose steps and table look like this.
TEST(TextReplayTest, ClaimsOnlyWhatEveryWayThroughTheTableSays) {
  constexpr ReplayStep any{ReplayAnyText, nullptr, 0};
  const auto step = [](ReplayKind kind, const char* text) { return ReplayStep{kind, text, strlen(text)}; };
  const ReplayStep title = step(ReplayTitle, "AB");
  const ReplayStep maybe = step(ReplayMaybeText, "On");
  const ReplayStep end = step(ReplayFixedText, "End");
  constexpr UINTN no = REPLAY_NO_PLACE;
  const struct {
    std::vector<ReplayStep> Steps;
    std::vector<std::u16string> Texts;
    std::vector<UINTN> Places;
  } rows[] = {
      {{any, any, title, any, end}, {u"a", u"b", u"A B", u"c", u"End"}, {0, 1, 2, 3, 4}},
      {{any, any, title, any, end}, {u"a", u"A B", u"c", u"End"}, {no, no, no, 2, 3}},  // the second one or the title
      {{any, any, title, any, end}, {u"a", u"b", u"A B", u"c"}, {0, 1, 2, 3, no}},      // cut before "End"
      {{any, any, title, any, end}, {u"a", u"b", u"A C", u"c", u"End"}, {no, no, no, no, no}},
      {{any, any, title, any, end}, {u"a", u"b", u"A B", u"c", u"d", u"End"}, {no, no, no, no, no}},
      {{any, maybe, any, end}, {u"a", u"On", u"c", u"End"}, {0, 1, 2, 3}},
      {{any, maybe, any, end}, {u"On", u"c", u"End"}, {no, no, 1, 2}},
      {{any, any, end}, {u"End", u"b", u"c"}, {no, no, no}},  // nothing new at the end
      {{any, end, end}, {u"a", u"End"}, {0, 1, no}},
      {{end}, {}, {no}},
  };
  for (const auto& row : rows) {
    std::vector<Ucs2String> texts;
    std::transform(row.Texts.begin(), row.Texts.end(), std::back_inserter(texts), Ucs2);
    std::vector<CHAR16*> pointers;
    std::transform(texts.begin(), texts.end(), std::back_inserter(pointers), [](auto& text) { return text.data(); });
    std::vector<UINTN> places(row.Steps.size());
    FakeUefi uefi;
    ReplayTexts(row.Steps.data(), row.Steps.size(), pointers.data(), pointers.size(), places.data());
    EXPECT_EQ(places, row.Places) << &row - rows;
    EXPECT_EQ(uefi.LivePoolBlocks(), 0U);
  }
}

}  // namespace
