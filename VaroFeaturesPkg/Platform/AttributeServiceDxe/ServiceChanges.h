/** @file
  ServiceChanges: stores new values, and remembers which settings were changed in this boot.

  A question's value goes to the question's own storage at once. A setting of the platform's own is handed to
  PlatformSettingsProtocol. In both cases the next boot is told to gather the attributes again, before anything is
  stored: a boot that gathers without need does no harm.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef SERVICE_CHANGES_H_
#define SERVICE_CHANGES_H_

#include "ByteReader.h"

/**
  Stores a number.

  @param[in]  Token  Number of the setting or identifier of the question.

  @retval EFI_OUT_OF_RESOURCES, EFI_DEVICE_ERROR  The value is a good one, but it could not be stored.
  @retval others                                  Nothing can store this value.
**/
EFI_STATUS
StoreNumber (
  IN UINT32  Token,
  IN UINT64  Value
  );

/**
  Stores a text.

  @param[in]  Text  ASCII, unterminated.

  @retval as StoreNumber.
**/
EFI_STATUS
StoreText (
  IN UINT32      Token,
  IN ByteReader  Text
  );

/**
  Gives the number of a setting that was changed in this boot.
**/
BOOLEAN
FindChangedNumber (
  IN  UINT32  Token,
  OUT UINT64  *Value
  );

/**
  Gives the text of a question that was changed in this boot.

  @param[out]  Text  ASCII, unterminated; valid until the next call.
**/
BOOLEAN
FindChangedText (
  IN  UINT32      Token,
  OUT ByteReader  *Text
  );

#endif
