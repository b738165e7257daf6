/** @file
  ResultFiles: the files that a boot leaves on its disk for whoever started it.

    records.bin   the transport records back to back, as they were sent
    timings.txt   "NAME TICKS NANOSECONDS" for each measured phase that ended, then "NAME COUNT" lines
    platform.txt  what the platform itself holds in this boot: "FirmwareVersion TEXT", "VariableStoreRoom BYTES", then
                  "Question ID OPCODE VALUE" lines

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/DebugLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PrintLib.h>
#include <Library/TimerLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Library/UefiRuntimeServicesTableLib.h>
#include <Protocol/FirmwareVersion.h>
#include <Protocol/SetupValues.h>
#include <Protocol/SimpleFileSystem.h>
#include <Protocol/TransportLog.h>
#include <Corvane/TransportRecord.h>
#include <Uefi/UefiInternalFormRepresentation.h>
#include "PhaseRecorder.h"
#include "ResultFiles.h"

#define TEXT_CAPACITY  SIZE_64KB

typedef struct {
  CHAR8    *Text;
  UINTN    Length;
} TextBuffer;

/**
  Adds a line, as far as there is room.
**/
STATIC
VOID
EFIAPI
AddLine (
  IN OUT TextBuffer   *Buffer,
  IN     CONST CHAR8  *Format,
  ...
  )
{
  VA_LIST  Arguments;

  VA_START (Arguments, Format);
  Buffer->Length += AsciiVSPrint (Buffer->Text + Buffer->Length, TEXT_CAPACITY - Buffer->Length, Format, Arguments);
  VA_END (Arguments);
}

STATIC
EFI_STATUS
WriteFile (
  IN EFI_FILE_PROTOCOL  *Root,
  IN CHAR16             *Name,
  IN CONST VOID         *Data,
  IN UINTN              Size
  )
{
  EFI_FILE_PROTOCOL  *File;
  EFI_STATUS         Status;

  Status = Root->Open (Root, &File, Name, EFI_FILE_MODE_READ | EFI_FILE_MODE_WRITE, 0);
  if (!EFI_ERROR (Status)) {
    File->Delete (File);   // of an earlier boot
  }

  Status = Root->Open (Root, &File, Name, EFI_FILE_MODE_READ | EFI_FILE_MODE_WRITE | EFI_FILE_MODE_CREATE, 0);
  if (!EFI_ERROR (Status)) {
    Status = File->Write (File, &Size, (VOID *)Data);
    File->Close (File);
  }

  return Status;
}

STATIC
EFI_STATUS
WriteRecords (
  IN EFI_FILE_PROTOCOL     *Root,
  IN TransportLogProtocol  *Log
  )
{
  return WriteFile (Root, L"records.bin", Log->Records, Log->Size);
}

STATIC
EFI_STATUS
WriteTimings (
  IN EFI_FILE_PROTOCOL     *Root,
  IN TransportLogProtocol  *Log,
  IN SetupValuesProtocol   *SetupValues,
  IN UINT64                Requested,
  IN TextBuffer            *Buffer
  )
{
  UINTN   Index;
  UINT64  Ticks;

  Buffer->Length = 0;
  for (Index = 0; Index < MEASURED_PHASE_COUNT; Index++) {
    if (mMeasuredPhases[Index].Finished) {
      Ticks = mMeasuredPhases[Index].Ticks;
      AddLine (Buffer, "%a %lu %lu\n", mMeasuredPhases[Index].Name, Ticks, GetTimeInNanoSecond (Ticks));
    }
  }

  if (Log->Count == TRANSPORT_RECORD_COUNT) {
    Ticks = Log->LastRecord - Requested;
    AddLine (Buffer, "TablesWantedToLastRecord %lu %lu\n", Ticks, GetTimeInNanoSecond (Ticks));
  }

  AddLine (Buffer, "FormSetsListed %u\n", SetupValues->FormSetsListed);
  AddLine (Buffer, "FormSetsParsed %u\n", SetupValues->FormSetsParsed);
  AddLine (Buffer, "RecordsSent %u\n", Log->Count);
  return WriteFile (Root, L"timings.txt", Buffer->Text, Buffer->Length);
}

STATIC
VOID
AddQuestion (
  IN OUT TextBuffer           *Buffer,
  IN     SetupValuesProtocol  *SetupValues,
  IN     CONST SetupValue     *Question
  )
{
  UINT8  *Value;

  Value = AllocateZeroPool (MAX (Question->Width + sizeof (CHAR16), sizeof (UINT64)));
  if (Value == NULL) {
    return;
  }

  if (!EFI_ERROR (SetupValues->Read (SetupValues, Question, Value))) {
    if (Question->Opcode == EFI_IFR_STRING_OP) {
      AddLine (Buffer, "Question %u %u %s\n", Question->Identifier, Question->Opcode, Value);
    } else {
      AddLine (Buffer, "Question %u %u %lu\n", Question->Identifier, Question->Opcode, *(UINT64 *)Value);
    }
  }

  FreePool (Value);
}

STATIC
EFI_STATUS
WritePlatform (
  IN EFI_FILE_PROTOCOL    *Root,
  IN SetupValuesProtocol  *SetupValues,
  IN TextBuffer           *Buffer
  )
{
  FirmwareVersionProtocol  *Version;
  UINT64                   Store;
  UINT64                   Room;
  UINT64                   Largest;
  UINTN                    Index;

  Buffer->Length = 0;
  if (!EFI_ERROR (gBS->LocateProtocol (&gVaroFirmwareVersionProtocolGuid, NULL, (VOID **)&Version))) {
    AddLine (Buffer, "FirmwareVersion %a\n", Version->Data->Version);
  }

  if (!EFI_ERROR (
         gRT->QueryVariableInfo (
                EFI_VARIABLE_NON_VOLATILE | EFI_VARIABLE_BOOTSERVICE_ACCESS,
                &Store,
                &Room,
                &Largest
                )
         ))
  {
    AddLine (Buffer, "VariableStoreRoom %lu\n", Room);
  }

  for (Index = 0; Index < SetupValues->Count; Index++) {
    AddQuestion (Buffer, SetupValues, &SetupValues->Values[Index]);
  }

  return WriteFile (Root, L"platform.txt", Buffer->Text, Buffer->Length);
}

/**
  Writes all files onto one volume.
**/
STATIC
EFI_STATUS
WriteOnto (
  IN EFI_HANDLE            Volume,
  IN TransportLogProtocol  *Log,
  IN SetupValuesProtocol   *SetupValues,
  IN UINT64                Requested,
  IN TextBuffer            *Buffer
  )
{
  EFI_SIMPLE_FILE_SYSTEM_PROTOCOL  *FileSystem;
  EFI_FILE_PROTOCOL                *Root;
  EFI_STATUS                       Status;

  Status = gBS->HandleProtocol (Volume, &gEfiSimpleFileSystemProtocolGuid, (VOID **)&FileSystem);
  if (!EFI_ERROR (Status)) {
    Status = FileSystem->OpenVolume (FileSystem, &Root);
  }

  if (EFI_ERROR (Status)) {
    return Status;
  }

  Status = WriteRecords (Root, Log);
  if (!EFI_ERROR (Status)) {
    Status = WriteTimings (Root, Log, SetupValues, Requested, Buffer);
  }

  if (!EFI_ERROR (Status)) {
    Status = WritePlatform (Root, SetupValues, Buffer);
  }

  Root->Close (Root);
  return Status;
}

EFI_STATUS
WriteResultFiles (
  IN UINT64  Requested
  )
{
  TransportLogProtocol  *Log;
  SetupValuesProtocol   *SetupValues;
  EFI_HANDLE            *Volumes;
  TextBuffer            Buffer;
  UINTN                 Count;
  UINTN                 Index;
  EFI_STATUS            Status;

  Status = gBS->LocateProtocol (&gVaroTransportLogProtocolGuid, NULL, (VOID **)&Log);
  if (!EFI_ERROR (Status)) {
    Status = gBS->LocateProtocol (&gVaroSetupValuesProtocolGuid, NULL, (VOID **)&SetupValues);
  }

  if (!EFI_ERROR (Status)) {
    Status = gBS->LocateHandleBuffer (ByProtocol, &gEfiSimpleFileSystemProtocolGuid, NULL, &Count, &Volumes);
  }

  if (EFI_ERROR (Status)) {
    return Status;
  }

  Status      = EFI_OUT_OF_RESOURCES;
  Buffer.Text = AllocatePool (TEXT_CAPACITY);
  if (Buffer.Text != NULL) {
    for (Index = 0; EFI_ERROR (Status) && (Index < Count); Index++) {
      Status = WriteOnto (Volumes[Index], Log, SetupValues, Requested, &Buffer);
    }

    FreePool (Buffer.Text);
  }

  FreePool (Volumes);
  return Status;
}
