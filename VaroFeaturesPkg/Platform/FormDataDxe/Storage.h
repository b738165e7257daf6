/** @file
  Storage: what questions keep their values in: EFI variables, and buffer and name/value stores behind a driver's
  EFI_HII_CONFIG_ACCESS_PROTOCOL, which EFI_HII_CONFIG_ROUTING_PROTOCOL reaches.

  A storage is read once in a notification function: the content is kept until the function that asked for it returns.
  Nothing of lower priority can change it before.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef STORAGE_H_
#define STORAGE_H_

#include <Uefi.h>

typedef enum {
  StorageVariable,
  StorageBuffer,
  StorageNumber,     ///< one name of a name/value store, with a number
  StorageText        ///< one name of a name/value store, with a text
} STORAGE_KIND;

typedef struct _Storage Storage;

struct _Storage {
  Storage         *Next;
  STORAGE_KIND    Kind;
  EFI_GUID        Guid;
  CHAR16          *Name;        ///< of the variable, of the buffer, or of the value
  EFI_HANDLE      Driver;       ///< NULL for a variable
  UINT32          Size;         ///< bytes, as the form set declares them
  UINT32          Attributes;   ///< of a variable that is yet to be made
  UINT32          *Elements;    ///< of a buffer: pairs of offset and width, the bytes that are asked for
  UINTN           ElementCount;
  UINT8           *Data;        ///< the content, of a buffer twice; NULL = not read in this notification function
  UINT32          DataSize;     ///< bytes of Data that the storage really has
  EFI_STATUS      Status;       ///< of the last time it was read
};

/**
  Finds a storage, or adds it to those that are known. Storages are kept until boot services end.

  @param[in]  Name  Copied.

  @return  The storage; NULL when there is no memory for it.
**/
Storage *
FindStorage (
  IN STORAGE_KIND    Kind,
  IN CONST EFI_GUID  *Guid,
  IN CONST CHAR16    *Name,
  IN EFI_HANDLE      Driver,
  IN UINT32          Size,
  IN UINT32          Attributes
  );

/**
  Adds bytes to the request that reads a buffer. A driver need not have all bytes that its form set declares, so the
  request names the bytes of questions alone.
**/
EFI_STATUS
UseStorage (
  IN OUT Storage  *This,
  IN     UINT32   Offset,
  IN     UINT32   Width
  );

/**
  Keeps the contents that are read from now on until ReleaseStorages, for one pass over many questions. Without it, a
  pass outside a notification function would read a storage again for each question.
**/
VOID
HoldStorages (
  VOID
  );

VOID
ReleaseStorages (
  VOID
  );

/**
  Reads bytes out of a storage.

  @retval EFI_NOT_FOUND         The variable does not exist.
  @retval EFI_COMPROMISED_DATA  The storage does not have all of these bytes.
  @retval others                It cannot be read.
**/
EFI_STATUS
ReadStorage (
  IN  Storage  *This,
  IN  UINTN    Offset,
  IN  UINTN    Width,
  OUT VOID     *Bytes
  );

/**
  Changes bytes of a storage at once, and reads them back.

  @retval EFI_WRITE_PROTECTED  The storage took the bytes and has others.
  @retval others               As ReadStorage; or the storage cannot be written.
**/
EFI_STATUS
WriteStorage (
  IN Storage     *This,
  IN UINTN       Offset,
  IN UINTN       Width,
  IN CONST VOID  *Bytes
  );

/**
  Makes a variable that does not exist yet.

  @param[in]  Data  Size bytes.
**/
EFI_STATUS
CreateStorage (
  IN Storage     *This,
  IN CONST VOID  *Data
  );

#endif
