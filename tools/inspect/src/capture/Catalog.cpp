/** @file
  Catalog: the attributes of an image with names and texts instead of handles, so that boots are comparable.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "capture/Catalog.hpp"

#include <charconv>

#include "bytes/Overloaded.hpp"
#include "bytes/Text.hpp"
#include "capture/Pairing.hpp"

namespace corvane::inspect {
namespace {

CatalogName MakeName(const Image& image, std::uint16_t handle) {
  CatalogName name;
  const StringEntry* entry = image.Strings.Find(handle);
  if (entry == nullptr) {
    name.Text = name.Full = fmt::format("?{}", handle);
    return name;
  }
  name.Known = true;
  Keyword keyword = ParseKeyword(entry->Text);
  name.Text = Utf8FromLatin1(keyword.Bare);
  name.Full = Utf8FromLatin1(entry->Text);
  name.Problem = Utf8FromLatin1(keyword.Problem);
  for (Annotation& annotation : keyword.Annotations) {
    for (std::string Annotation::*text :
         {&Annotation::Text, &Annotation::Expression, &Annotation::Attribute, &Annotation::Value}) {
      annotation.*text = Utf8FromLatin1(annotation.*text);
    }
  }
  name.Annotations = std::move(keyword.Annotations);
  return name;
}

void AddPossible(const Image& image, const std::vector<std::uint16_t>& handles, const StreamRecord* record,
                 CatalogAttribute& attribute) {
  for (std::size_t i = 0; i < handles.size(); ++i) {
    CatalogValue value{MakeName(image, handles[i]), std::nullopt, std::nullopt};
    if (record != nullptr && i < record->PlatformValues.size()) {
      value.Setting = record->PlatformValues[i];
    }
    attribute.Possible.push_back(std::move(value));
  }
}

void AddPositions(const std::vector<std::uint8_t>& indices, std::size_t count, std::vector<std::size_t>& positions) {
  for (const std::uint8_t index : indices) {
    if (index < count) {
      positions.push_back(index);
    }
  }
}

CatalogAttribute MakeAttribute(const Image& image, const AttributeEntry& entry) {
  CatalogAttribute attribute;
  attribute.Entry = &entry;
  attribute.Name = MakeName(image, entry.NameHandle);
  const StreamRecord* record = image.Stream ? image.Stream->Find(entry.Handle) : nullptr;
  if (record != nullptr) {
    attribute.Token = record->Token;
    attribute.SettingSize = record->ValueSize;
  }
  if (const auto* enumeration = std::get_if<EnumerationBounds>(&entry.Bounds)) {
    AddPossible(image, enumeration->Names, record, attribute);
    AddPositions(enumeration->Defaults, attribute.Possible.size(), attribute.Defaults);
  } else if (const auto* boot = std::get_if<BootBounds>(&entry.Bounds)) {
    AddPossible(image, boot->Sources, nullptr, attribute);
  } else if (const auto* set = std::get_if<ConfigurationSetBounds>(&entry.Bounds)) {
    AddPossible(image, set->Names, nullptr, attribute);
  }
  const ValueEntry* value = image.Values.Find(entry.Handle);
  if (value != nullptr && BaseTypeOf(value->Type) == BaseTypeOf(entry.Type)) {
    attribute.Value = &value->Value;
    std::visit(Overloaded{
                   [](const auto&) {},
                   [&](const EnumerationValue& now) {
                     AddPositions(now.Indices, attribute.Possible.size(), attribute.Current);
                   },
                   [&](const BootValue& now) { AddPositions(now.Order, attribute.Possible.size(), attribute.Current); },
                   [&](const ConfigurationSetValue& now) {
                     AddPositions({now.Index}, attribute.Possible.size(), attribute.Current);
                   },
               },
               value->Value);
  }
  return attribute;
}

void AddTexts(const PairedTexts& texts, CatalogAttribute& attribute) {
  attribute.Display = texts.Display;
  attribute.Help = texts.Help;
  for (std::size_t i = 0; i < std::min(attribute.Possible.size(), texts.Values.size()); ++i) {
    attribute.Possible[i].Display = texts.Values[i];
  }
}

void AddMembers(const Image& image, Catalog& catalog) {
  for (std::size_t i = 0; i < catalog.Attributes.size(); ++i) {
    const Value* value = catalog.Attributes[i].Value;
    const auto* collection = value != nullptr ? std::get_if<CollectionValue>(value) : nullptr;
    if (collection == nullptr) {
      continue;
    }
    for (const std::uint16_t handle : collection->Members) {
      const auto found = image.Attributes.ByHandle.find(handle);
      if (found == image.Attributes.ByHandle.end() || found->second == i) {
        continue;
      }
      catalog.Attributes[i].Members.push_back(found->second);
      std::optional<std::size_t>& home = catalog.Attributes[found->second].Collection;
      home = home.value_or(i);
    }
  }
}

}  // namespace

const std::string* CatalogName::Expression() const {
  const auto found = std::ranges::find(Annotations, AnnotationKind::RegEx, &Annotation::Kind);
  return found == Annotations.end() ? nullptr : &found->Expression;
}

std::optional<std::size_t> CatalogAttribute::FindValue(std::string_view text) const {
  if (Type() == BaseType::Integer) {
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = !text.empty() && error == std::errc{} && end == text.data() + text.size();
    return whole ? std::optional(number) : std::nullopt;
  }
  const auto found =
      std::ranges::find_if(Possible, [text](const CatalogValue& candidate) { return candidate.Name.Text == text; });
  return found == Possible.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - Possible.begin()));
}

std::optional<std::size_t> CatalogAttribute::CurrentValue() const {
  const auto* number = Value != nullptr ? std::get_if<IntegerValue>(Value) : nullptr;
  if (number != nullptr) {
    return number->Value;
  }
  return Current.size() == 1 ? std::optional(Current.front()) : std::nullopt;
}

std::string CatalogAttribute::NameOfValue(std::size_t value) const {
  if (Type() == BaseType::Integer) {
    return fmt::to_string(value);
  }
  return value < Possible.size() ? Possible[value].Name.Text : "?";
}

Catalog MakeCatalog(const Image& image) {
  Catalog catalog;
  const Pairing pairing = PairTexts(image);
  catalog.TextsMissing = pairing.Reason;
  catalog.OfCache = image.OfCache;
  for (const AttributeEntry& entry : image.Attributes.Entries) {
    catalog.Attributes.push_back(MakeAttribute(image, entry));
    if (const PairedTexts* texts = pairing.Find(entry.Handle)) {
      AddTexts(*texts, catalog.Attributes.back());
    }
  }
  AddMembers(image, catalog);
  return catalog;
}

}  // namespace corvane::inspect
