/** @file
  AttrShow: prints attributes - list, get, info, export.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef ATTR_SHOW_H_
#define ATTR_SHOW_H_

#include "Attr.h"
#include "AttrTables.h"

///
/// The form in which a value is printed.
///
typedef enum {
  ValuePlain,   ///< names without their suffixes, texts without quotes
  ValueExact    ///< the form of the host's inspector: names with their suffixes, texts quoted
} ValueForm;

/**
  Prints a current value.
**/
VOID
PutValue (
  IN AttributeAccessProtocol  *Access,
  IN CONST AttributeEntry     *Entry,
  IN ValueForm                Form
  );

/**
  Prints the text of a string handle.
**/
VOID
PutName (
  IN AttributeAccessProtocol  *Access,
  IN UINT16                   Handle,
  IN ValueForm                Form
  );

SHELL_STATUS
ListAttributes (
  IN CONST AttrCommand  *Command
  );

SHELL_STATUS
GetAttribute (
  IN CONST AttrCommand  *Command
  );

SHELL_STATUS
ExportAttributes (
  IN CONST AttrCommand  *Command
  );

SHELL_STATUS
DescribeAttribute (
  IN CONST AttrCommand  *Command
  );

#endif
