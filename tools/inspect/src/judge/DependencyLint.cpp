/** @file
  DependencyLint: annotations without a target, cycles, and contradictions.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "judge/DependencyLint.hpp"

#include <functional>
#include <map>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "bytes/Text.hpp"

namespace corvane::inspect {
namespace {

// An attribute and its value. For a hold, which sets no value, the value is 0.
using Setting = std::pair<std::size_t, std::size_t>;
using Graph = std::map<Setting, std::set<Setting>>;

// The values at which a force acts. For an integer, only the number in the condition is known.
std::set<std::size_t> Conditions(const Catalog& catalog, const Force& force) {
  std::set<std::size_t> values;
  if (catalog.Attributes[*force.By].Type() == BaseType::Integer && !force.Inverted) {
    values.insert(*force.When);
  }
  for (std::size_t value = 0; value < catalog.Attributes[*force.By].Possible.size(); ++value) {
    if ((value == *force.When) != force.Inverted) {
      values.insert(value);
    }
  }
  return values;
}

bool IsResolved(const Force& force) {
  return force.By && force.When;
}

Graph ForcedValues(const Catalog& catalog, const Dependencies& dependencies) {
  Graph graph;
  for (const Force& force : dependencies.All()) {
    if (IsResolved(force) && !force.IsHold()) {
      for (const std::size_t value : Conditions(catalog, force)) {
        graph[{*force.By, value}].insert({force.Forced, *force.Value});
      }
    }
  }
  return graph;
}

Graph HeldAttributes(const Dependencies& dependencies) {
  Graph graph;
  for (const Force& force : dependencies.All()) {
    if (IsResolved(force) && force.IsHold()) {
      graph[{*force.By, 0}].insert({force.Forced, 0});
    }
  }
  return graph;
}

// Finds one cycle of each connected group of cycles. A cycle begins with its lowest member.
std::set<std::vector<Setting>> FindCycles(const Graph& graph) {
  std::set<std::vector<Setting>> cycles;
  std::set<Setting> done;
  for (const auto& [start, ignored] : graph) {
    if (done.contains(start)) {
      continue;
    }
    // Depth-first search without recursion: chains of names from an input file may be long.
    std::vector<Setting> path{start};
    std::vector<std::vector<Setting>> open;
    std::set<Setting> onPath{start};
    const auto edges = [&graph](const Setting& from) {
      const auto found = graph.find(from);
      return found == graph.end() ? std::vector<Setting>()
                                  : std::vector<Setting>(found->second.begin(), found->second.end());
    };
    open.push_back(edges(start));
    while (!path.empty()) {
      if (open.back().empty()) {
        done.insert(path.back());
        onPath.erase(path.back());
        path.pop_back();
        open.pop_back();
        continue;
      }
      const Setting next = open.back().back();
      open.back().pop_back();
      if (onPath.contains(next)) {
        std::vector<Setting> cycle(std::find(path.begin(), path.end(), next), path.end());
        std::rotate(cycle.begin(), std::min_element(cycle.begin(), cycle.end()), cycle.end());
        cycles.insert(std::move(cycle));
      } else if (!done.contains(next)) {
        path.push_back(next);
        onPath.insert(next);
        open.push_back(edges(next));
      }
    }
  }
  return cycles;
}

class Finder {
 public:
  Finder(const Catalog& catalog, const Dependencies& dependencies) : catalog_(catalog), dependencies_(dependencies) {}

  std::vector<Problem> Run() {
    for (const Force& force : dependencies_.All()) {
      FindDangling(force);
      FindUnmet(force);
    }
    const Graph forced = ForcedValues(catalog_, dependencies_);
    for (const auto& cycle : FindCycles(forced)) {
      AddCycle(
          cycle, [this](const Setting& at) { return DescribeSetting(catalog_, at.first, at.second); }, "forces");
    }
    for (const auto& cycle : FindCycles(HeldAttributes(dependencies_))) {
      AddCycle(
          cycle, [this](const Setting& at) { return NameOf(at.first); }, "holds");
    }
    FindConflicts();
    FindSelfDefeat(forced);
    return std::move(problems_);
  }

 private:
  std::string NameOf(std::size_t attribute) const { return catalog_.Attributes[attribute].Name.Text; }
  std::string Whose(const Force& force) const {
    return QuoteUtf8(force.IsHold() ? NameOf(force.Forced) : DescribeSetting(catalog_, force.Forced, *force.Value));
  }

  void FindDangling(const Force& force) {
    if (!force.By) {
      problems_.push_back(
          {"annotation-dangling", fmt::format("{} of {} names an unknown attribute: {}.", QuoteUtf8(force.Text),
                                              Whose(force), QuoteUtf8(force.Attribute))});
    } else if (!force.When) {
      problems_.push_back({"annotation-dangling",
                           fmt::format("{} of {} names a value that {} does not have: {}.", QuoteUtf8(force.Text),
                                       Whose(force), QuoteUtf8(force.Attribute), QuoteUtf8(force.Condition))});
    }
  }

  void FindUnmet(const Force& force) {
    const std::vector<std::size_t>& current = catalog_.Attributes[force.Forced].Current;
    if (!force.IsHold() && dependencies_.Acts(force).value_or(false) && current.size() == 1 &&
        current.front() != *force.Value) {
      problems_.push_back({"dependency-unmet",
                           fmt::format("{} is forced by {}, and the value is {}.", Whose(force), QuoteUtf8(force.Text),
                                       QuoteUtf8(DescribeSetting(catalog_, force.Forced, current.front()))),
                           true});
    }
  }

  void AddCycle(const std::vector<Setting>& cycle, const std::function<std::string(const Setting&)>& describe,
                const char* verb) {
    std::string text = describe(cycle.front());
    for (std::size_t i = 1; i <= cycle.size(); ++i) {
      text += fmt::format(" {} {}", verb, describe(cycle[i % cycle.size()]));
    }
    problems_.push_back({"dependency-cycle", text + "."});
  }

  // Finds two forces that may act at once and set one attribute to different values.
  void FindConflicts() {
    for (std::size_t i = 0; i < catalog_.Attributes.size(); ++i) {
      const std::vector<const Force*> forces = ForcesOfValues(i);
      for (std::size_t first = 0; first < forces.size(); ++first) {
        for (std::size_t second = first + 1; second < forces.size(); ++second) {
          if (CanConflict(*forces[first], *forces[second])) {
            problems_.push_back(
                {"dependency-contradiction",
                 fmt::format("{} and {} are forced at once by {} and {}.", Whose(*forces[first]),
                             Whose(*forces[second]), QuoteUtf8(forces[first]->Text), QuoteUtf8(forces[second]->Text))});
          }
        }
      }
    }
  }

  std::vector<const Force*> ForcesOfValues(std::size_t attribute) const {
    std::vector<const Force*> forces = dependencies_.OnTo(attribute);
    std::erase_if(forces, [](const Force* force) { return force->IsHold() || !IsResolved(*force); });
    return forces;
  }

  bool CanConflict(const Force& first, const Force& second) const {
    const std::set<std::size_t> one = Conditions(catalog_, first);
    const std::set<std::size_t> other = Conditions(catalog_, second);
    const bool same = *first.Value == *second.Value;
    if (first.By != second.By) {
      return !same && !one.empty() && !other.empty();
    }
    std::set<std::size_t> both;
    std::set_intersection(one.begin(), one.end(), other.begin(), other.end(), std::inserter(both, both.end()));
    return !same && !both.empty();
  }

  // Finds a value that leads to another value of the same attribute.
  void FindSelfDefeat(const Graph& forced) {
    for (const auto& [start, ignored] : forced) {
      std::set<Setting> reached{start};
      std::vector<Setting> next{start};
      while (!next.empty()) {
        const Setting from = next.back();
        next.pop_back();
        const auto edges = forced.find(from);
        for (const Setting& to : edges == forced.end() ? std::set<Setting>() : edges->second) {
          if (reached.insert(to).second) {
            next.push_back(to);
          }
        }
      }
      for (const Setting& end : reached) {
        if (end.first == start.first && end.second != start.second) {
          problems_.push_back(
              {"dependency-contradiction", fmt::format("{} forces values that lead to {}.",
                                                       QuoteUtf8(DescribeSetting(catalog_, start.first, start.second)),
                                                       QuoteUtf8(DescribeSetting(catalog_, end.first, end.second)))});
        }
      }
    }
  }

  const Catalog& catalog_;
  const Dependencies& dependencies_;
  std::vector<Problem> problems_;
};

}  // namespace

std::vector<Problem> FindDependencyProblems(const Catalog& catalog, const Dependencies& dependencies) {
  return Finder(catalog, dependencies).Run();
}

std::set<std::uint32_t> DependencyTokens(const Catalog& catalog, const Dependencies& dependencies) {
  constexpr std::size_t kLongestName = 50;  // Kept for compatibility: a longer name drops the whole list.
  std::set<std::string> names;
  std::set<std::uint32_t> tokens;
  for (const CatalogAttribute& attribute : catalog.Attributes) {
    const bool annotated = !attribute.Name.Annotations.empty();
    if (annotated && attribute.Token.value_or(0) != 0 && attribute.Name.Text.size() > kLongestName) {
      return {};
    }
    for (const Annotation& annotation : attribute.Name.Annotations) {
      if (!annotation.IsForce() || attribute.Token.value_or(0) == 0) {
        continue;
      }
      if (annotation.Attribute.size() > kLongestName) {
        return {};
      }
      // Kept for compatibility: after a name that is already known, the rest of the keyword is ignored.
      if (!names.insert(annotation.Attribute).second) {
        break;
      }
      const std::optional<std::size_t> found = dependencies.Find(annotation.Attribute);
      if (found && catalog.Attributes[*found].Token.value_or(0) != 0) {
        tokens.insert(*catalog.Attributes[*found].Token);
      }
    }
  }
  return tokens;
}

}  // namespace corvane::inspect
