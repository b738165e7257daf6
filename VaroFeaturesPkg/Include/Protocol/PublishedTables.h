/** @file
  PublishedTablesInterface: the finished tables of this boot. Installed by the driver on a handle of its own once the
  tables are wanted and built, before the transport records are sent.

  The interface and all it points to live until the end of boot services. Consumers read; they change nothing.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_PUBLISHED_TABLES_H_
#define PROTOCOL_PUBLISHED_TABLES_H_

#include <Uefi/UefiBaseType.h>
#include <Corvane/AttributeStore.h>
#include <Corvane/BootConfigurationState.h>
#include <Corvane/TableDescriptor.h>
#include <Corvane/TableDirectory.h>

///
/// PublishedTablesGuid
///
#define VARO_PUBLISHED_TABLES_PROTOCOL_GUID \
  { 0xC1355ADF, 0x1DDA, 0x4FB4, { 0xAA, 0x63, 0x21, 0xDF, 0x12, 0x99, 0x6B, 0xB6 } }

typedef struct {
  CONST TableDirectory            *Directory;          ///< NULL when there was no memory for it
  CONST TableDescriptor           *Descriptors;        ///< TABLE_DESCRIPTOR_COUNT of them
  CONST AttributeStore            *Store;
  CONST BootConfigurationState    *BootConfiguration;  ///< never NULL
} PublishedTablesInterface;

extern EFI_GUID  gVaroPublishedTablesProtocolGuid;

#endif
