/** @file
  AttributeDump: a UEFI Shell program that writes what the driver's protocols give into files, for comparison on a host.

    AttributeDump FILE     the blocks of PublishedTablesInterface one after another, as the transport records carry them:
                           directory, descriptors, five tables
    AttributeDump -r FILE  the transport records that Platform/TransportDxe keeps, for "inspect show"
    AttributeDump -t FILE  the help texts of AttributeAccessProtocol, as entries of the help table
    AttributeDump -i       prints the place of the driver's image: "CorvaneDxe BASE SIZE", in hexadecimal

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/TextOutputLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/AttributeAccess.h>
#include <Protocol/LoadedImage.h>
#include <Protocol/PublishedTables.h>
#include <Protocol/Shell.h>
#include <Protocol/ShellParameters.h>
#include <Protocol/SimpleFileSystem.h>
#include <Protocol/TransportLog.h>

/**
  Writes what a protocol gives into an open file.
**/
typedef
EFI_STATUS
(*WRITE_CONTENT)(
  IN EFI_SHELL_PROTOCOL  *Shell,
  IN SHELL_FILE_HANDLE   File
  );

STATIC CONST UINT8  mTables[] = { TABLE_STRINGS, TABLE_ATTRIBUTES, TABLE_VALUES, TABLE_DISPLAY, TABLE_HELP };

STATIC
EFI_STATUS
WriteBytes (
  IN EFI_SHELL_PROTOCOL  *Shell,
  IN SHELL_FILE_HANDLE   File,
  IN CONST VOID          *Bytes,
  IN UINTN               Count
  )
{
  return (Count == 0) ? EFI_SUCCESS : Shell->WriteFile (File, &Count, (VOID *)Bytes);
}

STATIC
EFI_STATUS
WriteTables (
  IN EFI_SHELL_PROTOCOL  *Shell,
  IN SHELL_FILE_HANDLE   File
  )
{
  PublishedTablesInterface  *Tables;
  CONST TableDescriptor     *Table;
  UINTN                     Index;
  EFI_STATUS                Status;

  Status = gBS->LocateProtocol (&gVaroPublishedTablesProtocolGuid, NULL, (VOID **)&Tables);
  if (!EFI_ERROR (Status) && (Tables->Directory != NULL)) {
    Status = WriteBytes (Shell, File, Tables->Directory, sizeof (*Tables->Directory));
  }

  if (!EFI_ERROR (Status)) {
    Status = WriteBytes (Shell, File, Tables->Descriptors, TABLE_DESCRIPTOR_COUNT * sizeof (*Tables->Descriptors));
  }

  for (Index = 0; !EFI_ERROR (Status) && (Index < ARRAY_SIZE (mTables)); Index++) {
    Table  = &Tables->Descriptors[mTables[Index]];
    Status = WriteBytes (Shell, File, (CONST VOID *)(UINTN)Table->Data, Table->Limit);
  }

  return Status;
}

STATIC
EFI_STATUS
WriteRecords (
  IN EFI_SHELL_PROTOCOL  *Shell,
  IN SHELL_FILE_HANDLE   File
  )
{
  TransportLogProtocol  *Log;
  EFI_STATUS            Status;

  Status = gBS->LocateProtocol (&gVaroTransportLogProtocolGuid, NULL, (VOID **)&Log);
  return EFI_ERROR (Status) ? Status : WriteBytes (Shell, File, Log->Records, Log->Size);
}

/**
  Writes the help text of one handle, unless there is none: handle, length in bytes, text.
**/
STATIC
EFI_STATUS
WriteHelpText (
  IN EFI_SHELL_PROTOCOL       *Shell,
  IN SHELL_FILE_HANDLE        File,
  IN AttributeAccessProtocol  *Access,
  IN UINT16                   Handle
  )
{
  UINT16      Head[2];
  CHAR16      None;
  CHAR16      *Text;
  UINT32      Size;
  EFI_STATUS  Status;

  Size   = 0;
  Status = Access->GetTextStringA (Access, Handle, &None, &Size);
  if (Status == EFI_NOT_FOUND) {
    return EFI_SUCCESS;
  }

  if (EFI_ERROR (Status) && (Status != EFI_BUFFER_TOO_SMALL)) {
    return Status;
  }

  Text = AllocateZeroPool (Size + sizeof (*Text));
  if (Text == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Status  = Access->GetTextStringA (Access, Handle, Text, &Size);
  Head[0] = Handle;
  Head[1] = (UINT16)(StrLen (Text) * sizeof (*Text));
  Status  = EFI_ERROR (Status) ? Status : WriteBytes (Shell, File, Head, sizeof (Head));
  Status  = EFI_ERROR (Status) ? Status : WriteBytes (Shell, File, Text, Head[1]);
  FreePool (Text);
  return Status;
}

STATIC
EFI_STATUS
WriteHelpTexts (
  IN EFI_SHELL_PROTOCOL  *Shell,
  IN SHELL_FILE_HANDLE   File
  )
{
  AttributeAccessProtocol  *Access;
  UINT16                   Handle;
  EFI_STATUS               Status;

  Status = gBS->LocateProtocol (&gVaroAttributeAccessProtocolGuid, NULL, (VOID **)&Access);
  for (Handle = ATTRIBUTE_STORE_FIRST_HANDLE; !EFI_ERROR (Status) && (Handle < ATTRIBUTE_STORE_STRING_LIMIT); Handle++) {
    Status = WriteHelpText (Shell, File, Access, Handle);
  }

  return Status;
}

STATIC
EFI_STATUS
WriteFile (
  IN CONST CHAR16   *Name,
  IN WRITE_CONTENT  Write
  )
{
  EFI_SHELL_PROTOCOL  *Shell;
  SHELL_FILE_HANDLE   File;
  EFI_STATUS          Status;

  Status = gBS->LocateProtocol (&gEfiShellProtocolGuid, NULL, (VOID **)&Shell);
  if (!EFI_ERROR (Status)) {
    Status = Shell->OpenFileByName (Name, &File, EFI_FILE_MODE_READ | EFI_FILE_MODE_WRITE | EFI_FILE_MODE_CREATE);
  }

  if (!EFI_ERROR (Status)) {
    Status = Write (Shell, File);
    Shell->CloseFile (File);
  }

  return Status;
}

STATIC
EFI_STATUS
PutDriverImage (
  VOID
  )
{
  EFI_LOADED_IMAGE_PROTOCOL  *Image;
  EFI_HANDLE                 Handle;
  UINTN                      Size;
  EFI_STATUS                 Status;

  Size   = sizeof (Handle);
  Status = gBS->LocateHandle (ByProtocol, &gVaroAttributeAccessProtocolGuid, NULL, &Size, &Handle);
  if (!EFI_ERROR (Status)) {
    Status = gBS->HandleProtocol (Handle, &gEfiLoadedImageProtocolGuid, (VOID **)&Image);
  }

  if (!EFI_ERROR (Status)) {
    PutFormat ("CorvaneDxe %lx %lx\n", (UINT64)(UINTN)Image->ImageBase, Image->ImageSize);
  }

  return Status;
}

EFI_STATUS
EFIAPI
AttributeDumpEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_SHELL_PARAMETERS_PROTOCOL  *Parameters;
  EFI_STATUS                     Status;

  Status = gBS->HandleProtocol (ImageHandle, &gEfiShellParametersProtocolGuid, (VOID **)&Parameters);
  if (!EFI_ERROR (Status)) {
    Status = EFI_INVALID_PARAMETER;
    if ((Parameters->Argc == 2) && (StrCmp (Parameters->Argv[1], L"-i") == 0)) {
      Status = PutDriverImage ();
    } else if (Parameters->Argc == 2) {
      Status = WriteFile (Parameters->Argv[1], WriteTables);
    } else if ((Parameters->Argc == 3) && (StrCmp (Parameters->Argv[1], L"-r") == 0)) {
      Status = WriteFile (Parameters->Argv[2], WriteRecords);
    } else if ((Parameters->Argc == 3) && (StrCmp (Parameters->Argv[1], L"-t") == 0)) {
      Status = WriteFile (Parameters->Argv[2], WriteHelpTexts);
    }
  }

  if (EFI_ERROR (Status)) {
    PutFormat ("AttributeDump: %r\n", Status);
  }

  return Status;
}
