/** @file
  `inspect report`: one self-contained HTML page about a boot.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "export/Report.hpp"

#include <map>
#include <set>

#include <nlohmann/json.hpp>

#include "bytes/Text.hpp"
#include "capture/Catalog.hpp"
#include "capture/Describe.hpp"
#include "compare/Diff.hpp"
#include "export/ReportTemplate.hpp"

namespace corvane::inspect {
namespace {

using Json = nlohmann::ordered_json;

template <typename T>
Json OrNull(const std::optional<T>& value) {
  return value ? Json(*value) : Json();
}

Json TablesAsJson(const Image& image) {
  Json tables = Json::array();
  for (const TableFill& fill : MeasureFill(image)) {
    tables.push_back({{"name", KindOf(fill.Id).Name},
                      {"used", fill.Used},
                      {"capacity", KindOf(fill.Id).Capacity},
                      {"entries", fill.Entries},
                      {"lost", OrNull(fill.Lost)},
                      {"firstLost", OrNull(fill.FirstLost)},
                      {"maybeCut", fill.MaybeCut},
                      {"crcOk", fill.CrcOk}});
  }
  return tables;
}

// Null if the attribute has no default.
Json IsAtDefault(const CatalogAttribute& attribute) {
  if (const auto* bounds = std::get_if<IntegerBounds>(&attribute.Entry->Bounds)) {
    const auto* value = attribute.Value != nullptr ? std::get_if<IntegerValue>(attribute.Value) : nullptr;
    return value != nullptr ? Json(value->Value == bounds->Default) : Json();
  }
  return attribute.Type() == BaseType::Enumeration ? Json(attribute.Current == attribute.Defaults) : Json();
}

Json AttributeAsJson(const Image& image, const CatalogAttribute& attribute) {
  const std::string* expression = attribute.Name.Expression();
  return {{"handle", attribute.Entry->Handle},
          {"name", attribute.Name.Text},
          {"fullName", attribute.Name.Full},
          {"display", OrNull(attribute.Display)},
          {"help", OrNull(attribute.Help)},
          {"token", OrNull(attribute.Token)},
          {"type", TypeName(attribute.Entry->Type)},
          {"readOnly", attribute.Entry->IsReadOnly()},
          {"current", DescribeCurrent(image, *attribute.Entry)},
          {"default", DescribeDefault(image, *attribute.Entry)},
          {"domain", DescribeDomain(image, *attribute.Entry)},
          {"atDefault", IsAtDefault(attribute)},
          {"expression", expression != nullptr ? Json(*expression) : Json()}};
}

// Groups members by collection. Attributes without a collection come first.
Json GroupsAsJson(const Catalog& catalog) {
  std::map<std::optional<std::size_t>, Json> members;
  for (std::size_t i = 0; i < catalog.Attributes.size(); ++i) {
    const CatalogAttribute& attribute = catalog.Attributes[i];
    if (attribute.Type() != BaseType::Collection || attribute.Members.empty()) {
      members[attribute.Collection].push_back(i);
    }
  }
  Json groups = Json::array();
  for (auto& [home, list] : members) {
    const CatalogAttribute* collection = home ? &catalog.Attributes[*home] : nullptr;
    const std::string title =
        collection != nullptr ? collection->Display.value_or(collection->Name.Text) : "In no collection";
    groups.push_back({{"title", title}, {"members", std::move(list)}});
  }
  return groups;
}

void AddEdges(const CatalogAttribute& attribute, const CatalogName& name, const Json& forced, Json& edges) {
  for (const Annotation& annotation : name.Annotations) {
    if (annotation.IsForce()) {
      edges.push_back({{"from", annotation.Attribute},
                       {"value", annotation.Value},
                       {"not", annotation.Kind == AnnotationKind::ForceIfNot},
                       {"to", attribute.Name.Text},
                       {"forced", forced}});
    }
  }
}

Json EdgesAsJson(const Catalog& catalog) {
  Json edges = Json::array();
  for (const CatalogAttribute& attribute : catalog.Attributes) {
    AddEdges(attribute, attribute.Name, {}, edges);
    for (const CatalogValue& value : attribute.Possible) {
      AddEdges(attribute, value.Name, value.Name.Text, edges);
    }
  }
  return edges;
}

// Findings of lint with advice, then findings of the structure that lint does not repeat.
Json FindingsAsJson(const Image& image, const std::vector<LintFinding>& findings) {
  Json list = Json::array();
  std::set<std::string> codes;
  for (const LintFinding& finding : findings) {
    list.push_back(
        {{"code", finding.Code}, {"text", finding.Text}, {"advice", finding.Advice}, {"note", finding.IsNote}});
    codes.insert(finding.Code);
  }
  for (const Finding& finding : image.Findings.List()) {
    if (!codes.contains(finding.Code)) {
      list.push_back({{"code", finding.Code}, {"text", finding.Text}, {"advice", ""}, {"note", false}});
    }
  }
  return list;
}

void ReplaceFirst(std::string& text, std::string_view mark, std::string_view content) {
  if (const std::size_t at = text.find(mark); at != std::string::npos) {
    text.replace(at, mark.size(), content);
  }
}

}  // namespace

Json ReportData(const ReportInput& input, const std::vector<LintFinding>& findings, const ReportOlder& older) {
  const Catalog catalog = MakeCatalog(input.Image);
  Json data{{"input", input.Name},
            {"firmware", OrNull(input.Firmware)},
            {"older", older.Image != nullptr ? Json(older.Name) : Json()},
            {"textsMissing", catalog.TextsMissing},
            {"tables", TablesAsJson(input.Image)},
            {"findings", FindingsAsJson(input.Image, findings)},
            {"differences", Json()},
            {"groups", GroupsAsJson(catalog)},
            {"edges", EdgesAsJson(catalog)},
            {"attributes", Json::array()}};
  if (older.Image != nullptr) {
    data["differences"] = DifferencesAsJson(DiffCatalogs(MakeCatalog(*older.Image), catalog, true));
  }
  for (const CatalogAttribute& attribute : catalog.Attributes) {
    data["attributes"].push_back(AttributeAsJson(input.Image, attribute));
  }
  return data;
}

std::string ReportPage(const Json& data) {
  // The data must not contain a tag that ends the script element around it.
  std::string json;
  for (const char character : data.dump(-1, ' ', false, Json::error_handler_t::replace)) {
    character == '<' ? json += "\\u003c" : json += character;
  }
  std::string page(kReportHtml);
  ReplaceFirst(page, "@STYLE@", kReportCss);
  ReplaceFirst(page, "@SCRIPT@", kReportJs);
  ReplaceFirst(page, "@DATA@", json);
  return page;
}

}  // namespace corvane::inspect
