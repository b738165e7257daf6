/** @file
  ScenarioLib: what kind of boot was asked for from outside, by QEMU's fw_cfg files "opt/corvane/NAME".

  A notebook that was asked for nothing boots as its owner left it.

    NAME              value
    cameras           number of cameras, 0 to 6
    damage            NAME:HOW;NAME:HOW;...: variables of the attribute cache damaged before CorvaneDxe first reads
                      them; BootPhasesDxe/CacheDamage.h says how
    factory-mode      non-zero: the notebook is in a factory mode
    failing-settings  NUMBER,NUMBER,...: settings that cannot be read
    firmware-version  text that stands in for the version of the build
    foreign           non-zero: form sets of EDK II's own drivers are part of the setup
    language          platform language, such as fr-FR
    owner-password    non-zero: the platform knows an owner password
    password-admin    text of the admin password; matters while it is set
    password-system   text of the system password, likewise
    passwords         admin,system,owner: the passwords that are set
    service           how the attribute service misbehaves: fails or silent
    set               NUMBER=VALUE;NUMBER=VALUE;...: settings and questions changed by the user since the last boot
    stress            more setup than a notebook has, in one more form set in the midst of the others:
                      strings, attributes, values, display, help: overfills this table alone; long-help: fills that
                      of help texts; checkboxes: 250 of them; bad-form-set: its IFR is cut short; 240, without the
                      setup: 240 attributes in all
    twice             signals that are installed on two handles: form-sets-updated, tables-requested
    without           parts of the platform that are missing: asset-tag, attribute-service, boot-options,
                      calling-interface, cameras, defaults, firmware-version, form-data, form-sets-updated, mode-query,
                      password-directory, password-service, password-state, settings, setup (the form sets of the
                      notebook's own), tables-requested, transport

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef SCENARIO_LIB_H_
#define SCENARIO_LIB_H_

#include <Uefi/UefiBaseType.h>

/**
  Gives the text of a scenario item.

  @param[in]  Name  Of the item, without "opt/corvane/".

  @return  NUL-terminated text in boot services pool, owned by the caller; NULL when the item is not there.
**/
CHAR8 *
EFIAPI
GetScenarioText (
  IN CONST CHAR8  *Name
  );

/**
  Gives a scenario item as a number, decimal or with 0x in front.

  @param[in]  Name     Of the item.
  @param[in]  Default  Answer when the item is not there.
**/
UINT64
EFIAPI
GetScenarioNumber (
  IN CONST CHAR8  *Name,
  IN UINT64       Default
  );

/**
  Tells whether a scenario item, a list with commas, names something.

  @param[in]  Name  Of the item, for example "without".
  @param[in]  Word  What may stand in the list, for example "asset-tag".
**/
BOOLEAN
EFIAPI
ScenarioLists (
  IN CONST CHAR8  *Name,
  IN CONST CHAR8  *Word
  );

/**
  Cuts the next entry off a list, in place.

  @param[in,out]  Rest       What is left of the list; advanced. NULL at the end.
  @param[in]      Separator  Character between two entries.

  @return  The entry, NUL-terminated; NULL when none is left.
**/
CHAR8 *
EFIAPI
NextScenarioEntry (
  IN OUT CHAR8  **Rest,
  IN     CHAR8  Separator
  );

/**
  Reads a number, decimal or with 0x in front.

  @param[in]  Text  Digits; what follows them is not looked at.
**/
UINT64
EFIAPI
ReadScenarioNumber (
  IN CONST CHAR8  *Text
  );

#endif
