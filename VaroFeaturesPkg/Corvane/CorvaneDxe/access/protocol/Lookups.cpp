/** @file
  The operations that answer from the service's tables: strings, texts, handles.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "access/service/FetchedTables.hpp"
#include "access/protocol/Operations.hpp"
#include "access/service/TableWalk.hpp"
#include "uefi/Pool.hpp"

namespace {

using AsciiView = std::span<const CHAR8>;

/// Hands out a text with a terminator of `unit` bytes, which a size of exactly the text's length does not count:
/// callers have always had to keep room for it.
EFI_STATUS CopyText(std::span<const std::byte> text, size_t unit, void* buffer, UINT32& size) {
  if (text.data() == nullptr) {
    return EFI_NOT_FOUND;
  }
  if (size < text.size()) {
    size = static_cast<UINT32>(text.size() + unit);
    return EFI_BUFFER_TOO_SMALL;
  }
  if (buffer == nullptr) {
    return EFI_INVALID_PARAMETER;
  }
  const size_t length = text.size() / unit * unit;
  CopyMem(buffer, text.data(), length);
  ZeroMem(static_cast<std::byte*>(buffer) + length, unit);
  return EFI_SUCCESS;
}

/// A text of a table whose texts have `unit` bytes a character.
EFI_STATUS GetText(const AttributeAccessProtocol* self, ServiceTable table, size_t unit, UINT16 handle, void* buffer,
                   UINT32* size) {
  if (self == nullptr || size == nullptr) {
    return EFI_INVALID_PARAMETER;
  }
  const EFI_STATUS status = EnsureTable(mAccess, table);
  if (EFI_ERROR(status)) {
    return status;
  }
  TableWalk walk(mAccess[table]);
  if (table != ServiceTable::Strings) {
    walk.Reader().Take(walk.Reader().Read<UINT16>());  // the header, of no meaning here
  }
  return CopyText(FindText(walk, handle), unit, buffer, *size);
}

/// True when the text up to its first "[" is `name`. An empty text is no name.
bool IsNamed(std::span<const std::byte> text, AsciiView name) {
  size_t length = 0;
  while (length < text.size() && text[length] != std::byte{'['} && text[length] != std::byte{0}) {
    ++length;
  }
  return !text.empty() && SameBytes(text.first(length), std::as_bytes(name));
}

/// Which string handles are that of a name. One walk over the string table, so that a search costs one over each table.
class NamedHandles {
 public:
  NamedHandles() : flags_(AllocateZeroedArray<UINT8>(size_t{MAX_UINT16} + 1)) {}

  [[nodiscard]] bool Ok() const { return flags_ != nullptr; }
  [[nodiscard]] bool Has(UINT16 handle) const { return flags_[handle] == kNamed; }

  /// Of two entries with one handle the first counts.
  void Note(TableWalk strings, AsciiView name) {
    TextEntry entry{};
    while (NextText(strings, entry)) {
      if (flags_[entry.Handle] == 0) {
        flags_[entry.Handle] = IsNamed(entry.Text, name) ? kNamed : kOther;
      }
    }
  }

 private:
  static constexpr UINT8 kOther = 1;
  static constexpr UINT8 kNamed = 2;
  PoolPtr<UINT8[]> flags_;
};

EFI_STATUS FindNamed(AccessState& access, const NamedHandles& names, UINT16& handle) {
  TableWalk walk(access[ServiceTable::Attributes]);
  AttributeEntry entry{};
  while (NextAttribute(walk, entry)) {
    if (names.Has(entry.NameHandle)) {
      handle = entry.Handle;
      return EFI_SUCCESS;
    }
    if (entry.Part.empty()) {
      return EFI_UNSUPPORTED;
    }
  }
  return EFI_INVALID_PARAMETER;  // callers know it as "no such name"
}

/// Goes through the attribute table and writes as many handles as there is room for. False with one of unknown type.
bool WalkHandles(AccessState& access, std::span<UINT16> room, size_t& count) {
  TableWalk walk(access[ServiceTable::Attributes]);
  AttributeEntry entry{};
  for (count = 0; NextAttribute(walk, entry); ++count) {
    if (entry.Part.empty()) {
      return false;
    }
    if (count < room.size()) {
      room[count] = entry.Handle;
    }
  }
  return true;
}

}  // namespace

EFI_STATUS EFIAPI GetAttributeString(AttributeAccessProtocol* self, UINT16 handle, CHAR8* buffer, UINT32* size) {
  return GetText(self, ServiceTable::Strings, sizeof(CHAR8), handle, buffer, size);
}

EFI_STATUS EFIAPI FindAttributeHandle(AttributeAccessProtocol* self, const CHAR8* name, UINT16* handle) {
  if (self == nullptr || handle == nullptr) {
    return EFI_INVALID_PARAMETER;
  }
  const EFI_STATUS status = EnsureTable(mAccess, ServiceTable::Attributes);
  if (EFI_ERROR(status)) {
    return status;
  }
  if (!TableWalk(mAccess[ServiceTable::Attributes]).More()) {
    return EFI_INVALID_PARAMETER;  // the service lists no attribute table, or an empty one
  }
  NamedHandles names;
  if (!names.Ok()) {
    return EFI_OUT_OF_RESOURCES;
  }
  if (name != nullptr) {
    IgnoreStatus(EnsureTable(mAccess, ServiceTable::Strings));  // without it no attribute has a name
    names.Note(TableWalk(mAccess[ServiceTable::Strings]), {name, AsciiLength(name)});
  }
  return FindNamed(mAccess, names, *handle);
}

EFI_STATUS EFIAPI GetTextStringB(AttributeAccessProtocol* self, UINT32 handle, CHAR16* buffer, UINT32* size) {
  return GetText(self, ServiceTable::Display, sizeof(CHAR16), static_cast<UINT16>(handle), buffer, size);
}

EFI_STATUS EFIAPI GetTextStringA(AttributeAccessProtocol* self, UINT32 handle, CHAR16* buffer, UINT32* size) {
  return GetText(self, ServiceTable::Help, sizeof(CHAR16), static_cast<UINT16>(handle), buffer, size);
}

EFI_STATUS EFIAPI GetAttributeHandles(AttributeAccessProtocol* self, UINT16* handles, UINT32* size) {
  if (self == nullptr || size == nullptr) {
    return EFI_INVALID_PARAMETER;
  }
  const EFI_STATUS status = EnsureTable(mAccess, ServiceTable::Attributes);
  if (EFI_ERROR(status)) {
    return status;
  }
  size_t count = 0;
  const bool known = WalkHandles(mAccess, {}, count);
  if (known && *size < count * sizeof(*handles)) {
    *size = static_cast<UINT32>((count + 1) * sizeof(*handles));
    return EFI_BUFFER_TOO_SMALL;
  }
  if (handles == nullptr) {
    return known ? EFI_INVALID_PARAMETER : EFI_UNSUPPORTED;
  }
  if (!WalkHandles(mAccess, {handles, *size / sizeof(*handles)}, count)) {
    return EFI_UNSUPPORTED;
  }
  handles[count] = 0;  // the room for it is the caller's promise
  return EFI_SUCCESS;
}
