/** @file
  `inspect export --firmware-attributes`: the tree of a device of Linux's firmware-attributes class.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "export/FirmwareAttributes.hpp"

#include <map>

namespace corvane::inspect {
namespace {

using Json = nlohmann::ordered_json;

constexpr unsigned kReadOnlyFile = 0444;
constexpr unsigned kWritableFile = 0644;
constexpr unsigned kSecretFile = 0200;
constexpr std::size_t kLongestFileName = 255;  // bytes

// The roles that the class knows, by the name of the password.
const std::map<std::string_view, const char*> kRoles{{"AdminPassword", "bios-admin"}, {"SystemPassword", "power-on"}};

std::optional<std::string> NameOfFolder(const CatalogAttribute& attribute, std::string& reason) {
  const std::string& name = attribute.Name.Text;
  switch (attribute.Type()) {
    case BaseType::Collection:
      return std::nullopt;  // the class has no groups
    case BaseType::BootConfiguration:
      reason = "readers of the class do not parse the type of a boot order, ordered-list";
      break;
    case BaseType::Password:
      if (!kRoles.contains(name)) {
        reason = "the class has no role for this password";
      }
      break;
    case BaseType::Enumeration:
    case BaseType::ConfigurationSet:
    case BaseType::String:
    case BaseType::Integer:
      if (name.empty() || name == "." || name == ".." || name.size() > kLongestFileName ||
          name.find_first_of(std::string_view("/\0", 2)) != name.npos) {
        reason = "its name is no name of a folder";
      }
      break;
    default:
      reason = fmt::format("its type, {}, is unknown", TypeName(attribute.Entry->Type));
  }
  return reason.empty() ? std::optional(name) : std::nullopt;
}

class TreeWriter {
 public:
  TreeWriter(const Catalog& catalog, const std::string& language)
      : offer_(OfferAttributes(catalog, NameOfFolder)), language_(language) {}

  ExportResult Run() {
    for (const OfferedAttribute& attribute : offer_.Attributes) {
      if (attribute.Source->Type() == BaseType::Password) {
        AddPassword(attribute);
      } else if (const std::string reason = ReasonToLeave(attribute); !reason.empty()) {
        offer_.Leave(*attribute.Source, "attribute", reason);
        continue;
      } else {
        AddAttribute(attribute);
      }
      ++result_.Attributes;
    }
    result_.Left = std::move(offer_.Left);
    return std::move(result_);
  }

 private:
  static std::string TextOf(const Json& value) { return value.is_string() ? value.get<std::string>() : value.dump(); }

  static std::string ReasonToLeave(const OfferedAttribute& attribute) {
    const auto hasAny = [](const std::string& text, const char* of) { return text.find_first_of(of) != text.npos; };
    if (attribute.Current.is_null()) {
      return "the class asks for a current value";
    }
    if (hasAny(TextOf(attribute.Current), "\n")) {
      return "a value ends at its first line feed";
    }
    const bool splits = std::ranges::any_of(attribute.Values,
                                            [&](const CatalogValue* value) { return hasAny(value->Name.Text, ";\n"); });
    return splits ? "a semicolon or line feed in a value separates values" : "";
  }

  void Add(const std::string& folder, const char* file, const Json& value, unsigned mode = kReadOnlyFile) {
    result_.Files.push_back({folder + file, TextOf(value) + '\n', mode});
  }

  void AddAttribute(const OfferedAttribute& offered) {
    const CatalogAttribute& attribute = *offered.Source;
    const std::string folder = "attributes/" + offered.Name + '/';
    Add(folder, "display_name", attribute.Display.value_or(attribute.Name.Text));
    Add(folder, "display_name_language_code", language_);
    Add(folder, "current_value", offered.Current, attribute.Entry->IsReadOnly() ? kReadOnlyFile : kWritableFile);
    if (!offered.Default.is_null()) {
      Add(folder, "default_value", offered.Default);
    }
    if (const auto* integer = std::get_if<IntegerBounds>(&attribute.Entry->Bounds)) {
      Add(folder, "type", "integer");
      Add(folder, "min_value", integer->Lower);
      Add(folder, "max_value", integer->Upper);
      Add(folder, "scalar_increment", integer->Step);
    } else if (const auto* length = std::get_if<LengthBounds>(&attribute.Entry->Bounds)) {
      Add(folder, "type", "string");
      Add(folder, "min_length", length->Minimum);
      Add(folder, "max_length", length->Maximum);
    } else {
      Add(folder, "type", "enumeration");
      std::string values;
      for (const CatalogValue* value : offered.Values) {
        values += (values.empty() ? "" : ";") + value->Name.Text;
      }
      Add(folder, "possible_values", values);
    }
  }

  void AddPassword(const OfferedAttribute& offered) {
    const auto& length = std::get<LengthBounds>(offered.Source->Entry->Bounds);
    const std::string folder = "authentication/" + offered.Name + '/';
    Add(folder, "is_enabled", offered.Source->Value != nullptr ? 1 : 0);
    Add(folder, "role", kRoles.at(offered.Name));
    Add(folder, "mechanism", "password");
    Add(folder, "min_password_length", length.Minimum);
    Add(folder, "max_password_length", length.Maximum);
    Add(folder, "current_password", "", kSecretFile);
    Add(folder, "new_password", "", kSecretFile);
  }

  Offer offer_;
  const std::string& language_;
  ExportResult result_;
};

}  // namespace

ExportResult ExportFirmwareAttributes(const Catalog& catalog, const std::string& language) {
  return TreeWriter(catalog, language).Run();
}

}  // namespace corvane::inspect
