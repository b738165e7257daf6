/** @file
  OnPrereq: runs a routine once, when every protocol of a list is installed.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

/// What runs: it gets the arguments of an image's entry point.
using PrereqCallback = EFI_STATUS(EFIAPI*)(EFI_HANDLE imageHandle, EFI_SYSTEM_TABLE* systemTable);

/// One wait. It lives until boot services end: its event may still be signalled.
struct PrereqRecord {
  UINT32 Signature;
  UINT32 GroupId;
  UINT32 RecordId;
  LIST_ENTRY Link;     // the records of one group
  BOOLEAN Done;        // the callback has run, or another of the group has been satisfied
  VOID* Registration;  // of the last protocol asked to be notified of
  PrereqCallback Callback;
  EFI_HANDLE ImageHandle;
  EFI_SYSTEM_TABLE* SystemTable;
  UINT32 GuidCount;
  UINT32 FoundCount;
  EFI_GUID* Guids;
  UINT8* Found;  // one byte for each GUID, behind them in one block
};
static_assert(sizeof(PrereqRecord) == 96);

constexpr UINT32 kPrereqSignature = SIGNATURE_32('P', 'R', 'e', 'q');

/// True while the callback is still to come.
[[nodiscard]] inline bool IsArmed(const PrereqRecord* wait) {
  return wait != nullptr && !wait->Done;
}

/// The numbers given out last.
struct PrereqCounters {
  UINT32 Group;
  UINT32 Record;
};

/// Runs `callback` at TPL_CALLBACK once every protocol of `guids` is installed on exactly one handle; at once for
/// protocols that are there already. With a parent the wait joins the parent's group, of which one success satisfies
/// all; a parent that is done or no record is given back as it is. Null when the wait could not be set up.
PrereqRecord* RegisterOnPrereq(PrereqCounters& counters, PrereqRecord* parent, PrereqCallback callback,
                               EFI_HANDLE imageHandle, EFI_SYSTEM_TABLE* systemTable,
                               std::span<const EFI_GUID* const> guids);

/// Notify function of every wait's event; `context` is its PrereqRecord.
VOID EFIAPI OnPrereqNotify(EFI_EVENT event, VOID* context);
