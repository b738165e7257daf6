/** @file
  Attr: the Shell command that lists, explains and changes attributes.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PrintLib.h>
#include <Library/TextOutputLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include "Attr.h"
#include "AttrNames.h"
#include "AttrSet.h"
#include "AttrShow.h"
#include "AttrValue.h"

typedef
SHELL_STATUS
(*ATTR_ACTION)(
  IN CONST AttrCommand  *Command
  );

typedef struct {
  CONST CHAR16    *Name;
  ATTR_ACTION     Action;
  CONST CHAR16    *Options;    ///< letters
  UINTN           Required;    ///< words after the subcommand
  UINTN           Allowed;
} Subcommand;

STATIC CONST Subcommand  mSubcommands[] = {
  { L"list",   ListAttributes,    L"bl", 0, 1 },
  { L"get",    GetAttribute,      L"bn", 1, 1 },
  { L"info",   DescribeAttribute, L"b",  1, 1 },
  { L"set",    SetAttribute,      L"pn", 2, 2 },
  { L"export", ExportAttributes,  L"b",  0, 0 }
};

///
/// How the name of the command fits an attribute, from worst to best.
///
typedef enum {
  FitsNothing,
  FitsHandle,
  FitsInAnyCase,
  FitsExactly
} NameFit;

///
/// A status of the protocol, the Shell status that the command returns for it, and the message.
///
typedef struct {
  EFI_STATUS      Status;
  SHELL_STATUS    Result;
  CONST CHAR8     *Words;
} StatusWords;

STATIC CONST StatusWords  mNoTables[] = {
  { EFI_NOT_FOUND,            SHELL_NOT_READY,            "there is no attribute service"               },
  { EFI_NOT_READY,            SHELL_NOT_READY,            "the attribute service does not answer"       },
  { EFI_OUT_OF_RESOURCES,     SHELL_OUT_OF_RESOURCES,     "out of memory"                               }
};

STATIC CONST StatusWords  mNoDriver[] = {
  { EFI_NOT_FOUND,            SHELL_NOT_READY,            "the attribute driver is not loaded"          },
  { EFI_NOT_STARTED,          SHELL_NOT_READY,            "the attribute driver has been unloaded"      },
  { EFI_INCOMPATIBLE_VERSION, SHELL_INCOMPATIBLE_VERSION, "the attribute driver is of another revision" }
};

STATIC CONST StatusWords  mRefusals[] = {
  { EFI_ACCESS_DENIED,     SHELL_ACCESS_DENIED,     "the service wants a password (-p)"            },
  { EFI_INVALID_PARAMETER, SHELL_INVALID_PARAMETER, "the service refuses the value"                },
  { EFI_UNSUPPORTED,       SHELL_UNSUPPORTED,       "the service does not know the attribute"      },
  { EFI_BUFFER_TOO_SMALL,  SHELL_BUFFER_TOO_SMALL,  "the service has no room for the value"        },
  { EFI_OUT_OF_RESOURCES,  SHELL_OUT_OF_RESOURCES,  "out of memory"                                },
  { EFI_NOT_READY,         SHELL_NOT_READY,         "the attribute service does not answer"        },
  { EFI_NOT_FOUND,         SHELL_NOT_READY,         "there is no attribute service"                },
  { EFI_ABORTED,           SHELL_DEVICE_ERROR,      "the service did not handle the request"       },
  { EFI_DEVICE_ERROR,      SHELL_DEVICE_ERROR,      "the service's answer is malformed"            }
};

STATIC
SHELL_STATUS
Report (
  IN CONST StatusWords  *Table,
  IN UINTN              Count,
  IN EFI_STATUS         Status
  )
{
  UINTN  Index;

  for (Index = 0; Index < Count; Index++) {
    if (Table[Index].Status == Status) {
      PutFormat ("attr: %a (%r)\n", Table[Index].Words, Status);
      return Table[Index].Result;
    }
  }

  PutFormat ("attr: %r\n", Status);
  return SHELL_DEVICE_ERROR;
}

SHELL_STATUS
ReportNoTables (
  IN EFI_STATUS  Status
  )
{
  return Report (mNoTables, ARRAY_SIZE (mNoTables), Status);
}

SHELL_STATUS
ReportRefusal (
  IN EFI_STATUS  Status,
  IN BOOLEAN     WithPassword
  )
{
  if (WithPassword && (Status == EFI_ACCESS_DENIED)) {
    PutFormat ("attr: the password is wrong, or not enough for this attribute (%r)\n", Status);
    return SHELL_ACCESS_DENIED;
  }

  return Report (mRefusals, ARRAY_SIZE (mRefusals), Status);
}

BOOLEAN
IsInterrupted (
  IN CONST AttrCommand  *Command
  )
{
  return (BOOLEAN)(OutputStopped () || (gBS->CheckEvent (Command->Shell->ExecutionBreak) == EFI_SUCCESS));
}

/**
  Prints that no attribute has the name, and which names are near.
**/
STATIC
VOID
ReportUnknownName (
  IN CONST CHAR8           *Name,
  IN CONST AttributeEntry  *Entries,
  IN UINTN                 Count
  )
{
  NameSuggestions  Near;
  UINTN            Index;

  ZeroMem (&Near, sizeof (Near));
  for (Index = 0; Index < Count; Index++) {
    SuggestName (Entries[Index].Name, Name, &Near);
  }

  PutText ("attr: no attribute ");
  PutEscaped (Name, AsciiStrLen (Name), "");
  for (Index = 0; Index < Near.Count; Index++) {
    PutText ((Index == 0) ? "; did you mean " : ", ");
    PutEscaped (Near.Names[Index], BareLength (Near.Names[Index]), "");
  }

  PutText ((Near.Count == 0) ? "\n" : "?\n");
}

/**
  Tells how the name of the command fits an attribute. A handle in place of the name fits less well than a name.
**/
STATIC
NameFit
FitOf (
  IN CONST AttrCommand     *Command,
  IN CONST AttributeEntry  *Entry
  )
{
  UINT64  Number;

  if (NameIs (Entry->Name, Command->Name, TRUE)) {
    return NameIs (Entry->Name, Command->Name, FALSE) ? FitsExactly : FitsInAnyCase;
  }

  // With -n the service looks the attribute up, and it knows names only.
  return (!Command->ByName && ReadNumber (Command->Name, &Number) && (Number == Entry->Attribute.Handle)) ? FitsHandle :
         FitsNothing;
}

/**
  Prints that several attributes have the name, and how to tell them apart.
**/
STATIC
VOID
ReportSharedName (
  IN CONST AttrCommand     *Command,
  IN CONST AttributeEntry  *Entries,
  IN UINTN                 Count,
  IN NameFit               Fit
  )
{
  CONST CHAR8  *Between;
  UINTN        Index;

  PutText ("attr: several attributes are named ");
  PutEscaped (Command->Name, AsciiStrLen (Command->Name), "");
  Between = ": ";
  for (Index = 0; Index < Count; Index++) {
    if (FitOf (Command, &Entries[Index]) == Fit) {
      PutFormat ("%a%u ", Between, Entries[Index].Attribute.Handle);
      PutEscaped (Entries[Index].Name, AsciiStrLen (Entries[Index].Name), "");
      Between = ", ";
    }
  }

  PutText ("; give the number in place of the name\n");
}

SHELL_STATUS
ReadNamedEntry (
  IN  CONST AttrCommand  *Command,
  OUT AttributeEntry     *Entry
  )
{
  AttributeEntry  *Entries;
  UINTN           Count;
  UINTN           Index;
  UINTN           Found;
  UINT16          Handle;
  NameFit         Fit;
  NameFit         BestFit;
  EFI_STATUS      Status;
  SHELL_STATUS    Result;

  ZeroMem (Entry, sizeof (*Entry));
  Status = ReadEntries (Command->Access, ReadHead, &Entries, &Count);
  if (Entries == NULL) {
    return ReportNoTables (Status);
  }

  Handle  = 0;
  Found   = 0;
  BestFit = FitsNothing;
  for (Index = 0; Index < Count; Index++) {
    Fit = FitOf (Command, &Entries[Index]);
    if ((Fit > BestFit) || ((Fit == BestFit) && (Fit != FitsNothing))) {
      Found   = (Fit > BestFit) ? 1 : Found + 1;
      BestFit = Fit;
      Handle  = Entries[Index].Attribute.Handle;
    }
  }

  if (Found == 0) {
    ReportUnknownName (Command->Name, Entries, Count);
    Result = SHELL_NOT_FOUND;
  } else if (Found > 1) {
    ReportSharedName (Command, Entries, Count, BestFit);
    Result = SHELL_INVALID_PARAMETER;
  } else {
    Status = ReadEntry (Command->Access, Handle, Entry);
    Result = EFI_ERROR (Status) ? ReportNoTables (Status) : SHELL_SUCCESS;
  }

  FreeEntries (Entries, Count);
  return Result;
}

STATIC
SHELL_STATUS
ReportUsage (
  IN CONST CHAR8   *Problem,
  IN CONST CHAR16  *Word
  )
{
  PutFormat ("attr: %a", Problem);
  if (Word != NULL) {
    PutText (" ");
    PutWideText (Word);
  }

  PutText ("; \"help attr\" says more\n");
  return SHELL_INVALID_PARAMETER;
}

/**
  Tells whether a word is an option. A negative number after a name is a value.
**/
STATIC
BOOLEAN
IsOption (
  IN CONST Subcommand  *Subcommand,
  IN CONST CHAR16      *Word,
  IN UINTN             WordsBefore
  )
{
  return (BOOLEAN)((Word[0] == L'-') &&
                   ((Word[1] < L'0') || (Word[1] > L'9') || (WordsBefore == 0) || (Subcommand->Allowed < 2)));
}

/**
  Takes an option.

  @retval FALSE  The subcommand has no such option.
**/
STATIC
BOOLEAN
TakeOption (
  IN     CONST Subcommand  *Subcommand,
  IN     CONST CHAR16      *Word,
  IN OUT AttrCommand       *Command,
  IN OUT BOOLEAN           *Pages
  )
{
  CHAR16  Letter[2];

  Letter[0] = Word[1];
  Letter[1] = L'\0';
  if ((Word[1] == L'\0') || (Word[2] != L'\0') || (StrStr (Subcommand->Options, Letter) == NULL)) {
    return FALSE;
  }

  *Pages            = (BOOLEAN)(*Pages || (Word[1] == L'b'));
  Command->Long     = (BOOLEAN)(Command->Long || (Word[1] == L'l'));
  Command->ByName   = (BOOLEAN)(Command->ByName || (Word[1] == L'n'));
  Command->Password = (BOOLEAN)(Command->Password || (Word[1] == L'p'));
  return TRUE;
}

/**
  Finds the driver and runs the subcommand.
**/
STATIC
SHELL_STATUS
RunSubcommand (
  IN     CONST Subcommand  *Subcommand,
  IN OUT AttrCommand       *Command,
  IN     BOOLEAN           Pages
  )
{
  BOOLEAN       WerePages;
  EFI_STATUS    Status;
  SHELL_STATUS  Result;

  Status = OpenAttributeAccess (&Command->Access);
  if (EFI_ERROR (Status)) {
    return Report (mNoDriver, ARRAY_SIZE (mNoDriver), Status);
  }

  WerePages = Command->Shell->GetPageBreak ();
  if (Pages) {
    Command->Shell->EnablePageBreak ();
  }

  Result = Subcommand->Action (Command);
  if (Pages && !WerePages) {
    Command->Shell->DisablePageBreak ();
  }

  return Result;
}

/**
  Reads the words after the subcommand, and runs it.

  @param[in]  Words  Buffer for ASCII copies of the words.
**/
STATIC
SHELL_STATUS
RunWords (
  IN CONST Subcommand               *Subcommand,
  IN EFI_SHELL_PARAMETERS_PROTOCOL  *Parameters,
  IN AttrCommand                    *Command,
  IN CHAR8                          *Words
  )
{
  CONST CHAR16  *Word;
  BOOLEAN       Pages;
  BOOLEAN       OptionsEnded;
  UINTN         Index;
  UINTN         Count;

  Pages        = FALSE;
  OptionsEnded = FALSE;
  Count        = 0;
  for (Index = 2; Index < Parameters->Argc; Index++) {
    Word = Parameters->Argv[Index];
    if (!OptionsEnded && (StrCmp (Word, L"--") == 0)) {
      OptionsEnded = TRUE;
    } else if (!OptionsEnded && IsOption (Subcommand, Word, Count)) {
      if (!TakeOption (Subcommand, Word, Command, &Pages)) {
        return ReportUsage ("unknown option", Word);
      }
    } else if (Count == Subcommand->Allowed) {
      return ReportUsage ("too many words, from", Word);
    } else if (!AsciiFromWord (Word, Words, StrLen (Word) + 1)) {
      return ReportUsage ("names and values are printable ASCII, not", Word);
    } else {
      Command->Name  = (Count == 0) ? Words : Command->Name;
      Command->Value = (Count == 0) ? NULL : Words;
      Words         += AsciiStrSize (Words);
      Count++;
    }
  }

  if (Count < Subcommand->Required) {
    return ReportUsage ((Count == 0) ? "a name is missing" : "a value is missing", NULL);
  }

  return RunSubcommand (Subcommand, Command, Pages);
}

/**
  Finds the subcommand and runs it with the words after it.
**/
STATIC
SHELL_STATUS
RunCommandLine (
  IN EFI_SHELL_PARAMETERS_PROTOCOL  *Parameters,
  IN EFI_SHELL_PROTOCOL             *Shell
  )
{
  AttrCommand       Command;
  CONST Subcommand  *Found;
  CHAR8             *Words;
  UINTN             Size;
  UINTN             Index;
  SHELL_STATUS      Result;

  if (Parameters->Argc < 2) {
    return ReportUsage ("a subcommand is missing: list, get, info, set or export", NULL);
  }

  Found = NULL;
  for (Index = 0; Index < ARRAY_SIZE (mSubcommands); Index++) {
    Found = (StrCmp (Parameters->Argv[1], mSubcommands[Index].Name) == 0) ? &mSubcommands[Index] : Found;
  }

  if (Found == NULL) {
    return ReportUsage ("subcommands are list, get, info, set and export, not", Parameters->Argv[1]);
  }

  Size = 1;
  for (Index = 2; Index < Parameters->Argc; Index++) {
    Size += StrLen (Parameters->Argv[Index]) + 1;
  }

  Words = AllocateZeroPool (Size);
  if (Words == NULL) {
    return ReportNoTables (EFI_OUT_OF_RESOURCES);
  }

  ZeroMem (&Command, sizeof (Command));
  Command.Shell = Shell;
  Result        = RunWords (Found, Parameters, &Command, Words);
  FreePool (Words);
  return Result;
}

SHELL_STATUS
RunAttr (
  IN EFI_SHELL_PARAMETERS_PROTOCOL  *Parameters,
  IN EFI_SHELL_PROTOCOL             *Shell
  )
{
  CHAR16        Number[8];
  SHELL_STATUS  Result;

  StartOutput ();
  Result = RunCommandLine (Parameters, Shell);

  // The Shell sets "lasterror" for programs only, not for commands from the firmware.
  UnicodeSPrint (Number, sizeof (Number), L"0x%x", Result);
  Shell->SetEnv (ATTR_STATUS_VARIABLE, Number, TRUE);
  return Result;
}
