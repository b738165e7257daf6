/** @file
  CacheCheck: decodes the attribute cache with the firmware's own decompressor, EFI_DECOMPRESS_PROTOCOL.

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
} CacheVariable;

STATIC CONST CacheVariable  mVariables[] = {
  { ATTRIBUTE_CACHE_NAMES,           WIDE (ATTRIBUTE_CACHE_NAMES)           },
  { ATTRIBUTE_CACHE_DISPLAY_STRINGS, WIDE (ATTRIBUTE_CACHE_DISPLAY_STRINGS) },
  { ATTRIBUTE_CACHE_HELP_STRINGS,    WIDE (ATTRIBUTE_CACHE_HELP_STRINGS)    },
  { ATTRIBUTE_CACHE_ATTRIBUTES_DATA, WIDE (ATTRIBUTE_CACHE_ATTRIBUTES_DATA) }
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

EFI_STATUS
CheckCache (
  VOID
  )
{
  EFI_DECOMPRESS_PROTOCOL  *Decompress;
  UINT8                    *Block;
  UINTN                    Size;
  UINT32                   Length;
  UINTN                    Index;
  EFI_STATUS               Status;
  EFI_STATUS               Result;

  Result = gBS->LocateProtocol (&gEfiDecompressProtocolGuid, NULL, (VOID **)&Decompress);
  for (Index = 0; (Index < ARRAY_SIZE (mVariables)) && (Result != EFI_NOT_FOUND); Index++) {
    Status = GetVariable2 (mVariables[Index].Variable, &gVaroAttributeVariableGuid, (VOID **)&Block, &Size);
    if (!EFI_ERROR (Status)) {
      Status = DecodeBlock (Decompress, Block, Size, &Length);
      FreePool (Block);
    }

    if (EFI_ERROR (Status)) {
      PutFormat ("%a %r\n", mVariables[Index].Name, Status);
      Result = EFI_VOLUME_CORRUPTED;
    } else {
      PutFormat ("%a %lu %u ok\n", mVariables[Index].Name, (UINT64)Size, Length);
    }
  }

  return Result;
}
