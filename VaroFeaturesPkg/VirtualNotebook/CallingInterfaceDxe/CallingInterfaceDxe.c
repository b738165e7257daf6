/** @file
  CallingInterfaceDxe: two structures of SMBIOS type 218 with the tokens of some of the notebook's settings. The
  attribute service takes its address from them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Corvane/CallingInterface.h>
#include <Library/ScenarioLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/Smbios.h>

#define IO_ADDRESS      0x00B2
#define IO_CODE         0x5A
#define CAPABILITIES    0x00000007
#define TOKENS_OF_EACH  4

#pragma pack (1)

typedef struct {
  CallingInterfaceStructure    Formatted;
  CallingInterfaceToken        Tokens[TOKENS_OF_EACH];
  UINT8                        NoStrings[2];
} CORVANE_PACKED PublishedStructure;

#pragma pack ()

#define STRUCTURE_HEAD \
  { SMBIOS_TYPE_CALLING_INTERFACE, OFFSET_OF (PublishedStructure, NoStrings), 0, IO_ADDRESS, IO_CODE, CAPABILITIES }

//
// Unsorted, with a token that is none, and with one behind the end of a list: readers have to cope.
//
STATIC PublishedStructure  mStructures[] = {
  {
    STRUCTURE_HEAD,
    { { 0x07D1, { 1 } }, { CALLING_INTERFACE_TOKEN_NONE, { 0 } }, { 0x0761, { 2 } }, { 0x0BB9, { 3 } } },
    { 0 }
  },
  {
    STRUCTURE_HEAD,
    { { 0x0FA1, { 4 } }, { 0x0733, { 5 } }, { CALLING_INTERFACE_TOKEN_END, { 0 } }, { 0x0FA2, { 6 } } },
    { 0 }
  }
};

EFI_STATUS
EFIAPI
CallingInterfaceDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_SMBIOS_PROTOCOL  *Smbios;
  EFI_SMBIOS_HANDLE    Handle;
  UINTN                Index;
  EFI_STATUS           Status;

  if (ScenarioLists ("without", "calling-interface")) {
    return EFI_UNSUPPORTED;
  }

  Status = gBS->LocateProtocol (&gEfiSmbiosProtocolGuid, NULL, (VOID **)&Smbios);
  for (Index = 0; !EFI_ERROR (Status) && (Index < ARRAY_SIZE (mStructures)); Index++) {
    Handle = SMBIOS_HANDLE_PI_RESERVED;
    Status = Smbios->Add (Smbios, NULL, &Handle, (EFI_SMBIOS_TABLE_HEADER *)&mStructures[Index]);
  }

  return Status;
}
