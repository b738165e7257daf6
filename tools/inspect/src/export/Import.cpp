/** @file
  `inspect import`: the bytes of the capture that an export stands for.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <charconv>
#include <concepts>
#include <limits>
#include <numeric>

#include <nlohmann/json.hpp>

#include "bytes/ByteWriter.hpp"
#include "bytes/Text.hpp"
#include "capture/Capture.hpp"
#include "capture/Layout.hpp"
#include "export/Export.hpp"
#include "bytes/Wire.hpp"

namespace corvane::inspect {
namespace {

using Json = nlohmann::ordered_json;
using Buffer = std::vector<std::uint8_t>;

static_assert(kStreamSources == BOOT_SOURCE_ORDER_CAPACITY);

[[noreturn]] void Fail(const std::string& where, const std::string& what) {
  throw UnusableInput(where + " " + what);
}

class JsonReader {
 public:
  static constexpr bool kWrites = false;

  JsonReader(const Json& json, std::string where) : json_(json), where_(std::move(where)) {
    if (!json_.is_object()) {
      Fail(where_, "is not an object");
    }
  }

  template <typename T>
  void Number(const char* key, T& value) const {
    value = NumberOf<T>(Member(key), Where(key));
  }
  template <typename T>
  T Get(const char* key) const {
    return NumberOf<T>(Member(key), Where(key));
  }
  void Flag(const char* key, bool& value) const {
    const Json& member = Member(key);
    if (!member.is_boolean()) {
      Fail(Where(key), "is neither true nor false");
    }
    value = member.get<bool>();
  }
  template <typename T>
  void List(const char* key, std::vector<T>& values) const {
    const Json& member = ArrayOf(key);
    if (member.size() > std::numeric_limits<std::uint8_t>::max()) {
      Fail(Where(key), "has more than 255 items");
    }
    for (const Json& item : member) {
      values.push_back(NumberOf<T>(item, Where(key)));
    }
  }
  template <typename T>
  void Array(const char* key, std::vector<T>& values, std::size_t count) const {
    List(key, values);
    if (values.size() != count) {
      Fail(Where(key), fmt::format("has {} items, not {}", values.size(), count));
    }
  }
  void Padded(const char* key, std::vector<std::uint8_t>& values, std::size_t size) const {
    List(key, values);
    if (values.size() > size) {
      Fail(Where(key), fmt::format("has more than {} items", size));
    }
  }
  void Text(const char* key, std::string& text) const {
    const auto latin1 = Latin1FromUtf8(String(key));
    if (!latin1) {
      Fail(Where(key), "has a character above U+00FF");
    }
    text = *latin1;
    LimitLength(key, text.size());
  }
  void Terminated(const char* key, std::string& text) const {
    Text(key, text);
    if (text.find('\0') != std::string::npos) {
      Fail(Where(key), "has a character U+0000");
    }
  }
  void WideText(const char* key, std::u16string& text) const {
    text = Ucs2FromUtf8(String(key));
    LimitLength(key, 2 * text.size());
  }
  void Reserved(std::size_t) const {}

  const std::string& String(const char* key) const {
    const Json& member = Member(key);
    if (!member.is_string()) {
      Fail(Where(key), "is not text");
    }
    return member.get_ref<const std::string&>();
  }
  const Json& ArrayOf(const char* key) const {
    const Json& member = Member(key);
    if (!member.is_array()) {
      Fail(Where(key), "is not an array");
    }
    return member;
  }
  bool Has(const char* key) const { return json_.contains(key); }
  std::string Where(const char* key) const { return where_ + '.' + key; }
  const Json& Member(const char* key) const {
    const auto found = json_.find(key);
    if (found == json_.end()) {
      Fail(Where(key), "is missing");
    }
    return *found;
  }

 private:
  template <typename T>
  static T NumberOf(const Json& json, const std::string& where) {
    constexpr std::uint64_t kLimit = std::numeric_limits<T>::max();
    if (!json.is_number_unsigned() || json.get<std::uint64_t>() > kLimit) {
      Fail(where, fmt::format("is not a whole number from 0 to {}", kLimit));
    }
    return static_cast<T>(json.get<std::uint64_t>());
  }
  void LimitLength(const char* key, std::size_t bytes) const {
    if (bytes > std::numeric_limits<std::uint16_t>::max()) {
      Fail(Where(key), "has more than 65535 bytes");
    }
  }

  const Json& json_;
  std::string where_;
};

// Reads each entry and passes it to `take`.
template <typename Entry, typename Take>
void ForEachEntry(const JsonReader& reader, Take take) {
  std::size_t number = 0;
  for (const Json& item : reader.ArrayOf("entries")) {
    JsonReader fields(item, fmt::format("{}[{}]", reader.Where("entries"), number++));
    Entry entry;
    Fields(fields, entry);
    take(entry);
  }
}

template <typename Entry>
void CopyEntries(const JsonReader& reader, ByteWriter& writer) {
  ForEachEntry<Entry>(reader, [&writer](Entry& entry) { Fields(writer, entry); });
}

void PutFixed(const JsonReader& reader, const char* key, std::size_t size, ByteWriter& writer) {
  std::string text;
  reader.Text(key, text);
  if (text.size() != size) {
    Fail(reader.Where(key), fmt::format("has {} characters, not {}", text.size(), size));
  }
  writer.Append(text);
}

// The checksum of a directory whose checksum byte is 0: makes the first Length bytes sum to 0.
std::uint8_t ChecksumOf(Bytes directory) {
  const std::uint16_t length = ByteReader(directory).Read<TableDirectory>().Length;
  const Bytes summed = directory.first(std::min<std::size_t>(length, directory.size()));
  return static_cast<std::uint8_t>(-std::accumulate(summed.begin(), summed.end(), 0));
}

Buffer ImportDirectory(const JsonReader& reader) {
  ByteWriter writer;
  PutFixed(reader, "signature", sizeof(TableDirectory::Signature), writer);
  writer.Put(reader.Get<std::uint8_t>("version"));
  writer.Reserved(sizeof(TableDirectory::Reserved0));
  PutFixed(reader, "content", sizeof(TableDirectory::Content), writer);
  writer.Put(reader.Get<std::uint16_t>("length"));
  const std::size_t count = reader.ArrayOf("entries").size();
  if (count > TABLE_DIRECTORY_ENTRY_CAPACITY) {
    Fail(reader.Where("entries"), fmt::format("has more than {} items", TABLE_DIRECTORY_ENTRY_CAPACITY));
  }
  writer.Reserved(sizeof(TableDirectory::Reserved1) + sizeof(TableDirectory::Checksum));
  writer.Put(static_cast<std::uint8_t>(count));
  CopyEntries<DirectoryEntry>(reader, writer);
  writer.Content.resize(sizeof(TableDirectory));
  writer.Content[offsetof(TableDirectory, Checksum)] = ChecksumOf(writer.Content);
  return writer.Content;
}

Buffer ImportTextTable(const JsonReader& reader) {
  ByteWriter writer;
  std::u16string language;
  reader.WideText("language", language);
  writer.WideText("language", language);
  CopyEntries<TextEntry>(reader, writer);
  CloseTable(writer);
  return writer.Content;
}

Buffer ImportStream(const JsonReader& reader) {
  constexpr std::uint64_t kSlots = 256;  // number of slots in the stream
  ByteWriter records;
  std::uint64_t slot = 0;
  const auto count = reader.Get<std::uint64_t>("attributeCount");
  const std::uint64_t end = std::min(count, kSlots - ATTRIBUTE_STORE_FIRST_HANDLE) + ATTRIBUTE_STORE_FIRST_HANDLE;
  const auto skipTo = [&](std::uint64_t next) {
    for (; slot < next; ++slot) {
      records.Put<std::uint8_t>(ATTRIBUTE_STREAM_EMPTY_SLOT);
    }
  };
  ForEachEntry<StreamRecord>(reader, [&](StreamRecord& record) {
    const std::uint16_t handle = record.Attribute.Handle;
    if (handle < slot || handle >= end) {
      Fail(reader.Where("entries"), fmt::format("has the handle {}, not one from {} to {}", handle, slot, end - 1));
    }
    skipTo(handle);
    Fields(records, record);
    ++slot;
  });
  skipTo(end);
  ByteWriter writer;
  writer.Put(static_cast<std::uint32_t>(records.Content.size()));
  writer.Put(count);
  for (const char* key : {"nameCount", "displayCount", "helpCount"}) {
    writer.Put(reader.Get<std::uint64_t>(key));
  }
  writer.Append(records.Content);
  return writer.Content;
}

Buffer FromHex(const JsonReader& reader, const char* key) {
  const std::string& digits = reader.String(key);
  Buffer bytes(digits.size() / 2);
  bool ok = digits.size() % 2 == 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char* const end = digits.data() + 2 * i + 2;
    const auto [stop, error] = std::from_chars(end - 2, end, bytes[i], 16);
    ok = ok && stop == end && error == std::errc{};
  }
  if (!ok) {
    Fail(reader.Where(key), "is not made of pairs of hexadecimal digits");
  }
  return bytes;
}

std::uint8_t RecordTypeOf(const JsonReader& reader) {
  if (!reader.Member("record").is_string()) {
    return reader.Get<std::uint8_t>("record");
  }
  const auto* const name = std::ranges::find(kExportRecords, reader.String("record"));
  if (name == std::end(kExportRecords)) {
    Fail(reader.Where("record"), "names no record");
  }
  return static_cast<std::uint8_t>(name - std::begin(kExportRecords));
}

void PutHeader(std::size_t length, std::uint8_t type, ByteWriter& writer) {
  writer.Put(EFI_GUID VARO_TRANSPORT_RECORD_GUID);
  writer.Put(std::uint64_t{length});
  writer.Put(type);
}

}  // namespace

std::vector<std::uint8_t> ImportPayload(const nlohmann::ordered_json& record, const std::string& where) {
  const JsonReader reader(record, where);
  const std::uint8_t type = RecordTypeOf(reader);
  if (reader.Has("bytes")) {
    return FromHex(reader, "bytes");
  }
  ByteWriter writer;
  switch (type) {
    case TRANSPORT_RECORD_DIRECTORY:
      return ImportDirectory(reader);
    case TRANSPORT_RECORD_DESCRIPTORS:
      CopyEntries<Descriptor>(reader, writer);
      return writer.Content;
    case TRANSPORT_RECORD_STRINGS:
      CopyEntries<StringEntry>(reader, writer);
      break;
    case TRANSPORT_RECORD_ATTRIBUTES:
      CopyEntries<AttributeEntry>(reader, writer);
      break;
    case TRANSPORT_RECORD_VALUES:
      CopyEntries<ValueEntry>(reader, writer);
      break;
    case TRANSPORT_RECORD_DISPLAY:
    case TRANSPORT_RECORD_HELP:
      return ImportTextTable(reader);
    case TRANSPORT_RECORD_STREAM:
      return ImportStream(reader);
    default:
      Fail(reader.Where("bytes"), "is missing");
  }
  CloseTable(writer);
  return writer.Content;
}

Buffer FollowTables(Buffer capture) {
  RecordPayloads payloads;
  try {
    Findings findings;
    payloads = SplitCapture(capture, findings);
  } catch (const UnusableInput&) {
    return capture;
  }
  // Writes a field of a record, if the record has it.
  const auto put = [&](std::size_t type, std::size_t offset, auto value) {
    if (payloads[type] && payloads[type]->size() >= offset + sizeof(value)) {
      const std::ptrdiff_t place = payloads[type]->data() - capture.data();
      std::memcpy(capture.data() + place + offset, &value, sizeof(value));
    }
  };
  std::size_t entry = offsetof(TableDirectory, Entries);
  for (const TableKind& kind : kTableKinds) {
    if (payloads[kind.Record]) {
      const auto [frame, count] = MeasureTable(kind.Id, *payloads[kind.Record]);
      const auto length = static_cast<std::uint16_t>(frame.Content.size());
      const std::size_t descriptor = kind.Descriptor * sizeof(TableDescriptor);
      put(TRANSPORT_RECORD_DIRECTORY, entry + offsetof(TableDirectoryEntry, Length), length);
      put(TRANSPORT_RECORD_DESCRIPTORS, descriptor + offsetof(TableDescriptor, Limit), length);
      put(TRANSPORT_RECORD_DESCRIPTORS, descriptor + offsetof(TableDescriptor, EntryCount),
          static_cast<std::uint16_t>(count));
      put(TRANSPORT_RECORD_DESCRIPTORS, descriptor + offsetof(TableDescriptor, Checksum), frame.StoredCrc);
      put(TRANSPORT_RECORD_DESCRIPTORS, descriptor + offsetof(TableDescriptor, PadLength),
          static_cast<std::uint8_t>(frame.Pad));
    }
    entry += sizeof(TableDirectoryEntry);
  }
  constexpr std::size_t kChecksum = offsetof(TableDirectory, Checksum);
  put(TRANSPORT_RECORD_DIRECTORY, kChecksum, std::uint8_t{0});
  if (const auto& directory = payloads[TRANSPORT_RECORD_DIRECTORY]) {
    put(TRANSPORT_RECORD_DIRECTORY, kChecksum, ChecksumOf(*directory));
  }
  return capture;
}

bool LooksLikeExport(Bytes content) {
  const auto first = std::ranges::find_if(
      content, [](std::uint8_t byte) { return byte != ' ' && byte != '\t' && byte != '\n' && byte != '\r'; });
  return first != content.end() && *first == '{';
}

std::vector<std::uint8_t> ImportJson(Bytes document, bool* ofCache) {
  Json json;
  try {
    json = Json::parse(document.begin(), document.end());
  } catch (const Json::exception& error) {
    throw UnusableInput(fmt::format("the export is not JSON: {}", error.what()));
  }
  const JsonReader reader(json, "the export");
  if (reader.String("format") != kExportFormat || reader.Get<std::uint32_t>("version") != kExportVersion) {
    Fail("the export", fmt::format("is not of the format {}, version {}", kExportFormat, kExportVersion));
  }
  if (ofCache != nullptr && reader.Has("cache")) {
    reader.Flag("cache", *ofCache);
  }
  ByteWriter capture;
  std::size_t number = 0;
  for (const Json& record : reader.ArrayOf("records")) {
    const std::string where = fmt::format("{}[{}]", reader.Where("records"), number++);
    const Buffer payload = ImportPayload(record, where);
    PutHeader(payload.size(), RecordTypeOf(JsonReader(record, where)), capture);
    capture.Append(payload);
  }
  if (reader.Has("rest")) {
    capture.Append(FromHex(reader, "rest"));
  }
  bool follow = false;
  if (reader.Has("followTables")) {
    reader.Flag("followTables", follow);
  }
  return follow ? FollowTables(std::move(capture.Content)) : std::move(capture.Content);
}

}  // namespace corvane::inspect
