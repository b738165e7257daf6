/** @file
  BootSignalsDxe: the two signals that CorvaneDxe waits for, each at an event group that a PCD names.

  All other notification functions of the group run first: a form set that a driver publishes at the same moment counts.
  "Form sets updated" comes before "tables wanted" when both name the same group.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseMemoryLib.h>
#include <Library/DebugLib.h>
#include <Library/PcdLib.h>
#include <Library/PlatformPartLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/FormSetsUpdated.h>
#include <Protocol/TablesRequested.h>

typedef struct _BootSignal BootSignal;

struct _BootSignal {
  CONST CHAR8    *Part;       ///< as PlatformPartLib knows the signal
  EFI_GUID       *Protocol;   ///< installed without an interface
  EFI_EVENT      Last;        ///< queued after the other notification functions of the group
  BootSignal     *Next;       ///< given when those who wait for this one have run, or NULL
};

STATIC BootSignal  mFormSetsUpdated = { "form-sets-updated", &gVaroFormSetsUpdatedProtocolGuid, NULL, NULL };
STATIC BootSignal  mTablesRequested = { "tables-requested", &gVaroTablesRequestedProtocolGuid, NULL, NULL };

STATIC
VOID
EFIAPI
OnGroup (
  IN EFI_EVENT  Event,
  IN VOID       *Context
  )
{
  gBS->CloseEvent (Event);
  gBS->SignalEvent (((BootSignal *)Context)->Last);
}

STATIC
VOID
EFIAPI
OnLast (
  IN EFI_EVENT  Event,
  IN VOID       *Context
  )
{
  BootSignal  *Signal;
  EFI_HANDLE  Handle;
  EFI_STATUS  Status;

  Signal = Context;
  Handle = NULL;
  Status = gBS->InstallProtocolInterface (&Handle, Signal->Protocol, EFI_NATIVE_INTERFACE, NULL);
  ASSERT_EFI_ERROR (Status);
  if (Signal->Next != NULL) {
    gBS->SignalEvent (Signal->Next->Last);   // queued after the notification that the installation has queued
  }
}

/**
  Has a signal given once.

  @param[in]  Group  Event group; NULL = when another signal is through.
**/
STATIC
EFI_STATUS
GiveSignal (
  IN BootSignal      *Signal,
  IN CONST EFI_GUID  *Group OPTIONAL
  )
{
  EFI_EVENT   Event;
  EFI_STATUS  Status;

  Status = gBS->CreateEvent (EVT_NOTIFY_SIGNAL, TPL_CALLBACK, OnLast, Signal, &Signal->Last);
  if (!EFI_ERROR (Status) && (Group != NULL)) {
    Status = gBS->CreateEventEx (EVT_NOTIFY_SIGNAL, TPL_CALLBACK, OnGroup, Signal, Group, &Event);
  }

  return Status;
}

EFI_STATUS
EFIAPI
BootSignalsDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  CONST EFI_GUID  *Updated;
  CONST EFI_GUID  *Requested;
  EFI_STATUS      Status;

  Updated   = PcdGetPtr (PcdVaroFormSetsUpdatedEvent);
  Requested = PcdGetPtr (PcdVaroTablesRequestedEvent);
  Status    = EFI_SUCCESS;
  if (PlatformHasPart (mFormSetsUpdated.Part)) {
    Status = GiveSignal (&mFormSetsUpdated, Updated);
    if (CompareGuid (Updated, Requested)) {
      mFormSetsUpdated.Next = &mTablesRequested;
      Requested             = NULL;
    }
  }

  if (PlatformHasPart (mTablesRequested.Part)) {
    if (!EFI_ERROR (Status)) {
      Status = GiveSignal (&mTablesRequested, Requested);
    }
  } else {
    mFormSetsUpdated.Next = NULL;
  }

  ASSERT_EFI_ERROR (Status);
  return Status;
}
