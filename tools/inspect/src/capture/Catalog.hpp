/** @file
  Catalog: the attributes of an image with names and texts in place of handles, so that two boots can be compared.

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

// A name as people and conditions know it, and what rides behind it in brackets. All text is UTF-8.
struct CatalogName {
  std::string Text;  // without annotations; "?" and the handle where it does not resolve
  std::string Full;  // with them
  std::vector<Annotation> Annotations;
  bool Known = false;   // the string table has it
  std::string Problem;  // what is wrong with these; empty when nothing is

  const std::string* Expression() const;  // unescaped; null = none
};

struct CatalogValue {
  CatalogName Name;
  std::optional<std::uint64_t> Setting;  // what the platform keeps for it; only the attribute stream tells
  std::optional<std::string> Display;    // where the pairing of texts is sure
};

struct CatalogAttribute {
  const AttributeEntry* Entry = nullptr;
  CatalogName Name;
  std::optional<std::uint32_t> Token;
  std::optional<std::uint16_t> SettingSize;
  std::optional<std::string> Display;  // both only where the pairing of texts is sure
  std::optional<std::string> Help;
  std::vector<CatalogValue> Possible;     // values, boot sources or configuration sets
  std::vector<std::size_t> Defaults;      // positions in Possible; those outside are left out
  std::vector<std::size_t> Current;       // likewise
  const inspect::Value* Value = nullptr;  // null without an entry of the attribute's own type
  std::vector<std::size_t> Members;       // of a collection: positions in the catalog
  std::optional<std::size_t> Collection;  // the first that has it as a member

  BaseType Type() const { return BaseType{BaseTypeOf(Entry->Type)}; }

  // A value is a position in Possible or, of an integer, the number itself.
  std::optional<std::size_t> FindValue(std::string_view text) const;
  std::optional<std::size_t> CurrentValue() const;  // none unless there is exactly one
  std::string NameOfValue(std::size_t value) const;
};

struct Catalog {
  std::vector<CatalogAttribute> Attributes;  // in table order
  std::string TextsMissing;                  // why some attributes have no texts; empty = all have theirs
  bool OfCache = false;                      // made of a cache, which never has boot configurations
};

// Points into the image. Texts are paired by the order of their creation.
Catalog MakeCatalog(const Image& image);

}  // namespace corvane::inspect
