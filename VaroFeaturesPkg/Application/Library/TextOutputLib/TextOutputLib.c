/** @file
  TextOutputLib: prints text on the console, in lines of any length.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/PrintLib.h>
#include <Library/TextOutputLib.h>
#include <Library/UefiBootServicesTableLib.h>

STATIC CHAR16   mPending[256];
STATIC UINTN    mPendingCount;
STATIC BOOLEAN  mStopped;

STATIC
VOID
Flush (
  VOID
  )
{
  mPending[mPendingCount] = L'\0';
  mPendingCount           = 0;
  if (!mStopped) {
    mStopped = (BOOLEAN)EFI_ERROR (gST->ConOut->OutputString (gST->ConOut, mPending));
  }
}

STATIC
VOID
PutCharacter (
  IN CHAR16  Character
  )
{
  if (mPendingCount >= ARRAY_SIZE (mPending) - 3) {
    Flush ();
  }

  if (Character == L'\n') {
    mPending[mPendingCount++] = L'\r';
  }

  mPending[mPendingCount++] = Character;
  if (Character == L'\n') {
    Flush ();
  }
}

VOID
StartOutput (
  VOID
  )
{
  mPendingCount = 0;
  mStopped      = FALSE;
}

BOOLEAN
OutputStopped (
  VOID
  )
{
  return mStopped;
}

VOID
PutText (
  IN CONST CHAR8  *Text
  )
{
  for ( ; *Text != '\0'; Text++) {
    PutCharacter ((UINT8)*Text);
  }
}

VOID
PutWideText (
  IN CONST CHAR16  *Text
  )
{
  for ( ; *Text != L'\0'; Text++) {
    if (*Text != L'\r') {
      PutCharacter (*Text);
    }
  }
}

VOID
EFIAPI
PutFormat (
  IN CONST CHAR8  *Format,
  ...
  )
{
  CHAR8    Text[128];
  VA_LIST  Arguments;

  VA_START (Arguments, Format);
  AsciiVSPrint (Text, sizeof (Text), Format, Arguments);
  VA_END (Arguments);
  PutText (Text);
}

VOID
PutEscaped (
  IN CONST CHAR8  *Bytes,
  IN UINTN        Count,
  IN CONST CHAR8  *AlsoEscaped
  )
{
  CONST CHAR8  *Escaped;
  UINTN        Index;
  BOOLEAN      Plain;

  for (Index = 0; Index < Count; Index++) {
    Plain = (BOOLEAN)((Bytes[Index] >= ' ') && (Bytes[Index] <= '~'));
    for (Escaped = AlsoEscaped; *Escaped != '\0'; Escaped++) {
      Plain = (BOOLEAN)(Plain && (Bytes[Index] != *Escaped));
    }

    if (Plain) {
      PutCharacter ((UINT8)Bytes[Index]);
    } else {
      PutFormat ("\\x%02X", (UINT8)Bytes[Index]);
    }
  }
}
