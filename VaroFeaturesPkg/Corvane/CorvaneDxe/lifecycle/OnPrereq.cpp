/** @file
  OnPrereq: waits for protocols.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "lifecycle/OnPrereq.hpp"

#include "uefi/Pool.hpp"

namespace {

/// The record that a link of a group belongs to, or null when it is none.
PrereqRecord* RecordOf(LIST_ENTRY* link) {
  auto* const record = BASE_CR(link, PrereqRecord, Link);
  if (record->Signature == kPrereqSignature) {
    return record;
  }
  if (DebugAssertEnabled()) {
    DebugAssert("OnPrereqDxe", 107, "CR has Bad Signature");
  }
  return nullptr;
}

/// Only exactly one handle counts: a protocol installed twice is nobody's signal, and LocateHandle's refusal of the
/// short buffer leaves it not found.
bool IsInstalledOnce(EFI_GUID* guid) {
  EFI_HANDLE handle = nullptr;
  UINTN size = sizeof(handle);
  const EFI_STATUS status = gBS->LocateHandle(ByProtocol, guid, nullptr, &size, &handle);
  if (status == EFI_BUFFER_TOO_SMALL) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: %g is installed on more than one handle: the wait for it does not end\n", guid));
  } else if (EFI_ERROR(status) && status != EFI_NOT_FOUND) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: %g cannot be looked up: %r: the wait for it goes on\n", guid, status));
  }
  return status == EFI_SUCCESS;
}

void FinishGroup(PrereqRecord* record) {
  PrereqRecord* member = record;
  do {
    member->Done = TRUE;
    member = RecordOf(member->Link.ForwardLink);
  } while (member != nullptr && member != record);
}

}  // namespace

PrereqRecord* RegisterOnPrereq(PrereqCounters& counters, PrereqRecord* parent, PrereqCallback callback,
                               EFI_HANDLE imageHandle, EFI_SYSTEM_TABLE* systemTable,
                               std::span<const EFI_GUID* const> guids) {
  if (parent != nullptr && (parent->Signature != kPrereqSignature || parent->Done)) {
    return parent;
  }
  PoolPtr<PrereqRecord> record = AllocateZeroed<PrereqRecord>();
  const size_t guidBytes = guids.size() * sizeof(EFI_GUID);
  PoolPtr<std::byte[]> block = AllocateZeroedArray<std::byte>(guidBytes + guids.size());
  if (!record || !block) {
    return nullptr;
  }
  record->Signature = kPrereqSignature;
  record->GuidCount = static_cast<UINT32>(guids.size());
  record->Guids = reinterpret_cast<EFI_GUID*>(block.get());
  record->Found = reinterpret_cast<UINT8*>(block.get() + guidBytes);
  std::transform(guids.begin(), guids.end(), record->Guids, [](const EFI_GUID* guid) { return *guid; });
  record->Callback = callback;
  record->ImageHandle = imageHandle;
  record->SystemTable = systemTable;
  EFI_EVENT event = nullptr;
  if (EFI_ERROR(gBS->CreateEvent(EVT_NOTIFY_SIGNAL, TPL_CALLBACK, OnPrereqNotify, record.get(), &event))) {
    return nullptr;
  }
  for (EFI_GUID& guid : std::span(record->Guids, record->GuidCount)) {
    if (EFI_ERROR(gBS->RegisterProtocolNotify(&guid, event, &record->Registration))) {
      gBS->CloseEvent(event);  // nothing may signal a record that is given back
      return nullptr;
    }
  }
  record->RecordId = ++counters.Record;
  InitializeListHead(&record->Link);
  if (parent != nullptr) {
    record->GroupId = parent->GroupId;
    InsertTailList(&parent->Link, &record->Link);
  } else {
    record->GroupId = ++counters.Group;
  }
  static_cast<void>(block.release());           // to the record,
  PrereqRecord* const wait = record.release();  // which belongs to its event from here on
  gBS->SignalEvent(event);                      // sees what is installed already
  return wait;
}

VOID EFIAPI OnPrereqNotify(EFI_EVENT, VOID* context) {
  auto* const record = static_cast<PrereqRecord*>(context);
  if (record->Signature != kPrereqSignature || record->Done) {
    return;
  }
  for (UINT32 i = 0; i < record->GuidCount; ++i) {
    if (record->Found[i] == 0 && IsInstalledOnce(&record->Guids[i])) {
      record->Found[i] = 1;
      ++record->FoundCount;
    }
  }
  if (record->FoundCount < record->GuidCount) {
    return;
  }
  if (EFI_ERROR(record->Callback(record->ImageHandle, record->SystemTable))) {
    record->Done = TRUE;
  } else {
    FinishGroup(record);
  }
}
