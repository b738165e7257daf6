/** @file
  Pairing: assigns display and help texts to attributes, as far as the order of creation proves the assignment.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "capture/Pairing.hpp"

#include "bytes/Text.hpp"
#include "capture/TextReplay.hpp"

#include "bytes/Wire.hpp"

namespace corvane::inspect {
namespace {

constexpr std::uint16_t kFirstHandle = ATTRIBUTE_STORE_FIRST_HANDLE;
constexpr std::size_t kStringCapacity = ATTRIBUTE_STORE_STRING_LIMIT - ATTRIBUTE_STORE_FIRST_HANDLE;
constexpr std::size_t kEnumerationLimit = 241;  // from this count on, questions create texts but no attribute

// The driver's own attributes. Their texts are the same on every platform.
constexpr OwnAttribute kOwnAttributes[] = {OWN_ADDED_ATTRIBUTES};
// Attributes of every boot. They come after all others and have reserved handles.
constexpr OwnAttribute kPlacedAttributes[] = {OWN_PLACED_ATTRIBUTES};

const OwnAttribute* FindOwn(std::span<const OwnAttribute> list, std::string_view name) {
  const auto found = std::find_if(list.begin(), list.end(),
                                  [name](const OwnAttribute& own) { return WithoutAnnotations(own.Name) == name; });
  return found == list.end() ? nullptr : &*found;
}

std::u16string Widen(std::string_view text) {
  std::u16string wide;
  for (const char character : text) {
    wide.push_back(static_cast<unsigned char>(character));
  }
  return wide;
}

// Text of a value of one of the driver's own attributes.
std::u16string OwnValueText(std::string_view name) {
  return name == "ProjectVariablesPreserve" ? u"Project Variables Preserve" : Widen(name);
}

// Texts that may come after all others: those of passwords and boot configuration, from this boot or from the
// boot that wrote the cache.
bool IsPlacedText(std::u16string_view text) {
  return text.starts_with(u"Varo:") ||
         std::any_of(std::begin(kPlacedAttributes), std::end(kPlacedAttributes),
                     [text](const OwnAttribute& own) { return Widen(own.DisplayText) == text; });
}

// One attribute in the order of creation.
struct Creation {
  const AttributeEntry* Attribute = nullptr;
  const StreamRecord* Record = nullptr;
  std::size_t Step = 0;                 // its own text
  std::vector<std::size_t> ValueSteps;  // for each value: its text, or kNoStep if an earlier value has the name
  bool MaybeCheckbox = false;
  const OwnAttribute* Own = nullptr;
};

constexpr std::size_t kNoStep = SIZE_MAX;

BaseType TypeOf(const AttributeEntry& attribute) {
  return BaseType{BaseTypeOf(attribute.Type)};
}

class Pairer {
 public:
  Pairer(const Image& image, const StoredTexts* stored) : image_(image), stored_(stored) {}

  Pairing Run() {
    if (!image_.Display && stored_ == nullptr) {
      pairing_.Reason = "there is no display table";
    }
    GatherTexts();
    GatherCreations();
    std::size_t end = 0;  // of the setup's attributes; the driver's own attributes follow
    for (std::size_t i = 0; i < creations_.size(); ++i) {
      const std::optional<std::string> name = NameOf(creations_[i].Attribute->NameHandle);
      const bool own =
          TypeOf(*creations_[i].Attribute) != BaseType::Collection && name && FindOwn(kOwnAttributes, *name);
      end = own ? end : i + 1;
    }
    const std::size_t stepped = AddSteps(end);
    if (pairing_.Reason.empty()) {
      result_ = Replay(steps_, replayTexts_);
    }
    for (std::size_t i = 0; i < creations_.size(); ++i) {
      PairCreation(creations_[i], i < stepped, i < end);
    }
    PairPlaced();
    return std::move(pairing_);
  }

 private:
  std::optional<std::string> NameOf(std::uint16_t handle) const {
    if (const StringEntry* entry = image_.Strings.Find(handle)) {
      return entry->Text;
    }
    const std::size_t place = std::size_t{handle} - kFirstHandle;
    if (stored_ == nullptr || handle < kFirstHandle || place >= stored_->Names.size()) {
      return std::nullopt;
    }
    std::string name;
    for (const char16_t character : stored_->Names[place]) {
      name.push_back(static_cast<char>(character));
    }
    return name;
  }

  void GatherTexts() {
    if (stored_ != nullptr) {
      replayTexts_.Texts = stored_->Display;
    } else if (image_.Display) {
      for (const TextEntry& entry : image_.Display->Entries) {
        if (entry.Handle != kFirstHandle + replayTexts_.Texts.size()) {
          break;
        }
        replayTexts_.Texts.push_back(entry.Text);
      }
    }
    replayTexts_.Capacity = kStringCapacity;
    const std::vector<std::u16string>& texts = replayTexts_.Texts;
    const bool counted = image_.Stream && image_.Stream->Sound;
    replayTexts_.Total =
        counted ? static_cast<std::size_t>(std::min<std::uint64_t>(image_.Stream->DisplayCount, kStringCapacity))
                : kStringCapacity;
    const auto last = std::find_if(texts.rbegin(), texts.rend(), [](const auto& text) { return !IsPlacedText(text); });
    replayTexts_.EndsFrom = static_cast<std::size_t>(texts.rend() - last);
    if (texts.size() > replayTexts_.Total || replayTexts_.EndsFrom > replayTexts_.Total) {
      Stop("the display table has more texts than the driver counts", kFirstHandle);
    }
  }

  void Stop(std::string reason, std::uint16_t handle) {
    if (pairing_.Reason.empty()) {
      pairing_.Reason = std::move(reason);
      pairing_.FirstUnpaired = handle;
    }
  }

  // Attributes with handles in the order of creation, from the stream and from the table.
  void GatherCreations() {
    const Stream* stream = image_.Stream && image_.Stream->Sound ? &*image_.Stream : nullptr;
    std::unordered_map<std::uint16_t, const StreamRecord*> records;
    if (stream != nullptr) {
      for (const StreamRecord& record : stream->Records) {
        records.emplace(record.Attribute.Handle, &record);
      }
    }
    for (std::uint16_t handle = kFirstHandle;; ++handle) {
      const auto found = records.find(handle);
      Creation creation;
      creation.Record = found == records.end() ? nullptr : found->second;
      creation.Attribute = creation.Record != nullptr ? &creation.Record->Attribute : image_.Attributes.Find(handle);
      if (creation.Attribute == nullptr) {
        openEnd_ = stream == nullptr || stream->AttributeCount > creations_.size();
        return;
      }
      creations_.push_back(std::move(creation));
    }
  }

  std::size_t AddStep(ReplayKind kind, std::u16string text = {}) {
    steps_.push_back({kind, std::move(text)});
    return steps_.size() - 1;
  }

  // Whether this attribute added a new name. Handles are assigned in order. A handle above the next one shows that
  // a question created strings but no attribute.
  bool IsNewName(std::uint16_t handle) {
    if (handle == nextName_) {
      ++nextName_;
      return true;
    }
    inOrder_ = inOrder_ && handle < nextName_;
    return handle == 0 && nextName_ == kFirstHandle + kStringCapacity;  // the store is full and drops the string
  }

  void AddValueSteps(Creation& creation, bool own) {
    const auto& names = std::get<EnumerationBounds>(creation.Attribute->Bounds).Names;
    creation.MaybeCheckbox = !own && names.size() == 2;
    static constexpr std::array<std::string_view, 2> kCheckbox = {"Disabled", "Enabled"};
    for (std::size_t i = 0; creation.MaybeCheckbox && i < names.size(); ++i) {
      const std::optional<std::string> name = NameOf(names[i]);
      creation.MaybeCheckbox = (!name || WithoutAnnotations(*name) == kCheckbox[i]) &&
                               (creation.Record == nullptr || creation.Record->PlatformValues[i] == i);
    }
    for (const std::uint16_t handle : names) {
      const bool isNew = IsNewName(handle);
      const std::optional<std::string> name = NameOf(handle);
      std::size_t step = kNoStep;
      if (own && name) {
        step = AddStep(ReplayKind::Fixed, OwnValueText(*name));
      } else if (isNew || own || (creation.MaybeCheckbox && !name)) {
        step = AddStep(ReplayKind::Any);
      } else if (creation.MaybeCheckbox) {
        AddStep(ReplayKind::Maybe, Widen(*name));
      }
      creation.ValueSteps.push_back(step);
    }
  }

  // Adds the steps of attributes up to the first question that created strings but no attribute. Returns the number of
  // these attributes. The texts of later attributes are not proven.
  std::size_t AddSteps(std::size_t end) {
    std::size_t enumerations = 0;
    for (std::size_t i = 0; i < creations_.size(); ++i) {
      Creation& creation = creations_[i];
      const AttributeEntry& attribute = *creation.Attribute;
      const std::optional<std::string> name = NameOf(attribute.NameHandle);
      const BaseType type = TypeOf(attribute);
      const std::size_t before = steps_.size();
      creation.Own = i >= end && name ? FindOwn(kOwnAttributes, *name) : nullptr;
      const bool known = type == BaseType::Enumeration || type == BaseType::Integer || type == BaseType::String ||
                         type == BaseType::Collection;
      IsNewName(attribute.NameHandle);
      if (creation.Own != nullptr) {
        creation.Step = AddStep(ReplayKind::Fixed, Widen(creation.Own->DisplayText));
      } else if (type == BaseType::Collection && name) {
        creation.Step = AddStep(ReplayKind::Title, Widen(*name));
      } else {
        creation.Step = AddStep(ReplayKind::Any);
      }
      if (type == BaseType::Enumeration) {
        AddValueSteps(creation, creation.Own != nullptr);
      }
      if (!inOrder_ || !known) {
        steps_.resize(before);
        return End(
            i, known ? "a question created names but no attribute" : "an attribute has a type that no boot creates");
      }
      enumerations += i < end && type == BaseType::Enumeration ? 1 : 0;
      if (enumerations == kEnumerationLimit) {
        return End(i + 1, "later questions may have created texts but no attribute");
      }
    }
    if (openEnd_) {
      return End(creations_.size(), "attributes are missing");
    }
    return creations_.size();
  }

  std::size_t End(std::size_t count, std::string reason) {
    replayTexts_.EndsFrom = 0;
    endReason_ = std::move(reason);
    return count;
  }

  std::optional<std::string> TextAt(const std::vector<std::u16string>* stored, const std::optional<TextTable>& table,
                                    std::size_t place) const {
    if (stored != nullptr) {
      return place < stored->size() ? std::optional(Utf8FromUcs2((*stored)[place])) : std::nullopt;
    }
    const TextEntry* entry = table ? table->Find(static_cast<std::uint16_t>(kFirstHandle + place)) : nullptr;
    return entry != nullptr ? std::optional(Utf8FromUcs2(entry->Text)) : std::nullopt;
  }

  // The text as the display table shows it.
  std::optional<std::string> DisplayAt(std::size_t place) const {
    if (place >= replayTexts_.Texts.size()) {
      return std::nullopt;
    }
    const std::u16string text = WithoutStars(replayTexts_.Texts[place]);
    const bool starred = text.size() < replayTexts_.Texts[place].size();
    return Utf8FromUcs2(starred ? text.substr(std::min(text.find_first_not_of(u' '), text.size())) : text);
  }

  std::optional<std::string> HelpAt(std::size_t place) const {
    std::optional<std::string> help = TextAt(stored_ != nullptr ? &stored_->Help : nullptr, image_.Help, place);
    return help && !help->empty() ? help : std::nullopt;
  }

  bool IsProven(std::size_t step) const { return step < result_.Proven; }

  // The text of a driver's own attribute is known. The attribute has the text if the table has the text.
  void PairOwn(const OwnAttribute& own, std::optional<std::size_t> place, PairedTexts& texts) {
    const std::u16string display = Widen(own.DisplayText);
    const std::vector<std::u16string>& all = replayTexts_.Texts;
    const auto first = std::find(all.begin(), all.end(), display);
    if (first == all.end()) {
      return;
    }
    texts.Display = own.DisplayText;
    if (!place && std::find(first + 1, all.end(), display) == all.end()) {
      place = static_cast<std::size_t>(first - all.begin());
    }
    if (place) {
      texts.DisplayHandle = static_cast<std::uint16_t>(kFirstHandle + *place);
      texts.Help = own.Token == OWN_CHARGE_POWER_LIMIT_TOKEN ? HelpAt(*place) : std::nullopt;
    }
  }

  void PairValues(const Creation& creation, PairedTexts& texts) {
    const auto& names = std::get<EnumerationBounds>(creation.Attribute->Bounds).Names;
    for (std::size_t i = 0; i < names.size() && i < creation.ValueSteps.size(); ++i) {
      const std::size_t step = creation.ValueSteps[i];
      const std::optional<std::string> name = NameOf(names[i]);
      if (creation.Own != nullptr) {
        texts.Values.push_back(name ? std::optional(Utf8FromUcs2(OwnValueText(*name))) : std::nullopt);
        continue;
      }
      if (step != kNoStep && IsProven(step) && result_.Places[step]) {
        valueTexts_.emplace(names[i], DisplayAt(*result_.Places[step]));
      }
      const auto found = valueTexts_.find(names[i]);
      std::optional<std::string> text = found == valueTexts_.end() ? std::nullopt : found->second;
      // The text of a checkbox value is its name. The text of a list value may differ if the language does.
      if (creation.MaybeCheckbox && text != name) {
        text.reset();
      }
      texts.Values.push_back(std::move(text));
    }
  }

  void PairCreation(const Creation& creation, bool stepped, bool ofSetup) {
    const AttributeEntry& attribute = *creation.Attribute;
    const bool proven = stepped && IsProven(creation.Step);
    const std::optional<std::size_t> place = proven ? result_.Places[creation.Step] : std::nullopt;
    PairedTexts texts;
    if (creation.Own != nullptr) {
      PairOwn(*creation.Own, place, texts);
    } else if (place) {
      texts.Display = DisplayAt(*place);
      texts.DisplayHandle = static_cast<std::uint16_t>(kFirstHandle + *place);
      texts.Help = TypeOf(attribute) == BaseType::Collection ? std::nullopt : HelpAt(*place);
    }
    if (ofSetup && !proven) {
      const bool ended = !stepped || creation.Step >= result_.Places.size();
      Stop(!result_.CameOut               ? "the texts cannot have been created in the order of the attributes"
           : ended && !endReason_.empty() ? endReason_
                                          : "the texts can have been created in more than one way",
           attribute.Handle);
    }
    if (TypeOf(attribute) == BaseType::Enumeration) {
      PairValues(creation, texts);
    }
    if (texts.Display) {
      pairing_.ByHandle.emplace(attribute.Handle, std::move(texts));
    }
  }

  // Passwords and boot configuration.
  void PairPlaced() {
    for (const AttributeEntry& attribute : image_.Attributes.Entries) {
      const std::optional<std::string> name = NameOf(attribute.NameHandle);
      const OwnAttribute* own = name ? FindOwn(kPlacedAttributes, WithoutAnnotations(*name)) : nullptr;
      if (own == nullptr || attribute.Handle > ATTRIBUTE_HANDLE_BOOT_CONFIGURATION) {
        continue;
      }
      PairedTexts texts;
      PairOwn(*own, std::nullopt, texts);
      if (texts.Display) {
        pairing_.ByHandle.emplace(attribute.Handle, std::move(texts));
      }
    }
  }

  const Image& image_;
  const StoredTexts* stored_;
  ReplayTexts replayTexts_;
  ReplayResult result_;
  std::vector<Creation> creations_;
  std::vector<ReplayStep> steps_;
  std::unordered_map<std::uint16_t, std::optional<std::string>> valueTexts_;  // by name handle
  std::uint16_t nextName_ = kFirstHandle;
  bool inOrder_ = true;
  bool openEnd_ = false;  // attributes after the known ones are missing
  std::string endReason_;
  Pairing pairing_;
};

}  // namespace

Pairing PairTexts(const Image& image, const StoredTexts* stored) {
  return Pairer(image, stored).Run();
}

}  // namespace corvane::inspect
