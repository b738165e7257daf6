/** @file
  Fuzz target of what the platform's protocols answer: settings, defaults, platform strings, passwords, cameras, boot
  options, version and language. Whatever it is, a cold boot and one from its cache publish sound tables.

  Input: a byte of switches; language, version, boot options and cameras; then an answer for each call as it comes.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Fuzz/FuzzInput.hpp"
#include "Fuzz/PublishedTables.hpp"

extern "C" {
#include <Guid/GlobalVariable.h>
}

namespace {

FakeNotebook* notebook = nullptr;
FuzzInput answers;
Bytes bootOptions;

/// The next answer of a service that fills a buffer: its status, the size that it says, and no more bytes than it may
/// write.
EFI_STATUS Answer(UINT64* size, void* buffer) {
  constexpr EFI_STATUS kStatuses[] = {EFI_SUCCESS,   EFI_SUCCESS,      EFI_SUCCESS,         EFI_BUFFER_TOO_SMALL,
                                      EFI_NOT_FOUND, EFI_DEVICE_ERROR, EFI_WARN_STALE_DATA, EFI_BUFFER_TOO_SMALL};
  const auto kind = answers.Take();
  const UINT64 room = *size;
  const Bytes bytes = answers.Bytes(kind >> 4);
  if (buffer != nullptr) {
    std::copy_n(bytes.begin(), std::min<UINT64>(bytes.size(), room), static_cast<std::uint8_t*>(buffer));
  }
  *size = (kind & 8) != 0 ? answers.Take<std::uint64_t>() : bytes.size();
  return kStatuses[kind & 7];
}

EFI_STATUS EFIAPI ReadSetting(SettingsProtocol*, UINT32, const EFI_GUID*, UINT64* size, VOID* value) {
  return Answer(size, value);
}
EFI_STATUS EFIAPI GetDefault(UINT32, const EFI_GUID*, UINT64* size, VOID* value) {
  return Answer(size, value);
}
EFI_STATUS EFIAPI GetLength(UINT32, VOID*, UINT64* minimum, UINT64* maximum) {
  *minimum = answers.Take<std::uint64_t>();
  *maximum = answers.Take<std::uint64_t>();
  return EFI_SUCCESS;
}
EFI_STATUS EFIAPI GetString(UINT32, UINT32, UINT64* size, CHAR8* buffer) {
  return Answer(size, buffer);
}
EFI_STATUS EFIAPI QueryPassword(PasswordStateQueryProtocol*, UINT32 question, UINT32, UINT64* size, VOID* answer) {
  const EFI_STATUS status = Answer(size, answer);
  if (question == PasswordQueryEntry && answers.Take() < 128) {
    static_cast<PasswordEntry*>(answer)->Owner = gVaroSystemPasswordsGuid;
  }
  if (question == PasswordQueryEntryCount) {
    *static_cast<UINT32*>(answer) %= 1000;  // more entries only take longer
  }
  return status;
}
EFI_STATUS EFIAPI GetOptions(UINT32, UINT32, UINT64* size, BootOptionBlock** block) {
  *size = bootOptions.size();
  *block = static_cast<BootOptionBlock*>(notebook->Uefi.GivePool(bootOptions.size()));
  std::copy(bootOptions.begin(), bootOptions.end(), reinterpret_cast<std::uint8_t*>(*block));
  notebook->BootOptionsGiven = *block;
  return EFI_SUCCESS;
}

SettingsProtocol settings{.Read = ReadSetting};
SettingDefaultsProtocol defaults{.GetDefault = GetDefault};
AssetTagLengthProtocol assetTag{.GetLength = GetLength, .GetString = GetString};
PasswordStateQueryProtocol passwords{.Query = QueryPassword};
BootOptionSourceProtocol bootOptionSource{{nullptr, nullptr}, GetOptions};

void Boot(const Bytes& language) {
  const std::pair<EFI_GUID*, void*> protocols[] = {
      {&gVaroSettingsProtocolGuid, &settings},       {&gVaroSettingDefaultsProtocolGuid, &defaults},
      {&gVaroAssetTagLengthProtocolGuid, &assetTag}, {&gVaroPasswordDirectoryProtocolGuid, &passwords},
      {&gVaroPasswordStateProtocolGuid, &passwords}, {&gVaroBootOptionSourceProtocolGuid, &bootOptionSource}};
  for (const auto& [guid, interface] : protocols) {
    notebook->Uefi.Install(*guid, interface);
  }
  notebook->Uefi.Variables[{Ucs2(u"PlatformLang"), gEfiGlobalVariableGuid}] = {EFI_VARIABLE_BOOTSERVICE_ACCESS,
                                                                               language};
  notebook->Boot();
  RequireSoundTables(*notebook);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  answers = {data, size};
  FakeNotebook machine;
  notebook = &machine;
  LimitPool();
  const auto switches = answers.Take();
  machine.FactoryMode = (switches & 1) != 0;
  machine.PasswordService.OwnerPassword = switches & 2;
  machine.PlatformLanguage = std::nullopt;
  const Bytes language = answers.Block();
  machine.Version = (switches & 4) != 0 ? std::nullopt : std::optional(answers.Ascii());
  bootOptions = answers.Block();
  std::vector<std::string> identifiers(answers.Take() % 6);
  for (std::string& identifier : identifiers) {
    identifier = answers.Ascii();
    machine.Cameras.push_back(identifier.empty() ? nullptr : identifier.c_str());
  }
  FakeFormSet& setup = machine.AddFormSet(u"Setup");
  setup.OneOf(300, u"Mode", u"Mode").Option(0, u"Off", u"Off").Option(1, u"On", u"On");
  setup.Checkbox(301, u"Wake", u"Wake");
  setup.Numeric(0x476, u"Hour", u"Hour").Bounds(0, 23);
  setup.String(9752, u"Asset", u"Asset").Text("tag").Bounds(0, 64);
  setup.String(1559, u"Second", u"Second").Text("text").Bounds(0, 64);
  Boot(language);
  Require(machine.Published() != nullptr, "nothing is published");
  RequireNothingLeft(machine);
  machine.Reboot();
  Boot(language);
  Require(machine.Published() != nullptr, "nothing is published by the second boot");
  RequireNothingLeft(machine);
  return 0;
}
