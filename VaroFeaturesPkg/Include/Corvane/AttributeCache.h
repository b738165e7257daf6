/** @file
  The cache of the AttributeStore in NV variables: names, attributes and layouts.

  "AttributesData", "PldmString", "DispString" and "HelpString" hold one block each of the UEFI compression algorithm
  (UEFI specification, chapter on compression). Decompressed:

  - The three string lists are sequences of AttributeCacheString, each followed by Size bytes of UCS-2 text including
    its terminator, for the handles from 16 on in order. In "HelpString", Size 0 stands for a handle without help.
  - "AttributesData" is a sequence of records in slot order. Each is the 11-byte AttributeRecord head and, by type:

      0 enumeration    UINT8 n, n UINT16 value names, n UINT64 values, UINT8 default index, UINT8 current index
      1 string         7 bytes of the record, UINT16 L, L ASCII bytes
      2 password       8 bytes of the record
      3 integer        36 bytes of the record
      5 collection     4 bytes of the record, UINT8 n, n UINT16 member attribute handles
      6 config set     UINT8 n, n UINT16 names, UINT8 current index

    Boot configuration settings and unknown types are not kept.

  "BiosVersion" holds twice as many bytes as the version has characters: the version, its terminator, and, for a version
  of at least ATTRIBUTE_CACHE_SHORTEST_SEALED_VERSION characters, the seal. The seal is a little-endian CRC-32 (as zlib
  computes it) over the stored contents of "PldmString", "DispString", "HelpString", "AttributesData" and
  "AttributesCount", in this order, a missing variable being empty. Zeros fill the rest. A cache with a seal that is not
  0 is valid only if the contents match the seal. A cache without a seal, or with a seal of 0, is valid for its version.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CORVANE_ATTRIBUTE_CACHE_H_
#define CORVANE_ATTRIBUTE_CACHE_H_

#include <Uefi/UefiBaseType.h>
#include <Corvane/Packed.h>

///
/// Vendor GUID of all the driver's variables.
///
#define VARO_ATTRIBUTE_VARIABLE_GUID \
  { 0x47FEFD34, 0x5EDF, 0x4BA3, { 0x9F, 0xEA, 0x8F, 0x36, 0x20, 0xD7, 0xCF, 0x07 } }

extern EFI_GUID  gVaroAttributeVariableGuid;

//
// Variable names, for L"" or u"" literals as the reader's language has them. Attributes: non-volatile and boot service
// access, plus run-time access for the last two. One of the first six with other attributes counts as missing.
//
#define ATTRIBUTE_CACHE_BIOS_VERSION     "BiosVersion"       ///< ASCII firmware version and seal, see above
#define ATTRIBUTE_CACHE_ATTRIBUTES_DATA  "AttributesData"
#define ATTRIBUTE_CACHE_COUNTERS         "AttributesCount"   ///< AttributeStoreHeader
#define ATTRIBUTE_CACHE_NAMES            "PldmString"
#define ATTRIBUTE_CACHE_DISPLAY_STRINGS  "DispString"
#define ATTRIBUTE_CACHE_HELP_STRINGS     "HelpString"
#define ATTRIBUTE_CACHE_STATUS           "AttCacheStatus"    ///< one byte; write 1 to have the next boot rebuild
#define ATTRIBUTE_DEPENDENCY_LIST        "PidDepList"        ///< up to 50 UINT32: questions that others depend on

#define ATTRIBUTE_CACHE_SHORTEST_SEALED_VERSION  5

#define ATTRIBUTE_DEPENDENCY_LIST_CAPACITY  50

#pragma pack (1)

typedef struct {
  UINT16    Handle;
  UINT16    Size;   ///< bytes of text that follow
} CORVANE_PACKED AttributeCacheString;

#pragma pack ()

#endif
