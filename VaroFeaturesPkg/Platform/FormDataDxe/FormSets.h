/** @file
  FormSets: the form packages of the HII database, and which of their form sets belong to the setup.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef FORM_SETS_H_
#define FORM_SETS_H_

#include "FormModel.h"

/**
  Exports a package list of the HII database.

  @param[in]   HiiHandle    Of the list.
  @param[out]  PackageList  The list in pool; the caller frees it.
  @param[out]  Size         Its bytes.
**/
EFI_STATUS
ExportPackageList (
  IN  EFI_HII_HANDLE               HiiHandle,
  OUT EFI_HII_PACKAGE_LIST_HEADER  **PackageList,
  OUT UINTN                        *Size
  );

/**
  Steps through the form sets of a package list.

  @param[in]      PackageList  The list.
  @param[in]      Size         Its bytes.
  @param[in,out]  Position     Bytes of the list already looked at; 0 to begin with.
  @param[out]     Length       Bytes from the form set on to the end of its package.

  @return  The next form set, with room for its head and class GUIDs; NULL after the last.
**/
CONST EFI_IFR_FORM_SET *
NextFormSet (
  IN     CONST EFI_HII_PACKAGE_LIST_HEADER  *PackageList,
  IN     UINTN                              Size,
  IN OUT UINTN                              *Position,
  OUT    UINTN                              *Length
  );

/**
  Tells whether a list of GUIDs has a form set's own GUID or one of its classes.

  @param[in]  Size  Bytes of the list.
**/
BOOLEAN
ListsFormSet (
  IN CONST EFI_GUID          *List,
  IN UINTN                   Size,
  IN CONST EFI_IFR_FORM_SET  *FormSet
  );

/**
  Gives a number that tells package lists of one driver's instances apart: the CRC-32 of their device path.

  @return  0 for a package list without a device path.
**/
UINT32
PackageListInstance (
  IN CONST EFI_HII_PACKAGE_LIST_HEADER  *PackageList,
  IN UINTN                              Size
  );

/**
  Lists the form sets that PcdVaroSetupFormSets selects; see FORM_BROWSER_LIST_FORM_SETS.
**/
EFI_STATUS
SelectFormSets (
  OUT CONST FormSetRecord  ***FormSets
  );

#endif
