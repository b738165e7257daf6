/** @file
  Expression: evaluates IFR expressions (UEFI specification, chapter on Human Interface Infrastructure) that come to a
  number or a truth value.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef EXPRESSION_H_
#define EXPRESSION_H_

#include "FormModel.h"

typedef struct {
  BOOLEAN    Known;
  UINT8      Culprit;   ///< when it is not known: the opcode that cannot be evaluated
  UINT64     Value;     ///< truth values are 0 and 1
} Operand;

/**
  Evaluates the expression that follows: one opcode, or the scope that its first opcode opens.

  @param[in,out]  Reader    Stands before the expression, and after it afterwards.
  @param[in]      Model     The questions that the expression may name, with their values.
  @param[in]      Question  The question that the expression belongs to; NULL = none.
**/
Operand
EvaluateExpression (
  IN OUT IfrReader           *Reader,
  IN     CONST FormModel     *Model,
  IN     CONST FormQuestion  *Question OPTIONAL
  );

#endif
