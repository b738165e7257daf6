/** @file
  The ten operations of AttributeAccessProtocol, as their callers see them: see Protocol/AttributeAccess.h.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "access/service/AccessState.hpp"

EFI_STATUS EFIAPI GetAttributeString(AttributeAccessProtocol* self, UINT16 handle, CHAR8* buffer, UINT32* size);
EFI_STATUS EFIAPI FindAttributeHandle(AttributeAccessProtocol* self, const CHAR8* name, UINT16* handle);
EFI_STATUS EFIAPI GetTextStringB(AttributeAccessProtocol* self, UINT32 handle, CHAR16* buffer, UINT32* size);
EFI_STATUS EFIAPI GetTextStringA(AttributeAccessProtocol* self, UINT32 handle, CHAR16* buffer, UINT32* size);
EFI_STATUS EFIAPI GetAttributeHandles(AttributeAccessProtocol* self, UINT16* handles, UINT32* size);
EFI_STATUS EFIAPI GetAttributeInfo(AttributeAccessProtocol* self, AttributeInfo* info, UINT32* size);
EFI_STATUS EFIAPI SetAttributeValue(AttributeAccessProtocol* self, AttributeInfo* info, UINT32 size,
                                    const CHAR8* password);
EFI_STATUS EFIAPI GetRequestBuffer(AttributeAccessProtocol* self, VOID** buffer, UINT32* size);
EFI_STATUS EFIAPI GetAttributeValueByName(AttributeAccessProtocol* self, const CHAR8* name, UINT8* buffer,
                                          UINT32* size);
EFI_STATUS EFIAPI SetAttributeValueByName(AttributeAccessProtocol* self, const CHAR8* name, const CHAR8* value,
                                          const CHAR8* password);
