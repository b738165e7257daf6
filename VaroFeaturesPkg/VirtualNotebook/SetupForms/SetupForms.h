/** @file
  What the setup's form sets share in their VFR sources: GUIDs, and one macro per kind of question.

  Questions are written NAME (identifier, field of SETUP, prompt, help, ...), with SETUP the form set's variable store.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef SETUP_FORMS_H_
#define SETUP_FORMS_H_

#include <Uefi/UefiMultiPhase.h>

//
// gEfiHiiPlatformSetupFormsetGuid, by which the setup browser finds the form sets, and gVaroSetupFormSetsGuid, by which
// the form data service does.
//
#define SETUP_CLASSES \
  { 0x93039971, 0x8545, 0x4b04, { 0xb4, 0x5e, 0x32, 0xeb, 0x83, 0x26, 0x04, 0x0e } } | \
  { 0x06C430EC, 0x8DDE, 0x4C68, { 0xAE, 0xAF, 0xA1, 0x0A, 0x47, 0xCA, 0x89, 0x2A } }

//
// gNotebookVariableGuid
//
#define SETUP_VENDOR \
  { 0x0481D35B, 0x9A0B, 0x45ED, { 0xA8, 0x7B, 0xBE, 0xC4, 0xA6, 0xCB, 0x1B, 0x7D } }

#define SETUP_STORE(Type) \
  efivarstore Type, attribute = EFI_VARIABLE_BOOTSERVICE_ACCESS | EFI_VARIABLE_NON_VOLATILE, name = Type, \
    guid = SETUP_VENDOR

//
// For a question that explains itself.
//
#define NO_HELP  STRING_TOKEN(0)

#define CHECKBOX(Id, Field, Prompt, Help, Default) \
  checkbox varid = SETUP.Field, questionid = Id, prompt = Prompt, help = Help, default = Default, endcheckbox

#define NUMERIC(Id, Field, Prompt, Help, Low, High, Default) \
  STEPPED_NUMERIC (Id, Field, Prompt, Help, Low, High, 1, Default)

#define STEPPED_NUMERIC(Id, Field, Prompt, Help, Low, High, Step, Default) \
  numeric varid = SETUP.Field, questionid = Id, prompt = Prompt, help = Help, \
    minimum = Low, maximum = High, step = Step, default = Default, endnumeric

#define TEXT(Id, Field, Prompt, Help, Fewest, Most, Default) \
  string varid = SETUP.Field, questionid = Id, prompt = Prompt, help = Help, \
    minsize = Fewest, maxsize = Most, default = Default, endstring

#define ONE_OF(Id, Field, Prompt, Help) \
  oneof varid = SETUP.Field, questionid = Id, prompt = Prompt, help = Help,

#define OPTION(Number, Text)          option text = Text, value = Number, flags = 0
#define DEFAULT_OPTION(Number, Text)  option text = Text, value = Number, flags = DEFAULT
#define END_ONE_OF                    endoneof

#endif
