/** @file
  Fuzz target of the SMBIOS table: whatever it holds, it is read within its bounds, and the tokens come in order.

  Input: the table.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <sys/mman.h>

#include "Fuzz/FuzzInput.hpp"
#include "access/smbios/CallingInterface.hpp"

extern "C" {
#include <Guid/SmBios.h>
#include <IndustryStandard/SmBios.h>
}

namespace {

constexpr size_t kLargestTable = 0xFFFF;

/// Pages below 4 GiB, where an entry point's 32-bit address reaches, followed by one that cannot be read.
std::uint8_t* EndOfPages() {
  constexpr size_t kSize = 0x10000;
  constexpr size_t kGuard = 0x1000;
  auto* const pages = static_cast<std::uint8_t*>(
      mmap(nullptr, kSize + kGuard, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_32BIT, -1, 0));
  Require(pages != MAP_FAILED, "no memory below 4 GiB");
  mprotect(pages + kSize, kGuard, PROT_NONE);
  return pages + kSize;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  static std::uint8_t* const end = EndOfPages();
  FakeUefi uefi;
  SMBIOS_TABLE_ENTRY_POINT entryPoint{};
  entryPoint.TableLength = static_cast<UINT16>(std::min(size, kLargestTable));
  std::uint8_t* const table = end - entryPoint.TableLength;
  std::copy_n(data, entryPoint.TableLength, table);
  entryPoint.TableAddress = static_cast<UINT32>(reinterpret_cast<UINTN>(table));
  uefi.SetConfigurationTable({{gEfiSmbiosTableGuid, &entryPoint}});

  CallingInterfaceInfo* const info = BuildCallingInterfaceInfo();
  Require(info != nullptr && info->Walker != nullptr, "no walker");
  for (UINT32 i = 0; i < StructureCount(*info->Walker); ++i) {
    const auto structure = StructureAt(*info->Walker, i);
    const auto* const start = reinterpret_cast<const std::uint8_t*>(structure.data());
    Require(start >= table && start + structure.size() == end && structure.size() >= 2,
            "a structure outside the table");
    Require(i == 0 || structure.size() < StructureAt(*info->Walker, i - 1).size(), "structures out of order");
  }
  const std::span tokens(info->Tokens, info->TokenCount);
  Require(tokens.size_bytes() <= entryPoint.TableLength, "more tokens than the table has room for");
  for (size_t i = 0; i < tokens.size(); ++i) {
    const UINT16 id = tokens[i].TokenId;
    Require(id != CALLING_INTERFACE_TOKEN_NONE && id != CALLING_INTERFACE_TOKEN_END, "a token that is none");
    Require(i == 0 || tokens[i - 1].TokenId <= id, "tokens out of order");
  }
  ReleaseCallingInterfaceInfo(info);
  Require(uefi.LivePoolBlocks() == 0, "a block was left");
  return 0;
}
