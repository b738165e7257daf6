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

constexpr UINT32 kOwnerLengthSetting = 1874;  // one length for all passwords of a platform with an owner password

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
  const CHAR16* Name;
  const CHAR16* DisplayName;
  UINT16 Handle;
  UINT32 Token;
  UINT32 LengthSetting;
  UINT32 State;
};

void PlacePassword(AttributeDatabase& database, SettingsProtocol* settings, const Password& password) {
  OwnedRecord<PasswordRecord> record = MakeRecord<PasswordRecord>();
  if (!record) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: attribute \"%s\" dropped: out of memory\n", password.Name));
    return;
  }
  InternDisplayString(database, password.DisplayName);
  record->Head.NameHandle = Raw(InternName(database, password.Name));
  record->Head.Token = password.Token;
  // A length that cannot be read leaves 0.
  record->MaxLength = static_cast<UINT16>(ReadSetting(settings, password.LengthSetting).Value());
  record->PasswordInstalled = password.State & PASSWORD_STATE_INSTALLED;
  database.PlaceAttribute(AsAttribute(std::move(record)), AttributeHandle{password.Handle});
}

}  // namespace

void BuildPasswords(AttributeDatabase& database, SettingsProtocol* settings, bool ownerPassword) {
  const PasswordStates states = QueryPasswordStates();
  PlacePassword(database, settings,
                {.Name = u"AdminPassword[RegEx:^\\\\133\\\\x20-\\\\x7e\\\\135{0,32}$]"_ucs2,
                 .DisplayName = u"Admin Password"_ucs2,
                 .Handle = ATTRIBUTE_HANDLE_ADMIN_PASSWORD,
                 .Token = 1175,
                 .LengthSetting = ownerPassword ? kOwnerLengthSetting : 1621,
                 .State = states[PASSWORD_KIND_ADMIN]});
  PlacePassword(database, settings,
                {.Name = u"SystemPassword[RegEx:^\\\\133\\\\x20-\\\\x7e\\\\135{0,32}$]"_ucs2,
                 .DisplayName = u"System Password"_ucs2,
                 .Handle = ATTRIBUTE_HANDLE_SYSTEM_PASSWORD,
                 .Token = 1174,
                 .LengthSetting = ownerPassword ? kOwnerLengthSetting : 1623,
                 .State = states[PASSWORD_KIND_SYSTEM]});
  if (ownerPassword) {
    PlacePassword(database, settings,
                  {.Name = u"OwnerPassword[RegEx:^\\\\133\\\\x20-\\\\x7e\\\\135{0,32}$]"_ucs2,
                   .DisplayName = u"Owner Password"_ucs2,
                   .Handle = ATTRIBUTE_HANDLE_OWNER_PASSWORD,
                   .Token = 1176,
                   .LengthSetting = kOwnerLengthSetting,
                   .State = states[PASSWORD_KIND_OWNER]});
  } else {
    database.PlaceAttribute(nullptr, AttributeHandle{ATTRIBUTE_HANDLE_OWNER_PASSWORD});
  }
}
