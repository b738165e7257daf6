/** @file
  Offer: the attributes that an export for other software has, and the parts that the export leaves out.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "export/Offer.hpp"

#include <set>

#include "bytes/Text.hpp"

namespace corvane::inspect {
namespace {

using Json = nlohmann::ordered_json;

Json NameAt(const CatalogAttribute& attribute, const std::vector<std::size_t>& positions) {
  if (positions.size() != 1 || !attribute.Possible[positions.front()].Name.Known) {
    return {};
  }
  return attribute.Possible[positions.front()].Name.Text;
}

void OfferValues(OfferedAttribute& offered, Offer& offer) {
  const CatalogAttribute& attribute = *offered.Source;
  std::set<std::string> taken;
  for (const CatalogValue& value : attribute.Possible) {
    if (!value.Name.Known) {
      offer.Leave(attribute, "value", "the string table does not have its name");
    } else if (!taken.insert(value.Name.Text).second) {
      offer.Leave(attribute, "value", fmt::format("an earlier value is named {}", value.Name.Text));
    } else {
      offered.Values.push_back(&value);
    }
  }
}

void OfferDefault(OfferedAttribute& offered, Offer& offer) {
  const CatalogAttribute& attribute = *offered.Source;
  if (const auto* bounds = std::get_if<IntegerBounds>(&attribute.Entry->Bounds)) {
    offered.Default = bounds->Default;
  } else if (attribute.Type() == BaseType::Enumeration) {
    offered.Default = NameAt(attribute, attribute.Defaults);
    if (offered.Default.is_null()) {
      offer.Leave(attribute, "default", "its default is not a value with a name");
    }
  }
}

void OfferCurrent(OfferedAttribute& offered, Offer& offer) {
  const CatalogAttribute& attribute = *offered.Source;
  if (attribute.Type() == BaseType::Password) {
    return;  // a password is never read back
  }
  if (attribute.Value != nullptr) {
    if (const auto* text = std::get_if<StringValue>(attribute.Value)) {
      offered.Current = Utf8FromLatin1(text->Text);
    } else if (const auto* integer = std::get_if<IntegerValue>(attribute.Value)) {
      offered.Current = integer->Value;
    } else {
      offered.Current = NameAt(attribute, attribute.Current);
    }
  }
  if (offered.Current.is_null()) {
    offer.Leave(attribute, "current", "the value table has no value of its type, or only one without a name");
  }
}

}  // namespace

void Offer::Leave(const CatalogAttribute& attribute, const char* what, std::string reason) {
  Left.push_back({attribute.Entry->Handle, attribute.Name.Text, what, std::move(reason)});
}

Offer OfferAttributes(const Catalog& catalog, NameInExport nameOf) {
  Offer offer;
  std::set<std::string> taken;
  for (const CatalogAttribute& attribute : catalog.Attributes) {
    std::string reason;
    std::optional<std::string> name = nameOf(attribute, reason);
    if (name && !attribute.Name.Known) {
      reason = "the string table does not have its name";
    } else if (name && !taken.insert(*name).second) {
      reason = fmt::format("an earlier attribute is named {}", *name);
    }
    if (!reason.empty()) {
      offer.Leave(attribute, "attribute", std::move(reason));
    } else if (name) {
      OfferedAttribute offered{&attribute, std::move(*name), {}, {}, {}};
      OfferValues(offered, offer);
      OfferDefault(offered, offer);
      OfferCurrent(offered, offer);
      offer.Attributes.push_back(std::move(offered));
    }
  }
  return offer;
}

}  // namespace corvane::inspect
