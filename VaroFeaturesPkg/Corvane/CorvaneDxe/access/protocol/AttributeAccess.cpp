/** @file
  Installation and removal of the attribute access protocol.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "access/protocol/AttributeAccess.hpp"

#include "access/service/FetchedTables.hpp"
#include "access/protocol/Operations.hpp"
#include "uefi/Protocols.hpp"

extern "C" {
#include <Protocol/LoadedImage.h>
}

constinit AccessState mAccess{};

namespace {

/// Takes an earlier instance off every handle that carries it. Its record goes with the first; a further handle is
/// asked with none.
EFI_STATUS RemoveEarlierInstance(AttributeAccessProtocol*& interface) {
  UINTN count = 0;
  EFI_HANDLE* handles = nullptr;
  const EFI_STATUS status =
      gBS->LocateHandleBuffer(ByProtocol, &gVaroAttributeAccessProtocolGuid, nullptr, &count, &handles);
  if (EFI_ERROR(status)) {
    return status;
  }
  for (EFI_HANDLE handle : std::span(handles, count)) {
    if (!EFI_ERROR(gBS->UninstallProtocolInterface(handle, &gVaroAttributeAccessProtocolGuid, interface))) {
      FreeBlock(std::exchange(interface, nullptr));
    }
  }
  FreeBlock(handles);
  return EFI_SUCCESS;
}

/// The record is the protocol's: whoever removes it frees it.
AttributeAccessProtocol* MakeInterface() {
  PoolPtr<AttributeAccessProtocol> interface = AllocateZeroed<AttributeAccessProtocol>();
  if (interface) {
    *interface = {.Revision = ATTRIBUTE_ACCESS_REVISION,
                  .GetAttributeString = GetAttributeString,
                  .FindAttributeHandle = FindAttributeHandle,
                  .GetTextStringB = GetTextStringB,
                  .GetTextStringA = GetTextStringA,
                  .GetAttributeHandles = GetAttributeHandles,
                  .GetAttributeInfo = GetAttributeInfo,
                  .SetAttributeValue = SetAttributeValue,
                  .GetRequestBuffer = GetRequestBuffer,
                  .GetAttributeValueByName = GetAttributeValueByName,
                  .SetAttributeValueByName = SetAttributeValueByName};
  }
  return interface.release();
}

/// Runtime memory: the service may reach into it from outside of boot services.
RequestBlock* AllocateRequestBuffer() {
  void* buffer = nullptr;
  if (EFI_ERROR(gBS->AllocatePool(EfiRuntimeServicesData, REQUEST_BUFFER_SIZE, &buffer))) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: no memory for the request buffer: no attribute can be asked for\n"));
    return nullptr;
  }
  ZeroMem(buffer, REQUEST_BUFFER_SIZE);
  return static_cast<RequestBlock*>(buffer);
}

}  // namespace

EFI_STATUS InstallAttributeAccessProtocol(EFI_HANDLE imageHandle, EFI_IMAGE_UNLOAD unload) {
  if (!EFI_ERROR(LocateProtocol(gVaroAttributeAccessProtocolGuid, mAccess.Interface))) {
    // An earlier instance is taken down, also one with a null interface.
    if (const EFI_STATUS status = RemoveEarlierInstance(mAccess.Interface); EFI_ERROR(status)) {
      return status;
    }
  }
  mAccess.Interface = MakeInterface();
  if (mAccess.Interface == nullptr) {
    return EFI_OUT_OF_RESOURCES;
  }
  // Without it nobody finds the operations; the unload handler is wanted all the same.
  IgnoreStatus(gBS->InstallMultipleProtocolInterfaces(&imageHandle, &gVaroAttributeAccessProtocolGuid,
                                                      mAccess.Interface, nullptr));
  void* image = nullptr;
  const EFI_STATUS status = gBS->OpenProtocol(imageHandle, &gEfiLoadedImageProtocolGuid, &image, imageHandle,
                                              imageHandle, EFI_OPEN_PROTOCOL_GET_PROTOCOL);
  if (EFI_ERROR(status)) {
    return status;
  }
  static_cast<EFI_LOADED_IMAGE_PROTOCOL*>(image)->Unload = unload;
  mAccess.RequestBuffer = AllocateRequestBuffer();
  return status;
}

EFI_STATUS UnloadAttributeAccess(EFI_HANDLE imageHandle) {
  if (imageHandle == nullptr) {
    return EFI_INVALID_PARAMETER;
  }
  ReleaseFetchedTables(mAccess);
  EFI_STATUS status = gBS->OpenProtocol(imageHandle, &gEfiLoadedImageProtocolGuid, nullptr, nullptr, nullptr,
                                        EFI_OPEN_PROTOCOL_TEST_PROTOCOL);
  if (EFI_ERROR(status)) {
    return status;
  }
  // An image that loads later may have taken the record off, and freed it.
  void* carried = nullptr;
  IgnoreStatus(gBS->HandleProtocol(imageHandle, &gVaroAttributeAccessProtocolGuid, &carried));
  // The identifier is that of the image itself, which this record is not: the protocol stays on its handle, where
  // callers tell by the missing image that it leads nowhere.
  status =
      gBS->UninstallMultipleProtocolInterfaces(imageHandle, &gEfiLoadedImageProtocolGuid, mAccess.Interface, nullptr);
  auto* const record = std::exchange(mAccess.Interface, nullptr);
  return record != nullptr && record == carried ? gBS->FreePool(record) : status;
}
