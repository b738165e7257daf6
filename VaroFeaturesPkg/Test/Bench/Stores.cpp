/** @file
  Generated stores.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Bench/Stores.hpp"

#include <random>

#include "sources/Interning.hpp"

namespace {

using Text = std::basic_string<CHAR16>;

constexpr size_t kValuesPerEnumeration = 4;

std::vector<Text> WordsOf(const AttributeDatabase& model, StringArray array) {
  std::vector<Text> words;
  for (UINT16 handle = kFirstHandle; handle < model.StringLimit(array); ++handle) {
    const CHAR16* const text = model.StoredText(array, StringHandle{handle});
    Text word;
    for (const CHAR16 character : text != nullptr ? ViewOf(text) : Ucs2View{}) {
      word += character;
      if (character == ' ') {
        words.push_back(std::exchange(word, {}));
      }
    }
    if (!word.empty()) {
      words.push_back(word += ' ');
    }
  }
  return words;
}

/// Words of an invented language, the most frequent first. `letters` are vowels and consonants in turn.
std::vector<Text> InventedWords(std::u16string_view letters, size_t count, UINT32 seed) {
  std::mt19937 random{seed};
  std::vector<Text> words;
  for (size_t i = 0; i < count; ++i) {
    Text word;
    for (size_t syllables = 1 + random() % (i < 40 ? 2 : 4); syllables > 0; --syllables) {
      word += letters[random() % (letters.size() / 2) * 2 + 1];
      word += letters[random() % (letters.size() / 2) * 2];
    }
    words.push_back(word += ' ');
  }
  return words;
}

constexpr std::u16string_view kPlainLetters = u"atensirolumdcgupebahevifykowax";
// Letters with marks: some have bit 7 set, so that only help texts keep them.
constexpr std::u16string_view kMarkedLetters =
    u"\u0105\u010D\u0119\u0159e\u0161\u016F\u017E\u0131\u0142\u00E1tok\u00EDn";

class Writer {
 public:
  explicit Writer(const AttributeDatabase& model)
      : displayWords_(WordsOf(model, StringArray::Display)), helpWords_(WordsOf(model, StringArray::Help)) {}

  explicit Writer(const Setup& setup)
      : displayWords_(InventedWords(kPlainLetters, 700, 1)), helpWords_(displayWords_), invented_(true) {
    if (setup.TwoLanguages) {
      displayWords_ = InventedWords(kMarkedLetters, 500, 2);
    }
  }

  Text Prompt() { return Sentence(displayWords_, 2 + random_() % 3, 2); }
  Text Help() { return Help(6, 24); }
  Text Help(size_t least, size_t spread) {
    // In a setup of two languages, every third text is in the other one.
    return Sentence(random_() % 3 == 0 ? displayWords_ : helpWords_, least + random_() % spread, 6);
  }
  Text Option() { return Sentence(displayWords_, 1 + random_() % 2, 1); }
  Text Name() {
    Text name = Sentence(displayWords_, 2 + random_() % 2, 1);
    std::erase(name, CHAR16{' '});
    return name;
  }

  /// Interns texts until one is new, so that the wanted number is reached.
  template <typename Make, typename Intern>
  StringHandle New(Make make, Intern intern) {
    for (;;) {
      if (const InternedString interned = intern(make().c_str()); !interned.AlreadyPresent) {
        return interned.Handle;
      }
    }
  }

 private:
  /// Runs of neighbouring words, because a language repeats its phrases. Invented words are chosen by frequency.
  Text Sentence(const std::vector<Text>& words, size_t length, size_t longestRun) {
    Text sentence;
    for (; invented_ && length > 0; --length) {
      sentence +=
          words[std::min<size_t>({random_() % words.size(), random_() % words.size(), random_() % words.size()})];
    }
    while (length > 0) {
      const size_t run = std::min<size_t>(1 + random_() % longestRun, length);
      const size_t start = random_() % (words.size() - run);
      for (size_t i = 0; i < run; ++i) {
        sentence += words[start + i];
      }
      length -= run;
    }
    sentence.pop_back();
    return sentence;
  }

  std::vector<Text> displayWords_;
  std::vector<Text> helpWords_;
  bool invented_ = false;
  std::mt19937 random_{20260101};
};

template <typename Record>
void Add(AttributeDatabase& database, AttributeType type, size_t number, StringHandle name, const Record& filled) {
  AttributeRecord head{};
  head.Type = static_cast<UINT8>(type);
  head.NameHandle = Raw(name);
  head.ValueSize = 1;
  head.Token = static_cast<UINT32>(0x1000 + number);
  OwnedRecord<AttributeRecord> record = MakeAttribute(head);
  CopyMem(record.get() + 1, reinterpret_cast<const std::byte*>(&filled) + sizeof(head), sizeof(Record) - sizeof(head));
  database.AddAttribute(std::move(record));
}

}  // namespace

void GenerateStore(AttributeDatabase& database, const AttributeDatabase& model, size_t attributes, size_t texts) {
  Writer writer(model);
  const auto newName = [&] {
    return writer.New([&] { return writer.Name(); }, [&](const CHAR16* t) { return InternAttributeName(database, t); });
  };
  std::vector<StringHandle> names;
  for (size_t i = 0; i < texts; ++i) {
    names.push_back(newName());
    const StringHandle display = writer.New([&] { return writer.Prompt(); },
                                            [&](const CHAR16* text) { return InternDisplayString(database, text); });
    SetHelpString(database, writer.Help().c_str(), display);
  }
  for (size_t i = 0; i < attributes; ++i) {
    const StringHandle name = names[i * texts / attributes];
    if (i % 4 == 3) {
      IntegerRecord integer{};
      integer.UpperBound = 100 + i;
      integer.ScalarIncrement = 1;
      integer.CurrentValue = i % 100;
      Add(database, AttributeType::Integer, i, name, integer);
      continue;
    }
    EnumerationRecord enumeration{};
    enumeration.PossibleValueCount = kValuesPerEnumeration;
    enumeration.PossibleValueNames = static_cast<UINT16*>(AllocateZeroedBytes(kValuesPerEnumeration, sizeof(UINT16)));
    enumeration.PossibleValues = static_cast<UINT64*>(AllocateZeroedBytes(kValuesPerEnumeration, sizeof(UINT64)));
    for (size_t value = 0; value < kValuesPerEnumeration; ++value) {
      // Most have the values of many others, as "Disabled" and "Enabled" are.
      const size_t first = i % 3 == 0 ? i * kValuesPerEnumeration : i % 5 * kValuesPerEnumeration;
      enumeration.PossibleValueNames[value] = Raw(names[(first + value) % names.size()]);
      enumeration.PossibleValues[value] = value;
    }
    enumeration.CurrentIndex = static_cast<UINT8>(i % kValuesPerEnumeration);
    Add(database, AttributeType::Enumeration, i, name, enumeration);
  }
  database.ReleaseIndexes();
}

void GenerateStore(AttributeDatabase& database, const Setup& setup) {
  Writer writer(setup);
  size_t texts = 0;
  const auto addText = [&](const Text& text) {
    const InternedString display = InternDisplayString(database, text.c_str());
    if (!display.AlreadyPresent && texts++ % setup.HelpInterval == 0) {
      SetHelpString(database, writer.Help(setup.ShortestHelp, setup.HelpSpread).c_str(), display.Handle);
    }
  };
  std::vector<std::vector<UINT16>> lists(setup.SharedLists);
  for (std::vector<UINT16>& list : lists) {
    for (size_t i = 0; i < setup.Options; ++i) {
      const Text option = writer.Option();
      list.push_back(Raw(InternName(database, option.c_str())));
      addText(option);
    }
  }
  for (size_t i = 0; i < setup.Attributes; ++i) {
    const StringHandle name = writer.New([&] { return writer.Name(); },
                                         [&](const CHAR16* text) { return InternAttributeName(database, text); });
    addText(writer.Prompt());
    const std::vector<UINT16>& list = lists[i % lists.size()];
    EnumerationRecord enumeration{};
    enumeration.PossibleValueCount = static_cast<UINT8>(list.size());
    enumeration.PossibleValueNames = static_cast<UINT16*>(AllocateZeroedBytes(list.size(), sizeof(UINT16)));
    enumeration.PossibleValues = static_cast<UINT64*>(AllocateZeroedBytes(list.size(), sizeof(UINT64)));
    for (size_t value = 0; value < list.size(); ++value) {
      enumeration.PossibleValueNames[value] = list[value];
      enumeration.PossibleValues[value] = value;
    }
    Add(database, AttributeType::Enumeration, i, name, enumeration);
  }
  database.ReleaseIndexes();
}

void FreeStore(const AttributeDatabase& database) {
  AttributeStore* const store = database.Store();
  for (size_t slot = 0; slot < ATTRIBUTE_STORE_SLOT_COUNT; ++slot) {
    slot < ATTRIBUTE_STORE_HANDLE_LIMIT ? FreeRecord(static_cast<AttributeRecord*>(store->Slots[slot]))
                                        : FreeBlock(store->Slots[slot]);
  }
  FreeBlock(store);
}
