/** @file
  KeptBlocks: the pool that a driver may keep to the end of boot services.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "FakeUefi/KeptBlocks.hpp"

#include "Host/StoreBuilder.hpp"
#include "access/service/AccessState.hpp"
#include "lifecycle/DriverState.hpp"

std::multiset<size_t> BlocksLeftBehind(FakeNotebook& notebook) {
  FreeStore(mState.Database.Store());
  for (size_t table = 0; mState.Descriptors != nullptr && table < TABLE_DESCRIPTOR_COUNT; ++table) {
    FreeBlock(reinterpret_cast<const void*>(UINTN{mState.Descriptors[table].Data}));
  }
  for (const void* const block :
       std::initializer_list<const void*>{mAccess.Interface, mAccess.RequestBuffer, mState.Published,
                                          mState.Descriptors, mState.Directory, mState.PlatformLangBuffer}) {
    FreeBlock(block);
  }
  if (mState.Published != nullptr && notebook.Uefi.PoolBlocks().contains(notebook.BootOptionsGiven)) {
    FreeBlock(notebook.BootOptionsGiven);
  }
  std::multiset<size_t> left;
  for (const auto& [block, size] : notebook.Uefi.PoolBlocks()) {
    left.insert(size);
  }
  for (UINT32 wait = 0; wait < mState.Prerequisites.Record; ++wait) {  // a wait that cannot be armed is not freed
    for (const size_t part : {sizeof(PrereqRecord), sizeof(EFI_GUID) + 1}) {
      if (const auto found = left.find(part); found != left.end()) {
        left.erase(found);
      }
    }
  }
  return left;
}
