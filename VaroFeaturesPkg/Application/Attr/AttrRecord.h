/** @file
  AttrRecord: decodes a record of GetAttributeInfo and checks it against its length.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef ATTR_RECORD_H_
#define ATTR_RECORD_H_

#include <Uefi/UefiBaseType.h>
#include <Protocol/AttributeAccess.h>

///
/// One attribute. The pointers lead into the record, whose numbers are little-endian and unaligned.
///
typedef struct {
  UINT16         Handle;
  UINT16         NameHandle;
  UINT8          Type;            ///< PLDM_BIOS_ATTRIBUTE_..., without the read-only bit
  BOOLEAN        ReadOnly;
  BOOLEAN        HasParts;        ///< the record holds both parts; without them only the members above are set
  UINTN          PossibleCount;
  CONST UINT8    *Possible;       ///< UINT16 string handles of values, sources or configurations
  UINTN          DefaultCount;
  CONST UINT8    *Defaults;       ///< UINT8 places among Possible, or the bytes of a default text
  UINT64         Minimum;         ///< of an integer, or of a text's length
  UINT64         Maximum;
  UINT32         Step;
  UINT64         Default;
  UINTN          ValueOffset;     ///< bytes of the record before its value part
  UINTN          CurrentCount;
  CONST UINT8    *Current;        ///< UINT8 places among Possible, UINT16 attribute handles of members, or a text
  UINT64         Number;          ///< an integer's value
} Attribute;

/**
  Decodes a record.

  @param[in]   Record     From the service, so it is not trusted.
  @param[in]   Size       Bytes of Record.
  @param[out]  Attribute  HasParts is FALSE when the parts do not fit the record.
**/
VOID
ParseAttribute (
  IN  CONST AttributeInfo  *Record,
  IN  UINTN                Size,
  OUT Attribute            *Attribute
  );

/**
  Reads one string or attribute handle of a list.
**/
UINT16
HandleAt (
  IN CONST UINT8  *Handles,
  IN UINTN        Index
  );

#endif
