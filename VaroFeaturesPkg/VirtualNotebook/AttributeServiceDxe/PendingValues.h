/** @file
  PendingValues: values that were accepted in this boot, by the number of their setting, as text.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PENDING_VALUES_H_
#define PENDING_VALUES_H_

#include <Protocol/PendingValues.h>
#include "ByteReader.h"

/**
  Keeps a value for the next boot and has that boot gather its attributes anew. An earlier value of the setting is
  forgotten.

  @param[in]  Setting  Number of the setting or identifier of the question.
  @param[in]  Text     Value, as SettingWriterProtocol takes it; unterminated.

  @retval others  The value is not kept.
**/
EFI_STATUS
KeepPendingValue (
  IN UINT32      Setting,
  IN ByteReader  Text
  );

/**
  Tells whether a value can be stored in the next boot.

  @param[in]  Setting  Number of the setting or identifier of the question.
  @param[in]  Text     Value, as SettingWriterProtocol takes it; unterminated.

  @retval EFI_SUCCESS  It can.
**/
EFI_STATUS
CheckPendingValue (
  IN UINT32      Setting,
  IN ByteReader  Text
  );

/**
  Finds the value that was kept for a setting in this boot.

  @param[out]  Text  As it was given to KeepPendingValue.
**/
BOOLEAN
FindPendingValue (
  IN  UINT32      Setting,
  OUT ByteReader  *Text
  );

extern PendingValuesProtocol  mPendingValues;

#endif
