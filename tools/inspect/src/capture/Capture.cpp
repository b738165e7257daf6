/** @file
  Splits a capture into its transport records. Payloads are not decoded here.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "capture/Capture.hpp"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

#include "bytes/Wire.hpp"

namespace corvane::inspect {
namespace {

static_assert(kRecordTypes == TRANSPORT_RECORD_COUNT);

constexpr EFI_GUID kTransportRecordGuid = VARO_TRANSPORT_RECORD_GUID;

// Upper limit for a file. A capture is far smaller: five tables of at most 64 KiB each, and 256 records.
constexpr std::size_t kLargestFile = std::size_t{64} << 20;

constexpr const char* kRecordNames[kRecordTypes] = {"directory",   "descriptors",   "string table", "attribute table",
                                                    "value table", "display table", "help table",   "attribute stream"};

}  // namespace

std::vector<std::uint8_t> ReadFile(const std::filesystem::path& path) {
  const auto fail = [&path](const std::string& reason) { throw UnusableInput(path.string() + ": " + reason); };
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) {
    fail("is a directory");
  }
  const bool isStandardInput = path == "-";
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
      isStandardInput ? stdin : std::fopen(path.c_str(), "rb"),
      isStandardInput ? [](std::FILE*) { return 0; } : std::fclose);
  if (file == nullptr) {
    fail(std::system_category().message(errno));
  }
  std::vector<std::uint8_t> content;
  std::uint8_t block[65536];
  while (const std::size_t count = std::fread(block, 1, sizeof(block), file.get())) {
    if (count > kLargestFile - content.size()) {
      fail("is too large for a capture");
    }
    content.insert(content.end(), block, block + count);
  }
  if (std::ferror(file.get()) != 0) {
    fail(std::system_category().message(errno));
  }
  return content;
}

std::vector<CaptureRecord> ListRecords(Bytes capture, Findings& findings) {
  std::vector<CaptureRecord> records;
  ByteReader reader(capture);
  while (reader.Left() > 0) {
    const std::size_t number = records.size();
    const std::size_t offset = reader.Offset();
    const auto header = reader.Read<::TransportRecord>();
    if (!reader.Ok()) {
      findings.Add("capture-cut", "record {} at offset {} ends within its header", number, offset);
      break;
    }
    const EFI_GUID guid = header.Guid;
    if (std::memcmp(&guid, &kTransportRecordGuid, sizeof(guid)) != 0) {
      findings.Add("capture-framing", "no transport record begins at offset {}", offset);
      break;
    }
    const std::uint64_t length = header.PayloadLength;
    if (length > reader.Left()) {
      findings.Add("capture-cut", "record {} at offset {} announces {} bytes and has {}", number, offset, length,
                   reader.Left());
      break;
    }
    records.push_back({offset, header.Type, reader.Take(static_cast<std::size_t>(length))});
  }
  return records;
}

RecordPayloads SplitCapture(Bytes capture, Findings& findings) {
  RecordPayloads payloads;
  const std::vector<CaptureRecord> records = ListRecords(capture, findings);
  for (std::size_t number = 0; number < records.size(); ++number) {
    const auto& [offset, type, payload] = records[number];
    if (type >= kRecordTypes) {
      findings.Add("record-type", "record {} at offset {} has the unknown type {}", number, offset, type);
    } else if (payloads[type]) {
      findings.Add("record-repeated", "record {} at offset {} is a second {}", number, offset, kRecordNames[type]);
    } else {
      if (type != number) {
        findings.Add("record-order", "record {} at offset {} is the {}, of type {}", number, offset, kRecordNames[type],
                     type);
      }
      payloads[type] = payload;
    }
  }

  for (std::size_t type = 0; type < kRecordTypes; ++type) {
    if (payloads[type]) {
      continue;
    }
    if (type == TRANSPORT_RECORD_STRINGS || type == TRANSPORT_RECORD_ATTRIBUTES || type == TRANSPORT_RECORD_VALUES) {
      if (capture.empty()) {
        throw UnusableInput("the capture is empty");
      }
      const std::string cause = findings.List().empty() ? fmt::format("it ends after {} records", records.size())
                                                        : findings.List().front().Text;
      throw UnusableInput(fmt::format("the capture has no complete {}: {}", kRecordNames[type], cause));
    }
    findings.Add("record-missing", "the capture has no complete {}", kRecordNames[type]);
  }
  return payloads;
}

}  // namespace corvane::inspect
