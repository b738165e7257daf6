/** @file
  NameExpression: the regular expression that the name of a string attribute may carry.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef NAME_EXPRESSION_H_
#define NAME_EXPRESSION_H_

#include "ByteReader.h"

/**
  Tells whether a text is one that an attribute's name allows.

  Names end with "[RegEx:" EXPRESSION "]". Understood is ^CLASS{m,n}$, where CLASS is characters and ranges in brackets
  and the repetition may also be {n}, {m,}, "*", "+", "?" or nothing. One backslash or two begin an escape: two
  hexadecimal digits behind an "x", or three octal ones, of which those of the brackets stand for the brackets of the
  class; any other character but letters and digits stands for itself.

  @param[in]  Name  Name of the attribute, with its suffix.
  @param[in]  Text  New value.

  @retval TRUE   The text matches, or the name carries no expression.
  @retval FALSE  It does not match, or the expression is not understood.
**/
BOOLEAN
NameAllowsText (
  IN ByteReader  Name,
  IN ByteReader  Text
  );

#endif
