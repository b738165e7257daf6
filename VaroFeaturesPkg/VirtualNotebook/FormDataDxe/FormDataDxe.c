/** @file
  FormDataDxe: FormBrowserDataProtocol on the HII database: form packages of any driver, values from the variables that
  their EFI variable stores name.

  A form set belongs to the setup when one of its class GUIDs is in PcdVaroSetupFormSets.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseMemoryLib.h>
#include <Library/DebugLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PcdLib.h>
#include <Library/ScenarioLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Library/UefiHiiServicesLib.h>
#include <Protocol/FormBrowserData.h>
#include "FormModel.h"
#include "SetupValues.h"

#define FORM_SET_CAPACITY  64

///
/// The block that a caller of ListFormSets gets.
///
typedef struct {
  CONST FormSetRecord    *Pointers[FORM_SET_CAPACITY + 1];   ///< ends with NULL
  FormSetRecord          Records[FORM_SET_CAPACITY];
} FormSetList;

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
  Tells whether a form set belongs to the setup.
**/
STATIC
BOOLEAN
IsSetup (
  IN CONST EFI_IFR_FORM_SET  *FormSet
  )
{
  CONST EFI_GUID  *Classes;
  UINTN           Index;

  Classes = PcdGetPtr (PcdVaroSetupFormSets);
  for (Index = 0; Index < PcdGetSize (PcdVaroSetupFormSets) / sizeof (*Classes); Index++) {
    if (FormSetHasClass (FormSet, &Classes[Index])) {
      return TRUE;
    }
  }

  return FALSE;
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
    if (!IsSetup (FormSet)) {
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
FindFormSets (
  OUT CONST FormSetRecord   ***FormSets
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

STATIC
EFI_STATUS
EFIAPI
ListFormSets (
  IN  FormBrowserDataProtocol   *This,
  IN  CONST EFI_GUID            *Kind,
  OUT CONST FormSetRecord       ***FormSets
  )
{
  mSetupValues.FormSetsListed++;
  if (!CompareGuid (Kind, &gVaroSetupFormSetsGuid)) {
    *FormSets = NULL;
    return EFI_SUCCESS;
  }

  return FindFormSets (FormSets);
}

STATIC
EFI_STATUS
EFIAPI
ParseFormSet (
  IN  FormBrowserDataProtocol   *This,
  IN  CONST FormSetRecord       *FormSet,
  OUT QuestionRecord            **Questions
  )
{
  FormModel           *Model;
  CONST FormQuestion  *Question;
  EFI_STATUS          Status;

  mSetupValues.FormSetsParsed++;
  *Questions = NULL;
  Status     = ReadFormModel (FormSet, &Model);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  for (Question = Model->First; Question != NULL; Question = (CONST FormQuestion *)Question->Record.Next) {
    if (Question->Unreadable != NULL) {
      DEBUG ((
        DEBUG_WARN,
        "%a: question %u of form set %g is not eligible: %a\n",
        gEfiCallerBaseName,
        Question->Record.Identifier,
        &FormSet->Guid,
        Question->Unreadable
        ));
    }
  }

  if (Model->First == NULL) {
    FreeFormModel (Model);
  } else {
    *Questions = &Model->First->Record;
  }

  return EFI_SUCCESS;
}

STATIC
EFI_STATUS
EFIAPI
ReleaseQuestions (
  IN FormBrowserDataProtocol   *This,
  IN QuestionRecord            *Questions
  )
{
  if (Questions != NULL) {
    FreeFormModel (((FormQuestion *)Questions)->Model);
  }

  return EFI_SUCCESS;
}

STATIC FormBrowserDataProtocol  mFormBrowserData = {
  .ListFormSets     = ListFormSets,
  .ParseFormSet     = ParseFormSet,
  .ReleaseQuestions = ReleaseQuestions
};

EFI_STATUS
EFIAPI
FormDataDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_HANDLE  Handle;
  EFI_STATUS  Status;

  Handle = NULL;
  Status = gBS->InstallMultipleProtocolInterfaces (&Handle, &gNotebookSetupValuesProtocolGuid, &mSetupValues, NULL);
  if (!EFI_ERROR (Status) && !ScenarioLists ("without", "form-data")) {
    Status = gBS->InstallMultipleProtocolInterfaces (
                    &Handle,
                    &gVaroFormBrowserDataProtocolGuid,
                    &mFormBrowserData,
                    NULL
                    );
  }

  return Status;
}
