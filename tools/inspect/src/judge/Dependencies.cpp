/** @file
  Dependencies: which attribute forces which other attribute, by the annotations of names.

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
        force.When = attributes[*force.By].FindValue(annotation.Value);
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
  const std::optional<std::size_t> value =
      plan != planned.end() ? std::optional(plan->second) : catalog_.Attributes[*force.By].CurrentValue();
  return value ? std::optional((value == force.When) != force.Inverted) : std::nullopt;
}

std::string DescribeSetting(const Catalog& catalog, std::size_t attribute, std::size_t value) {
  const CatalogAttribute& of = catalog.Attributes[attribute];
  return of.Name.Text + "=" + of.NameOfValue(value);
}

}  // namespace corvane::inspect
