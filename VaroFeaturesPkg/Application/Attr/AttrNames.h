/** @file
  AttrNames: attribute and value names as somebody types them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef ATTR_NAMES_H_
#define ATTR_NAMES_H_

#include <Base.h>

///
/// One annotation of a name's bracketed suffix. The pointers lead into the name.
///
typedef struct {
  CONST CHAR8    *Keyword;         ///< such as "ForceIf"
  UINTN          KeywordLength;
  CONST CHAR8    *Text;            ///< what stands between ":" and "]"
  UINTN          TextLength;
  UINTN          SubjectLength;    ///< characters of Text before its "=", all of them where it has none
} NameAnnotation;

#define SUGGESTION_CAPACITY  5

///
/// The names nearest to a wrong one, the nearest first.
///
typedef struct {
  CONST CHAR8    *Names[SUGGESTION_CAPACITY];
  UINTN          Distances[SUGGESTION_CAPACITY];
  UINTN          Count;
} NameSuggestions;

/**
  Gives the characters of a name before its bracketed suffix.
**/
UINTN
BareLength (
  IN CONST CHAR8  *Name
  );

/**
  Compares a typed name with a known one, whose bracketed suffix may be left out. Case counts.
**/
BOOLEAN
NameIs (
  IN CONST CHAR8  *Name,
  IN CONST CHAR8  *Typed
  );

/**
  Compares the bare name with a pattern, without regard to case: "*" stands for any characters and "?" for one. A
  pattern without either is looked for within the name.
**/
BOOLEAN
NameMatches (
  IN CONST CHAR8  *Name,
  IN CONST CHAR8  *Pattern
  );

/**
  Takes the next annotation.

  @param[in,out]  Rest  A name at first.

  @retval FALSE  There is none left.
**/
BOOLEAN
NextAnnotation (
  IN OUT CONST CHAR8     **Rest,
  OUT    NameAnnotation  *Annotation
  );

/**
  Enters a name among the suggestions when it is near enough to the typed one: it begins like it, or a few characters
  are wrong, missing or too many. Case makes no difference here.
**/
VOID
SuggestName (
  IN     CONST CHAR8      *Name,
  IN     CONST CHAR8      *Typed,
  IN OUT NameSuggestions  *Suggestions
  );

/**
  Makes ASCII of a word of the command line.

  @param[out]  Ascii     The word, cut at Capacity; empty unless TRUE.
  @param[in]   Capacity  Bytes of Ascii, its terminator included.

  @retval FALSE  It holds other characters than printable ASCII, or is too long.
**/
BOOLEAN
AsciiFromWord (
  IN  CONST CHAR16  *Word,
  OUT CHAR8         *Ascii,
  IN  UINTN         Capacity
  );

#endif
