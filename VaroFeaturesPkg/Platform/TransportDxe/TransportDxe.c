/** @file
  TransportDxe: TableTransportProtocol that keeps the records in memory, byte for byte as they were sent. A driver that
  carries them on to management software finds them behind TransportLogProtocol.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseMemoryLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PlatformPartLib.h>
#include <Library/TimerLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/TableTransport.h>
#include <Protocol/TransportLog.h>

//
// Room for all that the records of a boot can come to: five tables of less than 64 KB each, and the attribute stream.
//
#define LOG_CAPACITY  SIZE_1MB

STATIC TransportLogProtocol  mLog;

STATIC
EFI_STATUS
EFIAPI
SendRecord (
  IN TableTransportProtocol   *This,
  IN CONST TransportRecord    *Record,
  IN CONST UINT64             *Size
  )
{
  if (*Size > mLog.Capacity - mLog.Size) {
    return EFI_OUT_OF_RESOURCES;
  }

  CopyMem (mLog.Records + mLog.Size, Record, (UINTN)*Size);
  mLog.Size += (UINTN)*Size;
  mLog.Count++;
  mLog.LastRecord = GetPerformanceCounter ();
  return EFI_SUCCESS;
}

STATIC TableTransportProtocol  mTransport = { SendRecord };

EFI_STATUS
EFIAPI
TransportDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_HANDLE  Handle;

  mLog.Records = AllocatePool (LOG_CAPACITY);
  if (mLog.Records == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  mLog.Capacity = LOG_CAPACITY;
  Handle        = NULL;
  if (!PlatformHasPart ("transport")) {
    return gBS->InstallMultipleProtocolInterfaces (&Handle, &gVaroTransportLogProtocolGuid, &mLog, NULL);
  }

  return gBS->InstallMultipleProtocolInterfaces (
                &Handle,
                &gVaroTransportLogProtocolGuid,
                &mLog,
                &gVaroTableTransportProtocolGuid,
                &mTransport,
                NULL
                );
}
