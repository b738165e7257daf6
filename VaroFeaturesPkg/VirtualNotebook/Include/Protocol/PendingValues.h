/** @file
  PendingValuesProtocol: values that the attribute service accepted for settings of the platform's own, and that wait
  for the next boot.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_PENDING_VALUES_H_
#define PROTOCOL_PENDING_VALUES_H_

#include <Uefi/UefiBaseType.h>

typedef struct _PendingValuesProtocol PendingValuesProtocol;

/**
  Gives settings the values that were accepted for them in the last boot. To be called before anybody gathers them.

  @retval EFI_SUCCESS    The values are applied, each as far as its setting is there.
  @retval EFI_NOT_FOUND  No value was waiting.
**/
typedef
EFI_STATUS
(EFIAPI *PENDING_VALUES_APPLY)(
  IN PendingValuesProtocol  *This
  );

struct _PendingValuesProtocol {
  PENDING_VALUES_APPLY    Apply;
};

extern EFI_GUID  gNotebookPendingValuesProtocolGuid;

#endif
