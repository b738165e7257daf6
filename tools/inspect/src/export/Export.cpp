/** @file
  `inspect export --json`: a capture as JSON, from which `inspect import` makes the same bytes again.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "export/Export.hpp"

#include "capture/Capture.hpp"
#include "capture/Layout.hpp"
#include "bytes/Text.hpp"

namespace corvane::inspect {
namespace {

using Json = nlohmann::ordered_json;

class JsonWriter {
 public:
  static constexpr bool kWrites = true;

  template <typename T>
  void Number(const char* key, const T& value) {
    Object[key] = value;
  }
  void Flag(const char* key, bool value) { Object[key] = value; }
  template <typename T>
  void List(const char* key, const std::vector<T>& values) {
    Object[key] = values;
  }
  template <typename T>
  void Array(const char* key, const std::vector<T>& values, std::size_t) {
    Object[key] = values;
  }
  void Padded(const char* key, const std::vector<std::uint8_t>& values, std::size_t) { Object[key] = values; }
  void Text(const char* key, const std::string& text) { Object[key] = Utf8FromLatin1(text); }
  void Terminated(const char* key, const std::string& text) { Text(key, text); }
  void WideText(const char* key, const std::u16string& text) { Object[key] = Utf8FromUcs2(text); }
  void Reserved(std::size_t) {}

  Json Object = Json::object();
};

template <typename Entries>
Json EntriesAsJson(Entries entries) {
  Json list = Json::array();
  for (auto& entry : entries) {
    JsonWriter writer;
    Fields(writer, entry);
    list.push_back(std::move(writer.Object));
  }
  return list;
}

// Whatever is wrong shows when the bytes are made again, so nobody looks at the findings.
Json PayloadAsJson(std::size_t type, Bytes payload) {
  Findings findings;
  Json json{{"record", kExportRecords[type]}};
  switch (type) {
    case 0:
      if (const auto directory = DecodeDirectory(payload, findings)) {
        json["signature"] = Utf8FromLatin1(directory->Signature);
        json["version"] = directory->Version;
        json["content"] = Utf8FromLatin1(directory->Content);
        json["length"] = directory->Length;
        json["entries"] = EntriesAsJson(directory->Entries);
      }
      break;
    case 1:
      if (const auto descriptors = DecodeDescriptors(payload, findings)) {
        json["entries"] = EntriesAsJson(*descriptors);
      }
      break;
    case 2:
      json["entries"] = EntriesAsJson(DecodeStringTable(payload, findings).Entries);
      break;
    case 3:
      json["entries"] = EntriesAsJson(DecodeAttributeTable(payload, findings).Entries);
      break;
    case 4:
      json["entries"] = EntriesAsJson(DecodeValueTable(payload, findings).Entries);
      break;
    case 5:
    case 6: {
      const TextTable table = DecodeTextTable(type == 5 ? TableId::Display : TableId::Help, payload, findings);
      json["language"] = Utf8FromUcs2(table.Language);
      json["entries"] = EntriesAsJson(table.Entries);
      break;
    }
    case 7: {
      const Stream stream = DecodeStream(payload, findings);
      json["attributeCount"] = stream.AttributeCount;
      json["nameCount"] = stream.NameCount;
      json["displayCount"] = stream.DisplayCount;
      json["helpCount"] = stream.HelpCount;
      json["entries"] = EntriesAsJson(stream.Records);
      break;
    }
    default:
      break;
  }
  return json;
}

bool ComesOutAgain(const Json& json, Bytes payload) {
  try {
    return std::ranges::equal(ImportPayload(json, "record"), payload);
  } catch (const UnusableInput&) {
    return false;
  }
}

std::string Hex(Bytes bytes) {
  return fmt::format("{:02x}", fmt::join(bytes, ""));
}

Json RecordAsJson(const CaptureRecord& record) {
  if (record.Type < kRecordTypes) {
    Json json = PayloadAsJson(record.Type, record.Payload);
    if (ComesOutAgain(json, record.Payload)) {
      return json;
    }
    return {{"record", kExportRecords[record.Type]}, {"bytes", Hex(record.Payload)}};
  }
  return {{"record", record.Type}, {"bytes", Hex(record.Payload)}};
}

}  // namespace

std::string ExportJson(Bytes capture, bool ofCache) {
  Findings findings;
  const std::vector<CaptureRecord> records = ListRecords(capture, findings);
  Json json{{"format", kExportFormat}, {"version", kExportVersion}};
  if (ofCache) {
    json["cache"] = true;
  }
  json["records"] = Json::array();
  std::size_t end = 0;
  for (const CaptureRecord& record : records) {
    json["records"].push_back(RecordAsJson(record));
    end = static_cast<std::size_t>(record.Payload.data() - capture.data()) + record.Payload.size();
  }
  if (end < capture.size()) {
    json["rest"] = Hex(capture.subspan(end));
  }
  return json.dump(1) + '\n';
}

}  // namespace corvane::inspect
