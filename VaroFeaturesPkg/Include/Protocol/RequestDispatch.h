/** @file
  RequestDispatchProtocol: takes requests to the platform's attribute service. Provided by the platform.

  Without it, the operations of AttributeAccessProtocol that need the service return the error of locating it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_REQUEST_DISPATCH_H_
#define PROTOCOL_REQUEST_DISPATCH_H_

#include <Uefi/UefiBaseType.h>
#include <Corvane/AttributeRequest.h>

#define VARO_REQUEST_DISPATCH_PROTOCOL_GUID \
  { 0x8A32A694, 0xB440, 0x42FD, { 0xB9, 0x17, 0x23, 0xCF, 0x4C, 0xDE, 0xB5, 0x4A } }

/**
  Has the service handle the request in a RequestBuffer, and answer in the same buffer.

  @param[in,out]  Descriptor  Part of the RequestBuffer, RequestBlock.Descriptor.

  @retval EFI_SUCCESS  The request was delivered; RequestBlock.Results[0] says whether it was handled.
  @retval others       It was not delivered.
**/
typedef
EFI_STATUS
(EFIAPI *REQUEST_DISPATCH)(
  IN OUT DispatchDescriptor  *Descriptor
  );

typedef struct {
  REQUEST_DISPATCH    Dispatch;
} RequestDispatchProtocol;

extern EFI_GUID  gVaroRequestDispatchProtocolGuid;

#endif
