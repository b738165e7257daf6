/** @file
  Tests of what inspect makes of whole boots: texts paired, caches judged, findings of lint, damage to captures caught.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CacheVerdict.hpp"
#include "Describe.hpp"
#include "Explain.hpp"
#include "FakeUefi/FakeNotebook.hpp"
#include "Host/TestBytes.hpp"
#include "Keywords.hpp"
#include "Lint.hpp"
#include "Validate.hpp"

extern "C" {
#include <Corvane/AttributeCache.h>
}

namespace corvane::inspect {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;

using Out = ::Bytes;
using Arrange = std::function<void(FakeNotebook&)>;
using Records = std::vector<Out>;

Out Joined(const Records& records) {
  Out capture;
  for (const Out& record : records) {
    Append(capture, record);
  }
  return capture;
}

// A flash image with the notebook's variables, and deleted ones and others' among them.
Out FlashOf(const FakeNotebook& notebook, bool authenticated = true) {
  Out variables;
  const auto put = [&](std::u16string_view name, unsigned state, const EFI_GUID& vendor, const Out& data) {
    Append(variables, Join(U16(0x55AA), U8(state), U8(0), U32(3)));
    variables.resize(variables.size() + (authenticated ? 28 : 0));
    Append(variables, Join(U32(2 * name.size() + 2), U32(data.size()), BytesAt(&vendor, 16)));
    for (const char16_t unit : name) {
      Append(variables, U16(unit));
    }
    Append(variables, Join(U16(0), data));
    variables.resize((variables.size() + 3) / 4 * 4, 0xFF);
  };
  put(u"BiosVersion", 0x3C, gVaroAttributeVariableGuid, Out(5, 'x'));
  put(u"BiosVersion", 0x3F, gVaroSetupFormSetsGuid, Out(5, 'y'));
  for (const auto& [key, variable] : notebook.Uefi.Variables) {
    const std::u16string name(key.first.begin(), key.first.end());
    if (variable.Data.empty()) {
      continue;  // taken away by a test
    }
    put(name, name == u"DispString" ? 0x3E : 0x3F, key.second, variable.Data);
  }
  constexpr EFI_GUID kVolume = {0xFFF12B8D, 0x7696, 0x4C8B, {0xA9, 0x85, 0x27, 0x47, 0x07, 0x5B, 0x4F, 0x50}};
  constexpr EFI_GUID kPlain = {0xDDCF3616, 0x3275, 0x4164, {0x98, 0xB6, 0xFE, 0x85, 0x70, 0x7F, 0xFE, 0x7D}};
  constexpr EFI_GUID kSigned = {0xAAF32C78, 0x947B, 0x439A, {0xA1, 0x80, 0x2E, 0x14, 0x4E, 0xC3, 0x77, 0x92}};
  Out header = Join(Out(16), BytesAt(&kVolume, 16), U64(1 << 20), U32(0x4856465F), U32(0), U16(72), U16(0), U16(0),
                    U8(0), U8(2), Out(16));
  unsigned sum = 0;
  for (std::size_t i = 0; i < header.size(); i += 2) {
    sum += header[i] + header[i + 1] * 256U;
  }
  header[50] = static_cast<std::uint8_t>(-sum);
  header[51] = static_cast<std::uint8_t>(-sum >> 8);
  return Join(header, BytesAt(authenticated ? &kSigned : &kPlain, 16), U32(28 + variables.size() + 64), U8(0x5A),
              U8(0xFE), U16(0), U32(0), variables, Out(64, 0xFF));
}

// A boot of a notebook: what it sent, and the flash that it left.
struct Boot {
  explicit Boot(const Arrange& arrange, bool authenticated = true) {
    FakeNotebook notebook;
    notebook.Settings[1843] = {};
    arrange(notebook);
    EXPECT_EQ(notebook.Boot(), EFI_SUCCESS);
    Sent = notebook.Records;
    Flash = FlashOf(notebook, authenticated);
  }
  Image Decode() const { return DecodeImage(Joined(Sent)); }

  Records Sent;
  Out Flash;
};

void Ordinary(FakeNotebook& notebook) {
  FakeFormSet& power = notebook.AddFormSet(u"Power Setup");
  power.Numeric(300, u"Start", u"Start").Help(u"When it starts.").Bounds(1, 9).Value(3);
  power.OneOf(301, u"Mode", u"Mode")
      .Help(u"How.")
      .Option(1, u"Enabled", u"On")
      .Option(2, u"Auto", u"Automatic")
      .Value(1);
  power.Checkbox(302, u"Lamp", u"Lamp").Help(u"Light.");
  power.String(303, u"Tag[RegEx:^a*$]", u"Start").Help(u"Not kept.").Bounds(0, 9).Text("a");
  FakeFormSet& other = notebook.AddFormSet(u"Other");
  other.Checkbox(304, u"Lock[ForceIf:Lamp=Enabled]", u"Lock it").Help(u"Lock.");
  other.OneOf(305, u"Pick", u"Pick").Option(0, u"Disabled", u"Off").Option(1, u"Enabled", u"Other on");
  other.Numeric(1568, u"Card", u"Card").Bounds(0, 9);
  notebook.Defaults = {{300, 1}, {301, 1}};
  notebook.Cameras = {"CAM"};
  notebook.BootOptions = {{1, true, u"Disk", FakeBootOption::Bbs(2)}};
}

// "name=display|help" of each attribute that is paired, a line each.
std::string TextsOf(const Image& image, const StoredTexts* stored = nullptr) {
  const Pairing pairing = PairTexts(image, stored);
  std::string lines;
  for (const AttributeEntry& attribute : image.Attributes.Entries) {
    if (const PairedTexts* texts = pairing.Find(attribute.Handle)) {
      lines +=
          DescribeName(image, attribute.NameHandle) + "=" + *texts->Display + "|" + texts->Help.value_or("") + "\n";
    }
  }
  return lines + pairing.Reason;
}

// In every boot.
const std::string kPlacedTexts =
    "AdminPassword[RegEx:^\\\\133\\\\x20-\\\\x7e\\\\135{0,32}$]=Admin Password|\n"
    "SystemPassword[RegEx:^\\\\133\\\\x20-\\\\x7e\\\\135{0,32}$]=System Password|\n"
    "System boot configuration=System boot configuration|\n";
const std::string kLockout = "MasterPasswordLockout=Master Password Lockout|\n";
const std::string kSupport = "AuxoraSupportLevel=Auxora Support Level|\n";

TEST(PairingTest, EachAttributeHasTheTextsOfItsQuestion) {
  const std::pair<Arrange, std::string> rows[] = {
      {Ordinary,
       "Start=Start|When it starts.\nMode=Mode|How.\nLamp=Lamp|Light.\nTag[RegEx:^a*$]=Start|\nPowerSetup=Power "
       "Setup|\n"
       "Lock[ForceIf:Lamp=Enabled]=Lock it|Lock.\nPick=Pick|\nCard=Card Switch|\nOther=Other|\n" +
           kLockout + "MIPICam1=MIPI Camera 1|\n" + kSupport},
      // Which prompt of the form set was too long and left out cannot be told; what is behind it is not paired, either.
      {[](FakeNotebook& notebook) {
         notebook.AddFormSet(u"First").Numeric(300, u"A", u"Prompt A").Bounds(0, 9);
         FakeFormSet& second = notebook.AddFormSet(u"Second");
         second.Numeric(301, u"B", std::u16string(175, u'x')).Bounds(0, 9);
         second.Numeric(302, u"C", u"Prompt C").Bounds(0, 9);
         notebook.AddFormSet(u"Third");
       },
       "A=Prompt A|\nFirst=First|\n" + kLockout + kSupport + "the texts can have been created in more than one way"},
      // A prompt that begins with stars, and a list of values that looks like a checkbox.
      {[](FakeNotebook& notebook) {
         FakeFormSet& first = notebook.AddFormSet(u"First");
         first.OneOf(300, u"A", u"**A").Option(0, u"Disabled", u"Aus").Option(1, u"Enabled", u"An").Help(u"?");
         first.Checkbox(301, u"B", u"Aus").Help(u"Not kept.");
       },
       "A=A|?\nB=Aus|\nFirst=First|\n" + kLockout + kSupport},
      // Of 241 one-of and checkbox questions on, questions leave texts and are no attribute.
      {[](FakeNotebook& notebook) {
         notebook.AddFormSet(u"First").Numeric(1, u"N", u"Number").Bounds(0, 9);
         FakeFormSet& second = notebook.AddFormSet(u"Second");
         for (char16_t i = 0; i < 245; ++i) {
           const char16_t digits[] = {u'Q', static_cast<char16_t>(u'0' + i / 100),
                                      static_cast<char16_t>(u'0' + i / 10 % 10), static_cast<char16_t>(u'0' + i % 10),
                                      0};
           second.Checkbox(3000U + i, digits, digits);
         }
       },
       "N=Number|\nFirst=First|\nso many questions became attributes that later ones can have left texts alone"},
  };
  for (const auto& [arrange, expected] : rows) {
    EXPECT_EQ(TextsOf(Boot(arrange).Decode()), kPlacedTexts + expected);
  }
}

TEST(PairingTest, TextsOutOfOrderAreNotPaired) {
  Boot boot(Ordinary);
  Out& display = boot.Sent[5];
  const Out title = Join(u"Power Setup");
  std::search(display.begin(), display.end(), title.begin(), title.end())[0] = 'T';
  EXPECT_THAT(TextsOf(boot.Decode()), EndsWith("the texts cannot have been created in the order of the attributes"));
}

TEST(KeywordsTest, NamesAreTakenApart) {
  struct Row {
    const char* Name;
    const char* Bare;
    std::size_t Annotations;
    const char* Problem;
  };
  const Row rows[] = {
      {"Plain", "Plain", 0, ""},
      {"A[ForceIf:B=C][ForceIfNot:D=E]", "A", 2, ""},
      {"A[RegEx:^\\\\133\\\\x20\\\\135$]", "A", 1, ""},
      {"A[ForceIf:B]", "A", 1, "does not name an attribute and its value"},
      {"A[ForceIf:B =C]", "A", 1, "has a blank in it"},
      {"A[Force:B=C]", "A", 1, "is of no known kind"},
      {"A[ForceIf:B=C", "A", 0, "has no closing bracket"},
      {"A[ForceIf:B=C]tail", "A", 1, "stands outside the brackets"},
      {"A[RegEx:]", "A", 1, "has no expression"},
  };
  for (const Row& row : rows) {
    const Keyword keyword = ParseKeyword(row.Name);
    EXPECT_EQ(keyword.Bare, row.Bare);
    EXPECT_EQ(keyword.Annotations.size(), row.Annotations) << row.Name;
    EXPECT_THAT(keyword.Problem, HasSubstr(row.Problem)) << row.Name;
    EXPECT_EQ(keyword.Problem.empty(), *row.Problem == '\0') << row.Name;
  }
  EXPECT_EQ(UnescapeExpression("^\\\\133\\\\x20-\\x7e\\\\135{0,32}\\\\.\\\\101$"), "^[\\x20-\\x7e]{0,32}\\.\\x41$");
}

TEST(CacheVerdictTest, PreparedStoresGetTheirVerdicts) {
  struct Row {
    const char* What;
    Arrange After;  // the boot
    CacheOptions Options;
    CacheState State;
    const char* NextBoot;
  };
  const auto set = [](std::u16string_view name, const Out& data) {
    return
        [name, data](FakeNotebook& notebook) { notebook.SetVariable(name, name == u"AttCacheStatus" ? 7 : 3, data); };
  };
  const auto flip = [](std::u16string_view name) {
    return [name](FakeNotebook& notebook) {
      Out data = notebook.Variable(name)->Data;
      data[std::min<size_t>(data.size() / 2, 12)] ^= 1;  // of a stream its codes, without which nothing can be told
      notebook.SetVariable(name, 3, data);
    };
  };
  const auto nothing = [](FakeNotebook&) {};
  const Row rows[] = {
      {"cold",
       [](FakeNotebook& notebook) { notebook.Uefi.Variables.clear(); },
       {},
       CacheState::Absent,
       "writes the cache"},
      {"warm", nothing, {.Firmware = "1.2.3", .Limit = 9999}, CacheState::Valid, "It restores the attributes"},
      {"updated", nothing, {.Firmware = "1.2.30", .Limit = {}}, CacheState::Stale, "gathers all attributes"},
      {"marked bad", set(u"AttCacheStatus", {9}), {}, CacheState::MarkedBad, "clears the mark"},
      {"no help texts", set(u"HelpString", {}), {}, CacheState::Partial, "take turns"},
      {"no records", set(u"AttributesData", {}), {}, CacheState::Partial, "does not notice"},
      {"no version", set(u"BiosVersion", {}), {}, CacheState::Partial, "Without a version nothing is restored"},
      {"a bit of the records", flip(u"AttributesData"), {}, CacheState::Corrupt, "It trusts the version"},
      {"a bit of the version", flip(u"BiosVersion"), {}, CacheState::Corrupt, "no firmware's"},
      {"counters of a guess", set(u"AttributesCount", Out(32, 9)), {}, CacheState::Corrupt, "It trusts the version"},
      {"limit too small", nothing, {.Firmware = {}, .Limit = 100}, CacheState::Partial, "So does every boot after it"},
  };
  for (const Row& row : rows) {
    for (const bool authenticated : {true, false}) {
      FakeNotebook notebook;
      Ordinary(notebook);
      EXPECT_EQ(notebook.Boot(), EFI_SUCCESS);
      row.After(notebook);
      const Out flash = Join(Out(512), FlashOf(notebook, authenticated), Out(1024, 0xFF));
      const CacheReport report = ReportCache(flash, row.Options);
      EXPECT_STREQ(NameOf(report.Verdict.State), NameOf(row.State)) << row.What << ": " << report.Verdict.Reason;
      EXPECT_THAT(report.Verdict.NextBoot, HasSubstr(row.NextBoot)) << row.What;
      EXPECT_EQ(report.Store.Authenticated, authenticated);
      EXPECT_TRUE(report.Findings.List().empty());
    }
  }
}

std::string CodesOf(const std::vector<LintFinding>& findings) {
  std::string codes;
  for (const LintFinding& finding : findings) {
    codes += (codes.empty() ? "" : " ") + finding.Code + (finding.IsNote ? "?" : "");
    EXPECT_NE(finding.Advice, "");
  }
  return codes;
}

TEST(LintTest, EachKindOfFaultInASetupIsFound) {
  using Form = FakeFormSet&;
  const auto onOff = [](Form form, UINT32 id, const char16_t* name, const char16_t* off, const char16_t* on) {
    form.OneOf(id, name, name).Option(0, off, off).Option(1, on, on).Value(0);
  };
  const std::tuple<std::function<void(Form)>, std::string, std::string> rows[] = {
      {[](Form) {}, "", ""},
      {[&](Form f) { onOff(f, 400, u"A", u"Off[ForceIf:Nobody=On]", u"On"); }, "annotation-dangling", "\"Nobody\""},
      {[&](Form f) { onOff(f, 400, u"A[ForceIf:Lamp=Blue]", u"Off", u"On"); }, "annotation-dangling", "\"Blue\""},
      {[&](Form f) { onOff(f, 400, u"A", u"Off[ForceIf Lamp=Enabled]", u"On"); }, "annotation-malformed",
       "of no known kind"},
      {[&](Form f) {
         onOff(f, 400, u"A", u"Off[ForceIf:B=On]", u"On");
         onOff(f, 401, u"B", u"Out", u"On[ForceIf:A=Off]");
       },
       "dependency-unmet? dependency-cycle", "A=Off forces B=On forces A=Off"},
      {[&](Form f) {
         onOff(f, 400, u"A[ForceIf:B=On]", u"Off", u"On");
         onOff(f, 401, u"B[ForceIf:A=On]", u"Off", u"On");
       },
       "dependency-cycle", "A holds B holds A"},
      {[&](Form f) { onOff(f, 400, u"A", u"Off[ForceIf:Lamp=Enabled]", u"On[ForceIfNot:Mode=Enabled]"); },
       "dependency-contradiction", "are forced at once"},
      {[&](Form f) {
         onOff(f, 400, u"A", u"Off[ForceIf:B=Up]", u"On");
         onOff(f, 401, u"B", u"Down", u"Up[ForceIf:A=On]");
       },
       "dependency-contradiction", "\"A=On\" leads to \"A=Off\""},
      {[&](Form f) { onOff(f, 400, u"A", u"Off", u"On[ForceIf:Lamp=Disabled]"); }, "dependency-unmet?",
       "value is \"A=Off\""},
      {[&](Form f) { onOff(f, 400, u"Lamp", u"Off", u"On"); }, "name-duplicate", "2 attributes"},
      {[&](Form f) { onOff(f, 400, u"A", u"Off", u"Off"); }, "value-duplicate", "twice"},
      {[](Form f) { f.Numeric(400, u"", u"?").Bounds(0, 9); }, "name-empty", "empty name"},
      {[](Form f) { f.Numeric(400, u"A", u"A").Bounds(0, 9).Value(12); }, "value-bounds", "0 to 9"},
      {[](Form f) { f.Numeric(400, u"A", u"A").Bounds(0, 9, 3).Value(4); }, "value-bounds", "steps of 3"},
      {[](Form f) { f.Numeric(400, u"A", u"A").Bounds(5, 9).Value(5); }, "default-bounds", "default 0"},
      {[](Form f) { f.Numeric(400, u"A", u"A").Bounds(9, 5); }, "bounds-empty", "9 to 5"},
      {[](Form f) { f.Numeric(400, u"A", u"A").Bounds(0, 900).Value(300, 2); }, "value-above-byte?", "reads as 44"},
      {[](Form f) { f.String(400, u"A", u"A").Bounds(2, 3).Text("abcd"); }, "value-bounds", "4 characters"},
      {[](Form f) { f.String(400, u"A[RegEx:^x$]", u"A").Bounds(0, 9).Text("abcd"); }, "value-expression",
       "does not match"},
      {[](Form f) { f.String(400, u"A[RegEx:x(]", u"A").Bounds(0, 9).Text("x"); }, "expression-invalid",
       "does not compile"},
      {[](Form f) { f.Numeric(400, std::u16string(51, u'k') + u"[ForceIf:Lamp=Enabled]", u"A").Bounds(0, 9); },
       "keyword-long", "51 characters"},
  };
  for (const auto& [add, codes, text] : rows) {
    const Boot boot([&add](FakeNotebook& notebook) {
      Ordinary(notebook);
      add(notebook.AddFormSet(u"More"));
    });
    const CacheReport report = ReportCache(boot.Flash, {});
    const std::vector<LintFinding> findings = Lint(boot.Decode(), &report, {});
    EXPECT_EQ(CodesOf(findings), codes);
    EXPECT_THAT(findings.empty() ? "" : findings.front().Text + findings.back().Text, HasSubstr(text));
    EXPECT_EQ(IsClean(findings), codes.empty() || codes.ends_with("?"));
  }
}

TEST(LintTest, WhatATableLacksIsNamedFromTheCacheOfTheSameBoot) {
  const auto arrange = [](FakeNotebook& notebook) {
    Ordinary(notebook);
    FakeFormSet& form = notebook.AddFormSet(u"More");
    for (char16_t i = 0; i < 60; ++i) {
      form.Numeric(400U + i, std::u16string(140, static_cast<char16_t>(u'A' + i)),
                   std::u16string(1, static_cast<char16_t>(u'A' + i)))
          .Bounds(0, 9);
    }
  };
  const Boot boot(arrange);
  const Image image = boot.Decode();
  const std::vector<TableCut> alone = FindCuts(image, nullptr);
  ASSERT_EQ(alone.size(), 1u);
  EXPECT_EQ(alone[0].Id, TableId::Strings);
  EXPECT_TRUE(alone[0].Known.empty());

  const CacheReport report = ReportCache(boot.Flash, {});
  const std::vector<TableCut> cuts = FindCuts(image, &report.Content);
  ASSERT_EQ(cuts.size(), 1u);
  EXPECT_EQ(cuts[0].Known.size(), cuts[0].Lost);
  EXPECT_EQ(cuts[0].Known.front().Handle, *cuts[0].FirstLost);
  EXPECT_EQ(cuts[0].Known.back().Text, "Varo:HDD:0001");
  // Each of the names takes 4 bytes more than its text, and the whole a multiple of 4 and a checksum.
  std::size_t size = 0;
  for (const std::u16string& name : report.Content.Texts.Names) {
    size += 4 + name.size();
  }
  EXPECT_EQ(cuts[0].BytesOver, (size + 3) / 4 * 4 + 4 - 7680);
  // The cache alone foretells the same cut, and the cache of another notebook says nothing of this one.
  const std::vector<TableCut> foretold = FindCuts(ImageOfCache(report.Content), &report.Content);
  EXPECT_EQ(foretold.front().FirstLost, cuts[0].FirstLost);
  const Boot another(Ordinary);
  const CacheReport other = ReportCache(another.Flash, {});
  EXPECT_THAT(CodesOf(Lint(image, &other, {})), HasSubstr("other-boot table-cut"));
}

TEST(ExplainTest, AChainIsFollowedToItsEnd) {
  const Boot boot([](FakeNotebook& notebook) {
    FakeFormSet& form = notebook.AddFormSet(u"Setup");
    const auto add = [&form](UINT32 id, const char16_t* name, const char16_t* off, const char16_t* on) {
      form.OneOf(id, name, name).Option(0, off, off).Option(1, on, on).Value(0);
    };
    add(400, u"A", u"Off", u"On");
    add(401, u"B", u"Off", u"Up[ForceIf:A=On]");
    add(402, u"C", u"Off", u"Set[ForceIf:B=Up]");
    add(403, u"D[ForceIf:C=Set]", u"Off", u"On");
    add(404, u"E[ForceIfNot:A=On]", u"Off", u"On");
  });
  const Image image = boot.Decode();
  const Catalog catalog = MakeCatalog(image);
  const Dependencies dependencies(catalog);
  const std::vector<std::uint32_t> list{402, 400};
  const auto explain = [&](const char* name, const Plan& plan) {
    const Explanation explanation = Explain(catalog, dependencies, *dependencies.Find(name), plan, &list);
    return ExplanationAsText(catalog, dependencies, explanation, Style(false));
  };
  EXPECT_THAT(
      explain("A", {}),
      AllOf(HasSubstr("whom it forces\n    sets B=Up while A is On (A=Off: not now)\n    holds E while A is not On "
                      "(A=Off: acts now)\n"),
            HasSubstr("setting A=On\n    sets B=Up, because of A=On and [ForceIf:A=On]\n"
                      "    sets C=Set, because of B=Up and [ForceIf:B=Up]\n"
                      "    holds D, because of C=Set and [ForceIf:C=Set]\n"
                      "    frees E, because of A=On and [ForceIfNot:A=On]\n"),
            HasSubstr("\"PidDepList\" has it, and keywords of other questions name it\n")));
  const Plan both{{*dependencies.Find("A"), 1}, {*dependencies.Find("B"), 0}};
  EXPECT_THAT(explain("B", both), HasSubstr("conflicts with B=Off, because of A=On"));
}

// Damage to one place of the records as sent; 25 bytes of each are its header. What a table's checksum would show alone
// is mended in the table and its descriptor.
void Mend(Records& sent, std::size_t type) {
  Out& record = sent[type];
  const std::uint32_t crc = Crc32(::corvane::inspect::Bytes(record).subspan(25, record.size() - 29));
  const std::size_t descriptor = 25 + 28 * (type < 5 ? type - 2 : type + 4);
  for (std::size_t i = 0; i < 4; ++i) {
    record[record.size() - 4 + i] = sent[1][descriptor + 21 + i] = static_cast<std::uint8_t>(crc >> (8 * i));
  }
}

// Takes the last entry out of a table, and out of all that is said of the table.
void DropLast(Records& sent, std::size_t type, std::size_t entrySize) {
  const std::size_t descriptor = 25 + 28 * (type < 5 ? type - 2 : type + 4);
  Out& record = sent[type];
  const std::size_t pad = sent[1][descriptor + 25];
  record.resize(record.size() - 4 - pad - entrySize);
  const std::size_t newPad = (4 - (record.size() - 25) % 4) % 4;
  record.resize(record.size() + newPad + 4);
  const std::size_t length = record.size() - 25;
  const auto put = [&](Out& out, std::size_t at, std::size_t value, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i) {
      out[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
  };
  put(record, 16, length, 8);
  put(sent[1], descriptor + 13, length, 2);
  sent[1][descriptor + 25] = static_cast<std::uint8_t>(newPad);
  --sent[1][descriptor + 19];
  const std::size_t entry = 25 + 24 + 16 * (type - 2) + 8;
  for (std::size_t i = 0; i < 2; ++i) {
    sent[0][25 + 22] = static_cast<std::uint8_t>(sent[0][25 + 22] + sent[0][entry + i] - (length >> (8 * i)));
  }
  put(sent[0], entry, length, 2);
  Mend(sent, type);
}

TEST(DamageTest, EachKindIsCaughtOrHarmless) {
  using R = Records&;
  const char* kHarmless = "harmless";
  const std::pair<const char*, std::function<void(R)>> rows[] = {
      {"capture-cut", [](R r) { r[7].pop_back(); }},
      {"record-missing", [](R r) { r.pop_back(); }},
      {"record-order", [](R r) { std::swap(r[5], r[6]); }},
      {"record-repeated", [](R r) { r[1] = r[0]; }},
      {"record-type", [](R r) { r[6][24] = 8; }},
      {"capture-framing", [](R r) { r[7][0] ^= 1; }},
      {"capture-framing", [](R r) { ++r[5][16]; }},
      {"capture-cut",
       [](R r) {
         r.push_back({1, 2, 3});
       }},
      {"directory-head",
       [](R r) {
         r[0][25] ^= 1;
         r[0][25 + 22] ^= 1;
       }},
      {"directory-checksum", [](R r) { ++r[0][25 + 22]; }},
      {"directory-entry",
       [](R r) {
         ++r[0][25 + 24 + 8];
         --r[0][25 + 22];
       }},
      {"directory-entry",
       [](R r) {
         ++r[0][25 + 24 + 12];
         --r[0][25 + 22];
       }},
      {"directory-length",
       [](R r) {
         ++r[0][25 + 12];
         --r[0][25 + 22];
       }},
      {kHarmless, [](R r) { r[0].back() ^= 1; }},  // behind the entries, nothing is written
      {"descriptor", [](R r) { ++r[1][25 + 8]; }},
      {"descriptor", [](R r) { ++r[1][25 + 15]; }},
      {"descriptor", [](R r) { ++r[1][25 + 19]; }},
      {"descriptor", [](R r) { ++r[1][25 + 3 * 28]; }},
      {kHarmless, [](R r) { ++r[1][25 + 7]; }},  // an address of memory long gone
      {"table-crc", [](R r) { ++r[2][25 + 4]; }},
      {"handle-order",
       [](R r) {
         ++r[2][25];
         Mend(r, 2);
       }},
      {"table-malformed",
       [](R r) {
         r[2][25 + 3] = 0xFF;
         Mend(r, 2);
       }},
      {"stream-differs",
       [](R r) {
         r[3][25 + 2] ^= 0x80;
         Mend(r, 3);
       }},
      {"stream-differs",
       [](R r) {
         ++r[3][25 + 3];
         Mend(r, 3);
       }},
      {"type-unknown",
       [](R r) {
         r[3][25 + 2] = 9;
         Mend(r, 3);
       }},
      {"stream-differs",
       [](R r) {
         r[4][25 + 3] ^= 1;
         Mend(r, 4);
       }},
      {"table-crc", [](R r) { r[4].back() ^= 1; }},
      {"table-language",
       [](R r) {
         r[5][25 + 2] = 'f';
         Mend(r, 5);
       }},
      {"table-crc", [](R r) { ++r[6][25 + 20]; }},
      {"stream-length", [](R r) { ++r[7][25]; }},
      {"table-cut", [](R r) { ++r[7][25 + 12]; }},
      {"stream-malformed", [](R r) { ++r[7][25 + 4]; }},
      {"stream-malformed", [](R r) { r[7][25 + 36 + 1 + 2] = 0x77; }},
      {"table-surplus", [](R r) { --r[7][25 + 20]; }},
      {"table-cut", [](R r) { DropLast(r, 2, 4 + 13); }},  // "Varo:HDD:0001"
      {"table-cut", [](R r) { DropLast(r, 3, 33); }},      // the support level
      {"table-cut", [](R r) { DropLast(r, 4, 11); }},
      {"table-cut", [](R r) { DropLast(r, 5, 4 + 26); }},
      {"table-cut", [](R r) { DropLast(r, 6, 4); }},
  };
  const Boot boot(Ordinary);
  const auto all = [](const Image& image) {
    std::string lines;
    for (const AttributeEntry& attribute : image.Attributes.Entries) {
      lines += AttributeLine(image, attribute) + '\n';
    }
    return lines + TextsOf(image);
  };
  const std::string whole = all(boot.Decode());
  for (const auto& [expected, damage] : rows) {
    Records sent = boot.Sent;
    damage(sent);
    std::string codes;
    try {
      const Image image = DecodeImage(Joined(sent));
      const Validation validation = Validate(image, false);
      for (const Finding& finding : validation.Problems.List()) {
        codes += finding.Code + " ";
      }
      codes += codes.empty() && all(image) == whole ? kHarmless : "";
    } catch (const UnusableInput& unusable) {
      codes = unusable.what();
    }
    EXPECT_THAT(codes, HasSubstr(expected));
  }
  EXPECT_GE(std::size(rows), 30u);
}

}  // namespace
}  // namespace corvane::inspect
