/** @file
  FormModel: one form set read out of its IFR, in two walks. Conditions and defaults may name questions that come
  later, so all values are read between the two.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Guid/MdeModuleHii.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/DebugLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/UefiHiiServicesLib.h>
#include "Expression.h"
#include "FormModel.h"
#include "FormSets.h"
#include "Identifiers.h"
#include "Questions.h"

#define SCOPE_DEPTH  32

typedef enum {
  CollectQuestions,   ///< stores and heads of questions
  CompleteQuestions   ///< eligibility, options, defaults
} WalkPurpose;

///
/// What an opcode inside a scope inherits.
///
typedef struct {
  BOOLEAN         Hidden;      ///< by a condition further out
  UINT8           Culprit;     ///< opcode for which a condition further out cannot be evaluated
  BOOLEAN         BitFields;   ///< offsets and widths of the questions inside count bits
  FormQuestion    *Question;   ///< that the scope belongs to; NULL = none
} Scope;

typedef struct {
  FormModel       *Model;
  WalkPurpose     Purpose;
  IfrReader       Reader;
  FormQuestion    *Upcoming;   ///< CompleteQuestions: the question that the next question opcode stands for
  UINTN           Depth;
  Scope           Scopes[SCOPE_DEPTH];
  EFI_STATUS      Status;
} Walk;

FormQuestion *
NextQuestion (
  IN CONST FormModel     *Model,
  IN CONST FormQuestion  *Question OPTIONAL
  )
{
  return (Question == NULL) ? Model->First : (FormQuestion *)Question->Record.Next;
}

FormQuestion *
FindFormQuestion (
  IN CONST FormModel  *Model,
  IN EFI_QUESTION_ID  Id
  )
{
  FormQuestion  *Question;

  for (Question = Model->First; (Question != NULL) && (Question->Id != Id); Question = NextQuestion (Model, Question)) {
  }

  return Question;
}

/**
  Decides whether a question is eligible where it stands.
**/
STATIC
QUESTION_VERDICT
Judge (
  IN CONST FormQuestion  *Question,
  IN CONST Scope         *Outer
  )
{
  if (Outer->Hidden) {
    return QuestionHidden;
  }

  if (Outer->Culprit != NO_OPCODE) {
    return QuestionUndecided;
  }

  if (!IsAttributeKind (Question->Record.Opcode)) {
    return QuestionEligible;
  }

  if (Question->Computed) {
    return QuestionComputed;
  }

  if (Question->Storage == NULL) {
    return QuestionNoStore;
  }

  if (!EFI_ERROR (Question->Status)) {
    return QuestionEligible;
  }

  return ((Question->Status == EFI_NOT_FOUND) && (Question->Storage->Kind == StorageVariable)) ? QuestionNoVariable :
         QuestionUnreadable;
}

/**
  Takes a question opcode.
**/
STATIC
VOID
TakeQuestion (
  IN OUT Walk                     *Walk,
  IN     CONST EFI_IFR_OP_HEADER  *Opcode,
  IN OUT Scope                    *Inner
  )
{
  FormQuestion  *Question;

  if (Walk->Purpose == CollectQuestions) {
    Walk->Status    = AddQuestion (Walk->Model, Opcode, Inner->BitFields);
    Inner->Question = Walk->Model->Last;
    return;
  }

  Question                  = Walk->Upcoming;
  Question->Verdict         = Judge (Question, Inner);
  Question->Culprit         = Inner->Culprit;
  Question->Record.Eligible = (Question->Verdict == QuestionEligible) ? 1 : 0;
  Inner->Question           = Question;
  Walk->Upcoming            = NextQuestion (Walk->Model, Question);
}

/**
  Takes a default statement, with its scope when the default is computed.
**/
STATIC
VOID
TakeDefault (
  IN OUT Walk                   *Walk,
  IN     CONST EFI_IFR_DEFAULT  *Opcode,
  IN     FormQuestion           *Question OPTIONAL
  )
{
  CONST EFI_IFR_OP_HEADER  *Value;
  IfrReader                Inside;
  Operand                  Default;

  Inside = Walk->Reader;
  if (Opcode->Header.Scope) {
    SkipScope (&Walk->Reader);
  }

  if ((Walk->Purpose == CollectQuestions) || (Question == NULL)) {
    return;
  }

  if (Opcode->Header.Length < OFFSET_OF (EFI_IFR_DEFAULT, Value)) {
    Walk->Status = EFI_COMPROMISED_DATA;
    return;
  }

  if (!Opcode->Header.Scope) {
    Walk->Status = AddDefault (Question, Opcode);
    return;
  }

  Value = NextOpcode (&Inside);
  if ((Opcode->DefaultId != EFI_HII_DEFAULT_CLASS_STANDARD) || !Question->IsNumber || (Value == NULL) ||
      (Value->OpCode != EFI_IFR_VALUE_OP) || !Value->Scope)
  {
    return;
  }

  Default = EvaluateExpression (&Inside, Walk->Model, Question);
  if (Default.Known) {
    SetDefault (Question, DefaultOfStatement, Default.Value);
  } else {
    DEBUG ((
      DEBUG_INFO,
      "%a: default of question 0x%x of form set %g: opcode 0x%x cannot be evaluated\n",
      gEfiCallerBaseName,
      Question->Id,
      &Walk->Model->Guid,
      Default.Culprit
      ));
  }
}

/**
  Takes a condition that hides what is in its scope.
**/
STATIC
VOID
TakeCondition (
  IN OUT Walk   *Walk,
  IN OUT Scope  *Inner
  )
{
  Operand  Condition;

  Condition = EvaluateExpression (&Walk->Reader, Walk->Model, Inner->Question);
  if (Condition.Known) {
    Inner->Hidden |= (BOOLEAN)(Condition.Value != 0);
  } else if (Inner->Culprit == NO_OPCODE) {
    Inner->Culprit = Condition.Culprit;
  }
}

/**
  Takes one opcode of the form set other than an end.

  @param[in,out]  Walk    Its innermost scope is where the opcode stands.
  @param[in]      Opcode  The opcode.
  @param[out]     Inner   The scope that the opcode opens, if it opens one.

  @return  FALSE: the scope that the opcode opens is read already.
**/
STATIC
BOOLEAN
TakeOpcode (
  IN OUT Walk                     *Walk,
  IN     CONST EFI_IFR_OP_HEADER  *Opcode,
  OUT    Scope                    *Inner
  )
{
  *Inner = Walk->Scopes[Walk->Depth - 1];
  if (IsQuestion (Opcode->OpCode)) {
    TakeQuestion (Walk, Opcode, Inner);
    return TRUE;
  }

  switch (Opcode->OpCode) {
    case EFI_IFR_VARSTORE_OP:
    case EFI_IFR_VARSTORE_EFI_OP:
    case EFI_IFR_VARSTORE_NAME_VALUE_OP:
      if (Walk->Purpose == CollectQuestions) {
        Walk->Status = AddStore (Walk->Model, Opcode);
      }

      return TRUE;

    case EFI_IFR_GUID_OP:
      if ((Opcode->Length >= sizeof (EFI_IFR_GUID)) &&
          CompareGuid (&((CONST EFI_IFR_GUID *)Opcode)->Guid, &gEdkiiIfrBitVarstoreGuid))
      {
        Inner->BitFields = TRUE;
      }

      return TRUE;

    case EFI_IFR_SUPPRESS_IF_OP:
    case EFI_IFR_DISABLE_IF_OP:
      TakeCondition (Walk, Inner);
      return TRUE;

    case EFI_IFR_GRAY_OUT_IF_OP:
      EvaluateExpression (&Walk->Reader, Walk->Model, NULL);   // grey questions are seen in the setup, so here too
      return TRUE;

    case EFI_IFR_ONE_OF_OPTION_OP:
      if ((Walk->Purpose == CompleteQuestions) && (Inner->Question != NULL) &&
          (Inner->Question->Record.Opcode == EFI_IFR_ONE_OF_OP) && !Inner->Hidden)
      {
        Walk->Status = AddOption (Inner->Question, (CONST EFI_IFR_ONE_OF_OPTION *)Opcode);
      }

      return TRUE;

    case EFI_IFR_DEFAULT_OP:
      TakeDefault (Walk, (CONST EFI_IFR_DEFAULT *)Opcode, Inner->Question);
      return FALSE;

    case EFI_IFR_VALUE_OP:
    case EFI_IFR_READ_OP:
      if (Inner->Question != NULL) {
        Inner->Question->Computed = TRUE;
      }

    // fall through: the expression itself is not needed
    case EFI_IFR_NO_SUBMIT_IF_OP:
    case EFI_IFR_INCONSISTENT_IF_OP:
    case EFI_IFR_WARNING_IF_OP:
    case EFI_IFR_RULE_OP:
    case EFI_IFR_WRITE_OP:
      if (Opcode->Scope) {
        SkipScope (&Walk->Reader);
      }

      return FALSE;

    default:
      return TRUE;   // forms, texts, images and vendors' opcodes: looked through
  }
}

/**
  Walks over one form set, from after its head to the end of its scope.
**/
STATIC
EFI_STATUS
WalkFormSet (
  IN OUT FormModel               *Model,
  IN     CONST EFI_IFR_FORM_SET  *FormSet,
  IN     UINTN                   Length,
  IN     WalkPurpose             Purpose
  )
{
  Walk                     Walk;
  CONST EFI_IFR_OP_HEADER  *Opcode;
  Scope                    Inner;
  BOOLEAN                  Enter;

  ZeroMem (&Walk, sizeof (Walk));
  Walk.Model       = Model;
  Walk.Purpose     = Purpose;
  Walk.Upcoming    = Model->First;
  Walk.Depth       = 1;   // the form set's own scope
  Walk.Reader.Next = (CONST UINT8 *)FormSet + FormSet->Header.Length;
  Walk.Reader.Left = Length - FormSet->Header.Length;
  while (Walk.Depth > 0) {
    Opcode = NextOpcode (&Walk.Reader);
    if (Opcode == NULL) {
      return EFI_COMPROMISED_DATA;   // cut short within the form set
    }

    if (Opcode->OpCode == EFI_IFR_END_OP) {
      Walk.Depth--;
      continue;
    }

    Enter = TakeOpcode (&Walk, Opcode, &Inner);
    if (EFI_ERROR (Walk.Status)) {
      return Walk.Status;
    }

    if (Walk.Reader.Broken) {
      return EFI_COMPROMISED_DATA;
    }

    if (Enter && Opcode->Scope) {
      if (Walk.Depth == SCOPE_DEPTH) {
        return EFI_COMPROMISED_DATA;
      }

      Walk.Scopes[Walk.Depth] = Inner;
      Walk.Depth++;
    }
  }

  return EFI_SUCCESS;
}

/**
  Reads the questions of a form set.
**/
STATIC
EFI_STATUS
FillModel (
  IN OUT FormModel               *Model,
  IN     CONST EFI_IFR_FORM_SET  *Head,
  IN     UINTN                   Length
  )
{
  FormQuestion  *Question;
  EFI_STATUS    Status;

  Status = WalkFormSet (Model, Head, Length, CollectQuestions);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  HoldStorages ();
  Status = EFI_SUCCESS;
  for (Question = Model->First; !EFI_ERROR (Status) && (Question != NULL); Question = NextQuestion (Model, Question)) {
    if (LoadValue (Question) == EFI_OUT_OF_RESOURCES) {
      Status = EFI_OUT_OF_RESOURCES;
    }
  }

  ReleaseStorages ();
  if (!EFI_ERROR (Status)) {
    Status = WalkFormSet (Model, Head, Length, CompleteQuestions);
  }

  if (!EFI_ERROR (Status)) {
    NumberQuestions (Model, Head);
  }

  return Status;
}

EFI_STATUS
ReadFormModel (
  IN  CONST FormSetRecord  *FormSet,
  OUT FormModel            **Model
  )
{
  EFI_HII_PACKAGE_LIST_HEADER  *PackageList;
  CONST EFI_IFR_FORM_SET       *Head;
  UINTN                        Size;
  UINTN                        Position;
  UINTN                        Length;
  EFI_STATUS                   Status;

  *Model = NULL;
  Status = ExportPackageList (FormSet->HiiHandle, &PackageList, &Size);
  if (EFI_ERROR (Status)) {
    return Status;
  }

  *Model = AllocateZeroPool (sizeof (**Model));
  if (*Model == NULL) {
    FreePool (PackageList);
    return EFI_OUT_OF_RESOURCES;
  }

  (*Model)->PackageList = PackageList;
  (*Model)->HiiHandle   = FormSet->HiiHandle;
  (*Model)->Instance    = PackageListInstance (PackageList, Size);
  CopyGuid (&(*Model)->Guid, &FormSet->Guid);
  if (EFI_ERROR (gHiiDatabase->GetPackageListHandle (gHiiDatabase, FormSet->HiiHandle, &(*Model)->Driver))) {
    (*Model)->Driver = NULL;
  }

  Position = 0;
  do {
    Head = NextFormSet (PackageList, Size, &Position, &Length);
  } while ((Head != NULL) && !CompareGuid (&Head->Guid, &FormSet->Guid));

  Status = (Head == NULL) ? EFI_NOT_FOUND : FillModel (*Model, Head, Length);
  if (EFI_ERROR (Status)) {
    FreeFormModel (*Model);
    *Model = NULL;
  }

  return Status;
}

STATIC
VOID
FreeIfAny (
  IN CONST VOID  *Block
  )
{
  if (Block != NULL) {
    FreePool ((VOID *)Block);
  }
}

VOID
FreeFormModel (
  IN FormModel  *Model
  )
{
  FormQuestion  *Question;
  FormStore     *Store;

  while ((Question = Model->First) != NULL) {
    Model->First = NextQuestion (Model, Question);
    FreeIfAny (Question->Record.CurrentString);
    FreeIfAny (Question->Record.Options);
    FreePool (Question);
  }

  while ((Store = Model->Stores) != NULL) {
    Model->Stores = Store->Next;
    FreeIfAny (Store->Name);
    FreePool (Store);
  }

  FreePool (Model->PackageList);
  FreePool (Model);
}
