/** @file
  ServiceAttributes: the attributes as CorvaneDxe described them in its attribute stream, and their current values.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef SERVICE_ATTRIBUTES_H_
#define SERVICE_ATTRIBUTES_H_

#include "ByteReader.h"

typedef struct {
  UINT16        Handle;
  UINT8         Type;
  UINT8         BaseType;     ///< PLDM_BIOS_ATTRIBUTE_...
  UINT32        Token;        ///< setting or question behind the attribute
  ByteReader    Name;         ///< with the suffix in brackets
  UINTN         ValueCount;   ///< of an enumeration
  ByteReader    ValueNames;   ///< UINT16 string handles
  ByteReader    Values;       ///< UINT64 platform values
  UINT64        Minimum;      ///< length of a string, or value of an integer
  UINT64        Maximum;
  UINT32        Step;
} ServiceAttribute;

/**
  Finds an attribute by its handle.
**/
BOOLEAN
FindAttribute (
  IN  UINT16            Handle,
  OUT ServiceAttribute  *Attribute
  );

/**
  Finds an attribute by its name, with or without the suffix in brackets.
**/
BOOLEAN
FindAttributeByName (
  IN  CONST UINT8       *Name,
  IN  UINTN             Length,
  OUT ServiceAttribute  *Attribute
  );

/**
  Finds a current value as this boot published it.

  @param[out]  Value  Reader of what stands behind the head of the entry in the value table.
**/
BOOLEAN
FindCurrentValue (
  IN  CONST ServiceAttribute  *Attribute,
  OUT ByteReader              *Value
  );

/**
  Gives the name of a possible value.

  @retval FALSE  There is no such value.
**/
BOOLEAN
GetValueName (
  IN  CONST ServiceAttribute  *Attribute,
  IN  UINTN                   Index,
  OUT ByteReader              *Name
  );

/**
  Gives the platform's number for a possible value.
**/
UINT64
GetPlatformValue (
  IN CONST ServiceAttribute  *Attribute,
  IN UINTN                   Index
  );

/**
  Cuts a name off before its suffix in brackets.
**/
ByteReader
BareName (
  IN ByteReader  Name
  );

/**
  Tells whether a text is a name, with or without its suffix in brackets.
**/
BOOLEAN
IsNamed (
  IN ByteReader   Name,
  IN CONST UINT8  *Text,
  IN UINTN        Length
  );

#endif
