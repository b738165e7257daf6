/** @file
  AttrValue: checks a typed value against what an attribute takes, before anything is sent.

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

  @retval FALSE  It is no number, or none of 64 bits.
**/
BOOLEAN
ReadNumber (
  IN  CONST CHAR8  *Text,
  OUT UINT64       *Number
  );

/**
  Checks the value for an integer: bounds, and whole steps from the lower bound.
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
  Makes the record that SetAttributeValue is to send.

  @param[in]   Record   As the service gave it.
  @param[in]   Text     New text of a string, of Attribute->Maximum characters at most.
  @param[in]   Number   New number of an integer; place of the new value of an enumeration.
  @param[out]  Size     Bytes of the new record.

  @return  The new record, to be freed by the caller; NULL when there is no memory, or no such value in the record.
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
