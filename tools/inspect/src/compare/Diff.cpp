/** @file
  `inspect diff`: what changed between two boots or firmware builds, by name and token.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "compare/Diff.hpp"

#include <set>

#include <nlohmann/json.hpp>

#include "bytes/Overloaded.hpp"
#include "bytes/Text.hpp"
#include "compare/DiffPairs.hpp"

namespace corvane::inspect {
namespace {

// When the change of a number is breaking.
enum class Breaks { Never, Always, Raised, Lowered, NotDivided };

bool IsBreaking(Breaks breaks, std::uint64_t older, std::uint64_t newer) {
  switch (breaks) {
    case Breaks::Never:
      return false;
    case Breaks::Always:
      return true;
    case Breaks::Raised:
      return newer > older;
    case Breaks::Lowered:
      return newer < older;
    case Breaks::NotDivided:  // with a divisor of the older step, every older value stays valid
      return newer == 0 || older % newer != 0;
  }
  return true;
}

struct NumberField {
  const char* What;
  Breaks Breaking;
  std::optional<std::uint64_t> (*Of)(const CatalogAttribute& attribute);
};

template <typename T, auto Member>
std::optional<std::uint64_t> BoundOf(const CatalogAttribute& attribute) {
  const auto* bounds = std::get_if<T>(&attribute.Entry->Bounds);
  return bounds != nullptr ? std::optional<std::uint64_t>(bounds->*Member) : std::nullopt;
}

constexpr NumberField kNumberFields[] = {
    {"token", Breaks::Always,
     [](const CatalogAttribute& attribute) -> std::optional<std::uint64_t> { return attribute.Token; }},
    {"setting-size", Breaks::Never,
     [](const CatalogAttribute& attribute) -> std::optional<std::uint64_t> { return attribute.SettingSize; }},
    {"lower-bound", Breaks::Raised, BoundOf<IntegerBounds, &IntegerBounds::Lower>},
    {"upper-bound", Breaks::Lowered, BoundOf<IntegerBounds, &IntegerBounds::Upper>},
    {"step", Breaks::NotDivided, BoundOf<IntegerBounds, &IntegerBounds::Step>},
    {"subtype", Breaks::Always, BoundOf<LengthBounds, &LengthBounds::Subtype>},
    {"min-length", Breaks::Raised, BoundOf<LengthBounds, &LengthBounds::Minimum>},
    {"max-length", Breaks::Lowered, BoundOf<LengthBounds, &LengthBounds::Maximum>},
    {"default-length", Breaks::Never, BoundOf<LengthBounds, &LengthBounds::DefaultLength>},
    {"boot-type", Breaks::Always, BoundOf<BootBounds, &BootBounds::ConfigType>},
    {"boot-modes", Breaks::Always, BoundOf<BootBounds, &BootBounds::Modes>},
    {"min-sources", Breaks::Raised, BoundOf<BootBounds, &BootBounds::MinimumSources>},
    {"max-sources", Breaks::Lowered, BoundOf<BootBounds, &BootBounds::MaximumSources>},
};

// A name that a cut table lost is not compared.
std::optional<std::string> NameOf(const CatalogName& name) {
  return name.Known ? std::optional(name.Text) : std::nullopt;
}

std::string JoinNames(const CatalogAttribute& attribute, const std::vector<std::size_t>& positions) {
  std::string text;
  for (const std::size_t position : positions) {
    text += (text.empty() ? "" : "|") + attribute.Possible[position].Name.Text;
  }
  return positions.empty() ? "-" : text;
}

// Names of values and their new texts. All attributes share the text of a name, so each text is reported once.
using ToldTexts = std::set<std::pair<std::string, std::string>>;

// The differences between an attribute of the older build and the same attribute of the newer build.
class AttributeDiff {
 public:
  AttributeDiff(const CatalogAttribute& older, const CatalogAttribute& newer, ToldTexts& told,
                std::vector<Difference>& differences)
      : older_(older),
        newer_(newer),
        told_(told),
        differences_(differences),
        values_(older.Possible.size(), newer.Possible.size()) {}

  void CompareHead() {
    CompareText("renamed", NameOf(older_.Name), NameOf(newer_.Name), true);
    CompareText("display-text", older_.Display, newer_.Display);
    if (older_.Display && newer_.Display) {  // a known display text means that the help text is known too
      CompareText("help-text", older_.Help.value_or(""), newer_.Help.value_or(""));
    }
    CompareText("type", TypeName(older_.Entry->Type), TypeName(newer_.Entry->Type), true);
    CompareText("read-only", older_.Entry->IsReadOnly() ? "yes" : "no", newer_.Entry->IsReadOnly() ? "yes" : "no",
                newer_.Entry->IsReadOnly());
    CompareExpression();
    CompareConditions("forced-if", older_.Name, newer_.Name, "");
    for (const NumberField& field : kNumberFields) {
      const auto before = field.Of(older_);
      const auto after = field.Of(newer_);
      if (before && after && *before != *after) {
        Add(field.What, fmt::to_string(*before), fmt::to_string(*after), IsBreaking(field.Breaking, *before, *after));
      }
    }
  }

  // Two values are the same if their names are equal, or else if the platform stores the same number for both.
  void ComparePossible() {
    const auto byName = [](const CatalogValue& value) { return NameOf(value.Name); };
    const auto bySetting = [](const CatalogValue& value) { return value.Setting; };
    PairBy(older_.Possible, newer_.Possible, byName, false, values_);
    PairBy(older_.Possible, newer_.Possible, bySetting, true, values_);
    std::vector<std::size_t> order;
    std::vector<std::size_t> kept;
    for (std::size_t i = 0; i < older_.Possible.size(); ++i) {
      if (!values_.Old[i]) {
        Add("value-removed", older_.Possible[i].Name.Text, std::nullopt, true);
        continue;
      }
      order.push_back(*values_.Old[i]);
      kept.push_back(i);
      CompareValue(older_.Possible[i], newer_.Possible[*values_.Old[i]]);
    }
    for (std::size_t i = 0; i < newer_.Possible.size(); ++i) {
      if (!values_.New[i]) {
        Add("value-added", std::nullopt, newer_.Possible[i].Name.Text);
      }
    }
    if (!FindMoved(order).empty()) {
      std::sort(order.begin(), order.end());
      Add("value-order", JoinNames(older_, kept), JoinNames(newer_, order));
    }
  }

  // If both current values equal their defaults, only the change of the default is reported.
  void CompareValues(bool current) {
    const bool defaultsDiffer = CompareDefaults();
    if (!current) {
      return;
    }
    if (IsAtDefault(older_) && IsAtDefault(newer_) && defaultsDiffer) {
      return;
    }
    if (!SamePositions(older_.Current, newer_.Current) || TextOf(older_) != TextOf(newer_)) {
      Add("current", ShowCurrent(older_), ShowCurrent(newer_));
    }
  }

 private:
  void Add(const char* what, std::optional<std::string> before, std::optional<std::string> after,
           bool breaking = false) {
    differences_.push_back({newer_.Name.Text, newer_.Token, what, std::move(before), std::move(after), breaking});
  }

  // A text that is unknown on one side is not compared.
  void CompareText(const char* what, const std::optional<std::string>& before, const std::optional<std::string>& after,
                   bool breaking = false) {
    if (before && after && *before != *after) {
      Add(what, *before, *after, breaking);
    }
  }

  void CompareExpression() {
    if (!older_.Name.Known || !newer_.Name.Known) {
      return;
    }
    const std::string* before = older_.Name.Expression();
    const std::string* after = newer_.Name.Expression();
    const auto text = [](const std::string* from) { return from != nullptr ? std::optional(*from) : std::nullopt; };
    if (text(before) != text(after)) {
      Add("expression", text(before), text(after), after != nullptr);
    }
  }

  // Reports added and removed annotations. An added annotation is breaking.
  void CompareConditions(const char* what, const CatalogName& older, const CatalogName& newer,
                         const std::string& prefix) {
    const auto compare = [&](const CatalogName& from, const CatalogName& against, bool isNew) {
      for (const Annotation& one : from.Annotations) {
        const bool kept =
            std::ranges::find(against.Annotations, one.Text, &Annotation::Text) != against.Annotations.end();
        if (one.Kind == AnnotationKind::RegEx || kept) {
          continue;
        }
        std::optional<std::string> text = prefix + one.Text;
        isNew ? Add(what, std::nullopt, std::move(text), true) : Add(what, std::move(text), std::nullopt);
      }
    };
    if (older.Known && newer.Known) {
      compare(older, newer, false);
      compare(newer, older, true);
    }
  }

  void CompareValue(const CatalogValue& before, const CatalogValue& after) {
    CompareText("value-renamed", NameOf(before.Name), NameOf(after.Name), true);
    if (before.Display && after.Display && *before.Display != *after.Display &&
        told_.emplace(after.Name.Full, *after.Display).second) {
      Add("value-text", before.Name.Text + ": " + *before.Display, after.Name.Text + ": " + *after.Display);
    }
    CompareConditions("value-forced-if", before.Name, after.Name, after.Name.Text + ": ");
    if (before.Setting && after.Setting && *before.Setting != *after.Setting) {
      Add("value-setting", fmt::format("{} = {}", before.Name.Text, *before.Setting),
          fmt::format("{} = {}", after.Name.Text, *after.Setting), true);
    }
  }

  bool SamePositions(const std::vector<std::size_t>& before, const std::vector<std::size_t>& after) const {
    return std::equal(before.begin(), before.end(), after.begin(), after.end(),
                      [this](std::size_t a, std::size_t b) { return values_.Old[a] == Partner(b); });
  }

  bool CompareDefaults() {
    if (!SamePositions(older_.Defaults, newer_.Defaults)) {
      Add("default", JoinNames(older_, older_.Defaults), JoinNames(newer_, newer_.Defaults));
      return true;
    }
    const auto* before = std::get_if<IntegerBounds>(&older_.Entry->Bounds);
    const auto* after = std::get_if<IntegerBounds>(&newer_.Entry->Bounds);
    if (before == nullptr || after == nullptr || before->Default == after->Default) {
      return false;
    }
    Add("default", fmt::to_string(before->Default), fmt::to_string(after->Default));
    return true;
  }

  static bool IsAtDefault(const CatalogAttribute& attribute) {
    const auto* bounds = std::get_if<IntegerBounds>(&attribute.Entry->Bounds);
    const auto* value = attribute.Value != nullptr ? std::get_if<IntegerValue>(attribute.Value) : nullptr;
    return bounds != nullptr ? value != nullptr && value->Value == bounds->Default
                             : !attribute.Defaults.empty() && attribute.Current == attribute.Defaults;
  }

  // The part of a current value that is no position among the possible values.
  static std::string TextOf(const CatalogAttribute& attribute) {
    if (attribute.Value == nullptr) {
      return attribute.Type() == BaseType::Password ? "not installed" : "?";
    }
    return std::visit(
        Overloaded{
            [](const auto&) -> std::string { return ""; },
            [](const StringValue& value) { return Utf8FromLatin1(value.Text); },
            [](const PasswordValue&) -> std::string { return "installed"; },
            [](const IntegerValue& value) { return fmt::to_string(value.Value); },
            [](const BootValue& value) { return fmt::format("type {} mode {}: ", value.ConfigType, value.Mode); },
        },
        *attribute.Value);
  }

  static std::string ShowCurrent(const CatalogAttribute& attribute) {
    const std::string text = TextOf(attribute);
    const bool listed = attribute.Value != nullptr && !attribute.Possible.empty();
    return listed ? text + JoinNames(attribute, attribute.Current) : text;
  }

  const CatalogAttribute& older_;
  const CatalogAttribute& newer_;
  ToldTexts& told_;
  std::vector<Difference>& differences_;
  Pairs values_;
};

class CatalogDiff {
 public:
  CatalogDiff(const Catalog& older, const Catalog& newer)
      : older_(older.Attributes),
        newer_(newer.Attributes),
        hasCache_(older.OfCache || newer.OfCache),
        pairs_(older_.size(), newer_.size()) {}

  std::vector<Difference> Run(bool values) {
    Pair();
    for (std::size_t i = 0; i < older_.size(); ++i) {
      if (!pairs_.Old[i] && IsComparable(older_[i])) {
        differences_.push_back(
            {older_[i].Name.Text, older_[i].Token, "removed", TypeName(older_[i].Entry->Type), std::nullopt, true});
      }
    }
    for (std::size_t i = 0; i < newer_.size(); ++i) {
      if (!pairs_.New[i]) {
        if (IsComparable(newer_[i])) {
          differences_.push_back(
              {newer_[i].Name.Text, newer_[i].Token, "added", std::nullopt, TypeName(newer_[i].Entry->Type), false});
        }
        continue;
      }
      const CatalogAttribute& before = older_[*pairs_.New[i]];
      AttributeDiff diff(before, newer_[i], told_, differences_);
      diff.CompareHead();
      if (before.Type() == newer_[i].Type()) {
        diff.ComparePossible();
        diff.CompareValues(values);
      }
      ComparePlace(*pairs_.New[i], i);
    }
    for (const auto& [home, members] : members_) {
      CompareOrder(members);
    }
    return std::move(differences_);
  }

 private:
  using Attributes = std::vector<CatalogAttribute>;

  // A cache never has boot configurations: a missing one was not removed.
  bool IsComparable(const CatalogAttribute& attribute) const {
    return !hasCache_ || attribute.Type() != BaseType::BootConfiguration;
  }

  // Pairs by name and token, then by token, which a renamed attribute keeps, then by name.
  void Pair() {
    const auto byBoth = [](const CatalogAttribute& attribute) {
      return attribute.Name.Known && attribute.Token ? std::optional(std::pair(attribute.Name.Text, *attribute.Token))
                                                     : std::nullopt;
    };
    const auto byToken = [](const CatalogAttribute& attribute) {
      return attribute.Token.value_or(0) != 0 ? attribute.Token : std::nullopt;
    };
    const auto byName = [](const CatalogAttribute& attribute) { return NameOf(attribute.Name); };
    PairBy(older_, newer_, byBoth, false, pairs_);
    PairBy(older_, newer_, byToken, true, pairs_);
    PairBy(older_, newer_, byName, false, pairs_);
    PairCollections();
  }

  // A collection has no token. A renamed collection is paired with the new collection of its first kept member.
  void PairCollections() {
    for (std::size_t i = 0; i < older_.size(); ++i) {
      const std::vector<std::size_t>& members = older_[i].Members;
      const auto kept =
          std::ranges::find_if(members, [this](std::size_t member) { return pairs_.Old[member].has_value(); });
      if (pairs_.Old[i] || kept == members.end()) {
        continue;
      }
      const Partner home = newer_[*pairs_.Old[*kept]].Collection;
      if (home && !pairs_.New[*home]) {
        pairs_.Old[i] = home;
        pairs_.New[*home] = i;
      }
    }
  }

  // Reports members that changed their collection. Added and removed attributes are reported elsewhere.
  void ComparePlace(std::size_t before, std::size_t after) {
    const Partner oldHome = older_[before].Collection;
    const Partner newHome = newer_[after].Collection;
    const Partner sameHome = oldHome ? pairs_.Old[*oldHome] : std::nullopt;
    if (newHome == sameHome && oldHome.has_value() == newHome.has_value()) {
      members_[newHome].emplace_back(before, after);
      return;
    }
    const auto nameOf = [](const Attributes& attributes, Partner home) {
      return home ? std::optional(attributes[*home].Name.Text) : std::nullopt;
    };
    differences_.push_back({newer_[after].Name.Text, newer_[after].Token, "collection", nameOf(older_, oldHome),
                            nameOf(newer_, newHome), false});
  }

  void CompareOrder(const std::vector<std::pair<std::size_t, std::size_t>>& members) {
    std::vector<std::size_t> order;
    order.reserve(members.size());
    std::vector<std::size_t> sorted;
    for (const auto& [before, after] : members) {  // in the newer order
      order.push_back(before);
    }
    sorted = order;
    std::sort(sorted.begin(), sorted.end());
    for (const std::size_t position : FindMoved(order)) {
      const auto [before, after] = members[position];
      const auto place = std::lower_bound(sorted.begin(), sorted.end(), before);
      const auto behind = [](const CatalogAttribute* attribute) {
        return attribute != nullptr ? "after " + attribute->Name.Text : std::string("first");
      };
      differences_.push_back({newer_[after].Name.Text, newer_[after].Token, "order",
                              behind(place == sorted.begin() ? nullptr : &older_[*(place - 1)]),
                              behind(position == 0 ? nullptr : &newer_[members[position - 1].second])});
    }
  }

  const Attributes& older_;
  const Attributes& newer_;
  bool hasCache_;
  Pairs pairs_;
  std::map<Partner, std::vector<std::pair<std::size_t, std::size_t>>> members_;  // that stayed, by newer collection
  ToldTexts told_;
  std::vector<Difference> differences_;
};

// Explains two current values of an integer setting of which one is the low byte of the other.
std::string DescribeLowByte(const Difference& one) {
  const auto isNumber = [](const std::optional<std::string>& text) {
    return text && !text->empty() && text->size() < 20 && text->find_first_not_of("0123456789") == text->npos;
  };
  if (one.What != "current" || one.Token.value_or(0) == 0 || !isNumber(one.Old) || !isNumber(one.New)) {
    return "";
  }
  const auto [low, high] = std::minmax({std::stoull(*one.Old), std::stoull(*one.New)});
  return high > 0xFF && low == (high & 0xFF) ? " (a boot from the cache reads the low byte alone)" : "";
}

}  // namespace

std::vector<Difference> DiffCatalogs(const Catalog& older, const Catalog& newer, bool values) {
  return CatalogDiff(older, newer).Run(values);
}

std::string DiffAsText(const std::vector<Difference>& differences, const Style& style) {
  std::string text;
  const auto count =
      std::count_if(differences.begin(), differences.end(), [](const auto& one) { return one.Breaking; });
  for (const bool breaking : {true, false}) {
    if (breaking ? count == 0 : count == std::ssize(differences)) {
      continue;
    }
    text += breaking ? style.Bad("breaking") + '\n' : style.Strong("other") + '\n';
    for (const Difference& one : differences) {
      if (one.Breaking == breaking) {
        const std::string token = one.Token.value_or(0) != 0 ? fmt::format(" ({})", *one.Token) : "";
        text += fmt::format("  {}{} {}: {} -> {}{}\n", PrintableUtf8(one.Attribute), token, one.What,
                            one.Old ? PrintableUtf8(*one.Old) : "-", one.New ? PrintableUtf8(*one.New) : "-",
                            DescribeLowByte(one));
      }
    }
  }
  return text + fmt::format("{}, {} breaking\n", CountOf(differences.size(), "difference"), count);
}

nlohmann::ordered_json DifferencesAsJson(const std::vector<Difference>& differences) {
  using Json = nlohmann::ordered_json;
  const auto text = [](const std::optional<std::string>& value) { return value ? Json(*value) : Json(); };
  Json list = Json::array();
  for (const Difference& one : differences) {
    list.push_back({{"attribute", one.Attribute},
                    {"token", one.Token ? Json(*one.Token) : Json()},
                    {"what", one.What},
                    {"old", text(one.Old)},
                    {"new", text(one.New)},
                    {"breaking", one.Breaking}});
  }
  return list;
}

}  // namespace corvane::inspect
