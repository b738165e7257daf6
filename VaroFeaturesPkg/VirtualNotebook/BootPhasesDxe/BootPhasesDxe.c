/** @file
  BootPhasesDxe: the two signals that CorvaneDxe waits for, and the results of the boot.

  End of DXE: every driver of the firmware is dispatched, so all form sets are published. What the attribute service
  accepted for the platform's own settings in the last boot is applied now, what the scenario item "set"
  ("ID=VALUE;ID=VALUE") says the user changed since then is changed, what "damage" says is damaged; then
  gVaroFormSetsUpdatedProtocolGuid is installed.

  Ready to boot: BDS has connected the devices and put "BootOrder" in order, and is about to start the boot option.
  gVaroTablesRequestedProtocolGuid is installed; when the tables are out, the result files are written.

  The scenario item "twice" lists signals that are installed on two handles, "without" those that never come.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Guid/EventGroup.h>
#include <Guid/GlobalVariable.h>
#include <Library/BaseLib.h>
#include <Library/DebugLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/ScenarioLib.h>
#include <Library/TimerLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Library/UefiLib.h>
#include <Library/UefiRuntimeServicesTableLib.h>
#include <Protocol/FormSetsUpdated.h>
#include <Protocol/PendingValues.h>
#include <Protocol/SettingWriter.h>
#include <Protocol/SetupValues.h>
#include <Protocol/TablesRequested.h>
#include "CacheDamage.h"
#include "PhaseRecorder.h"
#include "ResultFiles.h"
#include "ShellOption.h"

STATIC EFI_EVENT  mRequestEvent;
STATIC EFI_EVENT  mResultsEvent;
STATIC UINT64     mRequested;   ///< performance counter when the tables were asked for

/**
  Changes the platform language, when the scenario asks for another.
**/
STATIC
VOID
ApplyLanguage (
  VOID
  )
{
  CHAR8       *Language;
  EFI_STATUS  Status;

  Language = GetScenarioText ("language");
  if (Language == NULL) {
    return;
  }

  Status = gRT->SetVariable (
                  EFI_PLATFORM_LANG_VARIABLE_NAME,
                  &gEfiGlobalVariableGuid,
                  EFI_VARIABLE_NON_VOLATILE | EFI_VARIABLE_BOOTSERVICE_ACCESS | EFI_VARIABLE_RUNTIME_ACCESS,
                  AsciiStrSize (Language),
                  Language
                  );
  DEBUG ((DEBUG_INFO, "%a: language %a: %r\n", gEfiCallerBaseName, Language, Status));
  FreePool (Language);
}

/**
  Changes the settings of the platform's own that the attribute service was asked to change in the last boot.
**/
STATIC
VOID
ApplyPendingValues (
  VOID
  )
{
  PendingValuesProtocol  *Pending;
  EFI_STATUS             Status;

  Status = gBS->LocateProtocol (&gNotebookPendingValuesProtocolGuid, NULL, (VOID **)&Pending);
  if (!EFI_ERROR (Status)) {
    Status = Pending->Apply (Pending);
    DEBUG ((DEBUG_INFO, "%a: pending values: %r\n", gEfiCallerBaseName, Status));
  }
}

/**
  Changes what the user changed since the last boot.
**/
STATIC
VOID
ApplyChanges (
  VOID
  )
{
  SettingWriterProtocol  *Writer;
  CHAR8                  *Text;
  CHAR8                  *Rest;
  CHAR8                  *Value;
  CHAR8                  *Number;
  EFI_STATUS             Status;

  Text = GetScenarioText ("set");
  if (Text == NULL) {
    return;
  }

  Status = gBS->LocateProtocol (&gNotebookSettingWriterProtocolGuid, NULL, (VOID **)&Writer);
  Rest   = EFI_ERROR (Status) ? NULL : Text;
  while ((Value = NextScenarioEntry (&Rest, ';')) != NULL) {
    Number = NextScenarioEntry (&Value, '=');
    if (Value != NULL) {
      Status = Writer->Write (Writer, (UINT32)ReadScenarioNumber (Number), Value);
      DEBUG ((DEBUG_INFO, "%a: %a=%a: %r\n", gEfiCallerBaseName, Number, Value, Status));
    }
  }

  FreePool (Text);
}

/**
  Installs a signal, on as many handles as the scenario asks for.

  @param[in]  Name  Of the signal in the scenario items.
**/
STATIC
VOID
InstallSignal (
  IN EFI_GUID     *Guid,
  IN CONST CHAR8  *Name
  )
{
  EFI_HANDLE  Handle;
  UINTN       Count;
  EFI_STATUS  Status;

  Count = ScenarioLists ("twice", Name) ? 2 : 1;
  if (ScenarioLists ("without", Name)) {
    Count = 0;
  }

  for ( ; Count > 0; Count--) {
    Handle = NULL;
    Status = gBS->InstallProtocolInterface (&Handle, Guid, EFI_NATIVE_INTERFACE, NULL);
    ASSERT_EFI_ERROR (Status);
  }
}

STATIC
VOID
EFIAPI
OnEndOfDxe (
  IN EFI_EVENT  Event,
  IN VOID       *Context
  )
{
  SetupValuesProtocol  *SetupValues;

  gBS->CloseEvent (Event);
  AddShellOption ();
  if (!EFI_ERROR (gBS->LocateProtocol (&gVaroSetupValuesProtocolGuid, NULL, (VOID **)&SetupValues))) {
    SetupValues->CreateVariables (SetupValues);
    ApplyLanguage ();
    ApplyPendingValues ();
    ApplyChanges ();
  }

  DamageCache ();
  InstallSignal (&gVaroFormSetsUpdatedProtocolGuid, "form-sets-updated");
}

/**
  The events of one TPL run in the order of their signals: this one lets all others of the group run first, so that
  their work is not counted as ours.
**/
STATIC
VOID
EFIAPI
OnReadyToBoot (
  IN EFI_EVENT  Event,
  IN VOID       *Context
  )
{
  gBS->CloseEvent (Event);
  gBS->SignalEvent (mRequestEvent);
}

/**
  CorvaneDxe's notification is queued by the installation, and the one that writes the results behind it.
**/
STATIC
VOID
EFIAPI
OnRequest (
  IN EFI_EVENT  Event,
  IN VOID       *Context
  )
{
  mRequested = GetPerformanceCounter ();
  InstallSignal (&gVaroTablesRequestedProtocolGuid, "tables-requested");
  gBS->SignalEvent (mResultsEvent);
}

STATIC
VOID
EFIAPI
OnResults (
  IN EFI_EVENT  Event,
  IN VOID       *Context
  )
{
  EFI_STATUS  Status;

  Status = WriteResultFiles (mRequested);
  if (EFI_ERROR (Status)) {
    DEBUG ((DEBUG_WARN, "%a: the results of this boot are not on a disk: %r\n", gEfiCallerBaseName, Status));
  }
}

EFI_STATUS
EFIAPI
BootPhasesDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_HANDLE  Handle;
  EFI_EVENT   Event;
  EFI_STATUS  Status;

  Status = gBS->CreateEvent (EVT_NOTIFY_SIGNAL, TPL_CALLBACK, OnRequest, NULL, &mRequestEvent);
  if (!EFI_ERROR (Status)) {
    Status = gBS->CreateEvent (EVT_NOTIFY_SIGNAL, TPL_CALLBACK, OnResults, NULL, &mResultsEvent);
  }

  if (!EFI_ERROR (Status)) {
    Status = gBS->CreateEventEx (
                    EVT_NOTIFY_SIGNAL,
                    TPL_CALLBACK,
                    OnEndOfDxe,
                    NULL,
                    &gEfiEndOfDxeEventGroupGuid,
                    &Event
                    );
  }

  if (!EFI_ERROR (Status)) {
    Status = EfiCreateEventReadyToBootEx (TPL_CALLBACK, OnReadyToBoot, NULL, &Event);
  }

  if (!EFI_ERROR (Status)) {
    Handle = NULL;
    Status = gBS->InstallProtocolInterface (
                    &Handle,
                    &gEdkiiPerformanceMeasurementProtocolGuid,
                    EFI_NATIVE_INTERFACE,
                    &mPhaseRecorder
                    );
  }

  ASSERT_EFI_ERROR (Status);
  return Status;
}
