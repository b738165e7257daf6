/** @file
  The table directory and the table descriptors, as plain values.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "capture/Directory.hpp"

#include <algorithm>
#include <numeric>

#include "bytes/Wire.hpp"

namespace corvane::inspect {

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
  const std::size_t count = std::min<std::size_t>(wire.EntryCount, TABLE_DIRECTORY_ENTRY_CAPACITY);
  for (std::size_t i = 0; i < count; ++i) {
    const TableDirectoryEntry entry = wire.Entries[i];
    directory.Entries.push_back(
        {entry.TableType, entry.SubType, entry.Format, entry.TableId, entry.Length, entry.AddressLow});
  }
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
  std::vector<Descriptor> descriptors;
  for (ByteReader reader(payload); reader.Left() > 0;) {
    const auto wire = reader.Read<TableDescriptor>();
    descriptors.push_back({wire.Data, wire.TableType, wire.TableIndex, wire.Limit, wire.Capacity, wire.Used,
                           wire.EntryCount, wire.Checksum, wire.PadLength, wire.Finished, wire.Reserved});
  }
  return descriptors;
}

}  // namespace corvane::inspect
