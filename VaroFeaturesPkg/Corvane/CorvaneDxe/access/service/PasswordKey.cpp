/** @file
  Obtaining of the key for a password.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "access/service/PasswordKey.hpp"

#include "access/service/Request.hpp"
#include "uefi/Text.hpp"

namespace {

/// What the service says of a class of passwords; false when it does not answer.
bool QueryPassword(AccessState& access, UINT16 passwordClass, UINT32& properties) {
  Request request(access, passwordClass, REQUEST_SELECT_PASSWORD_QUERY);
  request.Block().Arguments[0] = 1;
  const bool answered = !EFI_ERROR(request.Dispatch()) && request.Handled();
  properties = request.Block().Results[1];
  return answered;
}

bool MayBe(UINT32 properties, size_t length) {
  return PASSWORD_REQUEST_STATE(properties) == 0 && length <= PASSWORD_REQUEST_MAXIMUM_LENGTH(properties);
}

enum class Verdict { Unheard, Refused, Accepted };

/// Has a class of passwords judge the password; `key` is set when it is accepted.
Verdict VerifyPassword(AccessState& access, UINT16 passwordClass, std::span<const CHAR8> password, UINT32& key) {
  Request request(access, passwordClass, REQUEST_SELECT_PASSWORD_VERIFY);
  CopyMem(request.Answer().data(), password.data(), password.size());
  if (EFI_ERROR(request.Dispatch())) {
    return Verdict::Unheard;
  }
  if (!request.Handled()) {
    return Verdict::Refused;
  }
  key = request.Block().Results[1];
  return Verdict::Accepted;
}

}  // namespace

UINT32 ObtainPasswordKey(AccessState& access, const CHAR8* password) {
  UINT32 system = 0;
  UINT32 admin = 0;
  if (access.RequestBuffer == nullptr || !QueryPassword(access, REQUEST_CLASS_SYSTEM_PASSWORD, system) ||
      !QueryPassword(access, REQUEST_CLASS_ADMIN_PASSWORD, admin)) {
    return 0;
  }
  const std::span<const CHAR8> text(password, AsciiLength(password));
  UINT32 key = 0;
  Verdict verdict = Verdict::Refused;
  if (MayBe(admin, text.size())) {
    verdict = VerifyPassword(access, REQUEST_CLASS_ADMIN_PASSWORD, text, key);
  }
  if (verdict == Verdict::Refused && MayBe(system, text.size())) {
    static_cast<void>(VerifyPassword(access, REQUEST_CLASS_SYSTEM_PASSWORD, text, key));  // the key says it all
  }
  return key;
}
