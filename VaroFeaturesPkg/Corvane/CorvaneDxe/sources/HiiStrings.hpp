/** @file
  HiiStrings: texts of the HII database, in the platform's language or a given one.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Pool.hpp"
#include "uefi/Text.hpp"

extern "C" {
#include <Protocol/HiiString.h>
}

/// The language of keywords, by which management software knows questions and options.
constexpr CHAR8 kKeywordLanguage[] = "x-UEFI";

/// The status of a text in the platform's language in place of the one that was asked for.
constexpr EFI_STATUS kReplacedLanguage = EFI_WARN_STALE_DATA;

/// A text, and whether it could be had. The text is never null; it is valid until the next one is fetched.
struct HiiText {
  const CHAR16* Text;
  EFI_STATUS Status;
};

class HiiStrings {
 public:
  HiiStrings() = default;
  HiiStrings(const HiiStrings&) = delete;
  HiiStrings& operator=(const HiiStrings&) = delete;
  ~HiiStrings() = default;

  /// `platformLanguage` is null when the platform names none.
  explicit HiiStrings(const CHAR8* platformLanguage);

  /// Fetches a text in `language`, or the platform's when null. A language that cannot be had is replaced by the
  /// platform's, once.
  [[nodiscard]] HiiText GetHiiString(EFI_HII_HANDLE package, EFI_STRING_ID id, const CHAR8* language = nullptr);

 private:
  [[nodiscard]] bool MayHave(EFI_HII_HANDLE package, const CHAR8* language);
  [[nodiscard]] EFI_STATUS Read(EFI_HII_HANDLE package, EFI_STRING_ID id, const CHAR8* language);

  EFI_HII_STRING_PROTOCOL* service_ = nullptr;
  const CHAR8* platformLanguage_ = nullptr;
  EFI_HII_HANDLE languagesOf_ = nullptr;  // package list whose languages are known
  PoolPtr<CHAR8[]> languages_;            // separated by ';', or null when they could not be had
  PoolPtr<CHAR16[]> text_;                // shared by all texts
  UINTN textSize_ = 0;                    // bytes of text_
};
