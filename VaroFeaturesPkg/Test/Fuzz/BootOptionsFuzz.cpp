/** @file
  Fuzz target of the boot options: whatever the platform's block holds, it is refused, or its options make an attribute.

  Input: the block.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <set>

#include "Fuzz/FuzzInput.hpp"
#include "Host/StoreBuilder.hpp"
#include "sources/BootConfiguration.hpp"

namespace {

FuzzInput input;

EFI_STATUS EFIAPI GetOptions(UINT32, UINT32, UINT64* size, BootOptionBlock** block) {
  const Bytes bytes = input.Rest();
  *size = bytes.size();
  *block = static_cast<BootOptionBlock*>(FakeUefi::Current().GivePool(bytes.size()));
  std::copy(bytes.begin(), bytes.end(), reinterpret_cast<std::uint8_t*>(*block));
  return EFI_SUCCESS;
}

/// The views lead into the block, and both orders name each option once.
void RequireSound(const BootConfigurationState& state, const void* block) {
  const auto* const begin = static_cast<const std::uint8_t*>(block);
  const auto* const end = begin + FakeUefi::Current().PoolBlocks().at(block);
  std::set<UINT8> options;
  for (UINT8 i = 0; i < state.OptionCount; ++i) {
    const BootOptionView& option = state.Options[i];
    const auto* const path = reinterpret_cast<const std::uint8_t*>(option.DevicePath);
    Require(option.Description > begin && path <= end && option.DevicePathLength <= end - path, "a view outside");
    options.insert(state.PriorityOrder[i]);
  }
  const std::set<UINT8> active(state.CurrentOrder, state.CurrentOrder + state.CurrentCount);
  Require(options.size() == state.OptionCount && (options.empty() || *options.rbegin() < state.OptionCount),
          "an order");
  Require(active.size() == state.CurrentCount && (active.empty() || *active.rbegin() < state.OptionCount),
          "a position");
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
    Require(state.OptionCount <= BOOT_OPTION_CAPACITY && state.CurrentCount <= state.OptionCount, "counts");
    RequireSound(state, block.get());
    BuildBootConfiguration(database, state);
    Require(database.AttributeAt(ATTRIBUTE_HANDLE_BOOT_CONFIGURATION) != nullptr, "no attribute");
  }
  database.ReleaseIndexes();
  block.reset();
  FreeStore(database.Store());
  Require(uefi.LivePoolBlocks() == 0, "a block was left");
  return 0;
}
