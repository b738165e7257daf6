/** @file
  TableDirectory: the 200-byte list of the published tables, member 0 of PublishedTablesInterface and payload of the
  first transport record.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CORVANE_TABLE_DIRECTORY_H_
#define CORVANE_TABLE_DIRECTORY_H_

#include <Base.h>
#include <Corvane/Packed.h>

#define TABLE_DIRECTORY_SIZE            200
#define TABLE_DIRECTORY_ENTRY_CAPACITY  11

#define TABLE_DIRECTORY_TYPE_STRINGS     0
#define TABLE_DIRECTORY_TYPE_ATTRIBUTES  1
#define TABLE_DIRECTORY_TYPE_VALUES      2
#define TABLE_DIRECTORY_TYPE_TEXT        3   ///< SubType 0: help texts, SubType 1: display texts

#pragma pack (1)

typedef struct {
  UINT8     TableType;     ///< TABLE_DIRECTORY_TYPE_...
  UINT8     SubType;
  UINT8     Format;        ///< 1 for strings, 4 for text, 0 for attributes and values
  UINT32    Reserved0;     ///< 0
  UINT8     TableId;       ///< number of the entry, by which readers ask for the table
  UINT16    Length;        ///< bytes of the table, checksum included
  UINT16    Reserved1;     ///< 0
  UINT32    AddressLow;    ///< low 32 bits of the table's address
} CORVANE_PACKED TableDirectoryEntry;

typedef struct {
  CHAR8                  Signature[4];    ///< "$ACI"
  UINT8                  Version;         ///< 1
  UINT8                  Reserved0[3];    ///< 0
  CHAR8                  Content[4];      ///< "PLDM"
  UINT16                 Length;          ///< 24 + 16 * EntryCount
  UINT8                  Reserved1[8];    ///< 0
  UINT8                  Checksum;        ///< makes the first Length bytes sum to 0 modulo 256
  UINT8                  EntryCount;      ///< 5
  TableDirectoryEntry    Entries[TABLE_DIRECTORY_ENTRY_CAPACITY];   ///< EntryCount of them; the rest is 0
} CORVANE_PACKED TableDirectory;

#pragma pack ()

#endif
