/** @file
  AttrSet: changes an attribute.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef ATTR_SET_H_
#define ATTR_SET_H_

#include "Attr.h"

SHELL_STATUS
SetAttribute (
  IN CONST AttrCommand  *Command
  );

#endif
