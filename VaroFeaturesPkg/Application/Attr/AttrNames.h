/** @file
  AttrNames: compares typed names with the names of attributes and values.

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
  CONST CHAR8    *Text;            ///< the text between ":" and "]"
  UINTN          TextLength;
  UINTN          SubjectLength;    ///< characters of Text before "="; TextLength when there is no "="
} NameAnnotation;

#define SUGGESTION_CAPACITY  5

///
/// The names most similar to a wrong one, the most similar first.
///
typedef struct {
  CONST CHAR8    *Names[SUGGESTION_CAPACITY];
  UINTN          Distances[SUGGESTION_CAPACITY];
  UINTN          Count;
} NameSuggestions;

/**
  Counts the characters of a name before its bracketed suffix.
**/
UINTN
BareLength (
  IN CONST CHAR8  *Name
  );

/**
  Compares a typed name with a known one, whose bracketed suffix may be left out.

  @param[in]  AnyCase  Letters that differ in case only are equal.
**/
BOOLEAN
NameIs (
  IN CONST CHAR8  *Name,
  IN CONST CHAR8  *Typed,
  IN BOOLEAN      AnyCase
  );

/**
  Compares the bare name with a pattern in any case: "*" matches any text and "?" one character. A pattern without
  either matches names that contain it.
**/
BOOLEAN
NameMatches (
  IN CONST CHAR8  *Name,
  IN CONST CHAR8  *Pattern
  );

/**
  Takes the next annotation.

  @param[in,out]  Rest  The name at first.

  @retval FALSE  None is left.
**/
BOOLEAN
NextAnnotation (
  IN OUT CONST CHAR8     **Rest,
  OUT    NameAnnotation  *Annotation
  );

/**
  Adds a name to the suggestions if it is similar to the typed one in any case: it begins like it, or a few characters
  are wrong, missing or too many.
**/
VOID
SuggestName (
  IN     CONST CHAR8      *Name,
  IN     CONST CHAR8      *Typed,
  IN OUT NameSuggestions  *Suggestions
  );

/**
  Converts a word of the command line to ASCII.

  @param[out]  Ascii     The word; empty when FALSE is returned.
  @param[in]   Capacity  Bytes of Ascii, the terminator included.

  @retval FALSE  The word has characters other than printable ASCII, or is too long.
**/
BOOLEAN
AsciiFromWord (
  IN  CONST CHAR16  *Word,
  OUT CHAR8         *Ascii,
  IN  UINTN         Capacity
  );

#endif
