/** @file
  Dependencies: evaluation of the annotations in keywords.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "sources/Dependencies.hpp"

#include "uefi/Variables.hpp"

extern "C" {
#include <Corvane/AttributeCache.h>
}

namespace {

constexpr size_t kLongestName = 50;  // characters of a keyword before its annotations, and of a name in one

/// Names that annotations mention, as views into the keywords, each once and in the order met.
struct NameList {
  PoolPtr<Ucs2View[]> Names;
  size_t Count = 0;

  [[nodiscard]] bool Contains(Ucs2View name) const {
    for (const Ucs2View known : std::span(Names.get(), Count)) {
      if (Equal(known, name)) {
        return true;
      }
    }
    return false;
  }
};

/// What follows the first `character` in `text`, or nullptr.
const CHAR16* After(const CHAR16* text, CHAR16 character) {
  while (*text != 0) {
    if (*text++ == character) {
      return text;
    }
  }
  return nullptr;
}

/// Collects the names in the annotations of one keyword, from its first "[" on. A known name ends the collection of the
/// keyword. `annotated` tells whether a name was found, known or not.
EFI_STATUS CollectNames(const CHAR16* annotations, NameList& list, bool& annotated) {
  const CHAR16* text = annotations;
  while ((text = After(text, '[')) != nullptr) {
    const CHAR16* const name = After(text, ':');
    const CHAR16* const value = name != nullptr ? After(name, '=') : nullptr;
    if (value == nullptr) {
      return EFI_SUCCESS;  // the rest has no name
    }
    const Ucs2View view{name, static_cast<size_t>(value - name) - 1};
    if (view.size() > kLongestName) {
      return EFI_ABORTED;
    }
    annotated = true;
    if (list.Contains(view)) {
      return EFI_SUCCESS;
    }
    list.Names[list.Count++] = view;
    text = value;
  }
  return EFI_SUCCESS;
}

}  // namespace

Dependencies::~Dependencies() {
  Release();
}

void Dependencies::Release() {
  for (size_t i = 0; i < count_; ++i) {
    const PoolPtr<CHAR16[]> released{candidates_[i].Keyword};
  }
  count_ = 0;
  candidates_.reset();
}

void Dependencies::RecordDependencyCandidate(UINT32 identifier, PoolPtr<CHAR16[]>&& keyword) {
  if (!candidates_) {
    candidates_ = AllocateZeroedArray<Candidate>(kCapacity);
  }
  if (!candidates_ || count_ == kCapacity) {
    if (!candidateDropped_) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: dependency candidates dropped from question %d on: %a\n", identifier,
             candidates_ ? "the list is full" : "out of memory"));
    }
    candidateDropped_ = true;
    return;
  }
  candidates_[count_++] = {identifier, keyword.release()};
}

EFI_STATUS Dependencies::Evaluate() {
  const std::span<Candidate> candidates{candidates_.get(), count_};
  size_t annotations = 0;
  for (const Candidate& candidate : candidates) {
    if (candidate.Keyword != nullptr) {
      const Ucs2View keyword = ViewOf(candidate.Keyword);
      annotations += static_cast<size_t>(std::count(keyword.begin(), keyword.end(), CHAR16{'['}));
    }
  }
  NameList list{AllocateZeroedArray<Ucs2View>(annotations)};
  if (!list.Names) {
    return EFI_OUT_OF_RESOURCES;
  }
  for (const Candidate& candidate : candidates) {
    const CHAR16* const rest = candidate.Keyword != nullptr ? After(candidate.Keyword, '[') : nullptr;
    if (rest == nullptr) {
      continue;
    }
    const auto bareLength = static_cast<size_t>(rest - candidate.Keyword) - 1;
    bool annotated = false;
    if (bareLength > kLongestName || EFI_ERROR(CollectNames(rest - 1, list, annotated))) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: \"PidDepList\" dropped: overlong name in keyword \"%s\"\n", candidate.Keyword));
      return EFI_ABORTED;
    }
    if (annotated) {
      // Names are compared with plain keywords. The collected names lie after this end.
      candidate.Keyword[bareLength] = 0;
    }
  }

  std::array<UINT32, ATTRIBUTE_DEPENDENCY_LIST_CAPACITY> identifiers{};
  size_t found = 0;
  for (const Ucs2View name : std::span(list.Names.get(), list.Count)) {
    for (const Candidate& candidate : candidates) {
      if (candidate.Keyword == nullptr || !Equal(ViewOf(candidate.Keyword), name)) {
        continue;
      }
      if (found == identifiers.size()) {
        DEBUG((DEBUG_WARN, "CorvaneDxe: question %d dropped from \"PidDepList\": the list is full\n",
               candidate.Identifier));
        continue;
      }
      identifiers[found++] = candidate.Identifier;
    }
  }
  if (found == 0) {
    return EFI_SUCCESS;
  }
  return WriteVariable(u"" ATTRIBUTE_DEPENDENCY_LIST u""_ucs2, gVaroAttributeVariableGuid, kNonVolatileRuntime,
                       std::as_bytes(std::span(identifiers).first(found)));
}

EFI_STATUS Dependencies::BuildPidDepList() {
  const EFI_STATUS status = candidates_ ? Evaluate() : EFI_SUCCESS;
  Release();
  return status;
}
