/** @file
  AttrTables: asks the attribute access protocol, and trusts none of its answers.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef ATTR_TABLES_H_
#define ATTR_TABLES_H_

#include "AttrRecord.h"

///
/// An attribute with the record that it points into.
///
typedef struct {
  Attribute        Attribute;
  CHAR8            *Name;         ///< as the string table has it, its bracketed suffix included
  AttributeInfo    *Record;       ///< NULL where the service gives no value
  UINT32           RecordSize;
  EFI_STATUS       Status;        ///< why Record is NULL
} AttributeEntry;

/**
  Finds a driver that is still loaded behind its protocol.

  @retval EFI_SUCCESS               Access may be called.
  @retval EFI_NOT_FOUND             No handle carries the protocol.
  @retval EFI_NOT_STARTED           Only handles whose image is gone carry it.
  @retval EFI_INCOMPATIBLE_VERSION  It is not of the revision that this program knows.
**/
EFI_STATUS
OpenAttributeAccess (
  OUT AttributeAccessProtocol  **Access
  );

/**
  Lists the attribute handles.

  @param[out]  Handles  To be freed by the caller.
  @param[out]  Count    Of them.

  @retval EFI_SUCCESS      All of them.
  @retval EFI_UNSUPPORTED  Those before an attribute of unknown type, which nobody can see past.
  @retval others           Nothing to be freed.
**/
EFI_STATUS
ReadHandles (
  IN  AttributeAccessProtocol  *Access,
  OUT UINT16                   **Handles,
  OUT UINTN                    *Count
  );

/**
  Reads one attribute.

  @param[out]  Entry  The caller releases it with FreeEntry, whatever the status is.

  @retval EFI_SUCCESS    Entry holds the attribute.
  @retval EFI_NOT_FOUND  There is no such attribute.
  @retval others         The tables could not be read.
**/
typedef
EFI_STATUS
(*ATTRIBUTE_READ)(
  IN  AttributeAccessProtocol  *Access,
  IN  UINT16                   Handle,
  OUT AttributeEntry           *Entry
  );

/**
  Reads name and type of an attribute, no value. An ATTRIBUTE_READ.
**/
EFI_STATUS
ReadHead (
  IN  AttributeAccessProtocol  *Access,
  IN  UINT16                   Handle,
  OUT AttributeEntry           *Entry
  );

/**
  Reads an attribute with its value. An ATTRIBUTE_READ. Entry->Status tells whether there is a value.
**/
EFI_STATUS
ReadEntry (
  IN  AttributeAccessProtocol  *Access,
  IN  UINT16                   Handle,
  OUT AttributeEntry           *Entry
  );

VOID
FreeEntry (
  IN OUT AttributeEntry  *Entry
  );

/**
  Reads all attributes. Those that cannot be read are left out.

  @param[in]   Read     ReadHead or ReadEntry.
  @param[out]  Entries  The caller releases them with FreeEntries.

  @return  As ReadHandles.
**/
EFI_STATUS
ReadEntries (
  IN  AttributeAccessProtocol  *Access,
  IN  ATTRIBUTE_READ           Read,
  OUT AttributeEntry           **Entries,
  OUT UINTN                    *Count
  );

VOID
FreeEntries (
  IN AttributeEntry  *Entries,
  IN UINTN           Count
  );

/**
  Reads a text of the string table.

  @return  The text, to be freed by the caller; NULL when there is none.
**/
CHAR8 *
ReadName (
  IN AttributeAccessProtocol  *Access,
  IN UINT16                   Handle
  );

/**
  Reads a text of a text table by the operation of that table.

  @return  The text, to be freed by the caller; NULL when there is none.
**/
CHAR16 *
ReadText (
  IN AttributeAccessProtocol  *Access,
  IN ATTRIBUTE_GET_TEXT       GetText,
  IN UINT16                   Handle
  );

#endif
