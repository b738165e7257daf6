/** @file
  `inspect export --redfish`: the attributes as an AttributeRegistry and a Bios resource (DMTF DSP0268, DSP8010).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "export/Redfish.hpp"

#include <charconv>
#include <map>
#include <set>

#include "bytes/Text.hpp"
#include "judge/Expression.hpp"

namespace corvane::inspect {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kRegistryType = "#AttributeRegistry.v1_3_9.AttributeRegistry";
constexpr const char* kBiosType = "#Bios.v1_2_3.Bios";
constexpr const char* kSettingsType = "#Settings.v1_3_5.Settings";

std::string Without(std::string_view text, char left) {
  std::string out(text);
  std::erase(out, left);
  return out;
}

bool IsLetter(char character) {
  return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

// The schema's pattern ^[A-Za-z][A-Za-z0-9_]+$.
bool IsAttributeName(std::string_view name) {
  return name.size() > 1 && IsLetter(name.front()) && std::ranges::all_of(name, [](char character) {
           return IsLetter(character) || (character >= '0' && character <= '9') || character == '_';
         });
}

const char* RegistryTypeOf(BaseType type) {
  switch (type) {
    case BaseType::Enumeration:
    case BaseType::ConfigurationSet:
      return "Enumeration";
    case BaseType::String:
      return "String";
    case BaseType::Password:
      return "Password";
    case BaseType::Integer:
      return "Integer";
    case BaseType::BootConfiguration:
    case BaseType::Collection:
      break;
  }
  return nullptr;
}

std::optional<std::string> NameInRegistry(const CatalogAttribute& attribute, std::string& reason) {
  if (attribute.Type() == BaseType::Collection) {
    return std::nullopt;  // a menu
  }
  std::string name = Without(attribute.Name.Text, ' ');
  if (attribute.Type() == BaseType::BootConfiguration) {
    reason = "Redfish has no attribute type for a boot order; it belongs in Boot.BootOrder of the system";
  } else if (RegistryTypeOf(attribute.Type()) == nullptr) {
    reason = fmt::format("its type, {}, is unknown", TypeName(attribute.Entry->Type));
  } else if (attribute.Name.Known && !IsAttributeName(name)) {
    reason = "an AttributeName is a letter, then one or more letters, digits and underscores";
  }
  return reason.empty() ? std::optional(std::move(name)) : std::nullopt;
}

class Exporter {
 public:
  Exporter(const Catalog& catalog, const RedfishNames& names)
      : catalog_(catalog), names_(names), offer_(OfferAttributes(catalog, NameInRegistry)) {}

  RedfishExport Run() {
    NameMenus();
    // Conditions may name later attributes.
    for (const OfferedAttribute& attribute : offer_.Attributes) {
      byKeyword_.emplace(attribute.Source->Name.Text, &attribute);
    }
    for (const OfferedAttribute& attribute : offer_.Attributes) {
      AddAttribute(attribute);
      AddDependencies(attribute);
    }
    Json registry{{"@odata.type", kRegistryType},
                  {"Id", names_.Id},
                  {"Name", "BIOS Attribute Registry"},
                  {"Language", names_.Language},
                  {"OwningEntity", names_.Owner},
                  {"RegistryVersion", names_.Version},
                  {"RegistryEntries",
                   {{"Attributes", std::move(attributes_)},
                    {"Menus", std::move(menus_)},
                    {"Dependencies", std::move(dependencies_)}}}};
    Json bios{{"@odata.id", names_.BiosUri}, {"@odata.type", kBiosType},       {"Id", "Bios"},
              {"Name", "BIOS Settings"},     {"AttributeRegistry", names_.Id}, {"Attributes", std::move(values_)}};
    if (!names_.SettingsUri.empty()) {
      bios["@Redfish.Settings"] = {{"@odata.type", kSettingsType},
                                   {"SettingsObject", {{"@odata.id", names_.SettingsUri}}},
                                   {"SupportedApplyTimes", {"OnReset"}}};
    }
    return {std::move(registry), std::move(bios), std::move(offer_.Left)};
  }

 private:
  void NameMenus() {
    std::set<std::string> taken;
    for (const CatalogAttribute& attribute : catalog_.Attributes) {
      if (attribute.Type() != BaseType::Collection) {
        continue;
      }
      const std::string name = attribute.Name.Known ? Without(attribute.Name.Text, '/') : "";
      if (name.empty()) {
        offer_.Leave(attribute, "menu", "it has no name");
      } else if (!taken.insert(name).second) {
        offer_.Leave(attribute, "menu", "an earlier collection has its name");
      } else {
        menuOf_[&attribute] = "./" + name;
        menus_.push_back({{"MenuName", name},
                          {"DisplayName", attribute.Display.value_or(attribute.Name.Text)},
                          {"DisplayOrder", menus_.size() + 1},
                          {"MenuPath", "./" + name}});
      }
    }
  }

  void AddAttribute(const OfferedAttribute& offered) {
    const CatalogAttribute& attribute = *offered.Source;
    Json json{{"AttributeName", offered.Name}, {"Type", RegistryTypeOf(attribute.Type())}};
    if (offered.Name != attribute.Name.Text) {
      json["UefiKeywordName"] = attribute.Name.Text;
    }
    json["DisplayName"] = attribute.Display.value_or(attribute.Name.Text);
    if (attribute.Help) {
      json["HelpText"] = *attribute.Help;
    }
    json["ReadOnly"] = attribute.Entry->IsReadOnly();
    json["DisplayOrder"] = attributes_.size() + 1;
    const CatalogAttribute* home = attribute.Collection ? &catalog_.Attributes[*attribute.Collection] : nullptr;
    const auto menu = menuOf_.find(home);
    json["MenuPath"] = menu != menuOf_.end() ? menu->second : "./";
    AddBounds(offered, json);
    AddExpression(attribute, json);
    attributes_.push_back(std::move(json));
    values_[offered.Name] = offered.Current;
  }

  void AddBounds(const OfferedAttribute& offered, Json& json) {
    const Bounds& bounds = offered.Source->Entry->Bounds;
    if (const auto* integer = std::get_if<IntegerBounds>(&bounds)) {
      json["LowerBound"] = integer->Lower;
      json["UpperBound"] = integer->Upper;
      json["ScalarIncrement"] = integer->Step;
    } else if (const auto* length = std::get_if<LengthBounds>(&bounds)) {
      json["MinLength"] = length->Minimum;
      json["MaxLength"] = length->Maximum;
    } else {
      Json& values = json["Value"] = Json::array();
      for (const CatalogValue* value : offered.Values) {
        values.push_back({{"ValueName", value->Name.Text},
                          {"ValueDisplayName", ParseKeyword(value->Display.value_or(value->Name.Text)).Bare}});
      }
    }
    if (!offered.Default.is_null()) {
      json["DefaultValue"] = offered.Default;
    }
  }

  void AddExpression(const CatalogAttribute& attribute, Json& json) {
    const std::string* text = attribute.Name.Expression();
    if (text == nullptr) {
      return;
    }
    if (const Expression expression(*text); expression.Problem().empty()) {
      json["ValueExpression"] = *text;
    } else {
      offer_.Leave(attribute, "expression", fmt::format("{}: {}", *text, expression.Problem()));
    }
  }

  // A condition on the name of a value forces that value. A condition on the attribute's name makes it read-only.
  void AddDependencies(const OfferedAttribute& attribute) {
    AddDependency(attribute, attribute.Source->Name, "ReadOnly", true);
    for (const CatalogValue& value : attribute.Source->Possible) {
      if (value.Name.Known) {
        AddDependency(attribute, value.Name, "CurrentValue", value.Name.Text);
      }
    }
  }

  // One entry for each attribute in the conditions. Every entry has the whole expression, joined by OR.
  void AddDependency(const OfferedAttribute& attribute, const CatalogName& name, const char* property,
                     const Json& target) {
    Json from = Json::array();
    std::vector<std::string> triggers;
    for (const Annotation& annotation : name.Annotations) {
      if (annotation.Kind == AnnotationKind::RegEx) {
        continue;
      }
      const OfferedAttribute* other = nullptr;
      const Json value = ConditionValue(annotation, other);
      if (value.is_null()) {
        offer_.Leave(*attribute.Source, "dependency",
                     annotation.Text + " names no exported attribute with such a value");
        continue;
      }
      Json term{{"MapFromAttribute", other->Name},
                {"MapFromProperty", "CurrentValue"},
                {"MapFromCondition", annotation.Kind == AnnotationKind::ForceIf ? "EQU" : "NEQ"},
                {"MapFromValue", value}};
      if (!from.empty()) {
        term["MapTerms"] = "OR";
      }
      from.push_back(std::move(term));
      if (std::ranges::find(triggers, other->Name) == triggers.end()) {
        triggers.push_back(other->Name);
      }
    }
    for (const std::string& trigger : triggers) {
      dependencies_.push_back({{"DependencyFor", trigger},
                               {"Type", "Map"},
                               {"Dependency",
                                {{"MapFrom", from},
                                 {"MapToAttribute", attribute.Name},
                                 {"MapToProperty", property},
                                 {"MapToValue", target}}}});
    }
  }

  // The value that the condition compares with; null if the condition never holds.
  Json ConditionValue(const Annotation& annotation, const OfferedAttribute*& other) const {
    const auto found = byKeyword_.find(annotation.Attribute);
    if (!annotation.IsForce() || found == byKeyword_.end()) {
      return {};
    }
    other = found->second;
    const BaseType type = other->Source->Type();
    if (type == BaseType::Integer) {
      std::uint64_t number = 0;
      const char* const end = annotation.Value.data() + annotation.Value.size();
      const auto [stop, error] = std::from_chars(annotation.Value.data(), end, number);
      return stop == end && error == std::errc{} ? Json(number) : Json();
    }
    const bool known = type == BaseType::String || std::ranges::any_of(other->Values, [&](const CatalogValue* value) {
                         return value->Name.Text == annotation.Value;
                       });
    return known ? Json(annotation.Value) : Json();
  }

  const Catalog& catalog_;
  const RedfishNames& names_;
  Offer offer_;
  std::map<std::string, const OfferedAttribute*> byKeyword_;  // by the name that conditions know
  std::map<const CatalogAttribute*, std::string> menuOf_;
  Json attributes_ = Json::array();
  Json menus_ = Json::array();
  Json dependencies_ = Json::array();
  Json values_ = Json::object();
};

}  // namespace

RedfishExport ExportRedfish(const Catalog& catalog, const RedfishNames& names) {
  return Exporter(catalog, names).Run();
}

}  // namespace corvane::inspect
