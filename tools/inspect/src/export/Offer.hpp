/** @file
  Offer: the attributes that an export for other software has, and the parts that the export leaves out.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "capture/Catalog.hpp"

namespace corvane::inspect {

// An attribute, or a part of one, that has no place in an export.
struct LeftOut {
  std::uint16_t Handle = 0;
  std::string Attribute;
  std::string What;  // "attribute", "menu", "value", "expression", "dependency", "default", "current"
  std::string Reason;
};

struct ExportFile {
  std::string Path;  // below the folder of the export
  std::string Content;
  unsigned Mode = 0644;  // permissions
};

struct ExportResult {
  std::vector<ExportFile> Files;
  std::vector<LeftOut> Left;
  std::size_t Attributes = 0;  // exported
};

// An attribute with the names of the export.
struct OfferedAttribute {
  const CatalogAttribute* Source = nullptr;
  std::string Name;                         // no other attribute has it
  std::vector<const CatalogValue*> Values;  // their names are known and differ
  nlohmann::ordered_json Default;           // a number, the name of a value, or null
  nlohmann::ordered_json Current;           // likewise, or a text
};

struct Offer {
  std::vector<OfferedAttribute> Attributes;  // in table order
  std::vector<LeftOut> Left;

  void Leave(const CatalogAttribute& attribute, const char* what, std::string reason);
};

// The name of an attribute in an export. Without a name the attribute is left out for `reason`, or without a word if
// `reason` is empty.
using NameInExport = std::optional<std::string> (*)(const CatalogAttribute& attribute, std::string& reason);

Offer OfferAttributes(const Catalog& catalog, NameInExport nameOf);

}  // namespace corvane::inspect
