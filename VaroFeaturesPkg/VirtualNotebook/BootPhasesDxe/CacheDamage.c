/** @file
  CacheDamage: damages variables of the attribute cache, as the scenario asks.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Corvane/AttributeCache.h>
#include <Library/BaseLib.h>
#include <Library/DebugLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PrintLib.h>
#include <Library/ScenarioLib.h>
#include <Library/UefiLib.h>
#include <Library/UefiRuntimeServicesTableLib.h>
#include "CacheDamage.h"

#define NAME_CAPACITY  32   ///< characters of a variable's name

/**
  Reads the number that follows a word: "WORD=NUMBER".

  @param[out]  Number  A "-" before the digits counts from the end of what has so many.
**/
STATIC
BOOLEAN
HasNumber (
  IN  CONST CHAR8  *How,
  IN  CONST CHAR8  *Word,
  IN  UINTN        End,
  OUT UINTN        *Number
  )
{
  UINTN  Length;

  Length = AsciiStrLen (Word);
  if ((AsciiStrnCmp (How, Word, Length) != 0) || (How[Length] != '=')) {
    return FALSE;
  }

  How += Length + 1;
  if (*How == '-') {
    *Number = End - (UINTN)ReadScenarioNumber (How + 1);
  } else {
    *Number = (UINTN)ReadScenarioNumber (How);
  }

  return TRUE;
}

/**
  Changes the content of a variable in memory.

  @return  Its new size.
**/
STATIC
UINTN
DamageContent (
  IN OUT UINT8        *Data,
  IN     UINTN        Size,
  IN     CONST CHAR8  *How
  )
{
  UINTN  Index;
  CHAR8  *Value;

  if (AsciiStrCmp (How, "delete") == 0) {
    return 0;
  }

  if (AsciiStrCmp (How, "truncate") == 0) {
    return Size / 2;
  }

  if (AsciiStrCmp (How, "flip") == 0) {
    Data[Size / 2] ^= 1;
  } else if (HasNumber (How, "flip", 8 * Size, &Index)) {
    ASSERT (Index < 8 * Size);
    Data[Index / 8] ^= (UINT8)(1 << (Index % 8));
  } else if (HasNumber (How, "count", Size, &Index)) {
    Value = AsciiStrStr (How, ",");
    ASSERT ((Value != NULL) && (Index + sizeof (UINT16) <= Size));
    WriteUnaligned16 ((UINT16 *)(Data + Index), (UINT16)ReadScenarioNumber (Value + 1));
  } else {
    ASSERT (AsciiStrCmp (How, "garbage") == 0);
    for (Index = 0; Index < Size; Index++) {
      Data[Index] = (UINT8)(0xA7 + 29 * Index);
    }
  }

  return Size;
}

STATIC
VOID
DamageVariable (
  IN CONST CHAR8  *Name,
  IN CONST CHAR8  *How
  )
{
  CHAR16      WideName[NAME_CAPACITY];
  UINT8       *Data;
  UINTN       Size;
  UINTN       Foreign;
  UINT32      Attributes;
  EFI_STATUS  Status;

  UnicodeSPrint (WideName, sizeof (WideName), L"%a", Name);
  Status = GetVariable3 (WideName, &gVaroAttributeVariableGuid, (VOID **)&Data, &Size, &Attributes);
  if (!EFI_ERROR (Status)) {
    if (HasNumber (How, "attributes", 0, &Foreign)) {
      gRT->SetVariable (WideName, &gVaroAttributeVariableGuid, Attributes, 0, NULL);
      Attributes = (UINT32)Foreign;
    } else {
      Size = DamageContent (Data, Size, How);
    }

    Status = gRT->SetVariable (WideName, &gVaroAttributeVariableGuid, Attributes, Size, Data);
    FreePool (Data);
  }

  DEBUG ((DEBUG_INFO, "%a: damage %a %a: %r\n", gEfiCallerBaseName, Name, How, Status));
}

VOID
DamageCache (
  VOID
  )
{
  CHAR8  *Text;
  CHAR8  *Rest;
  CHAR8  *How;
  CHAR8  *Name;

  Text = GetScenarioText ("damage");
  Rest = Text;
  while ((How = NextScenarioEntry (&Rest, ';')) != NULL) {
    Name = NextScenarioEntry (&How, ':');
    if (How != NULL) {
      DamageVariable (Name, How);
    }
  }

  if (Text != NULL) {
    FreePool (Text);
  }
}
