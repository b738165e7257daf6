/** @file
  `inspect show --json`: the whole image with stable keys.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <nlohmann/json.hpp>

#include "bytes/Overloaded.hpp"
#include "command/Show.hpp"
#include "bytes/Text.hpp"

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

void AddBounds(const Image& image, const Bounds& bounds, const std::vector<std::uint64_t>& platformValues, Json& to) {
  std::visit(Overloaded{
                 [](const std::monostate&) {},
                 [&](const EnumerationBounds& value) {
                   to["possible"] = NamesAsJson(image, value.Names, platformValues);
                   to["defaultIndices"] = value.Defaults;
                 },
                 [&](const LengthBounds& value) {
                   to["subtype"] = value.Subtype;
                   to["minLength"] = value.Minimum;
                   to["maxLength"] = value.Maximum;
                   to["defaultLength"] = value.DefaultLength;
                 },
                 [&](const IntegerBounds& value) {
                   to["lower"] = value.Lower;
                   to["upper"] = value.Upper;
                   to["step"] = value.Step;
                   to["default"] = value.Default;
                 },
                 [&](const BootBounds& value) {
                   to["bootConfigType"] = value.ConfigType;
                   to["supportedModes"] = value.Modes;
                   to["minSources"] = value.MinimumSources;
                   to["maxSources"] = value.MaximumSources;
                   to["possible"] = NamesAsJson(image, value.Sources);
                 },
                 [&](const CollectionBounds& value) { to["collectionInfo"] = value.Info; },
                 [&](const ConfigurationSetBounds& value) { to["possible"] = NamesAsJson(image, value.Names); },
             },
             bounds);
}

Json ValueAsJson(const Value& value) {
  return std::visit(
      Overloaded{
          [](const std::monostate&) { return Json::object(); },
          [](const EnumerationValue& current) {
            return Json{{"indices", current.Indices}};
          },
          [](const StringValue& current) {
            return Json{{"text", Utf8FromLatin1(current.Text)}};
          },
          [](const PasswordValue& current) {
            return Json{{"length", current.Text.size()}};
          },
          [](const IntegerValue& current) {
            return Json{{"value", current.Value}};
          },
          [](const BootValue& current) {
            return Json{{"bootConfigType", current.ConfigType}, {"mode", current.Mode}, {"order", current.Order}};
          },
          [](const CollectionValue& current) {
            return Json{{"members", current.Members}};
          },
          [](const ConfigurationSetValue& current) {
            return Json{{"index", current.Index}};
          },
      },
      value);
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

Json StringsAsJson(const Image& image) {
  Json strings = Json::array();
  for (const StringEntry& entry : image.Strings.Entries) {
    strings.push_back({{"handle", entry.Handle}, {"text", Utf8FromLatin1(entry.Text)}});
  }
  return strings;
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
  Json entries = Json::array();
  for (const TextEntry& entry : table->Entries) {
    entries.push_back({{"handle", entry.Handle}, {"text", Utf8FromUcs2(entry.Text)}});
  }
  return {{"language", Utf8FromUcs2(table->Language)}, {"entries", std::move(entries)}};
}

Json DirectoryAsJson(const std::optional<Directory>& directory) {
  if (!directory) {
    return {};
  }
  Json entries = Json::array();
  for (const DirectoryEntry& entry : directory->Entries) {
    entries.push_back({{"tableType", entry.TableType},
                       {"subType", entry.SubType},
                       {"format", entry.Format},
                       {"tableId", entry.TableId},
                       {"length", entry.Length},
                       {"addressLow", entry.AddressLow}});
  }
  return {{"signature", Utf8FromLatin1(directory->Signature)},
          {"version", directory->Version},
          {"content", Utf8FromLatin1(directory->Content)},
          {"length", directory->Length},
          {"checksumOk", directory->Sum == 0},
          {"entries", std::move(entries)}};
}

Json DescriptorsAsJson(const std::optional<std::vector<Descriptor>>& descriptors) {
  if (!descriptors) {
    return {};
  }
  Json list = Json::array();
  for (const Descriptor& descriptor : *descriptors) {
    list.push_back({{"data", descriptor.Data},
                    {"tableType", descriptor.TableType},
                    {"tableIndex", descriptor.TableIndex},
                    {"limit", descriptor.Limit},
                    {"capacity", descriptor.Capacity},
                    {"used", descriptor.Used},
                    {"entryCount", descriptor.EntryCount},
                    {"checksum", descriptor.Checksum},
                    {"padLength", descriptor.PadLength},
                    {"finished", descriptor.Finished},
                    {"reserved", descriptor.Reserved}});
  }
  return list;
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
               {"strings", StringsAsJson(image)},
               {"values", ValuesAsJson(image)},
               {"displayTexts", TextsAsJson(image.Display)},
               {"helpTexts", TextsAsJson(image.Help)},
               {"directory", DirectoryAsJson(image.Directory)},
               {"descriptors", DescriptorsAsJson(image.Descriptors)},
               {"stream", StreamAsJson(image)},
               {"findings", FindingsAsJson(image.Findings)}});
}

}  // namespace corvane::inspect
