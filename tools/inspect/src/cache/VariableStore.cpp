/** @file
  VariableStore: the variables of a flash image, as EDK II keeps them (firmware volume, variable store, variables).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "cache/VariableStore.hpp"

#include <optional>

#include "bytes/Text.hpp"
#include "bytes/Wire.hpp"

extern "C" {
#include <Corvane/AttributeCache.h>
}

namespace corvane::inspect {
namespace {

constexpr EFI_GUID kDriverVariables = VARO_ATTRIBUTE_VARIABLE_GUID;
constexpr EFI_GUID kVariableVolume = {0xFFF12B8D, 0x7696, 0x4C8B, {0xA9, 0x85, 0x27, 0x47, 0x07, 0x5B, 0x4F, 0x50}};
constexpr EFI_GUID kPlainStore = {0xDDCF3616, 0x3275, 0x4164, {0x98, 0xB6, 0xFE, 0x85, 0x70, 0x7F, 0xFE, 0x7D}};
constexpr EFI_GUID kAuthenticatedStore = {0xAAF32C78, 0x947B, 0x439A, {0xA1, 0x80, 0x2E, 0x14, 0x4E, 0xC3, 0x77, 0x92}};

constexpr std::size_t kVolumeAlignment = 512;  // volumes begin at a multiple of this
constexpr std::uint16_t kVariableStart = 0x55AA;
constexpr std::size_t kVariableAlignment = 4;
constexpr std::uint8_t kFormatted = 0x5A;
constexpr std::uint8_t kHealthy = 0xFE;
constexpr std::uint8_t kAdded = 0x3F;          // states; each change of state clears bits
constexpr std::uint8_t kBeingReplaced = 0x3E;  // valid until the successor is added

#pragma pack(1)
struct VolumeHeader {
  std::uint8_t ZeroVector[16];
  EFI_GUID FileSystem;
  std::uint64_t Length;
  char Signature[4];
  std::uint32_t Attributes;
  std::uint16_t HeaderLength;
  std::uint16_t Checksum;
  std::uint16_t ExtendedHeader;
  std::uint8_t Reserved;
  std::uint8_t Revision;
};
struct StoreHeader {
  EFI_GUID Signature;
  std::uint32_t Size;
  std::uint8_t Format;
  std::uint8_t State;
  std::uint16_t Reserved;
  std::uint32_t Reserved1;
};
struct VariableHead {
  std::uint16_t Start;
  std::uint8_t State;
  std::uint8_t Reserved;
  std::uint32_t Attributes;
};
struct Authentication {
  std::uint64_t Count;
  std::uint8_t TimeStamp[16];
  std::uint32_t PublicKey;
};
struct VariableTail {
  std::uint32_t NameSize;
  std::uint32_t DataSize;
  EFI_GUID Vendor;
};
#pragma pack()

bool Same(const EFI_GUID& first, const EFI_GUID& second) {
  return std::memcmp(&first, &second, sizeof(first)) == 0;
}

std::optional<std::size_t> FindVolume(Bytes content) {
  for (std::size_t offset = 0; offset + sizeof(VolumeHeader) <= content.size(); offset += kVolumeAlignment) {
    const auto header = ByteReader(content.subspan(offset)).Read<VolumeHeader>();
    if (std::memcmp(header.Signature, "_FVH", sizeof(header.Signature)) == 0 &&
        Same(header.FileSystem, kVariableVolume)) {
      return offset;
    }
  }
  return std::nullopt;
}

void CheckSum16(Bytes header, Findings& findings) {
  std::uint16_t sum = 0;
  for (ByteReader words(header); words.Left() >= sizeof(sum);) {
    sum = static_cast<std::uint16_t>(sum + words.Read<std::uint16_t>());
  }
  if (sum != 0) {
    findings.Add("flash-checksum", "the words of the volume header sum to {}, not 0", sum);
  }
}

// One variable with its state and vendor. The vendor GUID tells the driver's variables from others.
struct FoundVariable {
  inspect::Variable Variable;
  EFI_GUID Vendor{};
  std::uint8_t State = 0;
};

bool TakeVariable(ByteReader& reader, bool authenticated, FoundVariable& found) {
  const auto head = reader.Read<VariableHead>();
  if (authenticated) {
    reader.Read<Authentication>();
  }
  const auto tail = reader.Read<VariableTail>();
  found.State = head.State;
  found.Vendor = tail.Vendor;
  found.Variable.Attributes = head.Attributes;
  found.Variable.Name = Ucs2FromBytes(reader.Take(tail.NameSize));
  found.Variable.Data = reader.Take(tail.DataSize);
  while (!found.Variable.Name.empty() && found.Variable.Name.back() == 0) {
    found.Variable.Name.pop_back();
  }
  return reader.Ok();
}

}  // namespace

const Variable* VariableStore::Find(std::u16string_view name) const {
  for (const Variable& variable : Variables) {
    if (variable.Name == name) {
      return &variable;
    }
  }
  return nullptr;
}

std::size_t VariableStore::Footprint(std::u16string_view name, std::size_t dataSize) const {
  return HeaderSize + sizeof(char16_t) * (name.size() + 1) + dataSize;
}

bool LooksLikeFlash(Bytes content) {
  return FindVolume(content).has_value();
}

VariableStore ReadVariableStore(Bytes flash, Findings& findings) {
  const std::optional<std::size_t> volume = FindVolume(flash);
  if (!volume) {
    throw UnusableInput("the file has no variable store");
  }
  ByteReader reader(flash.subspan(*volume));
  const auto volumeHeader = reader.Read<VolumeHeader>();
  const std::size_t headerLength = volumeHeader.HeaderLength;
  if (headerLength < sizeof(volumeHeader) || headerLength - sizeof(volumeHeader) > reader.Left()) {
    throw UnusableInput(fmt::format("the volume at offset {} has a header of {} bytes", *volume, headerLength));
  }
  CheckSum16(flash.subspan(*volume, headerLength), findings);
  reader.Take(headerLength - sizeof(volumeHeader));
  const std::size_t start = *volume + reader.Offset();
  const auto header = reader.Read<StoreHeader>();
  VariableStore store;
  store.Authenticated = Same(header.Signature, kAuthenticatedStore);
  if (!reader.Ok() || (!store.Authenticated && !Same(header.Signature, kPlainStore))) {
    throw UnusableInput(fmt::format("no variable store begins at offset {}", start));
  }
  store.HeaderSize = sizeof(VariableHead) + sizeof(VariableTail) + (store.Authenticated ? sizeof(Authentication) : 0);
  store.Size = header.Size;
  if (header.Format != kFormatted || header.State != kHealthy) {
    findings.Add("store-state",
                 "the variable store has the format {:#04x} and the state {:#04x}: firmware creates a new one",
                 header.Format, header.State);
  }
  if (store.Size < sizeof(header) || store.Size - sizeof(header) > reader.Left()) {
    findings.Add("store-cut", "the variable store announces {} bytes and has {}", store.Size,
                 sizeof(header) + reader.Left());
    store.Size = sizeof(header) + reader.Left();
  }
  ByteReader body(reader.Take(store.Size - sizeof(header)));
  store.Used = store.Live = sizeof(header);
  std::vector<FoundVariable> own;
  while (body.Left() >= sizeof(VariableHead) && ByteReader(body.Rest()).Read<std::uint16_t>() == kVariableStart) {
    const std::size_t offset = body.Offset();
    FoundVariable found;
    if (!TakeVariable(body, store.Authenticated, found)) {
      findings.Add("variable-cut", "the variable at offset {} ends after the store", sizeof(header) + offset);
      break;
    }
    body.Take(std::min(body.Left(), (kVariableAlignment - body.Offset() % kVariableAlignment) % kVariableAlignment));
    store.Used = sizeof(header) + body.Offset();
    if (found.State != kAdded && found.State != kBeingReplaced) {
      continue;
    }
    store.Live += body.Offset() - offset;
    if (Same(found.Vendor, kDriverVariables)) {
      own.push_back(std::move(found));
    }
  }
  // A variable that is being replaced counts if there is no successor.
  for (const std::uint8_t state : {kAdded, kBeingReplaced}) {
    for (FoundVariable& found : own) {
      if (found.State == state && store.Find(found.Variable.Name) == nullptr) {
        store.Variables.push_back(std::move(found.Variable));
      }
    }
  }
  return store;
}

}  // namespace corvane::inspect
