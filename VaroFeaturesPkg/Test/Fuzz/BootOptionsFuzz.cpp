/** @file
  Fuzz target of the boot options: whatever the platform's block holds, it is refused, or its options make an attribute.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Fuzz/Require.hpp"
#include "sources/BootConfiguration.hpp"

namespace {

std::span<const std::uint8_t> input;

EFI_STATUS EFIAPI GetOptions(UINT32, UINT32, UINT64* size, BootOptionBlock** block) {
  *size = input.size();
  *block = static_cast<BootOptionBlock*>(FakeUefi::Current().GivePool(input.size()));
  std::copy(input.begin(), input.end(), reinterpret_cast<std::uint8_t*>(*block));
  return EFI_SUCCESS;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  FakeUefi uefi;
  BootOptionSourceProtocol source{{nullptr, nullptr}, GetOptions};
  uefi.Install(gVaroBootOptionSourceProtocolGuid, &source);
  input = {data, size};
  AttributeDatabase database;
  BootConfigurationState state{};
  Require(database.AllocateStore() == EFI_SUCCESS, "no store");
  PoolPtr<BootOptionBlock> block;
  if (!EFI_ERROR(ReadBootOptions(state, block))) {
    BuildBootConfiguration(database, state);
    const bool built = database.AttributeAt(ATTRIBUTE_HANDLE_BOOT_CONFIGURATION) != nullptr;
    Require(built && state.OptionCount <= BOOT_OPTION_CAPACITY && state.CurrentCount <= state.OptionCount, "counts");
  }
  database.ReleaseIndexes();
  return 0;
}
