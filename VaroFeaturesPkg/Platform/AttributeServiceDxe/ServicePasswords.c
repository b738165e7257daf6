/** @file
  ServicePasswords: asks which passwords are installed, and has PasswordCheckProtocol compare with them what was typed.

  The typed text is wiped after the comparison.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/DebugLib.h>
#include <Library/RngLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/PasswordCheck.h>
#include <Protocol/PasswordService.h>
#include <Protocol/PasswordStateQuery.h>
#include <Protocol/Settings.h>
#include "ServicePasswords.h"

#define SETTING_LENGTH_WITH_OWNER  1874   ///< longest password while there is an owner password

typedef struct {
  UINT16    Class;           ///< of its requests
  UINT32    Kind;            ///< PASSWORD_KIND_...
  UINT32    LengthSetting;   ///< number of the setting that tells the longest one
  UINT32    Key;             ///< of this boot; 0 = nobody has proved to know it yet
} ServicePassword;

STATIC ServicePassword  mPasswords[] = {
  { REQUEST_CLASS_SYSTEM_PASSWORD, PASSWORD_KIND_SYSTEM, 1623, 0 },
  { REQUEST_CLASS_ADMIN_PASSWORD,  PASSWORD_KIND_ADMIN,  1621, 0 }
};

STATIC
ServicePassword *
FindPassword (
  IN UINT16  Class
  )
{
  return &mPasswords[(Class == REQUEST_CLASS_ADMIN_PASSWORD) ? 1 : 0];
}

/**
  Asks the platform for one fact about its passwords.
**/
STATIC
BOOLEAN
AskPasswords (
  IN  EFI_GUID  *Guid,
  IN  UINT32    Question,
  IN  UINT32    Entry,
  IN  UINT64    Size,
  OUT VOID      *Answer
  )
{
  PasswordStateQueryProtocol  *Protocol;
  EFI_STATUS                  Status;

  ZeroMem (Answer, (UINTN)Size);
  Status = gBS->LocateProtocol (Guid, NULL, (VOID **)&Protocol);
  if (!EFI_ERROR (Status)) {
    Status = Protocol->Query (Protocol, Question, Entry, &Size, Answer);
  }

  return (BOOLEAN)!EFI_ERROR (Status);
}

STATIC
BOOLEAN
IsInstalled (
  IN CONST ServicePassword  *Password
  )
{
  PasswordEntry  Entry;
  UINT32         Count;
  UINT32         Index;
  UINT32         State;
  UINT32         Found;

  Found = 0;
  AskPasswords (&gVaroPasswordDirectoryProtocolGuid, PasswordQueryEntryCount, 0, sizeof (Count), &Count);
  for (Index = 0; Index < Count; Index++) {
    if (AskPasswords (&gVaroPasswordDirectoryProtocolGuid, PasswordQueryEntry, Index, sizeof (Entry), &Entry) &&
        (Entry.Kind == Password->Kind) && CompareGuid (&Entry.Owner, &gVaroSystemPasswordsGuid) &&
        AskPasswords (&gVaroPasswordStateProtocolGuid, PasswordQueryState, Index, sizeof (State), &State))
    {
      Found = State;
    }
  }

  return (BOOLEAN)((Found & PASSWORD_STATE_INSTALLED) != 0);
}

/**
  Gives the longest that a password may be.
**/
STATIC
UINT8
LongestPassword (
  IN CONST ServicePassword  *Password
  )
{
  PasswordServiceProtocol  *Service;
  SettingsProtocol         *Settings;
  UINT64                   Size;
  UINT64                   Value;
  UINT32                   Number;
  EFI_STATUS               Status;

  Number = Password->LengthSetting;
  Status = gBS->LocateProtocol (&gVaroPasswordServiceProtocolGuid, NULL, (VOID **)&Service);
  if (!EFI_ERROR (Status) && (Service->OwnerPassword != 0)) {
    Number = SETTING_LENGTH_WITH_OWNER;
  }

  Value  = 0;
  Size   = sizeof (Value);
  Status = gBS->LocateProtocol (&gVaroSettingsProtocolGuid, NULL, (VOID **)&Settings);
  if (!EFI_ERROR (Status)) {
    Status = Settings->Read (Settings, Number, &gVaroSettingsNamespaceGuid, &Size, &Value);
  }

  return EFI_ERROR (Status) ? 0 : (UINT8)MIN (Value, MAX_UINT8);
}

BOOLEAN
AnswerPasswordQuery (
  IN OUT RequestBlock  *Request
  )
{
  CONST ServicePassword  *Password;

  Password            = FindPassword (Request->Class);
  Request->Results[1] = (IsInstalled (Password) ? 0 : 1) | ((UINT32)LongestPassword (Password) << 8);
  return TRUE;
}

STATIC
BOOLEAN
IsPassword (
  IN CONST ServicePassword  *Password,
  IN CONST CHAR8            *Text,
  IN UINTN                  Length
  )
{
  PasswordCheckProtocol  *Protocol;
  EFI_STATUS             Status;

  Status = gBS->LocateProtocol (&gVaroPasswordCheckProtocolGuid, NULL, (VOID **)&Protocol);
  if (!EFI_ERROR (Status)) {
    Status = Protocol->Check (Protocol, Password->Kind, Text, Length);
  }

  return (BOOLEAN)!EFI_ERROR (Status);
}

/**
  Makes a key that tells nothing of the password.
**/
STATIC
UINT32
MakeKey (
  VOID
  )
{
  UINT32  Key;
  UINTN   Index;

  do {
    if (!GetRandomNumber32 (&Key)) {
      return 0;
    }

    for (Index = 0; Index < ARRAY_SIZE (mPasswords); Index++) {
      Key = (Key == mPasswords[Index].Key) ? 0 : Key;
    }
  } while (Key == 0);

  return Key;
}

BOOLEAN
AnswerPasswordVerify (
  IN OUT RequestBlock  *Request
  )
{
  ServicePassword  *Password;
  CHAR8            *Text;
  UINTN            Room;
  UINTN            Length;
  BOOLEAN          Right;

  Password = FindPassword (Request->Class);
  Text     = (CHAR8 *)&Request->PayloadLength;
  Room     = REQUEST_BUFFER_SIZE - OFFSET_OF (RequestBlock, PayloadLength);
  Length   = AsciiStrnLenS (Text, Room);
  Right    = (BOOLEAN)(IsInstalled (Password) && (Length <= LongestPassword (Password)) &&
                       IsPassword (Password, Text, Length));
  ZeroMem (Text, Length);
  if (Right && (Password->Key == 0)) {
    Password->Key = MakeKey ();
  }

  Request->Results[1] = Right ? Password->Key : 0;
  return (BOOLEAN)(Request->Results[1] != 0);
}

BOOLEAN
KeyOpensAttributes (
  IN UINT32  Key
  )
{
  BOOLEAN  Locked;
  UINTN    Index;

  for (Locked = FALSE, Index = 0; Index < ARRAY_SIZE (mPasswords); Index++) {
    if (!IsInstalled (&mPasswords[Index])) {
      continue;
    }

    if ((Key != 0) && (Key == mPasswords[Index].Key)) {
      return TRUE;
    }

    Locked = TRUE;
  }

  return (BOOLEAN)!Locked;
}
