/** @file
  TableTransportProtocol: carries the transport records (Corvane/TransportRecord.h) to management software. Provided by
  the platform; the driver requires it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_TABLE_TRANSPORT_H_
#define PROTOCOL_TABLE_TRANSPORT_H_

#include <Uefi/UefiBaseType.h>
#include <Corvane/TransportRecord.h>

#define VARO_TABLE_TRANSPORT_PROTOCOL_GUID \
  { 0xC68ED8E2, 0x9DC6, 0x4CBD, { 0x9D, 0x94, 0xDB, 0x65, 0xAC, 0xC5, 0xC3, 0x32 } }

typedef struct _TableTransportProtocol TableTransportProtocol;

/**
  Sends one record. The eight records of a boot arrive in the order of their types, at TPL_CALLBACK.

  @param[in]  This    The protocol.
  @param[in]  Record  Header and payload. The driver frees it after the call: copy what is needed.
  @param[in]  Size    Bytes of the whole record, header included.

  @retval EFI_SUCCESS  The record is taken.
  @retval others       The record is not taken. The driver sends the next one.
**/
typedef
EFI_STATUS
(EFIAPI *TABLE_TRANSPORT_SEND)(
  IN TableTransportProtocol   *This,
  IN CONST TransportRecord    *Record,
  IN CONST UINT64             *Size
  );

struct _TableTransportProtocol {
  TABLE_TRANSPORT_SEND    Send;
};

extern EFI_GUID  gVaroTableTransportProtocolGuid;

#endif
