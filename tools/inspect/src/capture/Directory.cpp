/** @file
  The table directory and the table descriptors, as plain values.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "capture/Directory.hpp"

#include <algorithm>
#include <numeric>

#include "capture/FieldReader.hpp"
#include "capture/Layout.hpp"
#include "bytes/Wire.hpp"

namespace corvane::inspect {
namespace {

template <typename Entry>
void ReadEach(Bytes bytes, std::vector<Entry>& entries) {
  ByteReader reader(bytes);
  FieldReader fields(reader);
  for (Entry& entry : entries) {
    Fields(fields, entry);
  }
}

}  // namespace

std::optional<Directory> DecodeDirectory(Bytes payload, Findings& findings) {
  ByteReader reader(payload);
  const auto wire = reader.Read<TableDirectory>();
  if (!reader.Ok() || reader.Left() > 0) {
    findings.Add("directory-length", "the directory has {} bytes, not {}", payload.size(), sizeof(TableDirectory));
    return std::nullopt;
  }
  Directory directory;
  directory.Signature.assign(std::begin(wire.Signature), std::end(wire.Signature));
  directory.Content.assign(std::begin(wire.Content), std::end(wire.Content));
  directory.Version = wire.Version;
  directory.Length = wire.Length;
  const Bytes summed = payload.first(std::min<std::size_t>(directory.Length, payload.size()));
  directory.Sum = std::accumulate(summed.begin(), summed.end(), std::uint8_t{0},
                                  [](std::uint8_t sum, std::uint8_t byte) -> std::uint8_t { return sum + byte; });
  directory.Entries.resize(std::min<std::size_t>(wire.EntryCount, TABLE_DIRECTORY_ENTRY_CAPACITY));
  ReadEach(payload.subspan(offsetof(TableDirectory, Entries)), directory.Entries);
  if (directory.Signature != "$ACI" || directory.Content != "PLDM" || directory.Version != 1) {
    findings.Add("directory-head", "the directory does not begin as \"$ACI\", version 1, \"PLDM\"");
  }
  const std::size_t length = offsetof(TableDirectory, Entries) + sizeof(TableDirectoryEntry) * wire.EntryCount;
  if (directory.Length != length) {
    findings.Add("directory-length", "the directory announces {} bytes for {} entries, not {}", directory.Length,
                 wire.EntryCount, length);
  }
  if (directory.Sum != 0) {
    findings.Add("directory-checksum", "the bytes of the directory sum to {}, not 0", directory.Sum);
  }
  return directory;
}

std::optional<std::vector<Descriptor>> DecodeDescriptors(Bytes payload, Findings& findings) {
  if (payload.size() != TABLE_DESCRIPTOR_COUNT * sizeof(TableDescriptor)) {
    findings.Add("descriptors-length", "the descriptors have {} bytes, not {}", payload.size(),
                 TABLE_DESCRIPTOR_COUNT * sizeof(TableDescriptor));
    return std::nullopt;
  }
  std::vector<Descriptor> descriptors(TABLE_DESCRIPTOR_COUNT);
  ReadEach(payload, descriptors);
  return descriptors;
}

}  // namespace corvane::inspect
