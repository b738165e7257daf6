/** @file
  Publication of the finished tables.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "lifecycle/Publication.hpp"

#include "lifecycle/AttributeStream.hpp"
#include "lifecycle/TableDirectory.hpp"
#include "uefi/Status.hpp"

extern "C" {
#include <Corvane/TransportRecord.h>
}

static_assert(sizeof(TransportRecord) == 25 && sizeof(AttributeStreamHeader) == 36);
static_assert(sizeof(PublishedTablesInterface) == 32);

namespace {

/// One block, which outlives the image: what an unloaded driver has published can still be read.
struct Publication {
  PublishedTablesInterface Interface;
  BootConfigurationState BootConfiguration;
};

EFI_STATUS InstallPublishedTables(DriverState& state, const BootConfigurationState& bootConfiguration) {
  PoolPtr<Publication> publication = AllocateZeroed<Publication>();
  if (!publication) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: gVaroPublishedTablesProtocolGuid not installed: out of memory\n"));
    return EFI_OUT_OF_RESOURCES;
  }
  publication->BootConfiguration = bootConfiguration;
  publication->Interface = {.Directory = state.Directory,
                            .Descriptors = state.Descriptors,
                            .Store = state.Database.Store(),
                            .BootConfiguration = &publication->BootConfiguration};
  EFI_HANDLE handle = nullptr;
  const EFI_STATUS status = gBS->InstallProtocolInterface(&handle, &gVaroPublishedTablesProtocolGuid,
                                                          EFI_NATIVE_INTERFACE, &publication->Interface);
  if (EFI_ERROR(status)) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: gVaroPublishedTablesProtocolGuid not installed: %r\n", status));
    return status;
  }
  state.Published = &publication.release()->Interface;  // to its consumers
  return status;
}

/// A zero-filled record with its header, to be filled and sent.
class OutgoingRecord {
 public:
  OutgoingRecord(UINT8 type, size_t payloadLength)
      : size_(sizeof(TransportRecord) + payloadLength), block_(AllocateZeroedArray<std::byte>(size_)) {
    if (block_) {
      const TransportRecord header{.Guid = gVaroTransportRecordGuid, .PayloadLength = payloadLength, .Type = type};
      CopyMem(block_.get(), &header, sizeof(header));
    }
  }

  /// The payload's place; empty without memory.
  [[nodiscard]] std::span<std::byte> Payload() {
    return block_ ? std::span(block_.get(), size_).subspan(sizeof(TransportRecord)) : std::span<std::byte>{};
  }

  EFI_STATUS Send(TableTransportProtocol* transport) {
    const auto* const record = reinterpret_cast<const TransportRecord*>(block_.get());
    if (record == nullptr) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: transport record dropped: out of memory\n"));
      return EFI_OUT_OF_RESOURCES;
    }
    const UINT64 size = size_;
    const EFI_STATUS status = transport->Send(transport, record, &size);
    if (EFI_ERROR(status)) {
      DEBUG((DEBUG_WARN, "CorvaneDxe: transport record %d not sent: %r\n", record->Type, status));
    }
    return status;
  }

 private:
  size_t size_;
  PoolPtr<std::byte[]> block_;
};

void SendBytes(TableTransportProtocol* transport, UINT8 type, const void* payload, size_t length) {
  OutgoingRecord record(type, length);
  CopyMem(record.Payload().data(), payload, record.Payload().size());
  IgnoreStatus(record.Send(transport));  // the records after it are of use without it
}

void SendTables(TableTransportProtocol* transport, const TableDescriptor* descriptors) {
  UINT8 type = TRANSPORT_RECORD_STRINGS;
  for (const UINT32 index : kPublishedTables) {
    const TableDescriptor& table = descriptors[index];
    SendBytes(transport, type++, reinterpret_cast<const void*>(static_cast<UINTN>(table.Data)), table.Limit);
  }
}

EFI_STATUS SendStream(TableTransportProtocol* transport, const AttributeDatabase& database) {
  const AttributeStreamHeader header{.StreamSize = AttributeStreamSize(database), .Counters = database.Store()->Header};
  OutgoingRecord record(TRANSPORT_RECORD_STREAM, sizeof(header) + header.StreamSize);
  if (const std::span<std::byte> payload = record.Payload(); !payload.empty()) {
    CopyMem(payload.data(), &header, sizeof(header));
    EncodeAttributes(database, payload.subspan(sizeof(header)));
  }
  return record.Send(transport);
}

}  // namespace

EFI_STATUS PublishTables(DriverState& state, const BootConfigurationState& bootConfiguration) {
  const EFI_STATUS installed = InstallPublishedTables(state, bootConfiguration);
  if (state.Transport == nullptr) {
    return installed;
  }
  if (state.Directory != nullptr) {
    SendBytes(state.Transport, TRANSPORT_RECORD_DIRECTORY, state.Directory, sizeof(TableDirectory));
  }
  SendBytes(state.Transport, TRANSPORT_RECORD_DESCRIPTORS, state.Descriptors,
            TABLE_DESCRIPTOR_COUNT * sizeof(TableDescriptor));
  SendTables(state.Transport, state.Descriptors);
  return SendStream(state.Transport, state.Database);
}
