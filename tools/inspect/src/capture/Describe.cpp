/** @file
  The attribute line and its parts. tools/inspect/README.md defines the form.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "capture/Describe.hpp"

#include "bytes/Overloaded.hpp"
#include "bytes/Text.hpp"

namespace corvane::inspect {
namespace {

constexpr const char* kNothing = "-";
constexpr const char* kUnknown = "?";

template <typename Items, typename Describe>
std::string Join(const Items& items, Describe describe) {
  std::string text;
  for (const auto& item : items) {
    text += text.empty() ? "" : "|";
    text += describe(item);
  }
  return items.empty() ? kNothing : text;
}

std::string DescribeNames(const Image& image, const std::vector<std::uint16_t>& handles) {
  return Join(handles, [&image](std::uint16_t handle) { return DescribeName(image, handle); });
}

std::string DescribeIndices(const Image& image, const std::vector<std::uint16_t>& handles,
                            const std::vector<std::uint8_t>& indices) {
  return Join(indices, [&](std::uint8_t index) {
    return index < handles.size() ? DescribeName(image, handles[index]) : fmt::format("#{}", index);
  });
}

}  // namespace

std::string DescribeName(const Image& image, std::uint16_t handle) {
  const StringEntry* entry = image.Strings.Find(handle);
  return entry != nullptr ? EscapeName(entry->Text) : fmt::format("?{}", handle);
}

std::string DescribeMember(const Image& image, std::uint16_t handle) {
  const AttributeEntry* member = image.Attributes.Find(handle);
  return member != nullptr ? DescribeName(image, member->NameHandle) : fmt::format("?{}", handle);
}

std::string DescribeCurrent(const Image& image, const AttributeEntry& attribute) {
  const ValueEntry* entry = image.Values.Find(attribute.Handle);
  const std::uint8_t type = BaseTypeOf(attribute.Type);
  if (entry == nullptr && BaseType{type} == BaseType::Password) {
    return "not installed";
  }
  if (entry == nullptr || BaseTypeOf(entry->Type) != type) {
    return kUnknown;
  }
  return std::visit(
      Overloaded{
          [](const std::monostate&) -> std::string { return kNothing; },
          [&](const EnumerationValue& value) {
            return DescribeIndices(image, std::get<EnumerationBounds>(attribute.Bounds).Names, value.Indices);
          },
          [](const StringValue& value) { return Quote(value.Text); },
          [](const PasswordValue&) -> std::string { return "installed"; },
          [](const IntegerValue& value) { return fmt::to_string(value.Value); },
          [&](const BootValue& value) {
            return DescribeIndices(image, std::get<BootBounds>(attribute.Bounds).Sources, value.Order);
          },
          [&](const CollectionValue& value) {
            return Join(value.Members, [&image](std::uint16_t handle) { return DescribeMember(image, handle); });
          },
          [&](const ConfigurationSetValue& value) {
            return DescribeIndices(image, std::get<ConfigurationSetBounds>(attribute.Bounds).Names, {value.Index});
          },
      },
      entry->Value);
}

std::string DescribeDefault(const Image& image, const AttributeEntry& attribute) {
  return std::visit(
      Overloaded{
          [](const auto&) -> std::string { return kNothing; },
          [&image](const EnumerationBounds& bounds) { return DescribeIndices(image, bounds.Names, bounds.Defaults); },
          [](const LengthBounds& bounds) { return fmt::format("length {}", bounds.DefaultLength); },
          [](const IntegerBounds& bounds) { return fmt::to_string(bounds.Default); },
      },
      attribute.Bounds);
}

std::string DescribeDomain(const Image& image, const AttributeEntry& attribute) {
  return std::visit(
      Overloaded{
          [](const auto&) -> std::string { return kNothing; },
          [&image](const EnumerationBounds& bounds) { return DescribeNames(image, bounds.Names); },
          [](const LengthBounds& bounds) { return fmt::format("{}..{}", bounds.Minimum, bounds.Maximum); },
          [](const IntegerBounds& bounds) {
            return fmt::format("{}..{} step {}", bounds.Lower, bounds.Upper, bounds.Step);
          },
          [&image](const BootBounds& bounds) { return DescribeNames(image, bounds.Sources); },
          [&image](const ConfigurationSetBounds& bounds) { return DescribeNames(image, bounds.Names); },
      },
      attribute.Bounds);
}

std::string AttributeLine(const Image& image, const AttributeEntry& attribute) {
  return fmt::format("{} {} {}{} = {} (default {}) {{{}}}", attribute.Handle, DescribeName(image, attribute.NameHandle),
                     TypeName(attribute.Type), attribute.IsReadOnly() ? " ro" : "", DescribeCurrent(image, attribute),
                     DescribeDefault(image, attribute), DescribeDomain(image, attribute));
}

}  // namespace corvane::inspect
