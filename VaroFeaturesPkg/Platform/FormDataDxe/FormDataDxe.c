/** @file
  FormDataDxe: FormBrowserDataProtocol on the HII database: form packages of any driver, values from whatever storage
  their questions name.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseMemoryLib.h>
#include <Library/PlatformPartLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/FormBrowserData.h>
#include "FormModel.h"
#include "FormSets.h"
#include "SetupValues.h"

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
  *FormSets = NULL;
  if (!CompareGuid (Kind, &gVaroSetupFormSetsGuid)) {
    return EFI_SUCCESS;
  }

  ReportFormSets ();
  return SelectFormSets (FormSets);
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
  FormModel   *Model;
  EFI_STATUS  Status;

  mSetupValues.FormSetsParsed++;
  *Questions = NULL;
  Status     = ReadFormModel (FormSet, &Model);
  if (EFI_ERROR (Status)) {
    return Status;
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

  WatchFormPackages ();
  Handle = NULL;
  Status = gBS->InstallMultipleProtocolInterfaces (&Handle, &gVaroSetupValuesProtocolGuid, &mSetupValues, NULL);
  if (!EFI_ERROR (Status) && PlatformHasPart ("form-data")) {
    Status = gBS->InstallMultipleProtocolInterfaces (
                    &Handle,
                    &gVaroFormBrowserDataProtocolGuid,
                    &mFormBrowserData,
                    NULL
                    );
  }

  return Status;
}
