/** @file
  AttrValue: checks a typed value against the attribute, before anything is sent.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef ATTR_VALUE_H_
#define ATTR_VALUE_H_

#include "AttrRecord.h"

typedef enum {
  ValueAccepted,
  ValueNoNumber,
  ValueOutOfBounds,
  ValueOutOfStep,
  ValueTooShort,
  ValueTooLong
} ValueVerdict;

/**
  Reads a decimal number, or a hexadecimal one after "0x".

  @retval FALSE  The text is not a number, or the number has more than 64 bits.
**/
BOOLEAN
ReadNumber (
  IN  CONST CHAR8  *Text,
  OUT UINT64       *Number
  );

/**
  Checks a value for an integer: its bounds, and whole steps from the lower bound.
**/
ValueVerdict
CheckInteger (
  IN  CONST Attribute  *Attribute,
  IN  CONST CHAR8      *Text,
  OUT UINT64           *Number
  );

/**
  Checks the length of a text.
**/
ValueVerdict
CheckLength (
  IN CONST Attribute  *Attribute,
  IN UINTN            Length
  );

/**
  Makes the record for SetAttributeValue.

  @param[in]   Record   The record that the service gave.
  @param[in]   Text     New text of a string, of Attribute->Maximum characters at most.
  @param[in]   Number   New number of an integer, or place of the new value of an enumeration.
  @param[out]  Size     Bytes of the new record.

  @return  The new record, which the caller frees; NULL without memory, or when the record of an enumeration has no
           current value.
**/
AttributeInfo *
MakeRecord (
  IN  CONST Attribute      *Attribute,
  IN  CONST AttributeInfo  *Record,
  IN  UINTN                RecordSize,
  IN  CONST CHAR8          *Text,
  IN  UINT64               Number,
  OUT UINT32               *Size
  );

#endif
