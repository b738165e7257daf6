/** @file
  TransportLogProtocol: the transport records of this boot, as they were sent. Provided by Platform/TransportDxe for the
  platform's own drivers; CorvaneDxe does not use it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_TRANSPORT_LOG_H_
#define PROTOCOL_TRANSPORT_LOG_H_

#include <Uefi/UefiBaseType.h>

#define VARO_TRANSPORT_LOG_PROTOCOL_GUID \
  { 0x88D8448A, 0xE216, 0x456C, { 0xAB, 0xB6, 0x73, 0xB6, 0x3D, 0xFF, 0xBF, 0xAD } }

typedef struct {
  UINT8     *Records;      ///< all records back to back, byte for byte; NULL when none was sent
  UINTN     Size;          ///< bytes of Records
  UINTN     Capacity;      ///< bytes allocated
  UINT32    Count;         ///< records taken
  UINT64    LastRecord;    ///< performance counter when the last one was taken
} TransportLogProtocol;

extern EFI_GUID  gVaroTransportLogProtocolGuid;

#endif
