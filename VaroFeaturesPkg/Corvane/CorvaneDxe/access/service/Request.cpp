/** @file
  Layout of a request's block.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "access/service/Request.hpp"

static_assert(offsetof(RequestBlock, Arguments) == 4 && offsetof(RequestBlock, Results) == 20 &&
              offsetof(RequestBlock, Descriptor) == 36);
static_assert(offsetof(RequestBlock, PayloadLength) == 92 && sizeof(RequestBlock) == 96);
static_assert(sizeof(DispatchDescriptor) == 32 && offsetof(DispatchDescriptor, IoAddress) == 24);

Request::Request(AccessState& access, UINT16 requestClass, UINT16 select)
    : block_(*access.RequestBuffer), dispatcher_(*access.Dispatcher) {
  const UINT64 address = reinterpret_cast<UINTN>(&block_);
  block_.Class = requestClass;
  block_.Select = select;
  ZeroMem(block_.Arguments, sizeof(block_.Arguments) + sizeof(block_.Results));
  block_.Arguments[0] = static_cast<UINT32>(address + offsetof(RequestBlock, PayloadLength));
  block_.Results[0] = REQUEST_NOT_HANDLED;
  DispatchDescriptor& descriptor = block_.Descriptor;
  descriptor.Marker = DISPATCH_DESCRIPTOR_MARKER;
  ZeroMem(descriptor.Reserved0, sizeof(descriptor.Reserved0));
  descriptor.RequestBuffer = address;
  descriptor.IoAddress = access.CallingInterface == nullptr ? 0 : access.CallingInterface->IoAddress;
  ZeroMem(descriptor.Reserved1, sizeof(descriptor.Reserved1));
}

void Request::FillPayload() {
  block_.PayloadLength = REQUEST_PAYLOAD_CAPACITY;
  SetMem32(&block_ + 1, REQUEST_PAYLOAD_CAPACITY, REQUEST_PAYLOAD_FILL);
}
