/** @file
  ShellOption: the boot option that the notebook starts.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef SHELL_OPTION_H_
#define SHELL_OPTION_H_

/**
  Puts the Shell first into "BootOrder", unless it is there already. It runs the disk's startup.nsh without the
  countdown of the option that BDS makes.
**/
VOID
AddShellOption (
  VOID
  );

#endif
