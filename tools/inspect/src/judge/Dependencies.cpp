/** @file
  Dependencies: which attribute's value forces which other attribute, as the annotations of names say.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "judge/Dependencies.hpp"

#include <functional>

namespace corvane::inspect {

Dependencies::Dependencies(const Catalog& catalog) : catalog_(catalog) {
  const std::vector<CatalogAttribute>& attributes = catalog.Attributes;
  for (std::size_t i = 0; i < attributes.size(); ++i) {
    byName_.try_emplace(attributes[i].Name.Text, i);
  }
  const auto add = [this, &attributes](std::size_t forced, std::optional<std::size_t> value, const CatalogName& name) {
    for (const Annotation& annotation : name.Annotations) {
      if (!annotation.IsForce()) {
        continue;
      }
      Force force{.Forced = forced,
                  .Value = value,
                  .Inverted = annotation.Kind == AnnotationKind::ForceIfNot,
                  .Text = annotation.Text,
                  .Attribute = annotation.Attribute,
                  .Condition = annotation.Value,
                  .By = Find(annotation.Attribute),
                  .When = std::nullopt};
      if (force.By) {
        const std::vector<CatalogValue>& possible = attributes[*force.By].Possible;
        const auto found = std::find_if(possible.begin(), possible.end(), [&annotation](const CatalogValue& candidate) {
          return candidate.Name.Text == annotation.Value;
        });
        force.When =
            found == possible.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - possible.begin()));
      }
      all_.push_back(std::move(force));
    }
  };
  for (std::size_t i = 0; i < attributes.size(); ++i) {
    add(i, std::nullopt, attributes[i].Name);
    for (std::size_t value = 0; value < attributes[i].Possible.size(); ++value) {
      add(i, value, attributes[i].Possible[value].Name);
    }
  }
}

std::optional<std::size_t> Dependencies::Find(std::string_view name) const {
  const auto found = byName_.find(name);
  return found == byName_.end() ? std::nullopt : std::optional(found->second);
}

std::vector<const Force*> Dependencies::OnTo(std::size_t attribute) const {
  std::vector<const Force*> forces;
  for (const Force& force : all_) {
    if (force.Forced == attribute) {
      forces.push_back(&force);
    }
  }
  return forces;
}

std::vector<const Force*> Dependencies::From(std::size_t attribute) const {
  std::vector<const Force*> forces;
  for (const Force& force : all_) {
    if (force.By == attribute) {
      forces.push_back(&force);
    }
  }
  return forces;
}

std::optional<bool> Dependencies::Acts(const Force& force, const std::map<std::size_t, std::size_t>& planned) const {
  if (!force.By || !force.When) {
    return std::nullopt;
  }
  const auto plan = planned.find(*force.By);
  const std::vector<std::size_t>& current = catalog_.Attributes[*force.By].Current;
  if (plan == planned.end() && current.size() != 1) {
    return std::nullopt;
  }
  const bool is = (plan != planned.end() ? plan->second : current.front()) == *force.When;
  return is != force.Inverted;
}

std::string DescribeSetting(const Catalog& catalog, std::size_t attribute, std::size_t value) {
  const CatalogAttribute& of = catalog.Attributes[attribute];
  return of.Name.Text + "=" + (value < of.Possible.size() ? of.Possible[value].Name.Text : "?");
}

}  // namespace corvane::inspect
