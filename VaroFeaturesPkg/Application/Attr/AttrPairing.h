/** @file
  AttrPairing: which display text belongs to which attribute, where that is sure.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef ATTR_PAIRING_H_
#define ATTR_PAIRING_H_

#include "AttrTables.h"

///
/// Texts of one attribute, owned by the pairing.
///
typedef struct {
  CONST CHAR16    *Display;      ///< NULL when it is not sure
  UINT16          HelpHandle;    ///< handle of its help text, should there be one; 0 when it is not sure
} PairedText;

typedef struct {
  CHAR16        **Texts;    ///< display texts in their order
  UINTN         TextCount;
  PairedText    *Paired;    ///< one for each entry
} TextPairing;

/**
  Pairs the attributes with the display texts by going through the order of their creation again.

  @param[in]   Entries  All attributes, in the order of the attribute table.
  @param[out]  Pairing  To be released with FreePairing, whatever the status.
**/
EFI_STATUS
PairTexts (
  IN  AttributeAccessProtocol  *Access,
  IN  CONST AttributeEntry     *Entries,
  IN  UINTN                    Count,
  OUT TextPairing              *Pairing
  );

VOID
FreePairing (
  IN OUT TextPairing  *Pairing
  );

#endif
