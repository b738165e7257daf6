/** @file
  TableDescriptor: where a table is and how long; eleven of them are published as member 1 of PublishedTablesInterface
  and, as they stand, as the second transport record. Descriptors 3 to 8 are always zero.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CORVANE_TABLE_DESCRIPTOR_H_
#define CORVANE_TABLE_DESCRIPTOR_H_

#include <Base.h>
#include <Corvane/Packed.h>

#define TABLE_DESCRIPTOR_COUNT  11

//
// Indices of the descriptors that hold a table. Layouts: IndustryStandard/PldmBios.h for the first three; a display or
// help table is a language block (UINT16 10, "en-US" in UCS-2) and then entries of UINT16 handle, UINT16 byte length
// and that many bytes of UCS-2 text, closed like the others.
//
#define TABLE_STRINGS    0
#define TABLE_ATTRIBUTES 1
#define TABLE_VALUES     2
#define TABLE_DISPLAY    9
#define TABLE_HELP       10

#pragma pack (1)

typedef struct {
  UINT64    Data;         ///< address of the table; 0 = none
  UINT8     TableType;    ///< the descriptor's index
  UINT32    TableIndex;   ///< the descriptor's index
  UINT16    Limit;        ///< length of the finished table in bytes; while it is built, Capacity - 4
  UINT16    Capacity;     ///< bytes that the table may grow to
  UINT16    Used;         ///< bytes written so far; 0 once finished
  UINT16    EntryCount;
  UINT32    Checksum;     ///< CRC-32 of entries and pad
  UINT8     PadLength;    ///< 0 to 3 zero bytes between the last entry and the checksum
  UINT8     Finished;     ///< 1 = finished and locked
  UINT8     Reserved;     ///< 0
} CORVANE_PACKED TableDescriptor;

#pragma pack ()

#endif
