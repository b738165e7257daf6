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
// Variable of the Shell, for scripts, in the form of "lasterror".
//
#define ATTR_STATUS_VARIABLE  L"attrstatus"

///
/// What the command line asks for.
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

  @param[in]  Parameters  Its words; the first is the command's own name.
  @param[in]  Shell       The Shell that it was typed in.

  @return  The status; the help text says what each means.
**/
SHELL_STATUS
RunAttr (
  IN EFI_SHELL_PARAMETERS_PROTOCOL  *Parameters,
  IN EFI_SHELL_PROTOCOL             *Shell
  );

/**
  Says whether the reader has had enough: left a page, or pressed Ctrl-C.
**/
BOOLEAN
IsInterrupted (
  IN CONST AttrCommand  *Command
  );

/**
  Prints why the tables could not be had.

  @return  The Shell's status for it.
**/
SHELL_STATUS
ReportNoTables (
  IN EFI_STATUS  Status
  );

/**
  Prints why the service did not give or take a value, in words and as its status.

  @param[in]  WithPassword  A password went with the request.

  @return  The Shell's status for it.
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
