/** @file
  The password attributes, at their reserved handles.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "sources/Passwords.hpp"

#include "sources/Interning.hpp"
#include "uefi/Protocols.hpp"

extern "C" {
#include <Protocol/PasswordStateQuery.h>
}

namespace {

constexpr UINT16 kOwnerLengthSetting = 1874;  // one length for all passwords of a platform with an owner password

/// States by PASSWORD_KIND_...; 0 = not installed.
using PasswordStates = std::array<UINT32, 3>;

template <typename Answer>
bool Ask(PasswordStateQueryProtocol* service, PASSWORD_QUERY question, UINT32 entry, Answer& answer) {
  UINT64 size = sizeof(answer);
  answer = {};
  return !EFI_ERROR(service->Query(service, question, entry, &size, &answer));
}

PasswordStates QueryPasswordStates() {
  PasswordStates states{};
  auto* const directory = FindProtocol<PasswordStateQueryProtocol>(gVaroPasswordDirectoryProtocolGuid);
  auto* const stateService = FindProtocol<PasswordStateQueryProtocol>(gVaroPasswordStateProtocolGuid);
  if (directory == nullptr || stateService == nullptr) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: %a not found: every password counts as not installed\n",
           directory == nullptr ? "gVaroPasswordDirectoryProtocolGuid" : "gVaroPasswordStateProtocolGuid"));
    return states;
  }
  UINT32 count = 0;
  if (!Ask(directory, PasswordQueryEntryCount, 0, count)) {
    return states;
  }
  for (UINT32 i = 0; i < count; ++i) {
    PasswordEntry entry{};
    UINT32 state = 0;
    if (!Ask(directory, PasswordQueryEntry, i, entry)) {
      break;  // there are fewer than announced
    }
    if (entry.Kind < states.size() && CompareGuid(&entry.Owner, &gVaroSystemPasswordsGuid) &&
        Ask(stateService, PasswordQueryState, i, state)) {
      states[entry.Kind] = state;
    }
  }
  return states;
}

struct Password {
  const CHAR8* Name;
  const CHAR8* DisplayName;
  UINT16 Handle;
  UINT16 Token;
  UINT16 LengthSetting;  // on a platform without an owner password
  UINT16 Kind;
};

constexpr std::array kPasswords = {
    Password{.Name = "AdminPassword[RegEx:^\\\\133\\\\x20-\\\\x7e\\\\135{0,32}$]",
             .DisplayName = "Admin Password",
             .Handle = ATTRIBUTE_HANDLE_ADMIN_PASSWORD,
             .Token = 1175,
             .LengthSetting = 1621,
             .Kind = PASSWORD_KIND_ADMIN},
    Password{.Name = "SystemPassword[RegEx:^\\\\133\\\\x20-\\\\x7e\\\\135{0,32}$]",
             .DisplayName = "System Password",
             .Handle = ATTRIBUTE_HANDLE_SYSTEM_PASSWORD,
             .Token = 1174,
             .LengthSetting = 1623,
             .Kind = PASSWORD_KIND_SYSTEM},
    Password{.Name = "OwnerPassword[RegEx:^\\\\133\\\\x20-\\\\x7e\\\\135{0,32}$]",
             .DisplayName = "Owner Password",
             .Handle = ATTRIBUTE_HANDLE_OWNER_PASSWORD,
             .Token = 1176,
             .LengthSetting = kOwnerLengthSetting,
             .Kind = PASSWORD_KIND_OWNER},
};

void PlacePassword(AttributeDatabase& database, SettingsProtocol* settings, const Password& password,
                   UINT32 lengthSetting, UINT32 state) {
  OwnedRecord<PasswordRecord> record = MakeRecord<PasswordRecord>();
  if (!record) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: attribute \"%a\" dropped: out of memory\n", password.Name));
    return;
  }
  record->Head.NameHandle = Raw(InternOwnTexts(database, password.Name, password.DisplayName).Name);
  record->Head.Token = password.Token;
  // A length that cannot be read leaves 0.
  record->MaxLength = static_cast<UINT16>(ReadSetting(settings, lengthSetting).Value());
  record->PasswordInstalled = state & PASSWORD_STATE_INSTALLED;
  database.PlaceAttribute(AsAttribute(std::move(record)), AttributeHandle{password.Handle});
}

}  // namespace

void BuildPasswords(AttributeDatabase& database, SettingsProtocol* settings, bool ownerPassword) {
  const PasswordStates states = QueryPasswordStates();
  for (const Password& password : kPasswords) {
    if (password.Kind == PASSWORD_KIND_OWNER && !ownerPassword) {
      database.PlaceAttribute(nullptr, AttributeHandle{password.Handle});  // a restored one goes
    } else {
      PlacePassword(database, settings, password, ownerPassword ? kOwnerLengthSetting : password.LengthSetting,
                    states[password.Kind]);
    }
  }
}
