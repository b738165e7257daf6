/** @file
  FakeUefi: faults, pool and pages, reboot.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "FakeUefi/FakeUefi.hpp"

extern "C" {
EFI_BOOT_SERVICES* gBS = nullptr;
EFI_RUNTIME_SERVICES* gRT = nullptr;
EFI_SYSTEM_TABLE* gST = nullptr;
EFI_HANDLE gImageHandle = nullptr;
}

namespace {

constexpr int kPoolFill = 0xA5;
FakeUefi* gCurrent = nullptr;

}  // namespace

FakeUefi::FakeUefi() {
  if (gCurrent != nullptr) {
    Misuse("two machines at a time");
  }
  gCurrent = this;
  gBS = &bootServices_;
  gRT = &runtimeServices_;
  gST = &systemTable_;
  systemTable_.BootServices = gBS;
  systemTable_.RuntimeServices = gRT;
  gImageHandle = &handles_.emplace_back();
  FillPoolServices();
  FillEventServices();
  FillProtocolServices();
  FillVariableServices();
  FillHiiServices();
  Install(gEfiLoadedImageProtocolGuid, &LoadedImage, gImageHandle);
}

FakeUefi::~FakeUefi() {
  Reboot();
  gCurrent = nullptr;
}

FakeUefi& FakeUefi::Current() {
  return *gCurrent;
}

void FakeUefi::Misuse(const std::string& what) {
  if (testing::UnitTest::GetInstance()->current_test_info() == nullptr) {
    std::fprintf(stderr, "FakeUefi: %s\n", what.c_str());
    std::abort();
  }
  ADD_FAILURE() << what;
}

void FakeUefi::Reboot() {
  if (tpl_ != TPL_APPLICATION) {
    Misuse("a driver left the TPL raised");
  }
  std::erase_if(Variables,
                [](const auto& entry) { return (entry.second.Attributes & EFI_VARIABLE_NON_VOLATILE) == 0; });
  for (const auto& [block, size] : pool_) {
    std::free(const_cast<void*>(block));
  }
  for (void* const block : pages_) {
    std::free(block);
  }
  pool_.clear();
  pages_.clear();
  signalled_.clear();
  registrations_.clear();
  events_.clear();
  installed_.clear();
  packageLists_.clear();
  DebugMessages.clear();
  Measurements.clear();
  calls_.clear();
  faults_.clear();
  allCalls_ = 0;
  failingCalls_.clear();
  LookupStatus.clear();
  SetConfigurationTable({});
  LoadedImage = {};
  Install(gEfiLoadedImageProtocolGuid, &LoadedImage, gImageHandle);
}

void FakeUefi::SetConfigurationTable(std::vector<EFI_CONFIGURATION_TABLE> entries) {
  configuration_ = std::move(entries);
  systemTable_.ConfigurationTable = configuration_.data();
  systemTable_.NumberOfTableEntries = configuration_.size();
}

void FakeUefi::Fail(Service service, size_t nth, EFI_STATUS status, Later later) {
  faults_[service] = {calls_[service] + nth, later == Later::Fail, status};
}

size_t FakeUefi::Calls(Service service) const {
  const auto found = calls_.find(service);
  return found == calls_.end() ? 0 : found->second;
}

void FakeUefi::FailCalls(const std::set<size_t>& calls) {
  failingCalls_.clear();
  for (const size_t call : calls) {
    failingCalls_.insert(allCalls_ + call);
  }
}

EFI_STATUS FakeUefi::Enter(Service service) {
  if (failingCalls_.contains(++allCalls_)) {
    const bool wantsRoom =
        service == Service::Allocation || service == Service::VariableWrite || service == Service::Registration;
    return wantsRoom ? EFI_OUT_OF_RESOURCES : EFI_DEVICE_ERROR;
  }
  const size_t call = ++calls_[service];
  const auto fault = faults_.find(service);
  const bool fails =
      fault != faults_.end() && (call == fault->second.First || (fault->second.AndLater && call > fault->second.First));
  return fails ? fault->second.Status : EFI_SUCCESS;
}

void* FakeUefi::GivePool(size_t size) {
  void* const block = std::malloc(size == 0 ? 1 : size);
  std::memset(block, kPoolFill, size);
  pool_[block] = size;
  return block;
}

void FakeUefi::FillPoolServices() {
  bootServices_.AllocatePool = [](EFI_MEMORY_TYPE, UINTN size, VOID** block) -> EFI_STATUS {
    if (block == nullptr) {
      return EFI_INVALID_PARAMETER;
    }
    const EFI_STATUS status = Current().Enter(Service::Allocation);
    if (!EFI_ERROR(status)) {
      *block = Current().GivePool(size);
    }
    return status;
  };
  bootServices_.FreePool = [](VOID* block) -> EFI_STATUS {
    if (Current().pool_.erase(block) == 0) {
      Misuse("a block is freed that is not live");
      return EFI_INVALID_PARAMETER;
    }
    std::free(block);
    return EFI_SUCCESS;
  };
  bootServices_.AllocatePages = [](EFI_ALLOCATE_TYPE, EFI_MEMORY_TYPE, UINTN pages,
                                   EFI_PHYSICAL_ADDRESS* memory) -> EFI_STATUS {
    const EFI_STATUS status = Current().Enter(Service::Allocation);
    if (!EFI_ERROR(status)) {
      void* const block = std::aligned_alloc(EFI_PAGE_SIZE, pages * EFI_PAGE_SIZE);
      std::memset(block, kPoolFill, pages * EFI_PAGE_SIZE);
      Current().pages_.insert(block);
      *memory = reinterpret_cast<UINTN>(block);
    }
    return status;
  };
}
