/** @file
  The password attributes, at their reserved handles.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "sources/Passwords.hpp"

#include "sources/Interning.hpp"
#include "uefi/Protocols.hpp"

extern "C" {
#include <Corvane/OwnAttributes.h>
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
  OwnAttribute Own;
  UINT16 Handle;
  UINT16 LengthSetting;  // on a platform without an owner password
  UINT16 Kind;
};

constexpr std::array kPasswords = {
    Password{.Own = OWN_ADMIN_PASSWORD,
             .Handle = ATTRIBUTE_HANDLE_ADMIN_PASSWORD,
             .LengthSetting = 1621,
             .Kind = PASSWORD_KIND_ADMIN},
    Password{.Own = OWN_SYSTEM_PASSWORD,
             .Handle = ATTRIBUTE_HANDLE_SYSTEM_PASSWORD,
             .LengthSetting = 1623,
             .Kind = PASSWORD_KIND_SYSTEM},
    Password{.Own = OWN_OWNER_PASSWORD,
             .Handle = ATTRIBUTE_HANDLE_OWNER_PASSWORD,
             .LengthSetting = kOwnerLengthSetting,
             .Kind = PASSWORD_KIND_OWNER},
};

void PlacePassword(AttributeDatabase& database, SettingsProtocol* settings, const Password& password,
                   UINT32 lengthSetting, UINT32 state) {
  OwnedRecord<PasswordRecord> record = MakeRecord<PasswordRecord>();
  if (!record) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: attribute \"%a\" dropped: out of memory\n", password.Own.Name));
    return;
  }
  record->Head.NameHandle = Raw(InternOwnTexts(database, password.Own.Name, password.Own.DisplayText).Name);
  record->Head.Token = password.Own.Token;
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
