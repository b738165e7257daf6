/** @file
  AttributeStore: all attribute records and strings of the boot, published as member 2 of PublishedTablesInterface.

  The store is one flat array of pointer slots followed by four counters. A record or string is found at the base of its
  array plus its handle; an empty slot is NULL. String handles begin at 16, so the attribute handles 256 to
  271 use the first sixteen slots of the names.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CORVANE_ATTRIBUTE_STORE_H_
#define CORVANE_ATTRIBUTE_STORE_H_

#include <Base.h>
#include <Corvane/Packed.h>

#define ATTRIBUTE_STORE_FIRST_HANDLE      16     ///< first counted attribute handle and first string handle
#define ATTRIBUTE_STORE_HANDLE_LIMIT      272    ///< attribute handles end before it
#define ATTRIBUTE_STORE_STRING_LIMIT      5120   ///< string handles end before it

//
// Where each array begins among the slots.
//
#define ATTRIBUTE_STORE_ATTRIBUTES        0      ///< AttributeRecord *
#define ATTRIBUTE_STORE_NAMES             256    ///< CHAR16 *: names of attributes and of their values
#define ATTRIBUTE_STORE_DISPLAY_STRINGS   5376   ///< CHAR16 *: display texts
#define ATTRIBUTE_STORE_HELP_STRINGS      10496  ///< CHAR16 *: help texts by handle of the display text; NULL = none
#define ATTRIBUTE_STORE_SLOT_COUNT        15616

//
// Attribute handles with a fixed meaning.
//
#define ATTRIBUTE_HANDLE_ADMIN_PASSWORD      1
#define ATTRIBUTE_HANDLE_SYSTEM_PASSWORD     2
#define ATTRIBUTE_HANDLE_OWNER_PASSWORD      3
#define ATTRIBUTE_HANDLE_BOOT_CONFIGURATION  6
#define ATTRIBUTE_HANDLE_CONFIGURATION_SET   8

#pragma pack (1)

///
/// The four counters, also the content of the variable "AttributesCount" and the header of the attribute stream.
/// Live handles run from 16 to counter + 15.
///
typedef struct {
  UINT64    AttributeCount;   ///< attributes with a handle of 16 or more
  UINT64    NameCount;
  UINT64    DisplayCount;
  UINT64    HelpCount;        ///< help texts stored; their handles are those of the display texts
} CORVANE_PACKED AttributeStoreHeader;

#pragma pack ()

typedef struct {
  VOID                    *Slots[ATTRIBUTE_STORE_SLOT_COUNT];
  AttributeStoreHeader    Header;
} AttributeStore;

#endif
