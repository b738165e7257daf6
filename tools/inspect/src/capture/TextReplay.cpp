/** @file
  TextReplay: finds the text that each step of gathering created, if only one text is possible.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "capture/TextReplay.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <unordered_map>

namespace corvane::inspect {
namespace {

// A title with fewer characters that are not blanks is taken to fit: a longer title would be mostly blanks.
constexpr std::size_t kLongTitle = 88;

// A set of positions among the texts.
class Positions {
 public:
  explicit Positions(std::size_t limit) : words_(limit / kBits + 1) {}

  bool Has(std::size_t position) const { return (words_[position / kBits] >> (position % kBits) & 1) != 0; }
  void Add(std::size_t position) { words_[position / kBits] |= std::uint64_t{1} << (position % kBits); }
  bool IsEmpty() const {
    return std::all_of(words_.begin(), words_.end(), [](std::uint64_t word) { return word == 0; });
  }

  template <typename Visit>
  void ForEach(Visit visit) const {
    for (std::size_t i = 0; i < words_.size(); ++i) {
      for (std::uint64_t word = words_[i]; word != 0; word &= word - 1) {
        visit(i * kBits + static_cast<std::size_t>(std::countr_zero(word)));
      }
    }
  }

 private:
  static constexpr std::size_t kBits = 64;
  std::vector<std::uint64_t> words_;
};

// The form of the string table: the low byte of each character. Titles have no blanks there.
std::u16string TitleKey(std::u16string_view text) {
  std::u16string key;
  for (const char16_t character : WithoutStars(text)) {
    if (character != u' ') {
      key.push_back(static_cast<char16_t>(character & 0xFF));
    }
  }
  return key;
}

// The position of the first occurrence of each text.
class FirstPlaces {
 public:
  void Add(std::u16string text, std::size_t place) { places_.try_emplace(std::move(text), place); }
  bool IsBefore(const std::u16string& text, std::size_t position) const {
    const auto found = places_.find(text);
    return found != places_.end() && found->second < position;
  }

 private:
  std::unordered_map<std::u16string, std::size_t> places_;
};

class Walker {
 public:
  Walker(const std::vector<ReplayStep>& steps, const ReplayTexts& texts) : steps_(steps), texts_(texts) {
    for (std::size_t i = 0; i < texts.Texts.size(); ++i) {
      titles_.push_back(TitleKey(texts.Texts[i]));
      first_.Add(texts.Texts[i], i);
      firstTitle_.Add(titles_.back(), i);
    }
    for (const ReplayStep& step : steps) {
      stepTitles_.push_back(step.Kind == ReplayKind::Title ? TitleKey(step.Text) : std::u16string());
    }
  }

  ReplayResult Walk() {
    WalkForward();
    ReplayResult result;
    std::size_t end = reached_.size() - 1;
    if (end == steps_.size()) {
      Positions ends(texts_.Total);
      reached_.back().ForEach([&](std::size_t position) {
        if (position >= texts_.EndsFrom) {
          ends.Add(position);
        }
      });
      result.CameOut = !ends.IsEmpty();
      if (result.CameOut) {
        reached_.back() = std::move(ends);
      }
    }
    if (!result.CameOut) {
      end = LastAnchor(end);
    }
    WalkBack(end, result);
    return result;
  }

 private:
  bool CanMake(std::size_t index, std::size_t position) const {
    const ReplayStep& step = steps_[index];
    if (position >= texts_.Total) {
      return false;
    }
    if (step.Kind == ReplayKind::Any || position >= texts_.Texts.size()) {
      return true;
    }
    return step.Kind == ReplayKind::Title ? titles_[position] == stepTitles_[index]
                                          : texts_.Texts[position] == step.Text;
  }

  bool CanSkip(std::size_t index, std::size_t position) const {
    const ReplayStep& step = steps_[index];
    if (position >= texts_.Capacity || position > texts_.Texts.size()) {
      return true;  // the store is full, or the text may be among the unknown ones
    }
    switch (step.Kind) {
      case ReplayKind::Any:
      case ReplayKind::Maybe:
        return true;
      case ReplayKind::Title:
        return stepTitles_[index].size() >= kLongTitle || firstTitle_.IsBefore(stepTitles_[index], position);
      case ReplayKind::Fixed:
        return first_.IsBefore(step.Text, position);
    }
    return true;
  }

  // Computes the reachable positions at each boundary between steps.
  void WalkForward() {
    reached_.emplace_back(texts_.Total).Add(0);
    for (std::size_t index = 0; index < steps_.size(); ++index) {
      // Skips positions from which the remaining steps cannot reach the end. The backward pass would drop them.
      const std::size_t left = steps_.size() - index - 1;
      const std::size_t lowest = texts_.EndsFrom > left ? texts_.EndsFrom - left : 0;
      Positions next(texts_.Total);
      reached_.back().ForEach([&](std::size_t position) {
        if (position >= lowest && CanSkip(index, position)) {
          next.Add(position);
        }
        if (position + 1 >= lowest && CanMake(index, position)) {
          next.Add(position + 1);
        }
      });
      if (next.IsEmpty()) {
        return;
      }
      reached_.push_back(std::move(next));
    }
  }

  // The boundary after the last step with a recognizable text.
  std::size_t LastAnchor(std::size_t end) const {
    while (end > 0 && steps_[end - 1].Kind != ReplayKind::Title && steps_[end - 1].Kind != ReplayKind::Fixed) {
      --end;
    }
    return end;
  }

  // Drops positions that do not reach the end. Keeps the result of each step that all remaining solutions share.
  void WalkBack(std::size_t end, ReplayResult& result) {
    result.Places.resize(end);
    result.Proven = end;
    for (std::size_t index = end; index-- > 0;) {
      Positions kept(texts_.Total);
      std::size_t makes = 0;
      bool skips = false;
      reached_[index].ForEach([&](std::size_t position) {
        const bool skip = CanSkip(index, position) && reached_[index + 1].Has(position);
        const bool make = CanMake(index, position) && reached_[index + 1].Has(position + 1);
        if (!skip && !make) {
          return;
        }
        kept.Add(position);
        skips = skips || skip;
        if (make) {
          ++makes;
          result.Places[index] = position;
        }
      });
      reached_[index] = std::move(kept);
      if (makes > 1 || (makes == 1 && skips)) {
        result.Proven = index;
      }
    }
    result.Places.resize(result.Proven);
  }

  const std::vector<ReplayStep>& steps_;
  const ReplayTexts& texts_;
  std::vector<std::u16string> titles_;
  std::vector<std::u16string> stepTitles_;
  FirstPlaces first_;
  FirstPlaces firstTitle_;
  std::vector<Positions> reached_;  // one for each boundary between steps
};

}  // namespace

std::u16string WithoutStars(std::u16string_view text) {
  return std::u16string(text.substr(std::min(text.find_first_not_of(u'*'), text.size())));
}

ReplayResult Replay(const std::vector<ReplayStep>& steps, const ReplayTexts& texts) {
  return Walker(steps, texts).Walk();
}

}  // namespace corvane::inspect
