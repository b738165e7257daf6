/** @file
  FormSets: the form packages of the HII database, and which of their form sets belong to the setup.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/DebugLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PcdLib.h>
#include <Library/UefiHiiServicesLib.h>
#include "FormSets.h"

#define FORM_SET_CAPACITY  128

///
/// The block that a caller of ListFormSets gets.
///
typedef struct {
  CONST FormSetRecord    *Pointers[FORM_SET_CAPACITY + 1];   ///< ends with NULL
  FormSetRecord          Records[FORM_SET_CAPACITY];
} FormSetList;

EFI_STATUS
ExportPackageList (
  IN  EFI_HII_HANDLE               HiiHandle,
  OUT EFI_HII_PACKAGE_LIST_HEADER  **PackageList,
  OUT UINTN                        *Size
  )
{
  EFI_STATUS  Status;

  *PackageList = NULL;
  *Size        = 0;
  Status       = gHiiDatabase->ExportPackageLists (gHiiDatabase, HiiHandle, Size, NULL);
  if (Status != EFI_BUFFER_TOO_SMALL) {
    return EFI_ERROR (Status) ? Status : EFI_NOT_FOUND;
  }

  *PackageList = AllocatePool (*Size);
  if (*PackageList == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Status = gHiiDatabase->ExportPackageLists (gHiiDatabase, HiiHandle, Size, *PackageList);
  if (EFI_ERROR (Status)) {
    FreePool (*PackageList);
    *PackageList = NULL;
  }

  return Status;
}

/**
  Steps through the packages of a list.

  @param[in,out]  Offset  Of the package in the list; advanced by the length that Package has.
  @param[in,out]  Package Head of the package that was there; of the next one on return.

  @retval FALSE  No package follows, or the list is malformed.
**/
STATIC
BOOLEAN
NextPackage (
  IN     CONST EFI_HII_PACKAGE_LIST_HEADER  *PackageList,
  IN     UINTN                              Size,
  IN OUT UINTN                              *Offset,
  IN OUT EFI_HII_PACKAGE_HEADER             *Package
  )
{
  *Offset += Package->Length;
  if ((*Offset > Size) || (Size - *Offset < sizeof (*Package))) {
    return FALSE;
  }

  CopyMem (Package, (CONST UINT8 *)PackageList + *Offset, sizeof (*Package));
  return (BOOLEAN)((Package->Length >= sizeof (*Package)) && (Package->Length <= Size - *Offset));
}

UINT32
PackageListInstance (
  IN CONST EFI_HII_PACKAGE_LIST_HEADER  *PackageList,
  IN UINTN                              Size
  )
{
  EFI_HII_PACKAGE_HEADER  Package;
  UINTN                   Offset;

  Package.Length = sizeof (*PackageList);
  for (Offset = 0; NextPackage (PackageList, Size, &Offset, &Package); ) {
    if (Package.Type == EFI_HII_PACKAGE_DEVICE_PATH) {
      return CalculateCrc32 ((UINT8 *)PackageList + Offset + sizeof (Package), Package.Length - sizeof (Package));
    }
  }

  return 0;
}

/**
  Tells whether an opcode is a form set's head that lies within its length, class GUIDs included.
**/
STATIC
BOOLEAN
IsFormSet (
  IN CONST EFI_IFR_OP_HEADER  *Opcode
  )
{
  return (BOOLEAN)((Opcode->OpCode == EFI_IFR_FORM_SET_OP) && Opcode->Scope &&
                   (Opcode->Length >= sizeof (EFI_IFR_FORM_SET)) &&
                   ((Opcode->Length - sizeof (EFI_IFR_FORM_SET)) / sizeof (EFI_GUID) >=
                    (((CONST EFI_IFR_FORM_SET *)Opcode)->Flags & 0x3U)));
}

CONST EFI_IFR_FORM_SET *
NextFormSet (
  IN     CONST EFI_HII_PACKAGE_LIST_HEADER  *PackageList,
  IN     UINTN                              Size,
  IN OUT UINTN                              *Position,
  OUT    UINTN                              *Length
  )
{
  EFI_HII_PACKAGE_HEADER   Package;
  CONST UINT8              *Start;
  IfrReader                Reader;
  CONST EFI_IFR_OP_HEADER  *Opcode;
  UINTN                    Offset;

  //
  // Packages from the first on; Position is an offset into the list that may lie within a form package.
  //
  Package.Length = sizeof (*PackageList);
  for (Offset = 0; NextPackage (PackageList, Size, &Offset, &Package); ) {
    if ((Package.Type != EFI_HII_PACKAGE_FORMS) || (*Position >= Offset + Package.Length)) {
      continue;
    }

    Start         = (CONST UINT8 *)PackageList + Offset;
    Reader.Next   = Start + MAX (sizeof (Package), (*Position > Offset) ? *Position - Offset : 0);
    Reader.Left   = Package.Length - (UINTN)(Reader.Next - Start);
    Reader.Broken = FALSE;
    while ((Opcode = NextOpcode (&Reader)) != NULL) {
      if (IsFormSet (Opcode)) {
        *Length   = Reader.Left + Opcode->Length;
        *Position = Offset + (UINTN)(Reader.Next - Start);
        return (CONST EFI_IFR_FORM_SET *)Opcode;
      }
    }
  }

  *Position = Size;
  return NULL;
}

BOOLEAN
ListsFormSet (
  IN CONST EFI_GUID          *List,
  IN UINTN                   Size,
  IN CONST EFI_IFR_FORM_SET  *FormSet
  )
{
  CONST EFI_GUID  *Classes;
  UINTN           Count;
  UINTN           Class;

  Classes = (CONST EFI_GUID *)(FormSet + 1);
  for (Count = Size / sizeof (*List); Count > 0; Count--, List++) {
    if (CompareGuid (List, &FormSet->Guid)) {
      return TRUE;
    }

    for (Class = 0; Class < (FormSet->Flags & 0x3U); Class++) {
      if (CompareGuid (List, &Classes[Class])) {
        return TRUE;
      }
    }
  }

  return FALSE;
}

STATIC
EFI_STATUS
ListFormPackages (
  OUT EFI_HII_HANDLE  **Handles,
  OUT UINTN           *Count
  )
{
  UINTN       Size;
  EFI_STATUS  Status;

  *Handles = NULL;
  *Count   = 0;
  Size     = 0;
  Status   = gHiiDatabase->ListPackageLists (gHiiDatabase, EFI_HII_PACKAGE_FORMS, NULL, &Size, NULL);
  if (Status == EFI_NOT_FOUND) {
    return EFI_SUCCESS;
  }

  if (Status != EFI_BUFFER_TOO_SMALL) {
    return Status;
  }

  *Handles = AllocatePool (Size);
  if (*Handles == NULL) {
    return EFI_OUT_OF_RESOURCES;
  }

  Status = gHiiDatabase->ListPackageLists (gHiiDatabase, EFI_HII_PACKAGE_FORMS, NULL, &Size, *Handles);
  if (EFI_ERROR (Status)) {
    FreePool (*Handles);
    *Handles = NULL;
    return Status;
  }

  *Count = Size / sizeof (EFI_HII_HANDLE);
  return EFI_SUCCESS;
}

/**
  Adds the form sets of one package list.

  @return  How many form sets the list has then.
**/
STATIC
UINTN
AddFormSets (
  IN OUT FormSetList     *List,
  IN     UINTN           Count,
  IN     EFI_HII_HANDLE  HiiHandle
  )
{
  EFI_HII_PACKAGE_LIST_HEADER  *PackageList;
  CONST EFI_IFR_FORM_SET       *FormSet;
  UINTN                        Size;
  UINTN                        Position;
  UINTN                        Length;

  if (EFI_ERROR (ExportPackageList (HiiHandle, &PackageList, &Size))) {
    return Count;   // removed meanwhile
  }

  Position = 0;
  while ((FormSet = NextFormSet (PackageList, Size, &Position, &Length)) != NULL) {
    if (!ListsFormSet (PcdGetPtr (PcdVaroSetupFormSets), PcdGetSize (PcdVaroSetupFormSets), FormSet)) {
      continue;
    }

    if (Count == FORM_SET_CAPACITY) {
      DEBUG ((DEBUG_WARN, "%a: more than %d form sets\n", gEfiCallerBaseName, FORM_SET_CAPACITY));
      break;
    }

    CopyGuid (&List->Records[Count].Guid, &FormSet->Guid);
    List->Records[Count].HiiHandle = HiiHandle;
    List->Records[Count].Title     = FormSet->FormSetTitle;
    List->Pointers[Count]          = &List->Records[Count];
    Count++;
  }

  FreePool (PackageList);
  return Count;
}

EFI_STATUS
SelectFormSets (
  OUT CONST FormSetRecord  ***FormSets
  )
{
  EFI_HII_HANDLE  *Handles;
  FormSetList     *List;
  UINTN           HandleCount;
  UINTN           Count;
  UINTN           Index;
  EFI_STATUS      Status;

  *FormSets = NULL;
  Status    = ListFormPackages (&Handles, &HandleCount);
  if (EFI_ERROR (Status) || (HandleCount == 0)) {
    return Status;
  }

  List = AllocateZeroPool (sizeof (*List));
  if (List == NULL) {
    FreePool (Handles);
    return EFI_OUT_OF_RESOURCES;
  }

  for (Count = 0, Index = 0; Index < HandleCount; Index++) {
    Count = AddFormSets (List, Count, Handles[Index]);
  }

  FreePool (Handles);
  if (Count == 0) {
    FreePool (List);
  } else {
    *FormSets = List->Pointers;
  }

  return EFI_SUCCESS;
}
