/** @file
  FakeUefi: strings of the HII database.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "FakeUefi/FakeUefi.hpp"

EFI_HII_HANDLE FakeUefi::AddPackageList() {
  return &packageLists_.emplace_back();
}

EFI_STRING_ID FakeUefi::AddString(EFI_HII_HANDLE package, const std::map<std::string, std::u16string>& texts) {
  auto& list = *static_cast<PackageList*>(package);
  const auto [known, isNew] =
      list.Identifiers.try_emplace(texts, static_cast<EFI_STRING_ID>(2 + list.Identifiers.size()));
  for (const auto& [language, text] : texts) {
    list.Languages[language][known->second] = Ucs2(text);
  }
  return known->second;
}

void FakeUefi::FillHiiServices() {
  HiiString.GetString = [](const EFI_HII_STRING_PROTOCOL*, const CHAR8* language, EFI_HII_HANDLE package,
                           EFI_STRING_ID id, EFI_STRING string, UINTN* size, EFI_FONT_INFO**) -> EFI_STATUS {
    if (language == nullptr || package == nullptr || id == 0 || size == nullptr || (string == nullptr && *size != 0)) {
      return EFI_INVALID_PARAMETER;
    }
    const EFI_STATUS status = Current().Enter(Service::HiiString);
    if (EFI_ERROR(status)) {
      return status;
    }
    const auto& languages = static_cast<PackageList*>(package)->Languages;
    const auto texts = languages.find(language);
    if (texts == languages.end() || !texts->second.contains(id)) {
      const bool elsewhere = std::any_of(languages.begin(), languages.end(),
                                         [id](const auto& other) { return other.second.contains(id); });
      return elsewhere ? EFI_INVALID_LANGUAGE : EFI_NOT_FOUND;
    }
    const Ucs2String& text = texts->second.at(id);
    const UINTN room = std::exchange(*size, (text.size() + 1) * sizeof(CHAR16));
    if (room < *size) {
      return EFI_BUFFER_TOO_SMALL;
    }
    std::copy_n(text.c_str(), text.size() + 1, string);
    return EFI_SUCCESS;
  };
  HiiString.GetLanguages = [](const EFI_HII_STRING_PROTOCOL*, EFI_HII_HANDLE package, CHAR8* languages,
                              UINTN* size) -> EFI_STATUS {
    if (package == nullptr || size == nullptr || (languages == nullptr && *size != 0)) {
      return EFI_INVALID_PARAMETER;
    }
    const EFI_STATUS status = Current().Enter(Service::HiiString);
    if (EFI_ERROR(status)) {
      return status;
    }
    std::string list;
    for (const auto& [language, texts] : static_cast<PackageList*>(package)->Languages) {
      list += (list.empty() ? "" : ";") + language;
    }
    const UINTN room = std::exchange(*size, list.size() + 1);
    if (room < *size) {
      return EFI_BUFFER_TOO_SMALL;
    }
    std::copy_n(list.c_str(), list.size() + 1, languages);
    return EFI_SUCCESS;
  };
}
