/** @file
  ServiceValues: current values of attributes, and the check of new ones.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef SERVICE_VALUES_H_
#define SERVICE_VALUES_H_

#include "ServiceAttributes.h"

/**
  Gives the value part of an attribute: what stands behind the head of its entry in a value table. A value that was
  changed in this boot stands before the published one.

  @param[out]  Part  The value part, Size bytes.
  @param[in]   Room  Bytes that it may have.

  @return  ATTRIBUTE_STATUS_...
**/
UINT8
GetValuePart (
  IN  CONST ServiceAttribute  *Attribute,
  OUT UINT8                   *Part,
  IN  UINTN                   Room,
  OUT UINTN                   *Size
  );

/**
  Gives the value of an enumeration, string or integer as text: name of the value without its suffix in brackets, text,
  decimal number.

  @param[out]  Text  The text, Size bytes, unterminated.
  @param[in]   Room  Bytes that it may have.

  @return  ATTRIBUTE_STATUS_...
**/
UINT8
GetValueText (
  IN  CONST ServiceAttribute  *Attribute,
  OUT UINT8                   *Text,
  IN  UINTN                   Room,
  OUT UINTN                   *Size
  );

/**
  Checks a new value given as a value part, and stores it.

  @param[in]  Key  Of the request.

  @return  ATTRIBUTE_STATUS_... or SERVICE_STATUS_FAILED.
**/
UINT8
SetValuePart (
  IN CONST ServiceAttribute  *Attribute,
  IN UINT32                  Key,
  IN ByteReader              Part
  );

/**
  Checks a new value given as text, and stores it.

  @param[in]  Text  Name of the value with or without its suffix in brackets, text, or decimal number.

  @return  ATTRIBUTE_STATUS_... or SERVICE_STATUS_FAILED.
**/
UINT8
SetValueText (
  IN CONST ServiceAttribute  *Attribute,
  IN UINT32                  Key,
  IN ByteReader              Text
  );

///
/// The value is a good one but could not be stored. No status of the wire format: the client gives EFI_ABORTED.
///
#define SERVICE_STATUS_FAILED  0xFF

#endif
