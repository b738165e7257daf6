/** @file
  Names of the string table: a bare name, followed by annotations in square brackets.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane::inspect {

enum class AnnotationKind {
  RegEx,       // values of the attribute match this expression
  ForceIf,     // forced while the named attribute has the named value
  ForceIfNot,  // forced while the named attribute has any other value
  Unknown,
};

struct Annotation {
  AnnotationKind Kind = AnnotationKind::Unknown;
  std::string Text;        // unchanged, brackets included
  std::string Expression;  // of a RegEx, unescaped: "^[\x20-\x7e]{0,32}$"
  std::string Attribute;   // of a ForceIf or ForceIfNot
  std::string Value;

  bool IsForce() const { return Kind == AnnotationKind::ForceIf || Kind == AnnotationKind::ForceIfNot; }
};

struct Keyword {
  std::string Bare;
  std::vector<Annotation> Annotations;  // in their order
  std::string Problem;                  // what is wrong with the annotations, as a clause; empty if nothing is wrong
};

// Splits a name of the string table. Any content is accepted.
Keyword ParseKeyword(std::string_view name);

// An expression has doubled backslashes, and octal escapes instead of brackets, because a bracket would end the
// annotation. \x escapes stay, because regular expressions support \x.
std::string UnescapeExpression(std::string_view escaped);

}  // namespace corvane::inspect
