/** @file
  AttributeRecord: making, owning and taking apart the packed records of Corvane/AttributeRecord.h.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/ByteWriter.hpp"
#include "uefi/Pool.hpp"

extern "C" {
#include <Corvane/AttributeRecord.h>
}

static_assert(sizeof(AttributeRecord) == 11 && offsetof(AttributeRecord, Type) == 2);
static_assert(offsetof(AttributeRecord, NameHandle) == 3 && offsetof(AttributeRecord, Token) == 7);
static_assert(sizeof(EnumerationRecord) == 30 && offsetof(EnumerationRecord, DefaultIndex) == 28);
static_assert(sizeof(StringRecord) == 26 && offsetof(StringRecord, CurrentString) == 18);
static_assert(sizeof(PasswordRecord) == 19 && sizeof(IntegerRecord) == 47);
static_assert(sizeof(BootConfigurationRecord) == 47 && offsetof(BootConfigurationRecord, CurrentBootConfigType) == 24);
static_assert(sizeof(CollectionRecord) == 24 && sizeof(ConfigurationSetRecord) == 21);

enum class AttributeType : UINT8 {
  Enumeration = PLDM_BIOS_ATTRIBUTE_ENUMERATION,
  String = PLDM_BIOS_ATTRIBUTE_STRING,
  Password = PLDM_BIOS_ATTRIBUTE_PASSWORD,
  Integer = PLDM_BIOS_ATTRIBUTE_INTEGER,
  BootConfiguration = PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING,
  Collection = PLDM_BIOS_ATTRIBUTE_COLLECTION,
  ConfigurationSet = PLDM_BIOS_ATTRIBUTE_CONFIG_SET,
};

/// The type without its read-only bit; 7 to 0x7F are no types of this enumeration.
constexpr AttributeType BaseType(const AttributeRecord& record) {
  return AttributeType{PLDM_BIOS_ATTRIBUTE_BASE_TYPE(record.Type)};
}

constexpr bool HasKnownType(const AttributeRecord& record) {
  return BaseType(record) <= AttributeType::ConfigurationSet;
}

/// Where the parts of a record lie, as offsets into it. Serialized, a record is its bytes up to `FixedEnd`, then the
/// elements of its arrays or its text, then its bytes from `TailBegin` to `Size`. An offset of 0 means that there is no
/// such part.
struct RecordShape {
  UINT8 Size;
  UINT8 FixedEnd;
  UINT8 Count;    // number of elements of the arrays
  UINT8 Handles;  // pointer to UINT16 elements
  UINT8 Values;   // pointer to UINT64 elements
  UINT8 Text;     // pointer to ASCII
  UINT8 TailBegin;
};

/// The shape of a record whose type is known.
[[nodiscard]] const RecordShape& ShapeOf(const AttributeRecord& record);

/// How the text of a string record is laid out: terminated, or with its length as UINT16 in front.
enum class TextForm : UINT8 { Terminated, Counted };

/// Serializes a record whose type is known. A null text is laid out as an empty one, but
/// without writing its terminator.
void PutRecord(ByteWriter& writer, const AttributeRecord& record, TextForm textForm);

/// Frees a record and what it owns.
void FreeRecord(AttributeRecord* record);

struct RecordDeleter {
  template <typename T>
  void operator()(T* record) const {
    FreeRecord(reinterpret_cast<AttributeRecord*>(record));
  }
};

/// A record that no store holds yet.
template <typename T>
using OwnedRecord = std::unique_ptr<T, RecordDeleter>;

/// The type that goes with each body.
template <typename T>
constexpr AttributeType kTypeOf = AttributeType::Enumeration;
template <>
inline constexpr AttributeType kTypeOf<StringRecord> = AttributeType::String;
template <>
inline constexpr AttributeType kTypeOf<PasswordRecord> = AttributeType::Password;
template <>
inline constexpr AttributeType kTypeOf<IntegerRecord> = AttributeType::Integer;
template <>
inline constexpr AttributeType kTypeOf<BootConfigurationRecord> = AttributeType::BootConfiguration;
template <>
inline constexpr AttributeType kTypeOf<CollectionRecord> = AttributeType::Collection;
template <>
inline constexpr AttributeType kTypeOf<ConfigurationSetRecord> = AttributeType::ConfigurationSet;

/// A record with this head, whose type is known, and a zero-filled body; or null.
[[nodiscard]] OwnedRecord<AttributeRecord> MakeAttribute(const AttributeRecord& head);

/// A zero-filled record with its type set, or null.
template <typename T>
[[nodiscard]] OwnedRecord<T> MakeRecord(bool readOnly = false) {
  AttributeRecord head{};
  head.Type = static_cast<UINT8>(static_cast<UINT8>(kTypeOf<T>) | (readOnly ? PLDM_BIOS_ATTRIBUTE_READ_ONLY : 0));
  return OwnedRecord<T>{reinterpret_cast<T*>(MakeAttribute(head).release())};
}

/// An enumeration with zero-filled arrays for `count` possible values, or null.
[[nodiscard]] OwnedRecord<EnumerationRecord> MakeEnumeration(UINT8 count, bool readOnly = false);

/// The record without its body's type, as stores take it.
template <typename T>
[[nodiscard]] OwnedRecord<AttributeRecord> AsAttribute(OwnedRecord<T>&& record) {
  return OwnedRecord<AttributeRecord>{reinterpret_cast<AttributeRecord*>(record.release())};
}

/// The record as its body's type; the caller has looked at BaseType.
template <typename T>
const T& As(const AttributeRecord& record) {
  return reinterpret_cast<const T&>(record);
}
template <typename T>
T& As(AttributeRecord& record) {
  return reinterpret_cast<T&>(record);
}

/// Bytes [offset, end) of the record's image.
inline std::span<const std::byte> RecordBytes(const AttributeRecord& record, size_t offset, size_t end) {
  return {reinterpret_cast<const std::byte*>(&record) + offset, end - offset};
}

/// The pointer that the record keeps, unaligned, at `offset`.
template <typename T>
T* PointerAt(const AttributeRecord& record, size_t offset) {
  T* pointer = nullptr;
  CopyMem(&pointer, RecordBytes(record, offset, offset + sizeof(pointer)).data(), sizeof(pointer));
  return pointer;
}
template <typename T>
void SetPointerAt(AttributeRecord& record, size_t offset, T* pointer) {
  CopyMem(reinterpret_cast<std::byte*>(&record) + offset, &pointer, sizeof(pointer));
}

/// The bytes of an array that a record owns; an array without elements may be null.
template <typename T>
std::span<const std::byte> ArrayBytes(const T* elements, size_t count) {
  return elements == nullptr ? std::span<const std::byte>{} : std::as_bytes(std::span(elements, count));
}
