/** @file
  CacheContent: the attribute cache of a variable store, decoded, with what is wrong with each of its variables.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "cache/CacheContent.hpp"

#include "cache/Decompress.hpp"
#include "bytes/Text.hpp"
#include "bytes/Wire.hpp"

extern "C" {
#include <Corvane/AttributeCache.h>
#include <Corvane/AttributeStore.h>
}

namespace corvane::inspect {
namespace {

constexpr std::array<const char*, 7> kNames = {
    ATTRIBUTE_CACHE_BIOS_VERSION,    ATTRIBUTE_CACHE_ATTRIBUTES_DATA, ATTRIBUTE_CACHE_COUNTERS, ATTRIBUTE_CACHE_NAMES,
    ATTRIBUTE_CACHE_DISPLAY_STRINGS, ATTRIBUTE_CACHE_HELP_STRINGS,    ATTRIBUTE_CACHE_STATUS};

std::u16string Widen(std::string_view text) {
  return std::u16string(text.begin(), text.end());
}

class Decoder {
 public:
  explicit Decoder(const VariableStore& store) : store_(store) {}

  CacheContent Run() {
    for (std::size_t i = 0; i < kNames.size(); ++i) {
      CacheVariable& variable = cache_.Variables[i];
      variable.Id = static_cast<CacheId>(i);
      variable.Name = kNames[i];
      if (const Variable* found = store_.Find(Widen(kNames[i]))) {
        variable.Present = true;
        variable.Size = found->Data.size();
        variable.Footprint = store_.Footprint(found->Name, found->Data.size());
        data_[i] = found->Data;
      }
    }
    ReadVersion();
    ReadStatus();
    ReadCounters();
    ReadTexts(CacheId::Names, cache_.Texts.Names);
    ReadTexts(CacheId::Display, cache_.Texts.Display);
    ReadTexts(CacheId::Help, cache_.Texts.Help);
    ReadAttributes();
    ReadDependencyList();
    return std::move(cache_);
  }

 private:
  CacheVariable& Of(CacheId id) { return cache_.Variables[static_cast<std::size_t>(id)]; }
  Bytes DataOf(CacheId id) const { return data_[static_cast<std::size_t>(id)]; }

  // The first problem stands; what a boot does about the worst of them counts.
  void Complain(CacheId id, Restore outcome, std::string problem) {
    CacheVariable& variable = Of(id);
    if (variable.Problem.empty()) {
      variable.Problem = std::move(problem);
    }
    variable.Outcome = std::max(variable.Outcome, outcome);
  }

  void ReadVersion() {
    if (!Of(CacheId::Version).Present) {
      return;
    }
    const Bytes data = DataOf(CacheId::Version);
    const auto end = std::find(data.begin(), data.end(), std::uint8_t{0});
    cache_.Version.assign(data.begin(), end);
    const bool zeros = std::all_of(end, data.end(), [](std::uint8_t byte) { return byte == 0; });
    if (cache_.Version.empty() || data.size() != 2 * cache_.Version.size() || !zeros ||
        EscapeName(cache_.Version) != cache_.Version) {
      Complain(CacheId::Version, Restore::Whole, "it is no version with as many zeros behind it");
    }
  }

  void ReadStatus() {
    if (!Of(CacheId::Status).Present) {
      return;
    }
    const Bytes data = DataOf(CacheId::Status);
    if (data.size() != 1) {
      Complain(CacheId::Status, Restore::Whole, fmt::format("it has {} bytes, not 1", data.size()));
    } else {
      cache_.Status = data.front();
    }
  }

  void ReadCounters() {
    if (!Of(CacheId::Counters).Present) {
      Of(CacheId::Counters).Outcome = Restore::Recorded;
      return;
    }
    const Bytes data = DataOf(CacheId::Counters);
    if (data.size() != sizeof(AttributeStoreHeader)) {
      return Complain(CacheId::Counters, Restore::Recorded,
                      fmt::format("it has {} bytes, not {}", data.size(), sizeof(AttributeStoreHeader)));
    }
    const auto counters = ByteReader(data).Read<AttributeStoreHeader>();
    cache_.Counters = {counters.AttributeCount, counters.NameCount, counters.DisplayCount, counters.HelpCount};
    constexpr std::uint64_t kStrings = ATTRIBUTE_STORE_STRING_LIMIT - ATTRIBUTE_STORE_FIRST_HANDLE;
    if (counters.AttributeCount > ATTRIBUTE_STORE_HANDLE_LIMIT - ATTRIBUTE_STORE_FIRST_HANDLE ||
        counters.NameCount > kStrings || counters.DisplayCount > kStrings) {
      Complain(CacheId::Counters, Restore::Silent, "it counts more than the driver's store takes");
    }
  }

  // The content of a compressed variable. An entry beyond what could be decoded is not there.
  std::vector<std::uint8_t> Content(CacheId id, Restore missing, Restore broken) {
    CacheVariable& variable = Of(id);
    if (!variable.Present) {
      variable.Outcome = missing;
      return {};
    }
    Decompressed content = Decompress(DataOf(id));
    if (!content.Problem.empty()) {
      Complain(id, broken, "it cannot be decompressed: " + content.Problem);
      return {};
    }
    variable.Content = content.Content.size();
    if (!content.Oddity.empty()) {
      Complain(id, Restore::Silent, "no encoder wrote it: " + content.Oddity);
    }
    return std::move(content.Content);
  }

  void ReadTexts(CacheId id, std::vector<std::u16string>& texts) {
    const std::vector<std::uint8_t> content = Content(id, Restore::Recorded, Restore::Silent);
    CacheVariable& variable = Of(id);
    ByteReader reader(content);
    while (reader.Left() > 0) {
      const auto head = reader.Read<AttributeCacheString>();
      const std::uint16_t handle = head.Handle;
      std::u16string text = Ucs2FromBytes(reader.Take(head.Size));
      const std::size_t expected = ATTRIBUTE_STORE_FIRST_HANDLE + texts.size();
      if (!reader.Ok()) {
        Complain(id, Restore::Silent, fmt::format("it breaks off within entry {}", texts.size()));
        break;
      }
      if (handle != expected) {
        Complain(id, Restore::Silent, fmt::format("it has the handle {} where {} belongs", handle, expected));
        break;
      }
      const bool terminated = head.Size % 2 == 0 && (text.empty() ? id == CacheId::Help : text.back() == 0);
      if (!text.empty()) {
        text.pop_back();
      }
      // A display text may have zeros behind it, in the place of characters that were dropped from it.
      const std::size_t length = std::min(text.find(u'\0'), text.size());
      if (!terminated || (length < text.size() && text.find_first_not_of(u'\0', length) != text.npos)) {
        Complain(id, Restore::Silent, fmt::format("the text of handle {} does not end where it should", handle));
      }
      text.resize(length);
      if (std::any_of(text.begin(), text.end(),
                      [](char16_t unit) { return unit < 0x20 && unit != u'\n' && unit != u'\r'; })) {
        Complain(id, Restore::Silent, fmt::format("the text of handle {} has a control character", handle));
      }
      texts.push_back(std::move(text));
    }
    variable.Entries = texts.size();
    if (cache_.Counters && Of(CacheId::Counters).Problem.empty() && variable.Content) {
      const std::uint64_t count = id == CacheId::Names ? cache_.Counters->Names : cache_.Counters->Display;
      if (count != texts.size()) {
        Complain(id, Restore::Silent, fmt::format("it has {} entries where {} are counted", texts.size(), count));
      }
    }
  }

  void ReadAttributes() {
    const std::vector<std::uint8_t> content = Content(CacheId::Attributes, Restore::Silent, Restore::Recorded);
    std::uint64_t counted = 0;
    for (ByteReader reader(content); reader.Left() > 0;) {
      const std::size_t number = cache_.Records.size();
      StreamRecord record = ReadRecord(reader, TextForm::Counted);
      const std::uint8_t type = BaseTypeOf(record.Attribute.Type);
      const std::uint16_t handle = record.Attribute.Handle;
      const bool cached = type <= static_cast<std::uint8_t>(BaseType::ConfigurationSet) &&
                          BaseType{type} != BaseType::BootConfiguration;
      if (!reader.Ok() || !cached || handle == 0 || handle >= ATTRIBUTE_STORE_HANDLE_LIMIT) {
        Complain(CacheId::Attributes, Restore::Recorded, fmt::format("it cannot be followed beyond record {}", number));
        break;
      }
      if (!cache_.Records.empty() && handle <= cache_.Records.back().Attribute.Handle) {
        Complain(CacheId::Attributes, Restore::Silent,
                 fmt::format("it has the handle {} after {}", handle, cache_.Records.back().Attribute.Handle));
        break;
      }
      counted += handle >= ATTRIBUTE_STORE_FIRST_HANDLE ? 1 : 0;
      CheckRecord(record);
      cache_.Records.push_back(std::move(record));
    }
    CacheVariable& variable = Of(CacheId::Attributes);
    variable.Entries = cache_.Records.size();
    if (cache_.Counters && Of(CacheId::Counters).Problem.empty() && variable.Content &&
        counted != cache_.Counters->Attributes) {
      Complain(CacheId::Attributes, Restore::Silent,
               fmt::format("it has {} attributes where {} are counted", counted, cache_.Counters->Attributes));
    }
  }

  void CheckRecord(const StreamRecord& record) {
    const auto check = [&](bool fine, const char* what) {
      if (!fine) {
        Complain(CacheId::Attributes, Restore::Silent,
                 fmt::format("attribute {} has {}", record.Attribute.Handle, what));
      }
    };
    const std::size_t names = cache_.Texts.Names.size();
    const auto isName = [names](std::uint16_t handle) {
      return handle >= ATTRIBUTE_STORE_FIRST_HANDLE && handle - ATTRIBUTE_STORE_FIRST_HANDLE < static_cast<int>(names);
    };
    check(names == 0 || isName(record.Attribute.NameHandle), "no name");
    if (const auto* bounds = std::get_if<EnumerationBounds>(&record.Attribute.Bounds)) {
      const std::uint8_t current = std::get<EnumerationValue>(record.Value).Indices.front();
      check(names == 0 || std::all_of(bounds->Names.begin(), bounds->Names.end(), isName), "a value without a name");
      check(
          bounds->Names.empty() || (current < bounds->Names.size() && bounds->Defaults.front() < bounds->Names.size()),
          "an index outside its values");
    } else if (const auto* collection = std::get_if<CollectionBounds>(&record.Attribute.Bounds)) {
      const std::uint16_t handle = record.Attribute.NameHandle;
      check(collection->Info == std::array<std::uint8_t, 4>{static_cast<std::uint8_t>(handle),
                                                            static_cast<std::uint8_t>(handle >> 8), 0xFF, 0},
            "impossible collection parameters");
    } else if (const auto* text = std::get_if<StringValue>(&record.Value)) {
      check(text->Text.find('\0') == std::string::npos, "a zero in its text");
    }
  }

  void ReadDependencyList() {
    if (const Variable* list = store_.Find(Widen(ATTRIBUTE_DEPENDENCY_LIST))) {
      ByteReader reader(list->Data);
      cache_.DependencyList = ReadMany<std::uint32_t>(reader, list->Data.size() / sizeof(std::uint32_t));
    }
  }

  const VariableStore& store_;
  std::array<Bytes, kNames.size()> data_;
  CacheContent cache_;
};

}  // namespace

bool CacheContent::IsAbsent() const {
  return std::none_of(Variables.begin(), Variables.end(),
                      [](const CacheVariable& variable) { return variable.Present && variable.Id != CacheId::Status; });
}

bool CacheContent::IsWhole() const {
  return std::all_of(Variables.begin(), Variables.end(), [](const CacheVariable& variable) {
    return (variable.Present || variable.Id == CacheId::Status) && variable.Problem.empty();
  });
}

CacheContent DecodeCache(const VariableStore& store) {
  return Decoder(store).Run();
}

}  // namespace corvane::inspect
