/** @file
  ScenarioLib on QEMU's fw_cfg.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Base.h>
#include <Library/BaseLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PrintLib.h>
#include <Library/QemuFwCfgLib.h>
#include <Library/ScenarioLib.h>

#define SCENARIO_TEXT_LIMIT  SIZE_4KB

CHAR8 *
EFIAPI
GetScenarioText (
  IN CONST CHAR8  *Name
  )
{
  CHAR8                 Path[QEMU_FW_CFG_FNAME_SIZE];
  FIRMWARE_CONFIG_ITEM  Item;
  UINTN                 Size;
  CHAR8                 *Text;

  AsciiSPrint (Path, sizeof (Path), "opt/corvane/%a", Name);
  if (RETURN_ERROR (QemuFwCfgFindFile (Path, &Item, &Size)) || (Size > SCENARIO_TEXT_LIMIT)) {
    return NULL;
  }

  Text = AllocateZeroPool (Size + 1);
  if (Text != NULL) {
    QemuFwCfgSelectItem (Item);
    QemuFwCfgReadBytes (Size, Text);
  }

  return Text;
}

UINT64
EFIAPI
ReadScenarioNumber (
  IN CONST CHAR8  *Text
  )
{
  if ((Text[0] == '0') && ((Text[1] == 'x') || (Text[1] == 'X'))) {
    return AsciiStrHexToUint64 (Text);
  }

  return AsciiStrDecimalToUint64 (Text);
}

UINT64
EFIAPI
GetScenarioNumber (
  IN CONST CHAR8  *Name,
  IN UINT64       Default
  )
{
  CHAR8   *Text;
  UINT64  Number;

  Text = GetScenarioText (Name);
  if (Text == NULL) {
    return Default;
  }

  Number = ReadScenarioNumber (Text);
  FreePool (Text);
  return Number;
}

CHAR8 *
EFIAPI
NextScenarioEntry (
  IN OUT CHAR8  **Rest,
  IN     CHAR8  Separator
  )
{
  CHAR8  *Entry;
  CHAR8  *End;

  Entry = *Rest;
  if (Entry == NULL) {
    return NULL;
  }

  for (End = Entry; (*End != Separator) && (*End != '\0'); End++) {
  }

  *Rest = (*End == '\0') ? NULL : End + 1;
  *End  = '\0';
  return Entry;
}

BOOLEAN
EFIAPI
ScenarioLists (
  IN CONST CHAR8  *Name,
  IN CONST CHAR8  *Word
  )
{
  CHAR8    *Text;
  CHAR8    *Rest;
  CHAR8    *Entry;
  BOOLEAN  Found;

  Text  = GetScenarioText (Name);
  Rest  = Text;
  Found = FALSE;
  while (!Found && ((Entry = NextScenarioEntry (&Rest, ',')) != NULL)) {
    Found = (BOOLEAN)(AsciiStrCmp (Entry, Word) == 0);
  }

  if (Text != NULL) {
    FreePool (Text);
  }

  return Found;
}
