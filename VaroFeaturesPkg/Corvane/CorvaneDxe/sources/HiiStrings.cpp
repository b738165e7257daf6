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

/// Folds the case of the letters, digits and '-' that language tags are made of.
constexpr int FoldCase(CHAR8 character) {
  return character | 0x20;
}

/// Whether a list of languages separated by ';' names `language`, in any case.
bool Lists(const CHAR8* languages, const CHAR8* language) {
  while (*languages != 0) {
    size_t matched = 0;
    while (language[matched] != 0 && FoldCase(languages[matched]) == FoldCase(language[matched])) {
      ++matched;
    }
    if (language[matched] == 0 && (languages[matched] == ';' || languages[matched] == 0)) {
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
      languages_ = AllocateZeroedArray<CHAR8>(size + 1);
      if (languages_ && EFI_ERROR(service_->GetLanguages(service_, package, languages_.get(), &size))) {
        languages_.reset();
      }
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
    const UINTN room = 2 * size;  // the next longer text then usually fits as well
    text_ = AllocateZeroedArray<CHAR16>(room / sizeof(CHAR16) + 1);
    if (!text_) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: HII string %d in \"%a\" not read: out of memory\n", id, language));
      return EFI_OUT_OF_RESOURCES;
    }
    textSize_ = room;
  }
}

HiiText HiiStrings::GetHiiString(EFI_HII_HANDLE package, EFI_STRING_ID id, const CHAR8* language) {
  if (service_ == nullptr || id == 0) {
    return {kNoText, EFI_NOT_FOUND};
  }
  EFI_STATUS status = Read(package, id, language != nullptr ? language : platformLanguage_);
  if (EFI_ERROR(status) && language != nullptr) {
    status = Read(package, id, platformLanguage_);
  }
  // The text block is one character longer than what it is announced with, and that character stays 0.
  return {EFI_ERROR(status) || !text_ ? kNoText : text_.get(), status};
}
