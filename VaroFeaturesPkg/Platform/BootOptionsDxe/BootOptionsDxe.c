/** @file
  BootOptionsDxe: BootOptionSourceProtocol on the variables "BootOrder" and "Boot####" (UEFI specification, chapter on
  the boot manager).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Guid/GlobalVariable.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PlatformPartLib.h>
#include <Library/PrintLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Library/UefiLib.h>
#include <Protocol/BootOptionSource.h>

#define OPTION_CAPACITY  16

typedef struct {
  UINT16    Number;     ///< #### of the variable
  UINT16    Priority;   ///< place in BootOrder
  UINT8     *Data;      ///< the load option, in pool
  UINTN     Size;       ///< bytes of Data without the optional data
} BootOption;

/**
  Gives the bytes of a load option up to its optional data; 0 when it is malformed.
**/
STATIC
UINTN
LoadOptionSize (
  IN CONST UINT8  *Data,
  IN UINTN        Size
  )
{
  UINTN   Offset;
  UINT16  PathsLength;

  Offset = sizeof (UINT32) + sizeof (UINT16);
  if (Size < Offset) {
    return 0;
  }

  PathsLength = ReadUnaligned16 ((CONST UINT16 *)(Data + sizeof (UINT32)));
  do {
    if (Size - Offset < sizeof (CHAR16)) {
      return 0;
    }

    Offset += sizeof (CHAR16);
  } while (ReadUnaligned16 ((CONST UINT16 *)(Data + Offset - sizeof (CHAR16))) != 0);

  return (Size - Offset < PathsLength) ? 0 : Offset + PathsLength;
}

/**
  Reads the options of BootOrder, sorted by their numbers.

  @return  How many there are.
**/
STATIC
UINTN
ReadOptions (
  OUT BootOption  *Options
  )
{
  UINT16      *Order;
  UINTN       OrderSize;
  UINTN       Index;
  UINTN       Place;
  UINTN       Count;
  BootOption  Option;
  CHAR16      Name[sizeof ("Boot####")];

  Count = 0;
  GetEfiGlobalVariable2 (EFI_BOOT_ORDER_VARIABLE_NAME, (VOID **)&Order, &OrderSize);
  for (Index = 0; (Order != NULL) && (Index < OrderSize / sizeof (*Order)) && (Count < OPTION_CAPACITY); Index++) {
    UnicodeSPrint (Name, sizeof (Name), L"Boot%04X", Order[Index]);
    GetEfiGlobalVariable2 (Name, (VOID **)&Option.Data, &Option.Size);
    if (Option.Data == NULL) {
      continue;
    }

    Option.Number   = Order[Index];
    Option.Priority = (UINT16)Index;
    Option.Size     = LoadOptionSize (Option.Data, Option.Size);
    if (Option.Size == 0) {
      FreePool (Option.Data);
      continue;
    }

    for (Place = Count; (Place > 0) && (Options[Place - 1].Number > Option.Number); Place--) {
      Options[Place] = Options[Place - 1];
    }

    Options[Place] = Option;
    Count++;
  }

  if (Order != NULL) {
    FreePool (Order);
  }

  return Count;
}

STATIC
EFI_STATUS
EFIAPI
GetBootOptions (
  IN  UINT32            Class,
  IN  UINT32            Select,
  OUT UINT64            *Size,
  OUT BootOptionBlock   **Block
  )
{
  BootOption  Options[OPTION_CAPACITY];
  UINTN       Count;
  UINTN       Index;
  UINT8       *Cursor;

  *Size  = 0;
  *Block = NULL;
  if ((Class != BOOT_OPTION_SOURCE_CLASS) || (Select != BOOT_OPTION_SOURCE_SELECT)) {
    return EFI_UNSUPPORTED;
  }

  Count = ReadOptions (Options);
  *Size = sizeof (BootOptionBlock) + Count * sizeof (UINT16);
  for (Index = 0; Index < Count; Index++) {
    *Size += Options[Index].Size;
  }

  *Block = AllocatePool ((UINTN)*Size);
  if (*Block != NULL) {
    (*Block)->OptionCount = (UINT32)Count;
    Cursor                = (UINT8 *)(*Block + 1);
    for (Index = 0; Index < Count; Index++) {
      WriteUnaligned16 ((UINT16 *)Cursor, Options[Index].Priority);
      Cursor += sizeof (UINT16);
    }

    for (Index = 0; Index < Count; Index++) {
      CopyMem (Cursor, Options[Index].Data, Options[Index].Size);
      Cursor += Options[Index].Size;
    }
  }

  for (Index = 0; Index < Count; Index++) {
    FreePool (Options[Index].Data);
  }

  return (*Block == NULL) ? EFI_OUT_OF_RESOURCES : EFI_SUCCESS;
}

STATIC BootOptionSourceProtocol  mBootOptionSource = { .GetOptions = GetBootOptions };

EFI_STATUS
EFIAPI
BootOptionsDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_HANDLE  Handle;

  if (!PlatformHasPart ("boot-options")) {
    return EFI_UNSUPPORTED;
  }

  Handle = NULL;
  return gBS->InstallMultipleProtocolInterfaces (
                &Handle,
                &gVaroBootOptionSourceProtocolGuid,
                &mBootOptionSource,
                NULL
                );
}
