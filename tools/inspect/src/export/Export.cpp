/** @file
  `inspect export --json`: a capture as JSON, from which `inspect import` makes the same bytes again.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "export/Export.hpp"

#include <nlohmann/json.hpp>

#include "bytes/Text.hpp"
#include "capture/Capture.hpp"
#include "capture/Layout.hpp"
#include "export/JsonWriter.hpp"

namespace corvane::inspect {
namespace {

using Json = nlohmann::ordered_json;

// Ignores findings: the comparison of the reproduced bytes detects every difference.
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
  if (std::ranges::equal(FollowTables({capture.begin(), capture.end()}), capture)) {
    json["followTables"] = true;
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
