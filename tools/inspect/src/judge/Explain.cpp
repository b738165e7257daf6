/** @file
  `inspect explain`: what forces an attribute, what it forces, and the consequences of a planned change.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "judge/Explain.hpp"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "bytes/Text.hpp"
#include "judge/DependencyLint.hpp"

namespace corvane::inspect {
namespace {

using Json = nlohmann::ordered_json;

const char* VerbOf(Consequence::Kind kind) {
  switch (kind) {
    case Consequence::Kind::Sets:
      return "sets";
    case Consequence::Kind::Holds:
      return "holds";
    case Consequence::Kind::Frees:
      return "frees";
    case Consequence::Kind::Conflicts:
      return "conflicts with";
  }
  return "";
}

std::string NameOf(const Catalog& catalog, std::size_t attribute) {
  return catalog.Attributes[attribute].Name.Text;
}

std::string CurrentOf(const Catalog& catalog, std::size_t attribute) {
  const std::optional<std::size_t> current = catalog.Attributes[attribute].CurrentValue();
  return current ? DescribeSetting(catalog, attribute, *current) : NameOf(catalog, attribute) + "=?";
}

// "while WakeOnLan is not Disabled (is LanOnly: acts)".
std::string DescribeCondition(const Catalog& catalog, const Dependencies& dependencies, const Force& force) {
  std::string text = fmt::format("while {} is {}{}", force.Attribute, force.Inverted ? "not " : "", force.Condition);
  if (!force.By) {
    return text + ": there is no such attribute, so this never acts";
  }
  if (!force.When) {
    return text + fmt::format(": it has no such value, so this {} acts", force.Inverted ? "always" : "never");
  }
  const std::optional<bool> acts = dependencies.Acts(force);
  return text + (acts ? fmt::format(" ({}: {})", CurrentOf(catalog, *force.By), *acts ? "acts now" : "not now")
                      : std::string(" (its current value is not known)"));
}

std::string DescribeConsequence(const Catalog& catalog, const Consequence& consequence) {
  return fmt::format("{} {}, because of {}", VerbOf(consequence.What),
                     consequence.Value ? DescribeSetting(catalog, consequence.Attribute, *consequence.Value)
                                       : NameOf(catalog, consequence.Attribute),
                     consequence.Because);
}

std::string DescribePlan(const Catalog& catalog, const Plan& plan) {
  std::string text;
  for (const auto& [attribute, value] : plan) {
    text += (text.empty() ? "" : ", ") + DescribeSetting(catalog, attribute, value);
  }
  return text;
}

}  // namespace

std::vector<Consequence> FollowPlan(const Catalog& catalog, const Dependencies& dependencies, const Plan& plan) {
  std::vector<Consequence> consequences;
  std::map<std::size_t, std::size_t> planned(plan.begin(), plan.end());
  std::set<const Force*> conflicts;
  const auto because = [&](const Force& force) {
    const auto set = planned.find(*force.By);
    return fmt::format(
        "{} and {}",
        set != planned.end() ? DescribeSetting(catalog, *force.By, set->second) : CurrentOf(catalog, *force.By),
        force.Text);
  };
  // Each round sets an attribute that no earlier round set, so the loop ends.
  for (bool again = true; again;) {
    again = false;
    for (const Force& force : dependencies.All()) {
      if (force.IsHold() || !force.By || !planned.contains(*force.By) ||
          !dependencies.Acts(force, planned).value_or(false)) {
        continue;
      }
      const auto set = planned.find(force.Forced);
      const std::optional<std::size_t> current = catalog.Attributes[force.Forced].CurrentValue();
      if (set != planned.end()) {
        if (set->second != *force.Value && conflicts.insert(&force).second) {
          consequences.push_back({Consequence::Kind::Conflicts, force.Forced, set->second, because(force)});
        }
      } else if (current != force.Value) {
        consequences.push_back({Consequence::Kind::Sets, force.Forced, force.Value, because(force)});
        planned[force.Forced] = *force.Value;
        again = true;
      }
    }
  }
  for (const Force& force : dependencies.All()) {
    if (!force.IsHold() || !force.By || !planned.contains(*force.By)) {
      continue;
    }
    const bool before = dependencies.Acts(force).value_or(false);
    const bool after = dependencies.Acts(force, planned).value_or(false);
    if (before != after) {
      consequences.push_back(
          {after ? Consequence::Kind::Holds : Consequence::Kind::Frees, force.Forced, std::nullopt, because(force)});
    }
  }
  return consequences;
}

Explanation Explain(const Catalog& catalog, const Dependencies& dependencies, std::size_t attribute, const Plan& plan,
                    const std::vector<std::uint32_t>* dependencyList) {
  Explanation explanation;
  explanation.Attribute = attribute;
  explanation.OnTo = dependencies.OnTo(attribute);
  explanation.From = dependencies.From(attribute);
  if (!plan.empty()) {
    explanation.Plans.emplace_back(plan, FollowPlan(catalog, dependencies, plan));
  } else {
    const CatalogAttribute& of = catalog.Attributes[attribute];
    for (std::size_t value = 0; of.Type() == BaseType::Enumeration && value < of.Possible.size(); ++value) {
      const Plan one{{attribute, value}};
      if (of.Current != std::vector<std::size_t>{value}) {
        explanation.Plans.emplace_back(one, FollowPlan(catalog, dependencies, one));
      }
    }
  }
  const std::uint32_t token = catalog.Attributes[attribute].Token.value_or(0);
  explanation.IsDependedOn =
      std::any_of(explanation.From.begin(), explanation.From.end(), [](const Force* force) { return force->IsHold(); });
  explanation.IsCollected = DependencyTokens(catalog, dependencies).contains(token);
  if (dependencyList != nullptr && token != 0) {
    explanation.IsListed = std::find(dependencyList->begin(), dependencyList->end(), token) != dependencyList->end();
  }
  return explanation;
}

std::string ExplanationAsText(const Catalog& catalog, const Dependencies& dependencies, const Explanation& explanation,
                              const Style& style) {
  const CatalogAttribute& attribute = catalog.Attributes[explanation.Attribute];
  std::string out = fmt::format("{} {}{}\n", attribute.Entry->Handle, style.Strong(attribute.Name.Full),
                                attribute.Display ? fmt::format(" {}", QuoteUtf8(*attribute.Display)) : "");
  if (attribute.CurrentValue()) {
    out += fmt::format("  is {}\n", CurrentOf(catalog, explanation.Attribute));
  }
  out += explanation.OnTo.empty() ? "  nothing forces it\n" : "  forced by\n";
  for (const Force* force : explanation.OnTo) {
    out += fmt::format("    {} {}\n",
                       force->IsHold() ? "held" : fmt::format("set to {}", attribute.Possible[*force->Value].Name.Text),
                       DescribeCondition(catalog, dependencies, *force));
  }
  out += explanation.From.empty() ? "  it forces nothing\n" : "  forces\n";
  for (const Force* force : explanation.From) {
    out += fmt::format("    {} {}\n",
                       force->IsHold() ? "holds " + NameOf(catalog, force->Forced)
                                       : "sets " + DescribeSetting(catalog, force->Forced, *force->Value),
                       DescribeCondition(catalog, dependencies, *force));
  }
  for (const auto& [plan, consequences] : explanation.Plans) {
    out += fmt::format("  setting {}{}\n", DescribePlan(catalog, plan),
                       consequences.empty() ? " changes nothing else" : "");
    for (const Consequence& consequence : consequences) {
      out += fmt::format("    {}\n", DescribeConsequence(catalog, consequence));
    }
  }
  if (explanation.IsListed) {
    const std::string text =
        fmt::format("  \"PidDepList\" {} it, and keywords of other questions {} it{}\n",
                    *explanation.IsListed ? "has" : "does not have", explanation.IsDependedOn ? "name" : "do not name",
                    explanation.IsDependedOn && !explanation.IsCollected
                        ? " only after a known name, where the driver stops collecting"
                        : "");
    out += *explanation.IsListed == explanation.IsCollected ? text : style.Bad(text);
  }
  return out;
}

std::string ExplanationAsJson(const Catalog& catalog, const Dependencies& dependencies,
                              const Explanation& explanation) {
  const auto forces = [&](const std::vector<const Force*>& list) {
    Json all = Json::array();
    for (const Force* force : list) {
      const std::optional<bool> acts = dependencies.Acts(*force);
      all.push_back(
          {{"forced", NameOf(catalog, force->Forced)},
           {"value", force->Value ? Json(catalog.Attributes[force->Forced].Possible[*force->Value].Name.Text) : Json()},
           {"attribute", force->Attribute},
           {"condition", force->Condition},
           {"inverted", force->Inverted},
           {"resolved", force->When.has_value()},
           {"acts", acts ? Json(*acts) : Json()}});
    }
    return all;
  };
  Json plans = Json::array();
  for (const auto& [plan, consequences] : explanation.Plans) {
    Json list = Json::array();
    for (const Consequence& consequence : consequences) {
      list.push_back(
          {{"does", VerbOf(consequence.What)},
           {"attribute", NameOf(catalog, consequence.Attribute)},
           {"value", consequence.Value ? Json(catalog.Attributes[consequence.Attribute].NameOfValue(*consequence.Value))
                                       : Json()},
           {"because", consequence.Because}});
    }
    plans.push_back({{"set", DescribePlan(catalog, plan)}, {"consequences", std::move(list)}});
  }
  const CatalogAttribute& attribute = catalog.Attributes[explanation.Attribute];
  return Json{{"handle", attribute.Entry->Handle},
              {"name", attribute.Name.Full},
              {"forcedBy", forces(explanation.OnTo)},
              {"forces", forces(explanation.From)},
              {"plans", std::move(plans)},
              {"dependedOn", explanation.IsDependedOn},
              {"collected", explanation.IsCollected},
              {"listed", explanation.IsListed ? Json(*explanation.IsListed) : Json()}}
             .dump(2) +
         '\n';
}

}  // namespace corvane::inspect
