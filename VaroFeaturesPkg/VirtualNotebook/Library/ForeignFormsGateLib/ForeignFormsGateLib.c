/** @file
  ForeignFormsGateLib: has the driver that it is linked to wait for gNotebookForeignFormsProtocolGuid. Its dependency
  expression does all of that.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Base.h>
