/** @file
  CacheCheck: lists the driver's variables and decodes the attribute cache with the firmware's own decompressor,
  EFI_DECOMPRESS_PROTOCOL.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Corvane/AttributeCache.h>
#include <Library/BaseLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/TextOutputLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Library/UefiLib.h>
#include <Protocol/Decompress.h>
#include "CacheCheck.h"

#define WIDE_(Text)  L##Text
#define WIDE(Text)   WIDE_(Text)

//
// A block opens with the lengths of what follows and of the decoded content.
//
#define BLOCK_HEAD  (2 * sizeof (UINT32))

typedef struct {
  CONST CHAR8     *Name;
  CONST CHAR16    *Variable;
  BOOLEAN         Compressed;
} CacheVariable;

STATIC CONST CacheVariable  mVariables[] = {
  { ATTRIBUTE_CACHE_BIOS_VERSION,    WIDE (ATTRIBUTE_CACHE_BIOS_VERSION),    FALSE },
  { ATTRIBUTE_CACHE_ATTRIBUTES_DATA, WIDE (ATTRIBUTE_CACHE_ATTRIBUTES_DATA), TRUE  },
  { ATTRIBUTE_CACHE_COUNTERS,        WIDE (ATTRIBUTE_CACHE_COUNTERS),        FALSE },
  { ATTRIBUTE_CACHE_NAMES,           WIDE (ATTRIBUTE_CACHE_NAMES),           TRUE  },
  { ATTRIBUTE_CACHE_DISPLAY_STRINGS, WIDE (ATTRIBUTE_CACHE_DISPLAY_STRINGS), TRUE  },
  { ATTRIBUTE_CACHE_HELP_STRINGS,    WIDE (ATTRIBUTE_CACHE_HELP_STRINGS),    TRUE  },
  { ATTRIBUTE_CACHE_STATUS,          WIDE (ATTRIBUTE_CACHE_STATUS),          FALSE },
  { ATTRIBUTE_DEPENDENCY_LIST,       WIDE (ATTRIBUTE_DEPENDENCY_LIST),       FALSE }
};

/**
  Decodes one block.

  @param[out]  Length  Bytes of the decoded content.
**/
STATIC
EFI_STATUS
DecodeBlock (
  IN  EFI_DECOMPRESS_PROTOCOL  *Decompress,
  IN  UINT8                    *Block,
  IN  UINTN                    Size,
  OUT UINT32                   *Length
  )
{
  UINT32      ScratchSize;
  VOID        *Content;
  VOID        *Scratch;
  EFI_STATUS  Status;

  Status = Decompress->GetInfo (Decompress, Block, (UINT32)Size, Length, &ScratchSize);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  if (ReadUnaligned32 ((UINT32 *)Block) != Size - BLOCK_HEAD) {
    return EFI_VOLUME_CORRUPTED;   // the block does not fill its variable
  }

  Content = AllocatePool (*Length);
  Scratch = AllocatePool (ScratchSize);
  Status  = EFI_OUT_OF_RESOURCES;
  if ((Content != NULL) && (Scratch != NULL)) {
    Status = Decompress->Decompress (Decompress, Block, (UINT32)Size, Content, *Length, Scratch, ScratchSize);
  }

  if (Content != NULL) {
    FreePool (Content);
  }

  if (Scratch != NULL) {
    FreePool (Scratch);
  }

  return Status;
}

/**
  Prints the line of one variable.
**/
STATIC
EFI_STATUS
CheckVariable (
  IN EFI_DECOMPRESS_PROTOCOL  *Decompress,
  IN CONST CacheVariable      *Variable
  )
{
  UINT8       *Content;
  UINTN       Size;
  UINT32      Length;
  UINT32      Crc;
  EFI_STATUS  Status;

  Status = GetVariable2 (Variable->Variable, &gVaroAttributeVariableGuid, (VOID **)&Content, &Size);
  if (!EFI_ERROR (Status)) {
    Length = (UINT32)Size;
    Status = gBS->CalculateCrc32 (Content, Size, &Crc);
    if (!EFI_ERROR (Status) && Variable->Compressed) {
      Status = DecodeBlock (Decompress, Content, Size, &Length);
    }

    FreePool (Content);
  }

  if (EFI_ERROR (Status)) {
    PutFormat ("%a %r\n", Variable->Name, Status);
  } else {
    PutFormat ("%a %lu %u %08x ok\n", Variable->Name, (UINT64)Size, Length, Crc);
  }

  return Status;
}

EFI_STATUS
CheckCache (
  VOID
  )
{
  EFI_DECOMPRESS_PROTOCOL  *Decompress;
  UINTN                    Index;
  EFI_STATUS               Status;

  Status = gBS->LocateProtocol (&gEfiDecompressProtocolGuid, NULL, (VOID **)&Decompress);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  for (Index = 0; Index < ARRAY_SIZE (mVariables); Index++) {
    if (EFI_ERROR (CheckVariable (Decompress, &mVariables[Index]))) {
      Status = EFI_VOLUME_CORRUPTED;
    }
  }

  return Status;
}
