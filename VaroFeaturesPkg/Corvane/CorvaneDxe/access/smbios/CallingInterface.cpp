/** @file
  Reading of the calling interface from SMBIOS.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "access/smbios/CallingInterface.hpp"

#include "uefi/ByteReader.hpp"

static_assert(sizeof(CallingInterfaceStructure) == 11 && sizeof(CallingInterfaceToken) == 6);

namespace {

/// The next structure of the calling interface from `cursor` on, which is advanced behind it; empty when there is none.
std::span<const std::byte> NextStructureOfType218(const CallingInterfaceInfo& info, UINT32& cursor) {
  const UINT32 count = info.Walker == nullptr ? 0 : StructureCount(*info.Walker);
  while (cursor < count) {
    const std::span<const std::byte> structure = StructureAt(*info.Walker, cursor++);
    if (std::to_integer<UINT8>(structure[0]) == SMBIOS_TYPE_CALLING_INTERFACE) {
      return structure;
    }
  }
  return {};
}

/// Puts a token behind all that are not greater.
void InsertToken(CallingInterfaceInfo& info, const CallingInterfaceToken& token) {
  UINT32 place = info.TokenCount++;
  for (; place > 0 && info.Tokens[place - 1].TokenId > token.TokenId; --place) {
    info.Tokens[place] = info.Tokens[place - 1];
  }
  info.Tokens[place] = token;
}

/// Goes through the tokens of all structures. Gives their number, and keeps them where there is room for them. Ends at
/// as many as the table has room for: structures that lie in each other would name theirs again and again.
UINT32 TakeTokens(CallingInterfaceInfo& info) {
  UINT32 count = 0;
  UINT32 cursor = 0;
  for (auto rest = NextStructureOfType218(info, cursor); !rest.empty(); rest = NextStructureOfType218(info, cursor)) {
    ByteReader reader(rest);
    const auto head = reader.ReadStruct<CallingInterfaceStructure>();
    if (head.Length > info.Walker->LargestStructure) {
      continue;
    }
    for (size_t offset = sizeof(head); offset < head.Length; offset += sizeof(CallingInterfaceToken)) {
      const auto token = reader.ReadStruct<CallingInterfaceToken>();
      if (!reader.Ok() || token.TokenId == CALLING_INTERFACE_TOKEN_END) {
        break;
      }
      if (token.TokenId == CALLING_INTERFACE_TOKEN_NONE) {
        continue;
      }
      if (++count * sizeof(token) > info.Walker->Table.size()) {
        return count - 1;
      }
      if (info.Tokens != nullptr) {
        InsertToken(info, token);
      }
    }
  }
  return count;
}

}  // namespace

CallingInterfaceInfo* BuildCallingInterfaceInfo() {
  PoolPtr<CallingInterfaceInfo> info = AllocateZeroed<CallingInterfaceInfo>();
  if (!info) {
    return nullptr;
  }
  info->Walker = CreateSmbiosWalker();
  UINT32 cursor = 0;
  ByteReader first(NextStructureOfType218(*info, cursor));
  const auto head = first.ReadStruct<CallingInterfaceStructure>();
  info->IoAddress = head.IoAddress;
  info->IoCode = head.IoCode;
  info->Capabilities = head.Capabilities;
  info->Tokens = AllocateZeroedArray<CallingInterfaceToken>(TakeTokens(*info)).release();
  TakeTokens(*info);
  return info.release();
}

void ReleaseCallingInterfaceInfo(CallingInterfaceInfo* info) {
  if (info != nullptr) {
    FreeBlock(info->Tokens);
    ReleaseSmbiosWalker(info->Walker);
    FreeBlock(info);
  }
}
