/** @file
  AttrNames: compares typed names with the names of attributes and values.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Base.h>
#include <Library/BaseLib.h>
#include "AttrNames.h"

//
// Characters of a name that are compared for a suggestion.
//
#define COMPARED_LENGTH  63

STATIC
CHAR8
Lower (
  IN CHAR8  Character
  )
{
  return ((Character >= 'A') && (Character <= 'Z')) ? (CHAR8)(Character - 'A' + 'a') : Character;
}

UINTN
BareLength (
  IN CONST CHAR8  *Name
  )
{
  UINTN  Length;

  Length = 0;
  while ((Name[Length] != '\0') && (Name[Length] != '[')) {
    Length++;
  }

  return Length;
}

BOOLEAN
NameIs (
  IN CONST CHAR8  *Name,
  IN CONST CHAR8  *Typed,
  IN BOOLEAN      AnyCase
  )
{
  UINTN  Length;
  UINTN  Index;

  Length = AsciiStrLen (Typed);
  if ((Length != AsciiStrLen (Name)) && ((Length == 0) || (Length != BareLength (Name)))) {
    return FALSE;
  }

  for (Index = 0; Index < Length; Index++) {
    if ((Name[Index] != Typed[Index]) && (!AnyCase || (Lower (Name[Index]) != Lower (Typed[Index])))) {
      return FALSE;
    }
  }

  return TRUE;
}

/**
  Searches the name for a text, in any case.
**/
STATIC
BOOLEAN
Contains (
  IN CONST CHAR8  *Name,
  IN CONST CHAR8  *End,
  IN CONST CHAR8  *Text
  )
{
  UINTN  Length;

  Length = 0;
  while ((Text[Length] != '\0') && (Name + Length < End)) {
    if (Lower (Text[Length]) == Lower (Name[Length])) {
      Length++;
    } else {
      Name++;
      Length = 0;
    }
  }

  return (BOOLEAN)(Text[Length] == '\0');
}

BOOLEAN
NameMatches (
  IN CONST CHAR8  *Name,
  IN CONST CHAR8  *Pattern
  )
{
  CONST CHAR8  *End;
  CONST CHAR8  *AfterStar;   // the pattern after its last "*" so far
  CONST CHAR8  *Retry;       // the rest of the name that follows what that "*" has matched

  End = Name + BareLength (Name);
  if ((AsciiStrStr (Pattern, "*") == NULL) && (AsciiStrStr (Pattern, "?") == NULL)) {
    return Contains (Name, End, Pattern);
  }

  AfterStar = NULL;
  Retry     = Name;
  while ((Name < End) || (*Pattern != '\0')) {
    if (*Pattern == '*') {
      AfterStar = ++Pattern;
      Retry     = Name;
    } else if ((Name < End) && (*Pattern != '\0') && ((*Pattern == '?') || (Lower (*Pattern) == Lower (*Name)))) {
      Pattern++;
      Name++;
    } else if ((AfterStar != NULL) && (Retry < End)) {
      Pattern = AfterStar;
      Name    = ++Retry;
    } else {
      return FALSE;
    }
  }

  return TRUE;
}

BOOLEAN
NextAnnotation (
  IN OUT CONST CHAR8     **Rest,
  OUT    NameAnnotation  *Annotation
  )
{
  CONST CHAR8  *Open;
  CONST CHAR8  *Close;
  CONST CHAR8  *Next;

  Open = *Rest + BareLength (*Rest);
  for (Close = Open; (*Close != '\0') && (*Close != ']'); Close++) {
  }

  if (*Close == '\0') {
    return FALSE;
  }

  *Rest               = Close + 1;
  Annotation->Keyword = Open + 1;
  for (Next = Open + 1; (Next < Close) && (*Next != ':'); Next++) {
  }

  Annotation->KeywordLength = (UINTN)(Next - Annotation->Keyword);
  Annotation->Text          = (Next < Close) ? Next + 1 : Close;
  Annotation->TextLength    = (UINTN)(Close - Annotation->Text);
  for (Next = Annotation->Text; (Next < Close) && (*Next != '='); Next++) {
  }

  Annotation->SubjectLength = (UINTN)(Next - Annotation->Text);
  return TRUE;
}

/**
  Counts the characters that must be changed, inserted or deleted to turn one text into the other.
**/
STATIC
UINTN
EditDistance (
  IN CONST CHAR8  *Left,
  IN UINTN        LeftLength,
  IN CONST CHAR8  *Right,
  IN UINTN        RightLength
  )
{
  UINTN  Row[COMPARED_LENGTH + 1];
  UINTN  Column;
  UINTN  Line;
  UINTN  Diagonal;
  UINTN  Above;

  for (Column = 0; Column <= RightLength; Column++) {
    Row[Column] = Column;
  }

  for (Line = 1; Line <= LeftLength; Line++) {
    Diagonal = Row[0];
    Row[0]   = Line;
    for (Column = 1; Column <= RightLength; Column++) {
      Above       = Row[Column];
      Row[Column] = Diagonal + ((Lower (Left[Line - 1]) == Lower (Right[Column - 1])) ? 0 : 1);
      Row[Column] = MIN (Row[Column], MIN (Above, Row[Column - 1]) + 1);
      Diagonal    = Above;
    }
  }

  return Row[RightLength];
}

VOID
SuggestName (
  IN     CONST CHAR8      *Name,
  IN     CONST CHAR8      *Typed,
  IN OUT NameSuggestions  *Suggestions
  )
{
  UINTN  NameLength;
  UINTN  TypedLength;
  UINTN  Distance;
  UINTN  Place;

  NameLength  = MIN (BareLength (Name), COMPARED_LENGTH);
  TypedLength = MIN (BareLength (Typed), COMPARED_LENGTH);
  if ((NameLength == 0) || (TypedLength == 0)) {
    return;
  }

  Distance = EditDistance (Name, NameLength, Typed, TypedLength);
  if ((TypedLength < NameLength) && (EditDistance (Name, TypedLength, Typed, TypedLength) == 0)) {
    Distance = 1;   // the beginning of a name ranks like one wrong character
  } else if (Distance > MAX (TypedLength / 3, 1)) {
    return;
  }

  Place = Suggestions->Count;
  if (Place < SUGGESTION_CAPACITY) {
    Suggestions->Count++;
  } else if (Suggestions->Distances[--Place] <= Distance) {
    return;
  }

  for ( ; (Place > 0) && (Suggestions->Distances[Place - 1] > Distance); Place--) {
    Suggestions->Names[Place]     = Suggestions->Names[Place - 1];
    Suggestions->Distances[Place] = Suggestions->Distances[Place - 1];
  }

  Suggestions->Names[Place]     = Name;
  Suggestions->Distances[Place] = Distance;
}

BOOLEAN
AsciiFromWord (
  IN  CONST CHAR16  *Word,
  OUT CHAR8         *Ascii,
  IN  UINTN         Capacity
  )
{
  UINTN  Index;

  for (Index = 0; Word[Index] != L'\0'; Index++) {
    if ((Index + 1 >= Capacity) || (Word[Index] < L' ') || (Word[Index] > L'~')) {
      Ascii[0] = '\0';
      return FALSE;
    }

    Ascii[Index] = (CHAR8)Word[Index];
  }

  Ascii[Index] = '\0';
  return TRUE;
}
