/** @file
  Catalog: the attributes of an image with names and texts instead of handles, so that boots are comparable.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "capture/Image.hpp"
#include "capture/Keywords.hpp"

namespace corvane::inspect {

// A name as people and conditions use it, and its annotations. All text is UTF-8.
struct CatalogName {
  std::string Text;  // without annotations; "?" and the handle if the handle does not resolve
  std::string Full;  // with them
  std::vector<Annotation> Annotations;
  bool Known = false;   // the string table has it
  std::string Problem;  // what is wrong with the annotations; empty if nothing is wrong

  const std::string* Expression() const;  // unescaped; null = none
};

struct CatalogValue {
  CatalogName Name;
  std::optional<std::uint64_t> Setting;  // number that the platform stores; only the attribute stream has it
  std::optional<std::string> Display;    // if the pairing of texts is proven
};

struct CatalogAttribute {
  const AttributeEntry* Entry = nullptr;
  CatalogName Name;
  std::optional<std::uint32_t> Token;
  std::optional<std::uint16_t> SettingSize;
  std::optional<std::string> Display;  // both only if the pairing of texts is proven
  std::optional<std::string> Help;
  std::vector<CatalogValue> Possible;     // values, boot sources or configuration sets
  std::vector<std::size_t> Defaults;      // positions in Possible; indices outside are left out
  std::vector<std::size_t> Current;       // likewise
  const inspect::Value* Value = nullptr;  // null if the table has no value of the attribute's type
  std::vector<std::size_t> Members;       // of a collection: positions in the catalog
  std::optional<std::size_t> Collection;  // the first collection with this member

  BaseType Type() const { return BaseType{BaseTypeOf(Entry->Type)}; }

  // A value is a position in Possible. For an integer, the value is the number itself.
  std::optional<std::size_t> FindValue(std::string_view text) const;
  std::optional<std::size_t> CurrentValue() const;  // empty unless there is exactly one
  std::string NameOfValue(std::size_t value) const;
};

struct Catalog {
  std::vector<CatalogAttribute> Attributes;  // in table order
  std::string TextsMissing;                  // why some attributes have no texts; empty if all have texts
  bool OfCache = false;                      // made of a cache, which never has boot configurations
};

// The catalog points into the image.
Catalog MakeCatalog(const Image& image);

}  // namespace corvane::inspect
