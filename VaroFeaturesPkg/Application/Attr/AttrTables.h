/** @file
  AttrTables: reads attributes through the attribute access protocol, and checks every answer.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef ATTR_TABLES_H_
#define ATTR_TABLES_H_

#include "AttrRecord.h"

///
/// An attribute, with the record that its pointers lead into.
///
typedef struct {
  Attribute        Attribute;
  CHAR8            *Name;         ///< as the string table has it, its bracketed suffix included
  AttributeInfo    *Record;       ///< NULL where the service gives no value
  UINT32           RecordSize;
  EFI_STATUS       Status;        ///< why Record is NULL
} AttributeEntry;

/**
  Finds an instance of the protocol whose driver is still loaded.

  @retval EFI_SUCCESS               Access may be called.
  @retval EFI_NOT_FOUND             No handle carries the protocol.
  @retval EFI_NOT_STARTED           The drivers of all handles with the protocol have been unloaded.
  @retval EFI_INCOMPATIBLE_VERSION  The protocol has another revision than this program expects.
**/
EFI_STATUS
OpenAttributeAccess (
  OUT AttributeAccessProtocol  **Access
  );

/**
  Lists the attribute handles.

  @param[out]  Handles  The caller frees them; NULL when there are none to free.
  @param[out]  Count    Number of Handles.

  @retval EFI_SUCCESS      Handles has all handles.
  @retval EFI_UNSUPPORTED  Handles has those before an attribute of unknown type. The rest cannot be read.
  @retval others           The tables could not be read.
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

#endif
