/** @file
  The boot options and the attribute "System boot configuration".

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "sources/BootConfiguration.hpp"

#include "sources/Interning.hpp"
#include "uefi/ByteReader.hpp"
#include "uefi/Protocols.hpp"

extern "C" {
#include <Corvane/OwnAttributes.h>
}

namespace {

size_t LengthOf(const EFI_DEVICE_PATH_PROTOCOL& node) {
  return node.Length[0] | static_cast<size_t>(node.Length[1]) << 8;
}

constexpr UINT8 kBootConfigType = 2;  // DSP0247: the configuration of the next boot
constexpr UINT8 kSupportedModes = 3;  // DSP0247: ordered, with fail-through

// By BBS device type, from BBS_TYPE_FLOPPY to BBS_TYPE_EMBEDDED_NETWORK.
constexpr std::array<std::array<CHAR16, 3>, 6> kDeviceTypeNames = {
    {{'F', 'D', 'D'}, {'H', 'D', 'D'}, {'O', 'D', 'D'}, {'P', 'C', 'C'}, {'U', 'S', 'B'}, {'N', 'I', 'C'}}};
static_assert(BBS_TYPE_EMBEDDED_NETWORK - BBS_TYPE_FLOPPY == 5);

constexpr CHAR16 kSourcePrefix[] = {'V', 'a', 'r', 'o', ':'};

/// Description of an option, NUL-terminated and unaligned, taken off the reader; fails it when there is no end.
const VOID* TakeDescription(ByteReader& reader) {
  const VOID* const description = reader.Rest().data();
  while (reader.Read<UINT16>() != 0) {
  }
  return description;
}

/// Whether every node lies within the list and is at least a header long.
bool DevicePathIsValid(std::span<const std::byte> path) {
  ByteReader reader{path};
  while (!reader.AtEnd()) {
    const auto node = reader.ReadStruct<EFI_DEVICE_PATH_PROTOCOL>();
    const size_t length = LengthOf(node);
    if (!reader.Ok() || length < sizeof(node)) {
      return false;
    }
    reader.Take(length - sizeof(node));
  }
  return reader.Ok();
}

BootOptionView TakeOption(ByteReader& reader) {
  BootOptionView option{};
  option.Attributes = reader.Read<UINT32>();
  option.DevicePathLength = reader.Read<UINT16>();
  option.Description = TakeDescription(reader);
  const std::span<const std::byte> path = reader.Take(option.DevicePathLength);
  option.DevicePath = reinterpret_cast<const EFI_DEVICE_PATH_PROTOCOL*>(path.data());
  option.DevicePathValid = DevicePathIsValid(path) ? 1 : 0;
  return option;
}

EFI_STATUS ParseBootOptions(std::span<const std::byte> block, BootConfigurationState& state) {
  ByteReader reader{block};
  const UINT32 count = reader.Read<UINT32>();
  if (count > BOOT_OPTION_CAPACITY) {
    return EFI_UNSUPPORTED;
  }
  std::array<UINT16, BOOT_OPTION_CAPACITY> priorities{};
  for (UINT32 i = 0; i < count; ++i) {
    priorities[i] = reader.Read<UINT16>();
  }
  for (UINT32 i = 0; i < count; ++i) {
    state.Options[i] = TakeOption(reader);
  }
  if (!reader.Ok()) {
    return EFI_COMPROMISED_DATA;
  }
  state.OptionCount = static_cast<UINT8>(count);

  // Insertion keeps options of equal priority in their own order.
  std::array<UINT8, BOOT_OPTION_CAPACITY> positions{};
  for (UINT8 option = 0; option < count; ++option) {
    UINT8 position = option;
    for (; position > 0 && priorities[state.PriorityOrder[position - 1]] > priorities[option]; --position) {
      state.PriorityOrder[position] = state.PriorityOrder[position - 1];
    }
    state.PriorityOrder[position] = option;
  }
  for (UINT8 position = 0; position < count; ++position) {
    positions[state.PriorityOrder[position]] = position;
  }
  for (UINT8 option = 0; option < count; ++option) {
    if ((state.Options[option].Attributes & LOAD_OPTION_ACTIVE) != 0) {
      state.CurrentOrder[state.CurrentCount++] = positions[option];
    }
  }
  return EFI_SUCCESS;
}

/// Name of the device type of a BBS boot option, or empty when the option goes by its description.
Ucs2View DeviceTypeName(const BootOptionView& option) {
  if (option.DevicePathValid == 0 || option.DevicePathLength == 0) {
    return {};
  }
  const auto& node = reinterpret_cast<const BBS_BBS_DEVICE_PATH&>(*option.DevicePath);
  if (node.Header.Type != BBS_DEVICE_PATH || LengthOf(node.Header) < offsetof(BBS_BBS_DEVICE_PATH, StatusFlag)) {
    return {};
  }
  const size_t type = node.DeviceType - size_t{BBS_TYPE_FLOPPY};
  return type < kDeviceTypeNames.size() ? Ucs2View(kDeviceTypeNames[type]) : Ucs2View{};
}

/// "Varo:", device type or description, ":" and the position from 1 in four digits.
PoolPtr<CHAR16[]> SourceName(const BootOptionView& option, UINT32 position) {
  const Ucs2View type = DeviceTypeName(option);
  const auto* const description = static_cast<const std::byte*>(option.Description);
  size_t length = type.size();
  if (type.empty()) {
    // The description was found terminated within its block.
    while (description[2 * length] != std::byte{0} || description[2 * length + 1] != std::byte{0}) {
      ++length;
    }
  }
  constexpr size_t kSuffixLength = 5;
  PoolPtr<CHAR16[]> name = AllocateZeroedArray<CHAR16>(std::size(kSourcePrefix) + length + kSuffixLength + 1);
  if (name) {
    CHAR16* const rest = name.get() + std::size(kSourcePrefix);
    const void* const source = type.empty() ? option.Description : type.data();
    CopyMem(name.get(), kSourcePrefix, sizeof(kSourcePrefix));
    CopyMem(rest, source, length * sizeof(CHAR16));
    TextWriter{{rest + length, kSuffixLength + 1}}.Put(ViewOf(u":"_ucs2)).PutDecimal(position + 1, kSuffixLength - 1);
  }
  return name;
}

}  // namespace

EFI_STATUS ReadBootOptions(BootConfigurationState& state, PoolPtr<BootOptionBlock>& block) {
  BootOptionSourceProtocol* source = nullptr;
  EFI_STATUS status = LocateProtocol(gVaroBootOptionSourceProtocolGuid, source);
  if (EFI_ERROR(status) || source == nullptr) {
    DEBUG((DEBUG_WARN,
           "CorvaneDxe: gVaroBootOptionSourceProtocolGuid not found: \"System boot configuration\" is not built\n"));
    return EFI_ERROR(status) ? status : EFI_NOT_FOUND;
  }
  UINT64 size = 0;
  BootOptionBlock* options = nullptr;
  status = source->GetOptions(BOOT_OPTION_SOURCE_CLASS, BOOT_OPTION_SOURCE_SELECT, &size, &options);
  block.reset(options);
  if (!EFI_ERROR(status)) {
    status = block ? ParseBootOptions({reinterpret_cast<std::byte*>(options), size}, state) : EFI_NOT_FOUND;
  }
  if (EFI_ERROR(status)) {
    state = {};
    block.reset();
    DEBUG((DEBUG_WARN, "CorvaneDxe: attribute \"System boot configuration\" dropped: boot options: %r\n", status));
    return status;
  }
  return EFI_SUCCESS;
}

void BuildBootConfiguration(AttributeDatabase& database, const BootConfigurationState& state) {
  constexpr OwnAttribute own = OWN_BOOT_CONFIGURATION;
  OwnedRecord<BootConfigurationRecord> record = MakeRecord<BootConfigurationRecord>();
  PoolPtr<UINT16[]> names = AllocateZeroedArray<UINT16>(state.OptionCount);
  if (!record || !names) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: attribute \"%a\" dropped: out of memory\n", own.Name));
    return;
  }
  record->Head.NameHandle = Raw(InternOwnTexts(database, own.Name, own.DisplayText).Name);
  for (UINT8 position = 0; position < state.OptionCount; ++position) {
    const PoolPtr<CHAR16[]> name = SourceName(state.Options[state.PriorityOrder[position]], position);
    if (!name) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: name of boot source %d dropped: out of memory\n", position + 1));
      continue;
    }
    names[position] = Raw(InternName(database, name.get()));
    InternDisplayString(database, name.get());
  }
  record->BootConfigType = kBootConfigType;
  record->SupportedModes = kSupportedModes;
  record->MinSourceCount = 1;
  record->MaxSourceCount = state.OptionCount;
  record->PossibleSourceCount = state.OptionCount;
  record->PossibleSourceNames = names.release();
  record->CurrentBootConfigType = kBootConfigType;
  record->CurrentMode = kSupportedModes;
  record->CurrentSourceCount = state.CurrentCount;
  for (UINT8 i = 0; i < state.CurrentCount; ++i) {
    record->CurrentSourceOrder[i] = state.CurrentOrder[i];
  }
  database.PlaceAttribute(AsAttribute(std::move(record)), AttributeHandle{ATTRIBUTE_HANDLE_BOOT_CONFIGURATION});
}
