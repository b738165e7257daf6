/** @file
  PasswordsDxe: which passwords the notebook has, which of them are set, and whether a text is one of them.

  Scenario items: "owner-password" non-zero makes the owner password known; "passwords" lists those that are set, of
  "admin", "system" and "owner". "password-admin" and "password-system" are their texts: each is read again for every
  comparison and wiped after it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/ScenarioLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/PasswordCheck.h>
#include <Protocol/PasswordService.h>
#include <Protocol/PasswordStateQuery.h>

typedef struct {
  PasswordEntry    Entry;
  CONST CHAR8      *Name;   ///< in the scenario item "passwords"
  UINT32           State;
} Password;

//
// The second entry belongs to a disk, not to the system: whoever reads the list has to look at the owner.
//
STATIC Password  mPasswords[] = {
  { { PASSWORD_KIND_ADMIN,  VARO_SYSTEM_PASSWORDS_GUID }, "admin",  0                        },
  { { PASSWORD_KIND_SYSTEM, { 0x95C5C4CC, 0x63A0, 0x427C, { 0x9A, 0x1F, 0xC0, 0xFE, 0x9C, 0xC8, 0xD2, 0xB5 } } },
    "disk", PASSWORD_STATE_INSTALLED },
  { { PASSWORD_KIND_SYSTEM, VARO_SYSTEM_PASSWORDS_GUID }, "system", 0                        },
  { { PASSWORD_KIND_OWNER,  VARO_SYSTEM_PASSWORDS_GUID }, "owner",  0                        }
};

STATIC
EFI_STATUS
EFIAPI
QueryPasswords (
  IN     PasswordStateQueryProtocol   *This,
  IN     UINT32                       Question,
  IN     UINT32                       Entry,
  IN OUT UINT64                       *Size,
  OUT    VOID                         *Answer
  )
{
  STATIC CONST UINT32  Count = ARRAY_SIZE (mPasswords);
  CONST VOID           *Source;
  UINT64               Length;

  if ((Question != PasswordQueryEntryCount) && (Entry >= ARRAY_SIZE (mPasswords))) {
    return EFI_NOT_FOUND;
  }

  Length = sizeof (UINT32);
  switch (Question) {
    case PasswordQueryEntryCount:
      Source = &Count;
      break;
    case PasswordQueryEntry:
      Source = &mPasswords[Entry].Entry;
      Length = sizeof (PasswordEntry);
      break;
    case PasswordQueryState:
      Source = &mPasswords[Entry].State;
      break;
    default:
      return EFI_UNSUPPORTED;
  }

  if (*Size < Length) {
    *Size = Length;
    return EFI_BUFFER_TOO_SMALL;
  }

  *Size = Length;
  CopyMem (Answer, Source, (UINTN)Length);
  return EFI_SUCCESS;
}

STATIC
EFI_STATUS
EFIAPI
CheckPassword (
  IN PasswordCheckProtocol  *This,
  IN UINT32                 Kind,
  IN CONST CHAR8            *Text,
  IN UINTN                  Length
  )
{
  CHAR8    *Right;
  UINTN    RightSize;
  BOOLEAN  Same;

  Right = GetScenarioText ((Kind == PASSWORD_KIND_ADMIN) ? "password-admin" : "password-system");
  if (Right == NULL) {
    return EFI_NOT_FOUND;
  }

  RightSize = AsciiStrSize (Right);
  Same      = (BOOLEAN)((Length + 1 == RightSize) && (CompareMem (Right, Text, Length) == 0));
  ZeroMem (Right, RightSize);
  FreePool (Right);
  return Same ? EFI_SUCCESS : EFI_ACCESS_DENIED;
}

STATIC PasswordCheckProtocol       mPasswordCheck   = { CheckPassword };
STATIC PasswordServiceProtocol     mPasswordService = { .Revision = PASSWORD_SERVICE_OWNER_REVISION };
STATIC PasswordStateQueryProtocol  mPasswordState   = { QueryPasswords };

EFI_STATUS
EFIAPI
PasswordsDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_HANDLE  Handle;
  EFI_STATUS  Status;
  UINTN       Index;

  mPasswordService.OwnerPassword = (UINT8)(GetScenarioNumber ("owner-password", 0) != 0);
  for (Index = 0; Index < ARRAY_SIZE (mPasswords); Index++) {
    if (ScenarioLists ("passwords", mPasswords[Index].Name)) {
      mPasswords[Index].State = PASSWORD_STATE_INSTALLED;
    }
  }

  Handle = NULL;
  Status = gBS->InstallMultipleProtocolInterfaces (&Handle, &gVaroPasswordCheckProtocolGuid, &mPasswordCheck, NULL);
  if (!EFI_ERROR (Status) && !ScenarioLists ("without", "password-service")) {
    Status = gBS->InstallMultipleProtocolInterfaces (
                    &Handle,
                    &gVaroPasswordServiceProtocolGuid,
                    &mPasswordService,
                    NULL
                    );
  }

  if (!EFI_ERROR (Status) && !ScenarioLists ("without", "password-directory")) {
    Status = gBS->InstallMultipleProtocolInterfaces (
                    &Handle,
                    &gVaroPasswordDirectoryProtocolGuid,
                    &mPasswordState,
                    NULL
                    );
  }

  if (!EFI_ERROR (Status) && !ScenarioLists ("without", "password-state")) {
    Status = gBS->InstallMultipleProtocolInterfaces (
                    &Handle,
                    &gVaroPasswordStateProtocolGuid,
                    &mPasswordState,
                    NULL
                    );
  }

  return Status;
}
