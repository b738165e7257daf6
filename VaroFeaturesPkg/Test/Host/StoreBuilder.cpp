/** @file
  Builds records and strings straight into an AttributeDatabase.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/StoreBuilder.hpp"

#include "Host/TestBytes.hpp"

namespace {

template <typename T>
PoolPtr<T[]> CopyOf(std::span<const T> elements) {
  PoolPtr<T[]> copy = AllocateZeroedArray<T>(elements.size());
  std::copy(elements.begin(), elements.end(), copy.get());
  return copy;
}

PoolPtr<CHAR16[]> CopyOf(std::u16string_view text) {
  const Ucs2String terminated = Ucs2(text);
  return CopyOf(std::span(terminated.c_str(), text.size() + 1));
}

/// The parts of a type's body before and after the pointers to its arrays.
struct Body {
  Bytes Fixed{};
  Bytes Tail{};
};

Body BodyOf(const RecordSpec& spec) {
  const auto count = static_cast<UINT8>(spec.Handles.size());
  const auto current = static_cast<UINT8>(spec.Current);
  const Bytes lengths = Join(spec.SubType, spec.MinLength, spec.MaxLength, spec.DefaultLength);
  switch (PLDM_BIOS_ATTRIBUTE_BASE_TYPE(spec.Type)) {
    case PLDM_BIOS_ATTRIBUTE_ENUMERATION:
      return {{count}, {static_cast<UINT8>(spec.Default), current}};
    case PLDM_BIOS_ATTRIBUTE_STRING:
      return {lengths};
    case PLDM_BIOS_ATTRIBUTE_PASSWORD:
      return {Join(lengths, spec.Installed)};
    case PLDM_BIOS_ATTRIBUTE_INTEGER:
      return {Join(spec.Lower, spec.Upper, spec.Step, spec.Default, spec.Current)};
    case PLDM_BIOS_ATTRIBUTE_BOOT_CONFIG_SETTING:
      return {{spec.SubType, spec.Modes, 1, count, count},
              Join(spec.SubType, spec.Modes, static_cast<UINT8>(spec.Order.size()), spec.Order)};
    case PLDM_BIOS_ATTRIBUTE_COLLECTION:
      return {Join(spec.Name, UINT8{255}, UINT8{0}, count)};
    default:
      return {{count}, {current}};
  }
}

}  // namespace

AttributeRecord* Put(AttributeDatabase& database, const RecordSpec& spec) {
  const AttributeRecord head{spec.Handle, spec.Type, spec.Name, spec.ValueSize, spec.Token};
  RecordShape shape{};
  shape.Size = sizeof(head);
  if (HasKnownType(head)) {
    shape = ShapeOf(head);
  }
  auto* const record = static_cast<AttributeRecord*>(AllocateZeroedBytes(shape.Size));
  *record = head;
  if (HasKnownType(head)) {
    const Body body = BodyOf(spec);
    std::copy(body.Fixed.begin(), body.Fixed.end(), reinterpret_cast<UINT8*>(record + 1));
    std::copy(body.Tail.begin(), body.Tail.end(), reinterpret_cast<UINT8*>(record) + shape.TailBegin);
  }
  if (shape.Handles != 0) {
    SetPointerAt(*record, shape.Handles, CopyOf(std::span(spec.Handles)).release());
  }
  if (shape.Values != 0) {
    SetPointerAt(*record, shape.Values, CopyOf(std::span(spec.Values)).release());
  }
  if (shape.Text != 0 && spec.Text) {
    SetPointerAt(*record, shape.Text, CopyOf(std::span(spec.Text->c_str(), spec.Text->size() + 1)).release());
  }
  if (spec.Handle != 0 && spec.Handle < kFirstHandle) {
    database.PlaceAttribute(OwnedRecord<AttributeRecord>{record}, AttributeHandle{spec.Handle});
  } else {
    database.AddAttribute(OwnedRecord<AttributeRecord>{record});
  }
  return record;
}

StringHandle PutText(AttributeDatabase& database, StringArray array, std::u16string_view text) {
  return database.AddString(array, CopyOf(text), TextKey(Ucs2(text).c_str()).Hash);
}

void PutHelp(AttributeDatabase& database, UINT16 displayHandle, std::u16string_view text) {
  database.PlaceHelp(CopyOf(text), StringHandle{displayHandle});
}

std::string TextOf(const AttributeDatabase& database, StringArray array, UINT16 handle) {
  const CHAR16* const text = database.StoredText(array, StringHandle{handle});
  return text == nullptr ? std::string("(none)") : std::string(text, text + StringLength(text));
}
