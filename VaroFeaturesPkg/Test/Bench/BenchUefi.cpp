/** @file
  BenchUefi: services, library classes and GUIDs that the database asks for.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Bench/BenchUefi.hpp"

#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" {
#include <Corvane/AttributeCache.h>
#include <Protocol/AssetTagLength.h>
#include <Protocol/FirmwareVersion.h>
#include <Protocol/FormBrowserData.h>
#include <Protocol/HiiString.h>
#include <Protocol/SettingDefaults.h>
#include <Protocol/Settings.h>

#include "Bench/InstructionCounter.h"

EFI_BOOT_SERVICES* gBS = nullptr;
EFI_RUNTIME_SERVICES* gRT = nullptr;

EFI_GUID gVaroAttributeVariableGuid = VARO_ATTRIBUTE_VARIABLE_GUID;
EFI_GUID gVaroAssetTagLengthProtocolGuid = VARO_ASSET_TAG_LENGTH_PROTOCOL_GUID;
EFI_GUID gVaroFirmwareVersionProtocolGuid = VARO_FIRMWARE_VERSION_PROTOCOL_GUID;
EFI_GUID gVaroSettingsNamespaceGuid = VARO_SETTINGS_NAMESPACE_GUID;
EFI_GUID gVaroSettingDefaultsProtocolGuid = VARO_SETTING_DEFAULTS_PROTOCOL_GUID;
EFI_GUID gVaroSetupFormSetsGuid = VARO_SETUP_FORM_SETS_GUID;
EFI_GUID gVaroSetupHiddenFormSetGuid = VARO_SETUP_HIDDEN_FORM_SET_GUID;
EFI_GUID gEfiHiiStringProtocolGuid = EFI_HII_STRING_PROTOCOL_GUID;

VOID* EFIAPI CopyMem(VOID* destination, const VOID* source, UINTN length) {
  return std::memmove(destination, source, length);
}
VOID* EFIAPI SetMem(VOID* buffer, UINTN length, UINT8 value) {
  return std::memset(buffer, value, length);
}
VOID* EFIAPI ZeroMem(VOID* buffer, UINTN length) {
  return std::memset(buffer, 0, length);
}
VOID* EFIAPI SetMem16(VOID* buffer, UINTN length, UINT16 value) {
  std::fill_n(static_cast<UINT16*>(buffer), length / sizeof(value), value);
  return buffer;
}
BOOLEAN EFIAPI CompareGuid(const GUID* left, const GUID* right) {
  return std::memcmp(left, right, sizeof(*left)) == 0;
}
INTN EFIAPI CompareMem(const VOID* left, const VOID* right, UINTN length) {
  return std::memcmp(left, right, length);
}
}

namespace {

BenchUefi* gCurrent = nullptr;
int gLabel = 0;

struct alignas(16) Header {
  size_t Size;
};
constexpr size_t kArenaSize = size_t{1} << 28;

}  // namespace

BenchUefi::BenchUefi() {
  gCurrent = this;
  arena_ = static_cast<std::byte*>(std::aligned_alloc(sizeof(Header), kArenaSize));
  if (arena_ == nullptr) {
    std::abort();
  }
  gBS = &bootServices_;
  gRT = &runtimeServices_;
  bootServices_.AllocatePool = [](EFI_MEMORY_TYPE, UINTN size, VOID** block) -> EFI_STATUS {
    return gCurrent->Allocate(size, block);
  };
  bootServices_.FreePool = [](VOID* block) -> EFI_STATUS {
    gCurrent->PoolInUse -= static_cast<Header*>(block)[-1].Size;
    return EFI_SUCCESS;
  };
  bootServices_.LocateProtocol = [](EFI_GUID* guid, VOID*, VOID** interface) -> EFI_STATUS {
    static constexpr FirmwareVersionData kVersion{"1"};
    static FirmwareVersionProtocol version{&kVersion};
    *interface = guid == &gVaroFirmwareVersionProtocolGuid ? &version
                 : guid == &gEfiHiiStringProtocolGuid      ? gCurrent->HiiString
                                                           : nullptr;
    return *interface != nullptr ? EFI_SUCCESS : EFI_NOT_FOUND;
  };
  runtimeServices_.GetVariable = [](CHAR16* name, EFI_GUID*, UINT32*, UINTN* size, VOID* data) -> EFI_STATUS {
    const auto found = gCurrent->Variables.find(reinterpret_cast<const char16_t*>(name));
    if (found == gCurrent->Variables.end()) {
      return EFI_NOT_FOUND;
    }
    const UINTN room = std::exchange(*size, found->second.size());
    if (room < *size) {
      return EFI_BUFFER_TOO_SMALL;
    }
    std::memcpy(data, found->second.data(), *size);
    return EFI_SUCCESS;
  };
  runtimeServices_.SetVariable = [](CHAR16* name, EFI_GUID*, UINT32, UINTN size, VOID* data) -> EFI_STATUS {
    const auto* const bytes = static_cast<const std::byte*>(data);
    gCurrent->Variables[reinterpret_cast<const char16_t*>(name)].assign(bytes, bytes + size);
    return EFI_SUCCESS;
  };
}

BenchUefi& BenchUefi::Current() {
  return *gCurrent;
}

EFI_STATUS BenchUefi::Allocate(size_t size, void** block) {
  const size_t whole = sizeof(Header) + (size + sizeof(Header) - 1) / sizeof(Header) * sizeof(Header);
  if (whole > kArenaSize - arenaUsed_) {
    return EFI_OUT_OF_RESOURCES;
  }
  auto* const header = reinterpret_cast<Header*>(arena_ + arenaUsed_);
  arenaUsed_ += whole;
  header->Size = size;
  PoolInUse += size;
  PoolPeak = std::max(PoolPeak, PoolInUse);
  *block = header + 1;
  return EFI_SUCCESS;
}

CountPause::CountPause() {
  syscall(BENCH_SYSCALL, BENCH_PAUSE);
}

CountPause::~CountPause() {
  syscall(BENCH_SYSCALL, BENCH_PAUSE);
}

void BeginCount(const std::string& what) {
  std::printf("label %d %s\n", ++gLabel, what.c_str());
  syscall(BENCH_SYSCALL, gLabel);
}

void EndCount() {
  syscall(BENCH_SYSCALL, gLabel);
}
