/** @file
  The cache over several boots: every short sequence of boots, failures and changes from outside, against a model of
  what each boot publishes and leaves behind.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/NotebookFixture.hpp"

namespace {

constexpr size_t kLongestSequence = 4;

enum Piece : size_t { kVersion, kData, kCounters, kNames, kDisplay, kHelp, kStatus };
constexpr std::u16string_view kPieces[] = {u"BiosVersion", u"AttributesData", u"AttributesCount", u"PldmString",
                                           u"DispString",  u"HelpString",     u"AttCacheStatus"};

// Content of a piece: written by firmware version 'A' or 'B', missing, or unusable. The status has its digit.
constexpr char kNone = '-';
constexpr char kFlipped = '^';
constexpr char kCut = '/';
constexpr bool IsWhole(char content) {
  return content == 'A' || content == 'B';
}

/// One step: a change from outside, or a boot with one difference.
struct Event {
  std::string Name;
  std::optional<Piece> Changed{};
  char Content = 0;  ///< of what is changed, or of the status between the passes of a boot
  enum { Plain, Update, Factory, SettingUnreadable, NoAssetTag } Boot = Plain;
  int Pass = 0;  ///< the pass of which a call fails: the first or the second
  Service Kind = Service::VariableWrite;
  size_t Nth = 0;
  FakeUefi::Later Later = FakeUefi::Later::Succeed;
};

std::vector<Event> Events() {
  constexpr auto kLater = FakeUefi::Later::Fail;
  std::vector<Event> events = {
      {.Name = "boot"},
      {.Name = "boot of the other version", .Boot = Event::Update},
      {.Name = "boot in factory mode", .Boot = Event::Factory},
      {.Name = "boot with the cache's setting unreadable", .Boot = Event::SettingUnreadable},
      {.Name = "boot without the asset tag protocol", .Boot = Event::NoAssetTag},
      {.Name = "boot, marked bad between its passes", .Content = '1'},
      {.Name = "boot, marked good between its passes", .Content = '0'},
      {.Name = "boot, version unreadable at first", .Pass = 1, .Kind = Service::VariableRead, .Nth = 3},
      {.Name = "boot, nothing readable", .Pass = 1, .Kind = Service::VariableRead, .Nth = 3, .Later = kLater},
      {.Name = "boot, counters unreadable", .Pass = 2, .Kind = Service::VariableRead, .Nth = 4},
      {.Name = "boot, nothing written", .Pass = 2, .Kind = Service::VariableWrite, .Nth = 1, .Later = kLater},
      {.Name = "boot, nothing written from the data on",
       .Pass = 2,
       .Kind = Service::VariableWrite,
       .Nth = 10,
       .Later = kLater},
      {.Name = "marked bad", .Changed = kStatus, .Content = '1'},
      {.Name = "marked good", .Changed = kStatus, .Content = '0'},
  };
  for (const size_t write : {1, 4, 7, 10, 11, 12, 13}) {
    events.push_back({.Name = "boot, write " + std::to_string(write) + " fails", .Pass = 2, .Nth = write});
  }
  for (const Piece piece : {kVersion, kData, kCounters, kNames}) {
    for (const char content : {kNone, kFlipped, kCut}) {
      const std::string name(kPieces[piece].begin(), kPieces[piece].end());
      events.push_back({.Name = name + " becomes " + content, .Changed = piece, .Content = content});
    }
  }
  return events;
}

/// The intended behaviour of the cache.
struct Model {
  std::string Pieces = "-------";
  char Running = 'A';

  /// Returns '+' if form sets are parsed, else '-', and for data, names, display texts and help texts the version that
  /// is published, if anything is.
  std::string Step(const Event& event) {
    if (event.Changed) {
      Change(*event.Changed, event.Content);
      return "";
    }
    if (event.Boot == Event::Update) {
      Running = Running == 'A' ? 'B' : 'A';
    }
    writes = 0;
    failing = &event;
    const bool readsFail = event.Kind == Service::VariableRead;
    const bool allowed = event.Boot != Event::Factory && event.Boot != Event::SettingUnreadable;
    const bool first = allowed && IsValid() && !(readsFail && event.Pass == 1);
    if (first && event.Boot == Event::NoAssetTag) {
      return "-";
    }
    if (event.Content != 0) {
      Pieces[kStatus] = event.Content;
    }
    const bool second = allowed && IsValid() && !(readsFail && event.Later == FakeUefi::Later::Fail);
    if (first) {
      return "-" + (second ? Restore(!readsFail) : "----");
    }
    if (!second && allowed) {
      WriteAll();
    }
    return "+" + std::string(4, Running);
  }

 private:
  [[nodiscard]] bool IsValid() const { return Pieces[kVersion] == Running && Pieces[kStatus] != '1'; }
  void Change(Piece piece, char content) {
    if (piece == kStatus || content == kNone || IsWhole(Pieces[piece])) {
      Pieces[piece] = content;
    }
  }
  bool Write(Piece piece, char content) {
    ++writes;
    const bool fails = failing->Pass == 2 && failing->Kind == Service::VariableWrite &&
                       (writes == failing->Nth || (failing->Later == FakeUefi::Later::Fail && writes > failing->Nth));
    Pieces[piece] = fails ? Pieces[piece] : content;
    return !fails;
  }
  void Delete() {
    for (const Piece piece : {kVersion, kData, kCounters, kNames, kDisplay, kHelp}) {
      Write(piece, kNone);
    }
  }
  /// The earlier cache is deleted first. A list that cannot be written is missing in the next boot; any other failure
  /// deletes the whole cache. The version is not written over a list that could be neither deleted nor written.
  void WriteAll() {
    Delete();
    bool stale = false;
    for (const Piece list : {kNames, kDisplay, kHelp}) {
      stale = (!Write(list, Running) && !Write(list, kNone)) || stale;
    }
    bool whole = Write(kData, Running);
    whole = Write(kCounters, Running) && whole;
    whole = Write(kStatus, '0') && whole;
    whole = !stale && Write(kVersion, Running) && whole;
    if (!whole) {
      Delete();
    }
  }
  /// Unusable pieces are missing from this boot. A missing list, damaged data and unreadable counters delete the cache.
  /// A damaged list is deleted alone; missing data delete the version. Counters that announce too much do no harm.
  std::string Restore(bool readable) {
    if (!readable || Pieces[kCounters] == kNone || Pieces[kCounters] == kCut) {
      Delete();
      return "----";
    }
    bool recorded = Pieces[kData] == kFlipped || Pieces[kData] == kCut;
    std::string published(1, IsWhole(Pieces[kData]) ? Pieces[kData] : kNone);
    const std::string found = Pieces;
    for (const Piece list : {kNames, kDisplay, kHelp}) {
      published += IsWhole(found[list]) ? found[list] : kNone;
      recorded = recorded || found[list] == kNone;
      if (found[list] == kFlipped || found[list] == kCut) {
        Write(list, kNone);
      }
    }
    if (found[kData] == kNone) {
      Write(kVersion, kNone);
    }
    if (recorded) {
      Delete();
    }
    return published;
  }

  size_t writes = 0;
  const Event* failing = nullptr;
};

class CacheModelTest : public NotebookFixture {
 protected:
  CacheModelTest() {
    for (const char version : {'B', 'A'}) {  // what either version writes
      notebook.Uefi.Variables.clear();
      running_ = version;
      Boot({});
      for (const std::u16string_view piece : kPieces) {
        whole_[version].push_back(notebook.Variable(piece)->Data);
      }
    }
    notebook.Uefi.Variables.clear();
  }

  std::string Boot(const Event& event) {
    if (event.Boot == Event::Update) {
      running_ = running_ == 'A' ? 'B' : 'A';
    }
    // The versions differ in the same question, and one version has one more question.
    const std::u16string text(1, static_cast<char16_t>(running_));
    notebook.Version = "1." + std::string(1, running_);
    notebook.FormSets.clear();
    FakeFormSet& setup = notebook.AddFormSet(u"Setup");
    setup.Numeric(300, text, text).Help(text).Bounds(0, static_cast<UINT64>(running_));
    if (running_ == 'B') {
      setup.Checkbox(301, u"Only here", u"Only here");
    }
    notebook.FactoryMode = event.Boot == Event::Factory;
    notebook.Settings[0x2618].Status = event.Boot == Event::SettingUnreadable ? EFI_NOT_FOUND : EFI_SUCCESS;
    notebook.Absent.clear();
    if (event.Boot == Event::NoAssetTag) {
      notebook.Absent.insert(gVaroAssetTagLengthProtocolGuid);
    }
    notebook.Reboot();
    notebook.Start();
    if (event.Pass == 1) {
      notebook.Uefi.Fail(event.Kind, event.Nth, EFI_DEVICE_ERROR, event.Later);
    }
    notebook.SignalFormSetsUpdated();
    if (event.Content != 0) {
      Change(kStatus, event.Content);
    }
    if (event.Pass == 2) {
      notebook.Uefi.Fail(event.Kind, event.Nth, EFI_DEVICE_ERROR, event.Later);
    }
    notebook.SignalTablesRequested();
    std::string outcome = notebook.FormSetsParsed != 0 ? "+" : "-";
    if (notebook.Published() != nullptr) {
      const AttributeRecord* const record = Database().AttributeAt(kFirstHandle);
      outcome += record == nullptr ? kNone : static_cast<char>(As<IntegerRecord>(*record).UpperBound);
      for (const StringArray array : {StringArray::Names, StringArray::Display, StringArray::Help}) {
        const std::string shown = TextOf(Database(), array, kFirstHandle);
        outcome += shown.size() == 1 && IsWhole(shown.front()) ? shown.front() : kNone;
      }
    }
    return outcome;
  }
  void Change(Piece piece, char content) {
    const FakeUefi::Variable* const variable = notebook.Variable(kPieces[piece]);
    if (piece == kStatus) {
      notebook.SetVariable(kPieces[piece], 7, {static_cast<UINT8>(content - '0')});
    } else if (content == kNone) {
      notebook.Uefi.Variables.erase({Ucs2(kPieces[piece]), gVaroAttributeVariableGuid});
    } else if (IsWhole(Look()[piece])) {
      Bytes data = variable->Data;
      if (content == kCut) {
        data.resize(data.size() / 2);
      } else {
        data[3] ^= 0x80;  // in a size, a count, or after the version
      }
      notebook.SetVariable(kPieces[piece], variable->Attributes, data);
    }
  }
  /// What the pieces hold.
  [[nodiscard]] std::string Look() const {
    std::string pieces;
    for (size_t piece = 0; piece < std::size(kPieces); ++piece) {
      const FakeUefi::Variable* const variable = notebook.Variable(kPieces[piece]);
      if (variable == nullptr) {
        pieces += kNone;
      } else if (piece == kStatus) {
        pieces += static_cast<char>('0' + variable->Data.at(0));
      } else {
        pieces += variable->Data.size() < whole_.at('A')[piece].size() ? kCut : kFlipped;
        for (const auto& [version, whole] : whole_) {
          pieces.back() = variable->Data == whole[piece] ? version : pieces.back();
        }
      }
    }
    return pieces;
  }

  /// State of the machine after some steps. The steps that led to it do not matter, so each step from a state is taken
  /// once.
  struct State {
    decltype(FakeUefi::Variables) Variables;
    char Running;
    std::string Pieces;
    std::map<const Event*, std::pair<std::string, size_t>> Steps{};  ///< what each shows, and where it leads
  };
  size_t Stand() {
    std::map<Ucs2String, Bytes> key{{{}, {static_cast<std::uint8_t>(running_)}}};
    for (const auto& [name, variable] : notebook.Uefi.Variables) {
      key[name.first] = variable.Data;
    }
    const auto [known, added] = known_.try_emplace(std::move(key), states_.size());
    if (added) {
      states_.push_back({notebook.Uefi.Variables, running_, Look()});
    }
    return known->second;
  }
  std::pair<std::string, size_t> Take(size_t from, const Event& event) {
    if (const auto taken = states_[from].Steps.find(&event); taken != states_[from].Steps.end()) {
      return taken->second;
    }
    notebook.Uefi.Variables = states_[from].Variables;
    running_ = states_[from].Running;
    std::string outcome;
    if (event.Changed) {
      Change(*event.Changed, event.Content);
    } else {
      outcome = Boot(event);
      ++boots_;
    }
    return states_[from].Steps[&event] = {outcome, Stand()};
  }
  void Walk(size_t from, const Model& model, const std::string& path, size_t length) {
    for (const Event& event : events_) {
      const auto [outcome, to] = Take(from, event);
      Model next = model;
      const std::string expected = next.Step(event);
      ++sequences_;
      if (outcome != expected || states_[to].Pieces != next.Pieces) {
        ADD_FAILURE() << path << event.Name << ": " << outcome << " " << states_[to].Pieces << ", not " << expected
                      << " " << next.Pieces;
      } else if (length < kLongestSequence) {
        Walk(to, next, path + event.Name + "; ", length + 1);
      }
    }
  }

  const std::vector<Event> events_ = Events();
  char running_ = 'A';
  std::map<char, std::vector<Bytes>> whole_;
  std::map<std::map<Ucs2String, Bytes>, size_t> known_;
  std::deque<State> states_;
  size_t sequences_ = 0;
  size_t boots_ = 0;
};

TEST_F(CacheModelTest, EveryShortSequence_AgreesWithTheModel) {
  running_ = 'A';
  Walk(Stand(), Model(), "", 1);
  RecordProperty("sequences", std::to_string(sequences_));
  std::printf("%zu sequences of %zu events: %zu states, %zu boots\n", sequences_, events_.size(), states_.size(),
              boots_);
}

}  // namespace
