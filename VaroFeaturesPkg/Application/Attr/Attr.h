/** @file
  Attr: the Shell command that lists, explains and changes attributes.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef ATTR_H_
#define ATTR_H_

#include <Uefi/UefiBaseType.h>
#include <Protocol/AttributeAccess.h>
#include <Protocol/Shell.h>
#include <Protocol/ShellParameters.h>
#include "AttrTables.h"

//
// The Shell variable that scripts test. It has the form of "lasterror".
//
#define ATTR_STATUS_VARIABLE  L"attrstatus"

///
/// The command line, decoded.
///
typedef struct {
  AttributeAccessProtocol    *Access;
  EFI_SHELL_PROTOCOL         *Shell;
  CONST CHAR8                *Name;       ///< or the pattern of a list; NULL when none is given
  CONST CHAR8                *Value;
  BOOLEAN                    Long;        ///< -l
  BOOLEAN                    ByName;      ///< -n
  BOOLEAN                    Password;    ///< -p
} AttrCommand;

/**
  Runs the command and leaves its status in the Shell's variable ATTR_STATUS_VARIABLE.

  @param[in]  Parameters  The words of the command line; the first is the command's own name.
  @param[in]  Shell       The Shell that runs the command.

  @return  The status. The help text explains each.
**/
SHELL_STATUS
RunAttr (
  IN EFI_SHELL_PARAMETERS_PROTOCOL  *Parameters,
  IN EFI_SHELL_PROTOCOL             *Shell
  );

/**
  Tells whether the user ended the output: left a page, or pressed Ctrl-C.
**/
BOOLEAN
IsInterrupted (
  IN CONST AttrCommand  *Command
  );

/**
  Prints why the tables could not be read.

  @return  The Shell status for it.
**/
SHELL_STATUS
ReportNoTables (
  IN EFI_STATUS  Status
  );

/**
  Prints why the service did not give or accept a value, in words and as a status.

  @param[in]  WithPassword  The request had a password.

  @return  The Shell status for it.
**/
SHELL_STATUS
ReportRefusal (
  IN EFI_STATUS  Status,
  IN BOOLEAN     WithPassword
  );

/**
  Finds and reads the attribute that the command names. Prints why when no attribute, or more than one, has the name.

  @param[out]  Entry  The caller releases it with FreeEntry, whatever the status is.
**/
SHELL_STATUS
ReadNamedEntry (
  IN  CONST AttrCommand  *Command,
  OUT AttributeEntry     *Entry
  );

#endif
