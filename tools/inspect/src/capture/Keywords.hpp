/** @file
  Names as the string table has them: a bare name and the annotations in square brackets behind it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane::inspect {

enum class AnnotationKind {
  RegEx,       // an expression that values of the attribute match
  ForceIf,     // forced while the attribute named has the value named
  ForceIfNot,  // forced while it has any other value
  Unknown,
};

struct Annotation {
  AnnotationKind Kind = AnnotationKind::Unknown;
  std::string Text;        // as it stands, with its brackets
  std::string Expression;  // of a RegEx, unescaped: "^[\x20-\x7e]{0,32}$"
  std::string Attribute;   // of a ForceIf or ForceIfNot
  std::string Value;

  bool IsForce() const { return Kind == AnnotationKind::ForceIf || Kind == AnnotationKind::ForceIfNot; }
};

struct Keyword {
  std::string Bare;
  std::vector<Annotation> Annotations;  // in their order
  std::string Problem;                  // a clause that says what is wrong with the annotations; empty when nothing is
};

// Takes a name of the string table apart, whatever is in it.
Keyword ParseKeyword(std::string_view name);

// Backslashes of an expression are doubled, and its brackets are octal escapes, since real ones would end the
// annotation. \x escapes stay: regular expressions know them.
std::string UnescapeExpression(std::string_view escaped);

}  // namespace corvane::inspect
