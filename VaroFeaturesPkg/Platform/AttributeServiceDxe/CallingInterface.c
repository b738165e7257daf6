/** @file
  CallingInterface: the structure of SMBIOS type 218 that tells clients which address requests are sent to. A platform
  that has published structures of its own keeps those, and their address.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Corvane/CallingInterface.h>
#include <Library/BaseMemoryLib.h>
#include <Library/PcdLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/Smbios.h>
#include "CallingInterface.h"

#pragma pack (1)

typedef struct {
  CallingInterfaceStructure    Formatted;
  CallingInterfaceToken        End;
  UINT8                        NoStrings[2];
} CORVANE_PACKED PublishedStructure;

#pragma pack ()

EFI_STATUS
PublishCallingInterface (
  OUT UINT16  *IoAddress
  )
{
  EFI_SMBIOS_PROTOCOL      *Smbios;
  EFI_SMBIOS_TABLE_HEADER  *Found;
  EFI_SMBIOS_TYPE          Type;
  EFI_SMBIOS_HANDLE        Handle;
  PublishedStructure       Structure;
  EFI_STATUS               Status;

  Status = gBS->LocateProtocol (&gEfiSmbiosProtocolGuid, NULL, (VOID **)&Smbios);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  Handle = SMBIOS_HANDLE_PI_RESERVED;
  Type   = SMBIOS_TYPE_CALLING_INTERFACE;
  Status = Smbios->GetNext (Smbios, &Handle, &Type, &Found, NULL);
  if (!EFI_ERROR (Status) && (Found->Length >= sizeof (CallingInterfaceStructure))) {
    *IoAddress = ((CallingInterfaceStructure *)Found)->IoAddress;
    return EFI_SUCCESS;
  }

  *IoAddress = PcdGet16 (PcdVaroCallingInterfaceAddress);
  ZeroMem (&Structure, sizeof (Structure));
  Structure.Formatted.Type      = SMBIOS_TYPE_CALLING_INTERFACE;
  Structure.Formatted.Length    = OFFSET_OF (PublishedStructure, NoStrings);
  Structure.Formatted.IoAddress = *IoAddress;
  Structure.Formatted.IoCode    = PcdGet8 (PcdVaroCallingInterfaceCode);
  Structure.End.TokenId         = CALLING_INTERFACE_TOKEN_END;
  Handle                        = SMBIOS_HANDLE_PI_RESERVED;
  return Smbios->Add (Smbios, NULL, &Handle, (EFI_SMBIOS_TABLE_HEADER *)&Structure);
}
