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
constexpr const char* kLanguage = "en-US";

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

class Exporter {
 public:
  Exporter(const Catalog& catalog, const RedfishNames& names) : catalog_(catalog), names_(names) {}

  RedfishExport Run() {
    NameMenus();
    NameAttributes();
    for (const CatalogAttribute& attribute : catalog_.Attributes) {
      if (nameOf_.contains(&attribute)) {
        AddAttribute(attribute);
        AddDependencies(attribute);
      }
    }
    Json registry{{"@odata.type", kRegistryType},
                  {"Id", names_.Id},
                  {"Name", "BIOS Attribute Registry"},
                  {"Language", kLanguage},
                  {"OwningEntity", names_.Owner},
                  {"RegistryVersion", names_.Version},
                  {"RegistryEntries",
                   {{"Attributes", std::move(attributes_)},
                    {"Menus", std::move(menus_)},
                    {"Dependencies", std::move(dependencies_)}}}};
    Json bios{{"@odata.id", names_.BiosUri}, {"@odata.type", kBiosType},       {"Id", "Bios"},
              {"Name", "BIOS Settings"},     {"AttributeRegistry", names_.Id}, {"Attributes", std::move(values_)}};
    return {std::move(registry), std::move(bios), std::move(left_)};
  }

 private:
  void Leave(const CatalogAttribute& attribute, const char* what, std::string reason) {
    left_.push_back({attribute.Entry->Handle, attribute.Name.Text, what, std::move(reason)});
  }

  void NameMenus() {
    std::set<std::string> taken;
    for (const CatalogAttribute& attribute : catalog_.Attributes) {
      if (attribute.Type() != BaseType::Collection) {
        continue;
      }
      const std::string name = attribute.Name.Known ? Without(attribute.Name.Text, '/') : "";
      if (name.empty()) {
        Leave(attribute, "menu", "it has no name");
      } else if (!taken.insert(name).second) {
        Leave(attribute, "menu", "an earlier collection has its name");
      } else {
        menuOf_[&attribute] = "./" + name;
        menus_.push_back({{"MenuName", name},
                          {"DisplayName", attribute.Display.value_or(attribute.Name.Text)},
                          {"DisplayOrder", menus_.size() + 1},
                          {"MenuPath", "./" + name}});
      }
    }
  }

  // Selects the exported attributes first, because conditions may name later attributes.
  void NameAttributes() {
    for (const CatalogAttribute& attribute : catalog_.Attributes) {
      if (attribute.Type() == BaseType::Collection) {
        continue;
      }
      const std::string name = Without(attribute.Name.Text, ' ');
      if (attribute.Type() == BaseType::BootConfiguration) {
        Leave(attribute, "attribute",
              "a boot order is no attribute type there: its place is Boot.BootOrder of the system");
      } else if (RegistryTypeOf(attribute.Type()) == nullptr) {
        Leave(attribute, "attribute", fmt::format("its type, {}, is unknown", TypeName(attribute.Entry->Type)));
      } else if (!attribute.Name.Known) {
        Leave(attribute, "attribute", "the string table does not have its name");
      } else if (!IsAttributeName(name)) {
        Leave(attribute, "attribute", "an AttributeName is two or more letters, digits and underscores after a letter");
      } else if (!byName_.emplace(name, &attribute).second) {
        Leave(attribute, "attribute", fmt::format("an earlier attribute is named {}", name));
      } else {
        byKeyword_.emplace(attribute.Name.Text, &attribute);
        nameOf_[&attribute] = name;
      }
    }
  }

  void AddAttribute(const CatalogAttribute& attribute) {
    const std::string& name = nameOf_[&attribute];
    Json json{{"AttributeName", name}, {"Type", RegistryTypeOf(attribute.Type())}};
    if (name != attribute.Name.Text) {
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
    AddBounds(attribute, json);
    AddExpression(attribute, json);
    attributes_.push_back(std::move(json));
    values_[name] = CurrentOf(attribute);
  }

  void AddBounds(const CatalogAttribute& attribute, Json& json) {
    if (const auto* integer = std::get_if<IntegerBounds>(&attribute.Entry->Bounds)) {
      json["LowerBound"] = integer->Lower;
      json["UpperBound"] = integer->Upper;
      json["ScalarIncrement"] = integer->Step;
      json["DefaultValue"] = integer->Default;
    } else if (const auto* length = std::get_if<LengthBounds>(&attribute.Entry->Bounds)) {
      json["MinLength"] = length->Minimum;
      json["MaxLength"] = length->Maximum;
    } else {
      AddValues(attribute, json);
    }
  }

  void AddValues(const CatalogAttribute& attribute, Json& json) {
    Json values = Json::array();
    std::set<std::string> taken;
    for (const CatalogValue& value : attribute.Possible) {
      if (!value.Name.Known || !taken.insert(value.Name.Text).second) {
        Leave(attribute, "value",
              value.Name.Known ? fmt::format("an earlier value is named {}", value.Name.Text)
                               : "the string table does not have its name");
        continue;
      }
      values.push_back({{"ValueName", value.Name.Text},
                        {"ValueDisplayName", ParseKeyword(value.Display.value_or(value.Name.Text)).Bare}});
    }
    json["Value"] = std::move(values);
    if (attribute.Type() == BaseType::Enumeration) {
      if (const Json name = NameAt(attribute, attribute.Defaults); !name.is_null()) {
        json["DefaultValue"] = name;
      } else {
        Leave(attribute, "default", "no value of a name is its default");
      }
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
      Leave(attribute, "expression", fmt::format("{}: {}", *text, expression.Problem()));
    }
  }

  static Json NameAt(const CatalogAttribute& attribute, const std::vector<std::size_t>& positions) {
    if (positions.size() != 1 || !attribute.Possible[positions.front()].Name.Known) {
      return {};
    }
    return attribute.Possible[positions.front()].Name.Text;
  }

  Json CurrentOf(const CatalogAttribute& attribute) {
    Json current;
    if (attribute.Type() == BaseType::Password) {
      return current;  // a password is null: it is never read back
    }
    if (attribute.Value != nullptr) {
      if (const auto* text = std::get_if<StringValue>(attribute.Value)) {
        current = Utf8FromLatin1(text->Text);
      } else if (const auto* integer = std::get_if<IntegerValue>(attribute.Value)) {
        current = integer->Value;
      } else {
        current = NameAt(attribute, attribute.Current);
      }
    }
    if (current.is_null()) {
      Leave(attribute, "current", "the value table has no value of its own type and of a name for it");
    }
    return current;
  }

  // A condition on the name of a value forces that value. A condition on the attribute's name makes it read-only.
  void AddDependencies(const CatalogAttribute& attribute) {
    AddDependency(attribute, attribute.Name, "ReadOnly", true);
    for (const CatalogValue& value : attribute.Possible) {
      if (value.Name.Known) {
        AddDependency(attribute, value.Name, "CurrentValue", value.Name.Text);
      }
    }
  }

  // One entry for each attribute in the conditions. Every entry has the whole expression, joined by OR.
  void AddDependency(const CatalogAttribute& attribute, const CatalogName& name, const char* property,
                     const Json& target) {
    Json from = Json::array();
    std::vector<std::string> triggers;
    for (const Annotation& annotation : name.Annotations) {
      if (annotation.Kind == AnnotationKind::RegEx) {
        continue;
      }
      const CatalogAttribute* other = nullptr;
      const Json value = ConditionValue(annotation, other);
      if (value.is_null()) {
        Leave(attribute, "dependency", annotation.Text + " names no exported attribute with such a value");
        continue;
      }
      Json term{{"MapFromAttribute", nameOf_[other]},
                {"MapFromProperty", "CurrentValue"},
                {"MapFromCondition", annotation.Kind == AnnotationKind::ForceIf ? "EQU" : "NEQ"},
                {"MapFromValue", value}};
      if (!from.empty()) {
        term["MapTerms"] = "OR";
      }
      from.push_back(std::move(term));
      if (std::ranges::find(triggers, nameOf_[other]) == triggers.end()) {
        triggers.push_back(nameOf_[other]);
      }
    }
    for (const std::string& trigger : triggers) {
      dependencies_.push_back({{"DependencyFor", trigger},
                               {"Type", "Map"},
                               {"Dependency",
                                {{"MapFrom", from},
                                 {"MapToAttribute", nameOf_[&attribute]},
                                 {"MapToProperty", property},
                                 {"MapToValue", target}}}});
    }
  }

  // The value that the condition compares with; null if the condition never holds.
  Json ConditionValue(const Annotation& annotation, const CatalogAttribute*& other) const {
    const auto found = byKeyword_.find(annotation.Attribute);
    if (!annotation.IsForce() || found == byKeyword_.end()) {
      return {};
    }
    other = found->second;
    if (other->Type() == BaseType::Integer) {
      std::uint64_t number = 0;
      const char* const end = annotation.Value.data() + annotation.Value.size();
      const auto [stop, error] = std::from_chars(annotation.Value.data(), end, number);
      return stop == end && error == std::errc{} ? Json(number) : Json();
    }
    const bool known = other->Type() == BaseType::String ||
                       std::ranges::any_of(other->Possible, [&annotation](const CatalogValue& value) {
                         return value.Name.Known && value.Name.Text == annotation.Value;
                       });
    return known ? Json(annotation.Value) : Json();
  }

  const Catalog& catalog_;
  const RedfishNames& names_;
  std::map<std::string, const CatalogAttribute*> byName_;     // by AttributeName
  std::map<std::string, const CatalogAttribute*> byKeyword_;  // by the name that conditions know
  std::map<const CatalogAttribute*, std::string> nameOf_;     // those that have a place
  std::map<const CatalogAttribute*, std::string> menuOf_;
  Json attributes_ = Json::array();
  Json menus_ = Json::array();
  Json dependencies_ = Json::array();
  Json values_ = Json::object();
  std::vector<LeftOut> left_;
};

}  // namespace

RedfishExport ExportRedfish(const Catalog& catalog, const RedfishNames& names) {
  return Exporter(catalog, names).Run();
}

}  // namespace corvane::inspect
