/** @file
  TextReplay: which display text each step of the gathering of attributes made.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef TEXT_REPLAY_H_
#define TEXT_REPLAY_H_

#include <Uefi/UefiBaseType.h>

//
// The display texts stand in the table in their order of creation, and nothing in it says what a text belongs to. What
// made texts, and in which order, is known from the attributes; whether a step made one is not always: a text of more
// than 174 characters is left out, a text that is there already is not entered again, a checkbox and a list of two
// values look alike in the attribute table. So all ways in which the steps can have made the table are followed, and a
// text is said to be of a step only when it is in all of them.
//
typedef enum {
  ReplayAnyText,     ///< a new text, unless it was too long
  ReplayTitle,       ///< a text that is Text once its blanks are taken out, unless it was there or too long
  ReplayMaybeText,   ///< Text, unless it was there or nothing was entered
  ReplayFixedText    ///< Text, unless it was there
} ReplayKind;

typedef struct {
  ReplayKind     Kind;
  CONST CHAR8    *Text;       ///< not of ReplayAnyText
  UINTN          TextLength;
} ReplayStep;

//
// Place of a step whose text is not known for sure.
//
#define REPLAY_NO_PLACE  MAX_UINTN

/**
  Follows the steps through the table.

  @param[in]   Steps      In order; at least one ReplayFixedText has to end them, or nothing is sure.
  @param[in]   Texts      The table's texts in order.
  @param[out]  Places     For each step the place in Texts of the text that it made, or REPLAY_NO_PLACE.

  @retval EFI_SUCCESS           Places are set.
  @retval EFI_NOT_FOUND         There is no way in which these steps make this table. All places are REPLAY_NO_PLACE.
  @retval EFI_OUT_OF_RESOURCES  The same for want of memory.
**/
EFI_STATUS
ReplayTexts (
  IN  CONST ReplayStep  *Steps,
  IN  UINTN             StepCount,
  IN  CHAR16            *CONST *Texts,
  IN  UINTN             TextCount,
  OUT UINTN             *Places
  );

/**
  Compares a text with an ASCII one. Its low bytes count, as in the string table.

  @param[in]  WithoutBlanks  Blanks of Text are passed over.
**/
BOOLEAN
TextIs (
  IN CONST CHAR16  *Text,
  IN CONST CHAR8   *Ascii,
  IN UINTN         Length,
  IN BOOLEAN       WithoutBlanks
  );

#endif
