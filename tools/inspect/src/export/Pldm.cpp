/** @file
  `inspect export --pldm`: the tables as the PLDM daemon of a management controller keeps them (DMTF DSP0247).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "export/Pldm.hpp"

#include <map>
#include <set>

#include "bytes/Text.hpp"
#include "capture/Describe.hpp"
#include "capture/Layout.hpp"

namespace corvane::inspect {
namespace {

bool IsCommon(std::uint8_t type) {
  const BaseType base{BaseTypeOf(type)};
  return base == BaseType::Enumeration || base == BaseType::String || base == BaseType::Integer;
}

class PldmWriter {
 public:
  PldmWriter(const Image& image, bool common) : image_(image), common_(common) {}

  ExportResult Run() {
    for (const AttributeEntry& entry : image_.Attributes.Entries) {
      if (const std::string reason = ReasonToLeave(entry); reason.empty()) {
        kept_[entry.Handle] = &entry;
      } else {
        Leave(entry, "attribute", reason);
      }
    }
    for (const auto& [handle, entry] : kept_) {
      AddAttribute(*entry);
      AddValue(*entry);
    }
    for (const std::uint16_t handle : names_) {
      StringEntry entry = *image_.Strings.Find(handle);
      Fields(strings_, entry);
    }
    Close("stringTable", strings_);
    Close("attributeTable", attributes_);
    Close("attributeValueTable", values_);
    result_.Attributes = kept_.size();
    return std::move(result_);
  }

 private:
  void Leave(const AttributeEntry& entry, const char* what, std::string reason) {
    result_.Left.push_back({entry.Handle, DescribeName(image_, entry.NameHandle), what, std::move(reason)});
  }

  std::string ReasonToLeave(const AttributeEntry& entry) const {
    if (image_.Attributes.Find(entry.Handle) != &entry) {
      return "an earlier attribute has its handle";
    }
    if (std::holds_alternative<std::monostate>(entry.Bounds)) {
      return fmt::format("its type, {}, is unknown, and so is the length of its entry", TypeName(entry.Type));
    }
    if (common_ && !IsCommon(entry.Type)) {
      return "the common profile has no type " + TypeName(entry.Type);
    }
    const std::vector<std::uint16_t> names = NamesOf(entry);
    const bool known =
        std::ranges::all_of(names, [this](std::uint16_t handle) { return image_.Strings.Find(handle) != nullptr; });
    return known ? "" : "the string table does not have all of its names";
  }

  // The string handles of an entry.
  static std::vector<std::uint16_t> NamesOf(const AttributeEntry& entry) {
    std::vector<std::uint16_t> names;
    if (const auto* enumeration = std::get_if<EnumerationBounds>(&entry.Bounds)) {
      names = enumeration->Names;
    } else if (const auto* boot = std::get_if<BootBounds>(&entry.Bounds)) {
      names = boot->Sources;
    } else if (const auto* set = std::get_if<ConfigurationSetBounds>(&entry.Bounds)) {
      names = set->Names;
    } else if (const auto* collection = std::get_if<CollectionBounds>(&entry.Bounds)) {
      names.push_back(static_cast<std::uint16_t>(collection->Info[0] | collection->Info[1] << 8));
    }
    names.push_back(entry.NameHandle);
    return names;
  }

  void AddAttribute(AttributeEntry entry) {
    if (auto* lengths = std::get_if<LengthBounds>(&entry.Bounds); lengths != nullptr && lengths->DefaultLength != 0) {
      // The standard has the default text after its length. The driver's tables never have the text.
      Leave(entry, "default",
            fmt::format("the capture has the length of the text, {}, without the text", lengths->DefaultLength));
      lengths->DefaultLength = 0;
    }
    if (auto* enumeration = std::get_if<EnumerationBounds>(&entry.Bounds)) {
      const std::size_t count = enumeration->Names.size();
      if (std::erase_if(enumeration->Defaults, [count](std::uint8_t index) { return index >= count; }) != 0) {
        Leave(entry, "default", "its index is outside the list of values");
      }
    }
    for (const std::uint16_t name : NamesOf(entry)) {
      names_.insert(name);
    }
    Fields(attributes_, entry);
  }

  void AddValue(const AttributeEntry& attribute) {
    const ValueEntry* found = image_.Values.Find(attribute.Handle);
    if (found == nullptr || BaseTypeOf(found->Type) != BaseTypeOf(attribute.Type)) {
      if (BaseType{BaseTypeOf(attribute.Type)} != BaseType::Password) {  // a password that is not installed has none
        Leave(attribute, "current", "the value table has no value of its own type for it");
      }
      return;
    }
    ValueEntry entry = *found;
    entry.Type = attribute.Type;
    const std::size_t count = NamesOf(attribute).size() - 1;
    const auto isOutside = [count](std::uint8_t index) { return index >= count; };
    auto* enumeration = std::get_if<EnumerationValue>(&entry.Value);
    auto* boot = std::get_if<BootValue>(&entry.Value);
    auto* set = std::get_if<ConfigurationSetValue>(&entry.Value);
    if ((enumeration != nullptr && std::ranges::any_of(enumeration->Indices, isOutside)) ||
        (boot != nullptr && std::ranges::any_of(boot->Order, isOutside)) || (set != nullptr && isOutside(set->Index))) {
      return Leave(attribute, "current", "its index is outside the list of values");
    }
    if (auto* collection = std::get_if<CollectionValue>(&entry.Value)) {
      std::erase_if(collection->Members, [this](std::uint16_t member) { return !kept_.contains(member); });
    }
    Fields(values_, entry);
  }

  void Close(const char* name, ByteWriter& table) {
    CloseTable(table);
    result_.Files.push_back({name, {table.Content.begin(), table.Content.end()}});
  }

  const Image& image_;
  bool common_;
  std::map<std::uint16_t, const AttributeEntry*> kept_;  // by handle
  std::set<std::uint16_t> names_;                        // string handles in use
  ByteWriter strings_;
  ByteWriter attributes_;
  ByteWriter values_;
  ExportResult result_;
};

}  // namespace

ExportResult ExportPldm(const Image& image, bool common) {
  return PldmWriter(image, common).Run();
}

}  // namespace corvane::inspect
