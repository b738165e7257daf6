/** @file
  Image: a decoded capture, with its findings.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "capture/Image.hpp"

#include <limits>

#include "bytes/Text.hpp"
#include "capture/Check.hpp"
#include "bytes/Wire.hpp"

namespace corvane::inspect {
namespace {

// Counts the attribute handles that the table should have. The stream has handles up to 255.
template <typename HasEntry>
void MeasureAgainstStream(const Stream& stream, HasEntry hasEntry, TableFill& fill) {
  std::uint64_t expected = 0;
  for (const StreamRecord& record : stream.Records) {
    const std::uint16_t handle = record.Attribute.Handle;
    const bool isPassword = BaseType{BaseTypeOf(record.Attribute.Type)} == BaseType::Password;
    if (handle == 0 || (fill.Id == TableId::Values && isPassword && !record.PasswordInstalled)) {
      continue;
    }
    ++expected;
    if (!fill.FirstLost && !hasEntry(handle)) {
      fill.FirstLost = handle;
    }
  }
  constexpr std::uint64_t kCountedInStream =
      std::numeric_limits<std::uint8_t>::max() + 1 - ATTRIBUTE_STORE_FIRST_HANDLE;
  if (stream.AttributeCount > kCountedInStream) {
    expected += stream.AttributeCount - kCountedInStream;
  }
  fill.Lost = expected > fill.Entries ? expected - fill.Entries : 0;
}

void MeasureAgainstCount(std::uint64_t count, TableFill& fill) {
  fill.Lost = count > fill.Entries ? count - fill.Entries : 0;
  if (*fill.Lost > 0) {
    fill.FirstLost = static_cast<std::uint16_t>(ATTRIBUTE_STORE_FIRST_HANDLE + fill.Entries);
  }
}

}  // namespace

std::vector<const AttributeEntry*> Image::FindByName(std::string_view name) const {
  std::vector<const AttributeEntry*> found;
  for (const AttributeEntry& attribute : Attributes.Entries) {
    const StringEntry* text = Strings.Find(attribute.NameHandle);
    if (text != nullptr && (text->Text == name || WithoutAnnotations(text->Text) == name)) {
      found.push_back(&attribute);
    }
  }
  return found;
}

const TableFrame* Image::FrameOf(TableId id) const {
  switch (id) {
    case TableId::Strings:
      return &Strings.Frame;
    case TableId::Attributes:
      return &Attributes.Frame;
    case TableId::Values:
      return &Values.Frame;
    case TableId::Display:
      return Display ? &Display->Frame : nullptr;
    case TableId::Help:
      return Help ? &Help->Frame : nullptr;
  }
  return nullptr;
}

std::size_t Image::EntryCountOf(TableId id) const {
  switch (id) {
    case TableId::Strings:
      return Strings.Entries.size();
    case TableId::Attributes:
      return Attributes.Entries.size();
    case TableId::Values:
      return Values.Entries.size();
    case TableId::Display:
      return Display ? Display->Entries.size() : 0;
    case TableId::Help:
      return Help ? Help->Entries.size() : 0;
  }
  return 0;
}

Image DecodeImage(std::vector<std::uint8_t> capture, bool ofCache) {
  Image image;
  image.Capture = std::move(capture);
  image.OfCache = ofCache;
  Findings& findings = image.Findings;
  Findings ofRecords;
  image.Payloads = SplitCapture(image.Capture, ofRecords);
  if (!ofCache) {
    findings = std::move(ofRecords);
  }
  const RecordPayloads& payloads = image.Payloads;
  if (payloads[TRANSPORT_RECORD_DIRECTORY]) {
    image.Directory = DecodeDirectory(*payloads[TRANSPORT_RECORD_DIRECTORY], findings);
  }
  if (payloads[TRANSPORT_RECORD_DESCRIPTORS]) {
    image.Descriptors = DecodeDescriptors(*payloads[TRANSPORT_RECORD_DESCRIPTORS], findings);
  }
  image.Strings = DecodeStringTable(*payloads[TRANSPORT_RECORD_STRINGS], findings);
  image.Attributes = DecodeAttributeTable(*payloads[TRANSPORT_RECORD_ATTRIBUTES], findings);
  image.Values = DecodeValueTable(*payloads[TRANSPORT_RECORD_VALUES], findings);
  if (payloads[TRANSPORT_RECORD_DISPLAY]) {
    image.Display = DecodeTextTable(TableId::Display, *payloads[TRANSPORT_RECORD_DISPLAY], findings);
  }
  if (payloads[TRANSPORT_RECORD_HELP]) {
    image.Help = DecodeTextTable(TableId::Help, *payloads[TRANSPORT_RECORD_HELP], findings);
  }
  if (payloads[TRANSPORT_RECORD_STREAM]) {
    image.Stream = DecodeStream(*payloads[TRANSPORT_RECORD_STREAM], findings);
  }
  CheckImage(image);
  return image;
}

std::vector<TableFill> MeasureFill(const Image& image) {
  std::vector<TableFill> fills;
  for (const TableKind& kind : kTableKinds) {
    const TableFrame* frame = image.FrameOf(kind.Id);
    if (frame == nullptr) {
      continue;
    }
    TableFill fill;
    fill.Id = kind.Id;
    fill.Used = frame->Content.size();
    fill.Entries = image.EntryCountOf(kind.Id);
    fill.CrcOk = frame->CrcOk();
    const Stream* stream = image.Stream && image.Stream->Sound ? &*image.Stream : nullptr;
    if (stream == nullptr) {
      // The next entry would overwrite the pad. The estimate is that no lost entry is larger than the largest one here.
      const std::size_t taken = fill.Used - std::min(fill.Used, frame->Pad);
      fill.MaybeCut = taken > kind.Capacity || kind.Capacity - taken < frame->LargestEntry;
    } else if (kind.Id == TableId::Attributes) {
      MeasureAgainstStream(
          *stream, [&image](auto handle) { return image.Attributes.Find(handle) != nullptr; }, fill);
    } else if (kind.Id == TableId::Values) {
      MeasureAgainstStream(
          *stream, [&image](auto handle) { return image.Values.Find(handle) != nullptr; }, fill);
    } else {
      MeasureAgainstCount(kind.Id == TableId::Strings ? stream->NameCount : stream->DisplayCount, fill);
    }
    fills.push_back(fill);
  }
  return fills;
}

}  // namespace corvane::inspect
