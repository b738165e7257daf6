/** @file
  Overflow: the entries that a table lacks, with names if known, and how many bytes the table exceeds its capacity.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "judge/Overflow.hpp"

#include <map>

#include "bytes/ByteWriter.hpp"
#include "bytes/Text.hpp"
#include "capture/Layout.hpp"
#include "capture/TextReplay.hpp"

namespace corvane::inspect {
namespace {

constexpr std::uint16_t kFirstHandle = 16;
constexpr std::size_t kChecksum = 4;
constexpr std::size_t kTextEntryHead = 4;       // handle and length
constexpr std::size_t kLanguageBlock = 12;      // length, "en-US"
constexpr std::size_t kAttributeEntries = 256;  // limit of the attribute table

struct WantedEntry {
  std::uint16_t Handle = 0;
  std::size_t Size = 0;      // bytes in the table
  std::size_t Estimate = 0;  // bytes that the driver checks room for
  std::string Text;
};

struct WantedTable {
  std::vector<WantedEntry> Entries;  // from the first on
  bool Complete = false;
};

std::string NarrowName(std::u16string_view name) {
  std::string narrow;
  for (const char16_t character : name) {
    narrow.push_back(static_cast<char>(character));
  }
  return narrow;
}

// The text of the display table, which has no leading stars.
std::u16string Shown(const std::u16string& text) {
  const std::u16string bare = WithoutStars(text);
  return bare.size() < text.size() ? bare.substr(std::min(bare.find_first_not_of(u' '), bare.size())) : text;
}

class Wanted {
 public:
  Wanted(const Image& image, const CacheContent* cache) : image_(image), cache_(cache) {
    if (cache != nullptr) {
      for (const StreamRecord& record : cache->Records) {
        records_[record.Attribute.Handle] = &record;
      }
    }
    // Records of the capture take precedence: they are of this boot, and a cache lacks some of them.
    if (image.Stream && image.Stream->Sound) {
      for (const StreamRecord& record : image.Stream->Records) {
        records_[record.Attribute.Handle] = &record;
      }
    }
  }

  WantedTable Of(TableId id) const {
    switch (id) {
      case TableId::Strings:
        return cache_ == nullptr ? WantedTable{} : Names();
      case TableId::Display:
        return cache_ == nullptr ? WantedTable{} : Texts(cache_->Texts.Display, true);
      case TableId::Help:
        return cache_ == nullptr ? WantedTable{} : Texts(cache_->Texts.Help, false);
      default:
        return Records(id);
    }
  }

 private:
  std::uint64_t Count(std::uint64_t Stream::*count, std::size_t known) const {
    return image_.Stream && image_.Stream->Sound ? *image_.Stream.*count : known;
  }

  WantedTable Names() const {
    WantedTable table;
    for (const std::u16string& name : cache_->Texts.Names) {
      const std::size_t size = kTextEntryHead + name.size();
      table.Entries.push_back({static_cast<std::uint16_t>(kFirstHandle + table.Entries.size()), size, size,
                               Utf8FromLatin1(NarrowName(name))});
    }
    table.Complete = table.Entries.size() >= Count(&Stream::NameCount, table.Entries.size());
    return table;
  }

  WantedTable Texts(const std::vector<std::u16string>& texts, bool display) const {
    WantedTable table;
    for (const std::u16string& stored : texts) {
      const std::u16string text = display ? Shown(stored) : stored;
      const std::size_t size = kTextEntryHead + sizeof(char16_t) * text.size();
      table.Entries.push_back(
          {static_cast<std::uint16_t>(kFirstHandle + table.Entries.size()), size, size, Utf8FromUcs2(text)});
    }
    table.Complete = table.Entries.size() >= Count(&Stream::DisplayCount, table.Entries.size());
    return table;
  }

  std::string NameOf(std::uint16_t handle) const {
    if (const StringEntry* entry = image_.Strings.Find(handle)) {
      return Utf8FromLatin1(entry->Text);
    }
    const std::size_t place = static_cast<std::size_t>(handle) - kFirstHandle;
    return cache_ != nullptr && handle >= kFirstHandle && place < cache_->Texts.Names.size()
               ? Utf8FromLatin1(NarrowName(cache_->Texts.Names[place]))
               : fmt::format("?{}", handle);
  }

  WantedTable Records(TableId id) const {
    WantedTable table;
    std::uint64_t counted = 0;
    for (const auto& [handle, record] : records_) {
      counted += handle >= kFirstHandle ? 1 : 0;
      AttributeEntry attribute = record->Attribute;
      const bool isPassword = BaseType{BaseTypeOf(attribute.Type)} == BaseType::Password;
      ByteWriter writer;
      if (id == TableId::Attributes) {
        Fields(writer, attribute);
      } else if (isPassword && !record->PasswordInstalled) {
        continue;
      } else {
        ValueEntry value{handle, attribute.Type, isPassword ? Value{PasswordValue{}} : record->Value};
        Fields(writer, value);
      }
      const std::size_t size = writer.Content.size();
      const bool strict = id == TableId::Attributes;  // Kept for compatibility: an exact fit is rejected.
      const bool isCollection = BaseType{BaseTypeOf(attribute.Type)} == BaseType::Collection;
      table.Entries.push_back({handle, size,
                               strict         ? size + 1
                               : isCollection ? std::min<std::size_t>(size, 4)
                                              : size,
                               NameOf(attribute.NameHandle)});
    }
    table.Complete = counted >= Count(&Stream::AttributeCount, 0);
    return table;
  }

  const Image& image_;
  const CacheContent* cache_;
  std::map<std::uint16_t, const StreamRecord*> records_;
};

bool IsTextTable(TableId id) {
  return id == TableId::Display || id == TableId::Help;
}

std::size_t SizeOf(TableId id, const WantedTable& table) {
  std::size_t size = IsTextTable(id) ? kLanguageBlock : 0;
  for (const WantedEntry& entry : table.Entries) {
    size += entry.Size;
  }
  return size + (kChecksum - size % kChecksum) % kChecksum + kChecksum;
}

// The number of entries that fit into the table.
std::size_t Fitting(TableId id, const WantedTable& table) {
  std::size_t room = KindOf(id).Capacity - kChecksum - (IsTextTable(id) ? kLanguageBlock : 0);
  std::size_t count = 0;
  for (const WantedEntry& entry : table.Entries) {
    if (entry.Estimate > room || (id == TableId::Attributes && count == kAttributeEntries)) {
      break;
    }
    room -= std::min(room, entry.Size);
    ++count;
  }
  return count;
}

}  // namespace

std::string CompareBoots(const Image& image, const CacheContent& cache) {
  const std::vector<std::u16string>& names = cache.Texts.Names;
  for (const StringEntry& entry : image.Strings.Entries) {
    const std::size_t place = static_cast<std::size_t>(entry.Handle) - kFirstHandle;
    if (place < names.size() && NarrowName(names[place]) != entry.Text) {
      return fmt::format("the name with the handle {} differs", entry.Handle);
    }
  }
  if (image.Display) {
    const std::vector<std::u16string>& texts = cache.Texts.Display;
    for (const TextEntry& entry : image.Display->Entries) {
      const std::size_t place = static_cast<std::size_t>(entry.Handle) - kFirstHandle;
      if (place < texts.size() && Shown(texts[place]) != entry.Text) {
        return fmt::format("the display text with the handle {} differs", entry.Handle);
      }
    }
  }
  const bool counted = image.Stream && image.Stream->Sound;
  if (counted && (names.size() > image.Stream->NameCount || cache.Texts.Display.size() > image.Stream->DisplayCount)) {
    return "it has more names or texts";
  }
  return "";
}

std::vector<TableCut> FindCuts(const Image& image, const CacheContent* cache) {
  const Wanted wanted(image, cache);
  std::vector<TableCut> cuts;
  for (const TableFill& fill : MeasureFill(image)) {
    const WantedTable table = wanted.Of(fill.Id);
    TableCut cut{
        .Id = fill.Id, .Lost = fill.Lost.value_or(0), .FirstLost = fill.FirstLost, .Known = {}, .BytesOver = {}};
    if (image.OfCache) {
      const std::size_t fitting = Fitting(fill.Id, table);
      cut.Lost = table.Entries.size() - fitting;
      cut.FirstLost = cut.Lost > 0 ? std::optional(table.Entries[fitting].Handle) : std::nullopt;
    }
    if (cut.Lost == 0) {
      continue;
    }
    for (const WantedEntry& entry : table.Entries) {
      if (cut.FirstLost && entry.Handle >= *cut.FirstLost) {
        cut.Known.push_back({entry.Handle, entry.Text});
      }
    }
    if (table.Complete) {
      const std::size_t size = SizeOf(fill.Id, table);
      const std::size_t capacity = KindOf(fill.Id).Capacity;
      cut.BytesOver = size > capacity ? size - capacity : 0;
    }
    cuts.push_back(std::move(cut));
  }
  return cuts;
}

}  // namespace corvane::inspect
