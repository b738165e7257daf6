/** @file
  HiiStrings: texts of the HII database.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "sources/HiiStrings.hpp"

#include "uefi/Protocols.hpp"

namespace {

constexpr CHAR8 kDefaultLanguage[] = "en-US";
constexpr CHAR16 kNoText[] = {0};

constexpr CHAR8 FoldCase(CHAR8 character) {
  return character >= 'A' && character <= 'Z' ? static_cast<CHAR8>(character | 0x20) : character;
}
constexpr bool EndsLanguage(CHAR8 character) {
  return character == ';' || character == 0;
}

/// Returns true if a list of languages separated by ';' names `language`, in upper or lower case.
bool Lists(const CHAR8* languages, const CHAR8* language) {
  while (*languages != 0) {
    size_t matched = 0;
    while (!EndsLanguage(languages[matched]) && FoldCase(languages[matched]) == FoldCase(language[matched])) {
      ++matched;
    }
    if (language[matched] == 0 && EndsLanguage(languages[matched])) {
      return true;
    }
    while (*languages != 0 && *languages++ != ';') {
    }
  }
  return false;
}

}  // namespace

HiiStrings::HiiStrings(const CHAR8* platformLanguage)
    : service_(FindProtocol<EFI_HII_STRING_PROTOCOL>(gEfiHiiStringProtocolGuid)),
      platformLanguage_(platformLanguage != nullptr ? platformLanguage : kDefaultLanguage) {
  if (service_ == nullptr) {
    DEBUG(
        (DEBUG_WARN, "CorvaneDxe: EFI_HII_STRING_PROTOCOL not found: names and texts of setup questions are empty\n"));
  }
}

bool HiiStrings::MayHave(EFI_HII_HANDLE package, const CHAR8* language) {
  if (package != languagesOf_) {
    languagesOf_ = package;
    languages_.reset();
    UINTN size = 0;
    if (service_->GetLanguages(service_, package, nullptr, &size) == EFI_BUFFER_TOO_SMALL) {
      languages_ = AllocateZeroedArray<CHAR8>(size, 1);
      if (languages_ && EFI_ERROR(service_->GetLanguages(service_, package, languages_.get(), &size))) {
        languages_.reset();
      }
    }
    if (languages_ && !Lists(languages_.get(), platformLanguage_)) {
      DEBUG((DEBUG_WARN,
             "CorvaneDxe: texts of a package list are empty: it has \"%a\", the platform's language is \"%a\"\n",
             languages_.get(), platformLanguage_));
    }
  }
  return !languages_ || Lists(languages_.get(), language);
}

EFI_STATUS HiiStrings::Read(EFI_HII_HANDLE package, EFI_STRING_ID id, const CHAR8* language) {
  if (!MayHave(package, language)) {
    return EFI_NOT_FOUND;
  }
  for (bool grown = false;; grown = true) {
    UINTN size = textSize_;
    const EFI_STATUS status = service_->GetString(service_, language, package, id, text_.get(), &size, nullptr);
    if (status != EFI_BUFFER_TOO_SMALL || grown) {
      return status;
    }
    text_.reset();
    textSize_ = 0;
    // Twice the size: the next longer text then usually fits as well.
    text_ = AllocateZeroedArray<CHAR16>(size, 1);
    if (!text_) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: HII string %d in \"%a\" not read: out of memory\n", id, language));
      return EFI_OUT_OF_RESOURCES;
    }
    textSize_ = size * sizeof(CHAR16);
  }
}

HiiText HiiStrings::GetHiiString(EFI_HII_HANDLE package, EFI_STRING_ID id, const CHAR8* language) {
  if (service_ == nullptr || id == 0) {
    return {kNoText, EFI_NOT_FOUND};
  }
  EFI_STATUS status = Read(package, id, language != nullptr ? language : platformLanguage_);
  if (EFI_ERROR(status) && language != nullptr) {
    status = Read(package, id, platformLanguage_);
    if (status == EFI_SUCCESS) {
      status = kReplacedLanguage;
    }
  }
  // The text block is one character longer than what it is announced with, and that character stays 0.
  return {EFI_ERROR(status) || !text_ ? kNoText : text_.get(), status};
}
