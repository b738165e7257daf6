/** @file
  PLDM for BIOS Control and Configuration (DMTF DSP0247): attribute types and the table entries as this package fills
  them. All fields are little-endian and unaligned. A finished table is its entries, 0 to 3 zero bytes up to a multiple
  of four, and the CRC-32 (as zlib computes it) of all that.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PLDM_BIOS_H_
#define PLDM_BIOS_H_

#include <Base.h>
#include <Corvane/Packed.h>

//
// Attribute types. A read-only attribute carries the type with PLDM_BIOS_ATTRIBUTE_READ_ONLY set.
//
#define PLDM_BIOS_ATTRIBUTE_ENUMERATION          0
#define PLDM_BIOS_ATTRIBUTE_STRING               1
#define PLDM_BIOS_ATTRIBUTE_PASSWORD             2
#define PLDM_BIOS_ATTRIBUTE_INTEGER              3
#define PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING  4
#define PLDM_BIOS_ATTRIBUTE_COLLECTION           5
#define PLDM_BIOS_ATTRIBUTE_CONFIG_SET           6
#define PLDM_BIOS_ATTRIBUTE_READ_ONLY            0x80
#define PLDM_BIOS_ATTRIBUTE_BASE_TYPE(Type)      ((UINT8)((Type) & 0x7F))

#define PLDM_BIOS_STRING_TYPE_ASCII              1

#define PLDM_BIOS_TABLE_CHECKSUM_SIZE            4

#pragma pack (1)

///
/// Entry of the string table, followed by StringLength bytes of text without terminator.
///
typedef struct {
  UINT16    StringHandle;
  UINT16    StringLength;   ///< bytes
} CORVANE_PACKED PLDM_BIOS_STRING_ENTRY;

///
/// Head of an entry of the attribute table. What follows depends on the base type:
///
///   0 enumeration    UINT8 n, n UINT16 value names (string handles), UINT8 1, UINT8 default index
///   1 string         UINT8 string type, UINT16 minimum, UINT16 maximum, UINT16 default length; no default text
///   2 password       UINT8 password type, UINT16 minimum, UINT16 maximum, UINT16 default length; no default text
///   3 integer        UINT64 lower bound, UINT64 upper bound, UINT32 step, UINT64 default
///   4 boot config    UINT8 type, UINT8 modes, UINT8 minimum, UINT8 maximum, UINT8 n, n UINT16 source names
///   5 collection     4 bytes: UINT16 name handle, 0xFF, 0
///   6 config set     UINT8 n, n UINT16 names
///
/// The default length of strings and passwords is not followed by a default text, so these entries are 12 bytes long.
///
typedef struct {
  UINT16    AttributeHandle;
  UINT8     AttributeType;
  UINT16    AttributeNameHandle;
} CORVANE_PACKED PLDM_BIOS_ATTRIBUTE_ENTRY;

///
/// Head of an entry of the attribute value table. What follows depends on the base type:
///
///   0 enumeration    UINT8 1, UINT8 current index
///   1 string         UINT16 length, that many ASCII bytes
///   2 password       UINT16 0; a password that is not installed has no entry
///   3 integer        UINT64 current value
///   4 boot config    UINT8 type, UINT8 mode, UINT8 k, k UINT8 positions
///   5 collection     UINT8 n, n UINT16 member attribute handles
///   6 config set     UINT8 current index
///
typedef struct {
  UINT16    AttributeHandle;
  UINT8     AttributeType;
} CORVANE_PACKED PLDM_BIOS_ATTRIBUTE_VALUE_ENTRY;

#pragma pack ()

#endif
