/** @file
  `inspect show --json`: the whole image with stable keys.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <nlohmann/json.hpp>

#include "bytes/Text.hpp"
#include "command/Show.hpp"
#include "export/JsonWriter.hpp"

namespace corvane::inspect {
namespace {

using Json = nlohmann::ordered_json;

Json NameAsJson(const Image& image, std::uint16_t handle) {
  const StringEntry* entry = image.Strings.Find(handle);
  return entry != nullptr ? Json(Utf8FromLatin1(entry->Text)) : Json();
}

Json NamesAsJson(const Image& image, const std::vector<std::uint16_t>& handles,
                 const std::vector<std::uint64_t>& platformValues = {}) {
  Json names = Json::array();
  for (std::size_t i = 0; i < handles.size(); ++i) {
    Json name{{"name", NameAsJson(image, handles[i])}, {"nameHandle", handles[i]}};
    if (i < platformValues.size()) {
      name["value"] = platformValues[i];
    }
    names.push_back(std::move(name));
  }
  return names;
}

// Shows names in place of string handles.
class ShowWriter : public JsonWriter {
 public:
  ShowWriter(const Image& image, const std::vector<std::uint64_t>& platformValues)
      : image_(image), platformValues_(platformValues) {}

  template <typename T>
  void Number(const char* key, const T& value) {
    std::string_view(key).starts_with("information") ? Object["collectionInfo"].push_back(value)
                                                     : void(Object[key] = value);
  }
  void List(const char* key, const std::vector<std::uint16_t>& handles) {
    Object[key] = NamesAsJson(image_, handles, platformValues_);
  }
  void List(const char* key, const std::vector<std::uint8_t>& indices) { Object[key] = indices; }

 private:
  const Image& image_;
  const std::vector<std::uint64_t>& platformValues_;
};

void AddBounds(const Image& image, Bounds bounds, const std::vector<std::uint64_t>& platformValues, Json& to) {
  ShowWriter writer(image, platformValues);
  std::visit([&writer](auto& alternative) { BoundsFields(writer, alternative); }, bounds);
  to.update(writer.Object);
}

Json ValueAsJson(Value value) {
  if (const auto* password = std::get_if<PasswordValue>(&value)) {
    return {{"length", password->Text.size()}};
  }
  JsonWriter writer;
  ValueFields(writer, value);
  return std::move(writer.Object);
}

Json AttributeHead(const Image& image, const AttributeEntry& attribute) {
  return {{"handle", attribute.Handle},
          {"name", NameAsJson(image, attribute.NameHandle)},
          {"nameHandle", attribute.NameHandle},
          {"type", TypeName(attribute.Type)},
          {"readOnly", attribute.IsReadOnly()}};
}

template <typename Text>
Json OrNull(const std::optional<Text>& text) {
  return text ? Json(*text) : Json();
}

Json PairingAsJson(const Pairing& pairing) {
  const bool whole = pairing.Reason.empty();
  return {{"whole", whole},
          {"firstUnpaired", whole ? Json() : Json(pairing.FirstUnpaired)},
          {"reason", whole ? Json() : Json(pairing.Reason)}};
}

void AddTexts(const PairedTexts& texts, Json& to) {
  to["display"] = OrNull(texts.Display);
  to["displayHandle"] = texts.DisplayHandle != 0 ? Json(texts.DisplayHandle) : Json();
  to["help"] = OrNull(texts.Help);
  for (std::size_t i = 0; i < texts.Values.size() && to.contains("possible"); ++i) {
    to["possible"][i]["display"] = OrNull(texts.Values[i]);
  }
}

Json AttributeAsJson(const Image& image, const Pairing& pairing, const AttributeEntry& attribute) {
  Json json = AttributeHead(image, attribute);
  const StreamRecord* record = image.Stream ? image.Stream->Find(attribute.Handle) : nullptr;
  if (record != nullptr) {
    json["token"] = record->Token;
    json["settingSize"] = record->ValueSize;
  }
  AddBounds(image, attribute.Bounds, record != nullptr ? record->PlatformValues : std::vector<std::uint64_t>{}, json);
  const ValueEntry* value = image.Values.Find(attribute.Handle);
  json["current"] = value != nullptr ? ValueAsJson(value->Value) : Json();
  const PairedTexts* texts = pairing.Find(attribute.Handle);
  AddTexts(texts != nullptr ? *texts : PairedTexts{}, json);
  return json;
}

Json StreamRecordAsJson(const Image& image, const StreamRecord& record) {
  Json json = AttributeHead(image, record.Attribute);
  json["token"] = record.Token;
  json["settingSize"] = record.ValueSize;
  AddBounds(image, record.Attribute.Bounds, record.PlatformValues, json);
  if (BaseType{BaseTypeOf(record.Attribute.Type)} == BaseType::Password) {
    json["installed"] = record.PasswordInstalled;
  } else {
    json["current"] = ValueAsJson(record.Value);
  }
  return json;
}

Json TablesAsJson(const Image& image) {
  Json tables = Json::array();
  for (const TableFill& fill : MeasureFill(image)) {
    const TableFrame& frame = *image.FrameOf(fill.Id);
    tables.push_back({{"name", KindOf(fill.Id).Name},
                      {"used", fill.Used},
                      {"capacity", KindOf(fill.Id).Capacity},
                      {"entries", fill.Entries},
                      {"pad", frame.Pad},
                      {"crc", frame.StoredCrc},
                      {"crcOk", fill.CrcOk},
                      {"sound", frame.Sound},
                      {"lost", fill.Lost ? Json(*fill.Lost) : Json()},
                      {"firstLost", fill.FirstLost ? Json(*fill.FirstLost) : Json()},
                      {"maybeCut", fill.MaybeCut}});
  }
  return tables;
}

Json ValuesAsJson(const Image& image) {
  Json values = Json::array();
  for (const ValueEntry& entry : image.Values.Entries) {
    values.push_back({{"handle", entry.Handle},
                      {"type", TypeName(entry.Type)},
                      {"readOnly", (entry.Type & kReadOnly) != 0},
                      {"current", ValueAsJson(entry.Value)}});
  }
  return values;
}

Json TextsAsJson(const std::optional<TextTable>& table) {
  if (!table) {
    return {};
  }
  return {{"language", Utf8FromUcs2(table->Language)}, {"entries", EntriesAsJson(table->Entries)}};
}

Json DirectoryAsJson(const std::optional<Directory>& directory) {
  if (!directory) {
    return {};
  }
  return {{"signature", Utf8FromLatin1(directory->Signature)},
          {"version", directory->Version},
          {"content", Utf8FromLatin1(directory->Content)},
          {"length", directory->Length},
          {"checksumOk", directory->Sum == 0},
          {"entries", EntriesAsJson(directory->Entries)}};
}

Json StreamAsJson(const Image& image) {
  if (!image.Stream) {
    return {};
  }
  Json records = Json::array();
  for (const StreamRecord& record : image.Stream->Records) {
    records.push_back(StreamRecordAsJson(image, record));
  }
  return {{"size", image.Stream->Size},           {"attributeCount", image.Stream->AttributeCount},
          {"nameCount", image.Stream->NameCount}, {"displayCount", image.Stream->DisplayCount},
          {"helpCount", image.Stream->HelpCount}, {"sound", image.Stream->Sound},
          {"records", std::move(records)}};
}

Json FindingsAsJson(const Findings& findings) {
  Json list = Json::array();
  for (const Finding& finding : findings.List()) {
    list.push_back({{"code", finding.Code}, {"text", finding.Text}});
  }
  return list;
}

std::string Dump(const Json& json) {
  return json.dump(2) + '\n';
}

}  // namespace

std::string AttributesAsJson(const Image& image, const Pairing& pairing,
                             const std::vector<const AttributeEntry*>& attributes) {
  Json list = Json::array();
  for (const AttributeEntry* attribute : attributes) {
    list.push_back(AttributeAsJson(image, pairing, *attribute));
  }
  return Dump({{"attributes", std::move(list)},
               {"pairing", PairingAsJson(pairing)},
               {"findings", FindingsAsJson(image.Findings)}});
}

std::string ImageAsJson(const Image& image, const Pairing& pairing) {
  Json attributes = Json::array();
  for (const AttributeEntry& attribute : image.Attributes.Entries) {
    attributes.push_back(AttributeAsJson(image, pairing, attribute));
  }
  return Dump({{"attributes", std::move(attributes)},
               {"pairing", PairingAsJson(pairing)},
               {"tables", TablesAsJson(image)},
               {"strings", EntriesAsJson(image.Strings.Entries)},
               {"values", ValuesAsJson(image)},
               {"displayTexts", TextsAsJson(image.Display)},
               {"helpTexts", TextsAsJson(image.Help)},
               {"directory", DirectoryAsJson(image.Directory)},
               {"descriptors", image.Descriptors ? EntriesAsJson(*image.Descriptors) : Json()},
               {"stream", StreamAsJson(image)},
               {"findings", FindingsAsJson(image.Findings)}});
}

}  // namespace corvane::inspect
