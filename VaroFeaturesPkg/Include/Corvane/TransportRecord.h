/** @file
  TransportRecord: the eight records handed to TableTransportProtocol, in the order of their types, and the attribute
  stream that the last one carries.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CORVANE_TRANSPORT_RECORD_H_
#define CORVANE_TRANSPORT_RECORD_H_

#include <Uefi/UefiBaseType.h>
#include <Corvane/AttributeStore.h>

///
/// TransportRecordGuid: marks every record.
///
#define VARO_TRANSPORT_RECORD_GUID \
  { 0xB66C21D0, 0x33D7, 0x4627, { 0x84, 0xD5, 0x14, 0xE0, 0xA9, 0x04, 0x74, 0x56 } }

extern EFI_GUID  gVaroTransportRecordGuid;

//
// Record types and their payloads.
//
#define TRANSPORT_RECORD_DIRECTORY    0   ///< TableDirectory, 200 bytes
#define TRANSPORT_RECORD_DESCRIPTORS  1   ///< 11 TableDescriptor
#define TRANSPORT_RECORD_STRINGS      2   ///< table of descriptor TABLE_STRINGS
#define TRANSPORT_RECORD_ATTRIBUTES   3   ///< table of descriptor TABLE_ATTRIBUTES
#define TRANSPORT_RECORD_VALUES       4   ///< table of descriptor TABLE_VALUES
#define TRANSPORT_RECORD_DISPLAY      5   ///< table of descriptor TABLE_DISPLAY
#define TRANSPORT_RECORD_HELP         6   ///< table of descriptor TABLE_HELP
#define TRANSPORT_RECORD_STREAM       7   ///< AttributeStreamHeader, then the attribute stream
#define TRANSPORT_RECORD_COUNT        8

#define ATTRIBUTE_STREAM_EMPTY_SLOT   0xFF

#pragma pack (1)

typedef struct {
  EFI_GUID    Guid;            ///< gVaroTransportRecordGuid
  UINT64      PayloadLength;   ///< bytes that follow the header
  UINT8       Type;            ///< TRANSPORT_RECORD_...
} CORVANE_PACKED TransportRecord;

///
/// Head of the payload of TRANSPORT_RECORD_STREAM.
///
/// The stream visits the store's attribute slots 0 to AttributeCount + 15, but none above 255. An empty slot is one
/// byte ATTRIBUTE_STREAM_EMPTY_SLOT; any other is the 11-byte record head and then, by base type:
///
///   0 enumeration    UINT8 n, n UINT16 value names, n UINT64 values, UINT8 default index, UINT8 current index
///   1 string         7 bytes of the record, then the current string with its terminator (one zero byte when NULL)
///   2 password       8 bytes of the record
///   3 integer        36 bytes of the record
///   4 boot config    5 bytes of the record, n UINT16 source names, 23 bytes of the record
///   5 collection     4 bytes of the record, UINT8 n, n UINT16 member attribute handles
///   6 config set     UINT8 n, n UINT16 names, UINT8 current index
///
/// A record of any other type adds 11 to StreamSize and nothing to the stream, which then ends in zeros.
///
typedef struct {
  UINT32                  StreamSize;   ///< bytes of the stream
  AttributeStoreHeader    Counters;
} CORVANE_PACKED AttributeStreamHeader;

#pragma pack ()

#endif
