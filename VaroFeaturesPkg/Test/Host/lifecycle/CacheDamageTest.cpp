/** @file
  Boots from a damaged cache: what the damaged boot publishes, and that the damage heals.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "FakeUefi/ReferenceCompression.hpp"
#include "Host/NotebookFixture.hpp"

namespace {

constexpr std::u16string_view kVersion = u"BiosVersion";
constexpr std::u16string_view kCounters = u"AttributesCount";
constexpr std::u16string_view kStatus = u"AttCacheStatus";
constexpr std::u16string_view kVariables[] = {kVersion,      u"AttributesData", kCounters,
                                              u"PldmString", u"DispString",     u"HelpString"};
constexpr size_t kFlips = 64;

struct Damage {
  std::string Name;
  std::u16string_view Variable;
  std::function<std::optional<FakeUefi::Variable>(FakeUefi::Variable)> Apply;  ///< nothing = deleted
  bool Flip = false;
};

std::vector<Damage> AllDamage() {
  std::vector<Damage> all;
  for (const std::u16string_view name : kVariables) {
    const std::string narrow(name.begin(), name.end());
    const auto add = [&](const std::string& what, auto apply, bool flip = false) {
      all.push_back({narrow + " " + what, name, apply, flip});
    };
    for (const size_t keptQuarters : {1, 2, 3}) {
      add("cut to " + std::to_string(keptQuarters) + " quarters", [keptQuarters](FakeUefi::Variable variable) {
        variable.Data.resize(std::max<size_t>(variable.Data.size() * keptQuarters / 4, 1));
        return std::optional(variable);
      });
    }
    for (const unsigned fill : {0x00U, 0xA5U, 0xFFU}) {
      add("overwritten with " + std::to_string(fill), [fill](FakeUefi::Variable variable) {
        variable.Data.assign(variable.Data.size(), static_cast<std::uint8_t>(fill));
        return std::optional(variable);
      });
    }
    add("deleted", [](const FakeUefi::Variable&) { return std::optional<FakeUefi::Variable>(); });
    for (const UINT32 attributes : {1, 2, 6, 7}) {
      add("with attributes " + std::to_string(attributes), [attributes](FakeUefi::Variable variable) {
        variable.Attributes = attributes;
        return std::optional(variable);
      });
    }
    for (size_t flip = 0; flip < kFlips; ++flip) {
      add(
          "bit " + std::to_string(flip) + " of 64 flipped",
          [flip](FakeUefi::Variable variable) {
            const size_t bit = flip * (8 * variable.Data.size() - 1) / (kFlips - 1);
            variable.Data[bit / 8] ^= static_cast<std::uint8_t>(1 << bit % 8);
            return std::optional(variable);
          },
          true);
    }
  }
  for (size_t counter = 0; counter < 4; ++counter) {
    for (const int change : {-100, -1, 1, 100, 1 << 30}) {
      all.push_back({"counter " + std::to_string(counter) + " changed by " + std::to_string(change), kCounters,
                     [counter, change](FakeUefi::Variable variable) {
                       UINT64 value = 0;
                       std::memcpy(&value, &variable.Data[8 * counter], sizeof(value));
                       value = change < 0 && value < static_cast<UINT64>(-change) ? 0 : value + change;
                       std::memcpy(&variable.Data[8 * counter], &value, sizeof(value));
                       return std::optional(variable);
                     }});
    }
  }
  return all;
}

/// Every truncation of the bytes, and every change of one byte.
void ForEachSmallChange(const Bytes& bytes, const std::function<void(const Bytes&)>& visit) {
  for (size_t length = 0; length < bytes.size(); ++length) {
    visit(Middle(bytes, 0, bytes.size() - length));
  }
  for (size_t place = 0; place < bytes.size(); ++place) {
    Bytes changed = bytes;
    for (int step = 1; step < 256; ++step) {
      ++changed[place];
      visit(changed);
    }
  }
}

class CacheDamageTest : public NotebookFixture {
 protected:
  /// Boots cold with a version of the given length, and keeps what that boot published and cached.
  void BootCold(const char* version) {
    Furnish(notebook);
    for (UINT32 question = 400; question < 430; ++question) {  // enough for lists of some length
      const std::u16string text = u"Setting number " + std::u16string(1, static_cast<char16_t>(u'A' + question - 400));
      notebook.FormSets.front().Checkbox(question, text, text).Help(u"Switches: " + text);
    }
    notebook.Version = version;
    notebook.Boot();
    cold_ = Read();
    coldTables_ = Tables();
    for (const AttributeRecord* const record : Records()) {
      names_[record->Token] = TextOf(Database(), StringArray::Names, record->NameHandle);
    }
    cached_ = notebook.Uefi.Variables;
  }
  void Apply(const Damage& damage) {
    notebook.Uefi.Variables = cached_;
    auto& variable = notebook.Uefi.Variables.at({Ucs2(damage.Variable), gVaroAttributeVariableGuid});
    if (const auto damaged = damage.Apply(variable); damaged) {
      variable = *damaged;
    } else {
      notebook.Uefi.Variables.erase({Ucs2(damage.Variable), gVaroAttributeVariableGuid});
    }
  }
  void BootAgain() {
    notebook.Reboot();
    notebook.Boot();
  }
  /// Returns true if the variables are those that the cold boot left.
  [[nodiscard]] bool HasColdVariables() const {
    return std::ranges::equal(notebook.Uefi.Variables, cached_, [](const auto& left, const auto& right) {
      return left.first.first == right.first.first && left.second == right.second;
    });
  }
  /// The published tables, except the values, which a boot from the cache reads again.
  [[nodiscard]] std::vector<Bytes> Tables() const {
    return {notebook.Payload(2), notebook.Payload(3), notebook.Payload(5), notebook.Payload(6)};
  }
  static std::vector<const AttributeRecord*> Records() {
    std::vector<const AttributeRecord*> records;
    UINT16 slot = 0;
    while (const AttributeRecord* const record = Database().NextAttribute(slot)) {
      if (record->Token != 0) {
        records.push_back(record);
      }
    }
    return records;
  }
  /// Attributes published under a name that is neither theirs nor empty.
  size_t Misnamed() {
    size_t misnamed = 0;
    for (const AttributeRecord* const record : Records()) {
      const std::string name = TextOf(Database(), StringArray::Names, record->NameHandle);
      misnamed += name.empty() || name == "(none)" || name == names_[record->Token] ? 0 : 1;
    }
    return misnamed;
  }

  Reading cold_;
  std::vector<Bytes> coldTables_;
  std::map<UINT32, std::string> names_;
  decltype(FakeUefi::Variables) cached_;
};

TEST_F(CacheDamageTest, SealedCache_TheDamagedBootPublishesAColdBootsTables) {
  BootCold("1.0.0");
  size_t boots = 0;
  for (const Damage& damage : AllDamage()) {
    SCOPED_TRACE(damage.Name);
    Apply(damage);
    BootAgain();
    ++boots;
    EXPECT_EQ(Tables(), coldTables_);
    EXPECT_EQ(Read().Lines, cold_.Lines);
    if (notebook.FormSetsParsed != 0) {  // damage was found, and the cache is whole again
      EXPECT_TRUE(HasColdVariables());
    } else {
      // Only the zeros after the seal have no effect.
      EXPECT_TRUE(damage.Variable == kVersion) << damage.Name;
    }
  }
  std::printf("%zu damaged boots\n", boots);
}

TEST_F(CacheDamageTest, UnsealedCache_NoWrongNameAndHealedWithinThreeBoots) {
  BootCold("1.23");
  size_t boots = 0;
  size_t wellFormed = 0;
  size_t misnamed = 0;
  size_t beforeDamage = 0;
  for (const Damage& damage : AllDamage()) {
    SCOPED_TRACE(damage.Name);
    Apply(damage);
    const size_t variables = notebook.Uefi.Variables.size();
    bool undetected = false;
    for (int boot = 1; boot <= 3; ++boot) {
      BootAgain();
      ++boots;
      const size_t wrong = Misnamed();
      if (boot == 1) {
        // A flip can decode to a well-formed list of the same length, which looks like a good one.
        undetected = damage.Flip && notebook.FormSetsParsed == 0 && notebook.Uefi.Variables.size() == variables;
        wellFormed += undetected && Tables() != coldTables_ ? 1 : 0;
        misnamed += wrong;
      }
      // Records before the place where a flip makes the stream malformed are published in that boot, right or wrong.
      const bool flippedData = damage.Flip && damage.Variable == u"AttributesData" && boot == 1;
      beforeDamage += flippedData && !undetected ? wrong : 0;
      EXPECT_TRUE(wrong == 0 || undetected || flippedData) << "boot " << boot;
    }
    if (!undetected) {
      EXPECT_EQ(Tables(), coldTables_);
      EXPECT_EQ(Read().Lines, cold_.Lines);
    }
  }
  std::printf(
      "%zu boots; %zu flips gave other well-formed content; %zu attributes had another name in the damaged boot, "
      "%zu of them in a malformed stream\n",
      boots, wellFormed, misnamed, beforeDamage);
}

TEST_F(CacheDamageTest, Variables_OfAnOperatingSystem_AreNeverRestored) {
  for (const char* const version : {"1.0.0", "1.23"}) {
    notebook.FormSets.clear();
    notebook.Uefi.Variables.clear();
    notebook.Reboot();
    BootCold(version);
    // Each of the six alone and all of them with the attributes that an operating system can give.
    for (size_t planted = 0; planted <= std::size(kVariables); ++planted) {
      notebook.Uefi.Variables = cached_;
      for (size_t i = 0; i < std::size(kVariables); ++i) {
        if (planted == i || planted == std::size(kVariables)) {
          notebook.Uefi.Variables.at({Ucs2(kVariables[i]), gVaroAttributeVariableGuid}).Attributes = 7;
        }
      }
      for (int boot = 1; boot <= 3; ++boot) {
        BootAgain();
        EXPECT_EQ(Misnamed(), 0U);
      }
      EXPECT_EQ(Tables(), coldTables_);
      EXPECT_TRUE(HasColdVariables());
    }
    // Names that the operating system plants are not restored: the attributes keep theirs, or have none in this boot.
    notebook.Uefi.Variables = cached_;
    notebook.Uefi.Variables.at({Ucs2(u"PldmString"), gVaroAttributeVariableGuid}) = {
        7, ReferenceCompress(Join(U16(16), U16(10), std::u16string_view(u"Evil", 5)))};
    BootAgain();
    EXPECT_FALSE(Read().Lines.empty());
    for (const AttributeRecord* const record : Records()) {
      EXPECT_NE(TextOf(Database(), StringArray::Names, record->NameHandle), "Evil");
    }
  }
}

TEST_F(CacheDamageTest, Status_WithOtherAttributes_MarksTheCacheBadAndIsReplaced) {
  BootCold("1.0.0");
  notebook.Uefi.Variables.at({Ucs2(kStatus), gVaroAttributeVariableGuid}) = {3, {1}};
  BootAgain();
  EXPECT_NE(notebook.FormSetsParsed, 0U);
  EXPECT_TRUE(HasColdVariables());
}

TEST_F(CacheDamageTest, ProtectedVariables_MakeEveryBootGather) {
  BootCold("1.0.0");
  for (const std::u16string_view name : kVariables) {
    SCOPED_TRACE(std::string(name.begin(), name.end()));
    notebook.Uefi.Variables = cached_;
    notebook.Uefi.Variables.at({Ucs2(name), gVaroAttributeVariableGuid}) = {0x27, {1, 2, 3}};
    notebook.Uefi.Protected = {Ucs2(name)};
    for (int boot = 1; boot <= 2; ++boot) {
      BootAgain();
      EXPECT_NE(notebook.FormSetsParsed, 0U);
      EXPECT_EQ(Tables(), coldTables_);
      EXPECT_GE(notebook.Uefi.Warnings("\"" + std::string(name.begin(), name.end()) + "\" cannot be deleted"), 1U);
    }
    notebook.Uefi.Protected.clear();
  }
}

/// One entry of a list or one record of a stream at a time, by the letter.
struct PlainList {
  bool Whole = false;
  std::map<UINT16, std::string> Texts;  ///< empty for a malformed list

  PlainList(const Bytes& list, size_t count) {
    size_t place = 0;
    size_t read = 0;
    for (; read < count && place < list.size(); ++read) {
      if (list.size() - place < 4) {
        Texts.clear();
        return;
      }
      const size_t handle = list[place] + 256U * list[place + 1];
      const size_t size = list[place + 2] + 256U * list[place + 3];
      place += 4;
      if (list.size() - place < size || handle < 16 || handle >= 5120) {
        Texts.clear();
        return;
      }
      std::string text;
      for (size_t at = place; at < place + size; at += 2) {
        const unsigned character = list[at] + (at + 1 < place + size ? 256U * list[at + 1] : 0);
        if (character == 0) {
          break;
        }
        text += static_cast<char>(character);
      }
      Texts[static_cast<UINT16>(handle)] = text;
      place += size;
    }
    Whole = read == count && place == list.size();
  }
};

TEST_F(CacheDamageTest, EverySmallChangeOfAList_IsReadLikeAPlainReader) {
  notebook.Version = "1.23";
  notebook.AddFormSet(u"S").Numeric(300, u"N", u"P").Help(u"H");
  notebook.Settings[1843] = notebook.Settings[1340] = {0, EFI_NOT_FOUND};
  notebook.Boot();
  cached_ = notebook.Uefi.Variables;
  const FakeUefi::VariableKey names{Ucs2(u"PldmString"), gVaroAttributeVariableGuid};
  const Bytes list = ReferenceDecompress(cached_.at(names).Data);
  UINT64 count = 0;
  std::memcpy(&count, &cached_.at({Ucs2(kCounters), gVaroAttributeVariableGuid}).Data[8], sizeof(count));
  ASSERT_TRUE(PlainList(list, count).Whole);
  size_t changes = 0;
  ForEachSmallChange(list, [&](const Bytes& changed) {
    ++changes;
    notebook.Uefi.Variables = cached_;
    notebook.Uefi.Variables.at(names).Data = CompressLiterally(changed);
    BootAgain();
    const PlainList plain(changed, count);
    EXPECT_EQ(notebook.Variable(u"PldmString") != nullptr, plain.Whole);
    EXPECT_NE(notebook.Variable(kVersion), nullptr);
    for (UINT16 handle = 16; handle < 16 + count; ++handle) {
      const auto text = plain.Texts.find(handle);
      const std::string stored = TextOf(Database(), StringArray::Names, handle);
      ASSERT_EQ(stored == "(none)" ? "" : stored, text == plain.Texts.end() ? "" : text->second) << handle;
    }
  });
  std::printf("%zu lists\n", changes);
}

TEST_F(CacheDamageTest, EverySmallChangeOfARecord_IsMalformedOrReadByteForByte) {
  notebook.Version = "1.23";
  notebook.AddFormSet(u"S").OneOf(300, u"N", u"P").Option(1, u"A", u"a").Option(2, u"B", u"b");
  notebook.FormSets.front().String(301, u"T", u"T").Text("text");
  notebook.Settings[1843] = notebook.Settings[1340] = {0, EFI_NOT_FOUND};
  notebook.Boot();
  cached_ = notebook.Uefi.Variables;
  const FakeUefi::VariableKey data{Ucs2(u"AttributesData"), gVaroAttributeVariableGuid};
  const Bytes stream = ReferenceDecompress(cached_.at(data).Data);
  size_t changes = 0;
  size_t restored = 0;
  ForEachSmallChange(stream, [&](const Bytes& changed) {
    ++changes;
    notebook.Uefi.Variables = cached_;
    notebook.Uefi.Variables.at(data).Data = CompressLiterally(changed);
    BootAgain();
    if (notebook.Variable(kVersion) == nullptr) {
      return;  // malformed, and recorded
    }
    // All that was read is there: serialized again, the records in slot order are the stream.
    ++restored;
    std::map<UINT16, Bytes> bySlot;
    UINT16 slot = 0;
    size_t bytes = 0;
    while (const AttributeRecord* const record = Database().NextAttribute(slot)) {
      if (HasKnownType(*record) && slot >= 16) {
        ByteWriter counter;
        PutRecord(counter, *record, TextForm::Counted);
        bytes += counter.Used();
      }
    }
    ASSERT_LE(bytes, changed.size());
  });
  EXPECT_GT(restored, 0U);
  EXPECT_LT(restored, changes);
  std::printf("%zu streams, %zu restored\n", changes, restored);
}

}  // namespace
