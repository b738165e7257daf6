/** @file
  AttrPassword: asks for a password without showing it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include "AttrPassword.h"

VOID
WipeBytes (
  OUT VOID   *Bytes,
  IN  UINTN  Count
  )
{
  volatile UINT8  *Next;

  for (Next = Bytes; Count > 0; Count--) {
    *Next++ = 0;
  }
}

/**
  Prints on the console, even when the output is redirected.
**/
STATIC
VOID
Prompt (
  IN CHAR16  *Text
  )
{
  if (gST->StdErr != NULL) {
    gST->StdErr->OutputString (gST->StdErr, Text);
  }
}

/**
  Waits for a key.
**/
STATIC
EFI_STATUS
ReadKey (
  OUT EFI_INPUT_KEY  *Key
  )
{
  UINTN       Index;
  EFI_STATUS  Status;

  do {
    Status = gBS->WaitForEvent (1, &gST->ConIn->WaitForKey, &Index);
    if (!EFI_ERROR (Status)) {
      Status = gST->ConIn->ReadKeyStroke (gST->ConIn, Key);
    }
  } while (Status == EFI_NOT_READY);

  return Status;
}

EFI_STATUS
AskPassword (
  OUT CHAR8  *Password
  )
{
  EFI_INPUT_KEY  Key;
  UINTN          Length;
  EFI_STATUS     Result;
  EFI_STATUS     Status;

  Prompt (L"Password: ");
  Length = 0;
  Result = EFI_SUCCESS;
  for ( ; ; ) {
    Status = ReadKey (&Key);
    if (EFI_ERROR (Status)) {
      Result = Status;
      break;
    }

    if (Key.ScanCode == SCAN_ESC) {
      Result = EFI_ABORTED;
      break;
    }

    if (Key.UnicodeChar == CHAR_CARRIAGE_RETURN) {
      break;
    }

    if (Key.UnicodeChar == CHAR_BACKSPACE) {
      Length -= (Length > 0) ? 1 : 0;
    } else if ((Key.UnicodeChar < L' ') || (Key.UnicodeChar > L'~') || (Length == PASSWORD_CAPACITY - 1)) {
      Result = (Key.UnicodeChar == CHAR_NULL) ? Result : EFI_UNSUPPORTED;   // cursor and function keys have no character
    } else {
      Password[Length++] = (CHAR8)Key.UnicodeChar;
    }
  }

  WipeBytes (&Key, sizeof (Key));
  Prompt (L"\r\n");
  WipeBytes (Password + Length, PASSWORD_CAPACITY - Length);
  if (EFI_ERROR (Result)) {
    WipeBytes (Password, PASSWORD_CAPACITY);
  }

  return Result;
}
