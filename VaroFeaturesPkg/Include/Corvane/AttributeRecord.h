/** @file
  AttributeRecord: one BIOS attribute in memory, as the published AttributeStore holds it.

  A record is one packed little-endian byte sequence: the 11-byte head below, then the body of its type. Its bytes are
  copied as they stand into the NV cache, the PLDM tables (DSP0247) and the attribute stream, so order and widths are
  fixed. Pointer fields are native 64-bit pointers at unaligned offsets; what they name belongs to the record.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CORVANE_ATTRIBUTE_RECORD_H_
#define CORVANE_ATTRIBUTE_RECORD_H_

#include <Base.h>
#include <Corvane/Packed.h>
#include <IndustryStandard/PldmBios.h>

#pragma pack (1)

///
/// The head that every record begins with.
///
typedef struct {
  UINT16    Handle;       ///< attribute handle; the slot of the store that holds the record
  UINT8     Type;         ///< PLDM_BIOS_ATTRIBUTE_...; with PLDM_BIOS_ATTRIBUTE_READ_ONLY when read-only
  UINT16    NameHandle;   ///< StringHandle of the name in the store's names
  UINT16    ValueSize;    ///< bytes of the platform setting behind the attribute; 0 = none is read
  UINT32    Token;        ///< number of that setting, or of the setup question; 0 = none
} CORVANE_PACKED AttributeRecord;

typedef struct {
  AttributeRecord    Head;
  UINT8              PossibleValueCount;    ///< n
  UINT16             *PossibleValueNames;   ///< n StringHandles of the store's names
  UINT64             *PossibleValues;       ///< n platform values, parallel to the names
  UINT8              DefaultIndex;
  UINT8              CurrentIndex;
} CORVANE_PACKED EnumerationRecord;

typedef struct {
  AttributeRecord    Head;
  UINT8              StringType;       ///< PLDM_BIOS_STRING_TYPE_ASCII
  UINT16             MinLength;
  UINT16             MaxLength;
  UINT16             DefaultLength;    ///< no default text is kept
  CHAR8              *CurrentString;   ///< NUL-terminated ASCII, or NULL
} CORVANE_PACKED StringRecord;

typedef struct {
  AttributeRecord    Head;
  UINT8              PasswordType;
  UINT16             MinLength;
  UINT16             MaxLength;
  UINT16             DefaultLength;
  UINT8              PasswordInstalled;   ///< bit 0 set = installed; 0 keeps the attribute out of the value table
} CORVANE_PACKED PasswordRecord;

typedef struct {
  AttributeRecord    Head;
  UINT64             LowerBound;
  UINT64             UpperBound;
  UINT32             ScalarIncrement;
  UINT64             DefaultValue;
  UINT64             CurrentValue;
} CORVANE_PACKED IntegerRecord;

#define BOOT_SOURCE_ORDER_CAPACITY  20

typedef struct {
  AttributeRecord    Head;
  UINT8              BootConfigType;
  UINT8              SupportedModes;
  UINT8              MinSourceCount;
  UINT8              MaxSourceCount;
  UINT8              PossibleSourceCount;   ///< n
  UINT16             *PossibleSourceNames;  ///< n StringHandles of the store's names
  UINT8              CurrentBootConfigType;
  UINT8              CurrentMode;
  UINT8              CurrentSourceCount;    ///< k
  UINT8              CurrentSourceOrder[BOOT_SOURCE_ORDER_CAPACITY];   ///< k indices of possible sources, then zeros
} CORVANE_PACKED BootConfigurationRecord;

typedef struct {
  AttributeRecord    Head;
  UINT8              CollectionInfo[4];   ///< the NameHandle again (UINT16), 0xFF, 0
  UINT8              ItemCount;           ///< n
  UINT16             *Items;              ///< n attribute handles
} CORVANE_PACKED CollectionRecord;

typedef struct {
  AttributeRecord    Head;
  UINT8              ConfigCount;    ///< n
  UINT16             *ConfigNames;   ///< n StringHandles of the store's names
  UINT8              CurrentConfig;
} CORVANE_PACKED ConfigurationSetRecord;

#pragma pack ()

#endif
