/** @file
  TransportLogProtocol: the transport records of this boot, as they were sent.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_TRANSPORT_LOG_H_
#define PROTOCOL_TRANSPORT_LOG_H_

#include <Uefi/UefiBaseType.h>

typedef struct {
  UINT8     *Records;      ///< all records back to back, byte for byte; NULL when none was sent
  UINTN     Size;          ///< bytes of Records
  UINTN     Capacity;      ///< bytes allocated
  UINT32    Count;         ///< records taken
  UINT64    LastRecord;    ///< performance counter when the last one was taken
} TransportLogProtocol;

extern EFI_GUID  gNotebookTransportLogProtocolGuid;

#endif
