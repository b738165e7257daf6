/** @file
  CacheContent: the decoded attribute cache of a variable store, with the problem of each variable.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "cache/CacheContent.hpp"

#include "bytes/Text.hpp"
#include "cache/Decompress.hpp"
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

// The variables under the seal, in the order in which the driver writes them.
constexpr std::array kSealed = {CacheId::Names, CacheId::Display, CacheId::Help, CacheId::Attributes,
                                CacheId::Counters};

constexpr std::uint32_t kCacheAccess = 3;  // non-volatile, boot service access
constexpr std::size_t kShortestSealedVersion = 5;
constexpr std::uint64_t kMostStrings = ATTRIBUTE_STORE_STRING_LIMIT - ATTRIBUTE_STORE_FIRST_HANDLE;
constexpr std::uint64_t kMostAttributes = ATTRIBUTE_STORE_HANDLE_LIMIT - ATTRIBUTE_STORE_FIRST_HANDLE;
constexpr std::uint16_t kFirstCountedRecord = 15;

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
        variable.Size = found->Data.size();
        variable.Footprint = store_.Footprint(found->Name, found->Data.size());
        // The driver believes a mark with any attributes, and no other variable with foreign ones.
        if (variable.Id == CacheId::Status || found->Attributes == kCacheAccess) {
          variable.Present = true;
          data_[i] = found->Data;
        } else {
          variable.Problem =
              fmt::format("it has the attributes {}, not {}, and counts as missing", found->Attributes, kCacheAccess);
        }
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
    KeepHandles();
    return std::move(cache_);
  }

 private:
  CacheVariable& Of(CacheId id) { return cache_.Variables[static_cast<std::size_t>(id)]; }
  Bytes DataOf(CacheId id) const { return data_[static_cast<std::size_t>(id)]; }

  // Keeps the first problem, and the outcome of the worst problem.
  void Complain(CacheId id, Restore outcome, std::string problem) {
    CacheVariable& variable = Of(id);
    if (variable.Problem.empty()) {
      variable.Problem = std::move(problem);
    }
    variable.Outcome = std::max(variable.Outcome, outcome);
  }

  // The driver compares up to the terminator. Nothing after the seal matters.
  void ReadVersion() {
    if (!Of(CacheId::Version).Present) {
      return;
    }
    ByteReader reader(DataOf(CacheId::Version));
    cache_.Version = ReadTerminated(reader);
    if (!reader.Ok() || cache_.Version.empty() || EscapeName(cache_.Version) != cache_.Version) {
      cache_.Version.clear();
      return Complain(CacheId::Version, Restore::Whole, "it is not printable text with a terminator");
    }
    const auto seal = cache_.Version.size() >= kShortestSealedVersion ? reader.Read<std::uint32_t>() : 0;
    if (seal == 0) {
      return;
    }
    std::vector<std::uint8_t> sealed;
    for (const CacheId id : kSealed) {
      sealed.insert(sealed.end(), DataOf(id).begin(), DataOf(id).end());
    }
    const std::uint32_t crc = Crc32(sealed);
    cache_.Seal = crc == seal ? Seal::Fits : Seal::Broken;
    if (crc != seal) {
      Complain(CacheId::Version, Restore::Whole,
               fmt::format("its seal is {:08X}, and the other variables have the CRC {:08X}", seal, crc));
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
    if (counters.AttributeCount > kMostAttributes || counters.NameCount > kMostStrings ||
        counters.DisplayCount > kMostStrings) {
      Complain(CacheId::Counters, Restore::Silent, "it counts more than the driver's store can hold");
    }
  }

  // The content of a compressed variable; empty if it cannot be decompressed.
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
      Complain(id, Restore::Silent, "no encoder writes this: " + content.Oddity);
    }
    return std::move(content.Content);
  }

  // The saved count of a list; none without counters, when a boot restores nothing.
  std::optional<std::uint64_t> SavedCount(CacheId id) const {
    if (!cache_.Counters) {
      return std::nullopt;
    }
    return id == CacheId::Names ? cache_.Counters->Names : cache_.Counters->Display;
  }

  void ReadTexts(CacheId id, std::vector<std::u16string>& texts) {
    const std::vector<std::uint8_t> content = Content(id, Restore::Recorded, Restore::DeletesOne);
    CacheVariable& variable = Of(id);
    if (!variable.Content) {
      return;
    }
    const std::optional<std::uint64_t> saved = SavedCount(id);
    const std::uint64_t count = std::min(saved.value_or(kMostStrings), kMostStrings);
    ByteReader reader(content);
    for (; variable.Entries < count && (saved || reader.Left() > 0); ++variable.Entries) {
      const auto head = reader.Read<AttributeCacheString>();
      const std::uint16_t handle = head.Handle;
      const Bytes bytes = reader.Take(head.Size);
      if (!reader.Ok()) {
        return Complain(id, Restore::DeletesOne, fmt::format("it ends within entry {}", variable.Entries));
      }
      if (handle < ATTRIBUTE_STORE_FIRST_HANDLE || handle >= ATTRIBUTE_STORE_STRING_LIMIT) {
        return Complain(id, Restore::DeletesOne,
                        fmt::format("it has the handle {}, which is outside the string range", handle));
      }
      if (handle != ATTRIBUTE_STORE_FIRST_HANDLE + variable.Entries) {
        Complain(
            id, Restore::Silent,
            fmt::format("it has the handle {} instead of {}", handle, ATTRIBUTE_STORE_FIRST_HANDLE + variable.Entries));
      }
      const std::size_t place = handle - ATTRIBUTE_STORE_FIRST_HANDLE;
      texts.resize(std::max(texts.size(), place + 1));
      texts[place] = CheckedText(id, handle, bytes);
      cache_.HelpTexts += id == CacheId::Help && head.Size > 0 ? 1 : 0;
    }
    if (reader.Left() > 0 || count < saved.value_or(0)) {
      Complain(id, Restore::DeletesOne,
               fmt::format("it does not end at entry {}, as the counters say", saved.value_or(count)));
    }
  }

  std::u16string CheckedText(CacheId id, std::uint16_t handle, Bytes bytes) {
    std::u16string text = Ucs2FromBytes(bytes);
    const bool terminated = bytes.size() % 2 == 0 && (text.empty() ? id == CacheId::Help : text.back() == 0);
    if (!text.empty()) {
      text.pop_back();
    }
    // A display text may have zeros at its end, in the place of characters that were dropped from it.
    const std::size_t length = std::min(text.find(u'\0'), text.size());
    if (!terminated || (length < text.size() && text.find_first_not_of(u'\0', length) != text.npos)) {
      Complain(id, Restore::Silent, fmt::format("the text of handle {} does not end where it should", handle));
    }
    text.resize(length);
    if (std::any_of(text.begin(), text.end(),
                    [](char16_t unit) { return unit < 0x20 && unit != u'\n' && unit != u'\r'; })) {
      Complain(id, Restore::Silent, fmt::format("the text of handle {} has a control character", handle));
    }
    return text;
  }

  void ReadAttributes() {
    const std::vector<std::uint8_t> content = Content(CacheId::Attributes, Restore::DeletesVersion, Restore::Recorded);
    CacheVariable& variable = Of(CacheId::Attributes);
    // Records of reserved slots come on top of those that are counted. Slot 0 has none.
    const std::uint64_t limit =
        std::min(cache_.Counters ? cache_.Counters->Attributes : kMostAttributes, kMostAttributes) +
        ATTRIBUTE_STORE_FIRST_HANDLE - 1;
    std::uint64_t counted = 0;
    for (ByteReader reader(content); reader.Left() > 0; ++variable.Entries) {
      if (variable.Entries == limit) {
        Complain(CacheId::Attributes, Restore::Recorded,
                 fmt::format("{} bytes follow its {} counted records", reader.Left(), limit));
        break;
      }
      StreamRecord record = ReadRecord(reader, TextForm::Counted);
      const std::uint8_t type = BaseTypeOf(record.Attribute.Type);
      const std::uint16_t handle = record.Attribute.Handle;
      const bool cached = type <= static_cast<std::uint8_t>(BaseType::ConfigurationSet) &&
                          BaseType{type} != BaseType::BootConfiguration;
      if (!reader.Ok() || !cached || handle == 0 || handle >= ATTRIBUTE_STORE_HANDLE_LIMIT) {
        Complain(CacheId::Attributes, Restore::Recorded,
                 fmt::format("it cannot be read beyond record {}", variable.Entries));
        break;
      }
      if (!cache_.Records.empty() && handle <= cache_.Records.back().Attribute.Handle) {
        Complain(CacheId::Attributes, Restore::Silent,
                 fmt::format("it has the handle {} after {}", handle, cache_.Records.back().Attribute.Handle));
        continue;
      }
      counted += handle >= ATTRIBUTE_STORE_FIRST_HANDLE ? 1 : 0;
      cache_.CountedRecords += IsCounted(record) ? 1 : 0;
      CheckRecord(record);
      cache_.Records.push_back(std::move(record));
    }
    if (cache_.Counters && Of(CacheId::Counters).Problem.empty() && variable.Content &&
        counted != cache_.Counters->Attributes) {
      Complain(CacheId::Attributes, Restore::Silent,
               fmt::format("it has {} attributes, but {} are counted", counted, cache_.Counters->Attributes));
    }
  }

  // Kept for compatibility: collections always count, passwords and configuration sets never.
  static bool IsCounted(const StreamRecord& record) {
    const BaseType type{BaseTypeOf(record.Attribute.Type)};
    return type == BaseType::Collection || (type != BaseType::Password && type != BaseType::ConfigurationSet &&
                                            record.Attribute.Handle >= kFirstCountedRecord);
  }

  // After a restore, handles stay taken up to the saved count and up to the highest handle in use.
  void KeepHandles() {
    if (!cache_.Counters) {
      return;
    }
    std::size_t names = 0;
    const auto use = [&names](std::uint16_t handle) {
      names = std::max<std::size_t>(
          names, std::max<std::size_t>(handle + 1U, ATTRIBUTE_STORE_FIRST_HANDLE) - ATTRIBUTE_STORE_FIRST_HANDLE);
    };
    for (const StreamRecord& record : cache_.Records) {
      use(record.Attribute.NameHandle);
      if (const auto* enumeration = std::get_if<EnumerationBounds>(&record.Attribute.Bounds)) {
        std::for_each(enumeration->Names.begin(), enumeration->Names.end(), use);
      } else if (const auto* set = std::get_if<ConfigurationSetBounds>(&record.Attribute.Bounds)) {
        std::for_each(set->Names.begin(), set->Names.end(), use);
      }
    }
    const auto keep = [](std::vector<std::u16string>& texts, std::uint64_t count) {
      texts.resize(std::max<std::size_t>(texts.size(), std::min(count, kMostStrings)));
    };
    keep(cache_.Texts.Names, std::max<std::uint64_t>(names, cache_.Counters->Names));
    keep(cache_.Texts.Display, cache_.Counters->Display);
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
  return std::none_of(Variables.begin(), Variables.end(), [](const CacheVariable& variable) {
    return variable.Id != CacheId::Status && (variable.Present || !variable.Problem.empty());
  });
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
