/** @file
  AttrTexts: display and help text of an attribute, from where this boot has them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef ATTR_TEXTS_H_
#define ATTR_TEXTS_H_

#include "AttrTables.h"

/**
  Prints display and help text of an attribute, where they are certain.

  The texts of the driver's own attributes are constants. The texts of all others are those of their setup question,
  which the published store and the form data lead to, or of their form set. An attribute whose token fits two
  questions has no certain texts.

  @param[in]  Entry    The attribute.
  @param[in]  Entries  All attributes of the attribute table.
**/
VOID
PutTexts (
  IN CONST AttributeEntry  *Entry,
  IN CONST AttributeEntry  *Entries,
  IN UINTN                 Count
  );

#endif
