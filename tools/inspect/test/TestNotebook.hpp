/** @file
  A capture of the driver's own tables, made of whatever a test says that the driver has gathered.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <cstdint>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Host/StoreBuilder.hpp"
#include "Host/TestBytes.hpp"
#include "database/tables/TableBuilder.hpp"
#include "lifecycle/AttributeStream.hpp"
#include "lifecycle/TableDirectory.hpp"

extern "C" {
#include <Corvane/TransportRecord.h>
}

namespace corvane::inspect {

using Out = ::Bytes;

inline std::vector<std::string> Split(const std::string& list, char separator) {
  std::vector<std::string> parts;
  std::istringstream in(list);
  for (std::string part; std::getline(in, part, separator);) {
    parts.push_back(part);
  }
  return parts;
}

using Payloads = std::array<Out, TRANSPORT_RECORD_COUNT>;

// What a driver has gathered, and what becomes of the records that it sends.
struct Notebook {
  std::vector<std::string> Names = Split(
      "Admin[RegEx:^\\\\x20$]|System|Boot order|Varo:HDD:0001|Varo:USB:0002|SecureBoot|Off[ForceIf:Tpm=Off]|On|"
      "Hour|Asset|Setup|Profile|Office|Travel",
      '|');
  std::vector<std::u16string> Displays{u"Secure Boot", u"Pr\u00FCfung \x4E2D", u""};
  std::vector<RecordSpec> Records{
      {.Handle = 1, .Type = 2, .Name = 16, .SubType = 0, .MaxLength = 32, .Installed = 1},
      {.Handle = 2, .Type = 2, .Name = 17, .SubType = 0, .MaxLength = 32},
      {.Handle = 6, .Type = 4, .Name = 18, .Handles = {19, 20}, .SubType = 2, .Order = {1, 0}},
      {.Name = 21, .Token = 1016, .Handles = {22, 23}, .Values = {66, 69}, .Current = 1},
      {.Type = 3, .Name = 24, .Default = 8, .Current = 300, .Lower = 5, .Upper = MAX_UINT64, .Step = 3},
      {.Type = 0x81, .Name = 25, .MaxLength = 64, .Text = "a\"b\\c\x01\xFF"},
      {.Type = 0x85, .Name = 26, .Handles = {16, 18}},
      {.Type = 6, .Name = 27, .Handles = {28, 29}, .Current = 1},
      {.Type = 0x85, .Name = 26},
  };
  std::function<void(Payloads&)> Damage = [](Payloads&) {};
};

// The attribute lines of the notebook.
inline constexpr const char* kNotebookLines =
    R"(1 Admin[RegEx:^\\x20$] password = installed (default length 0) {0..32}
2 System password = not installed (default length 0) {0..32}
6 Boot order boot-configuration = Varo:USB:0002|Varo:HDD:0001 (default -) {Varo:HDD:0001|Varo:USB:0002}
16 SecureBoot enumeration = On (default Off[ForceIf:Tpm=Off]) {Off[ForceIf:Tpm=Off]|On}
17 Hour integer = 300 (default 8) {5..18446744073709551615 step 3}
18 Asset string ro = "a\x22b\x5Cc\x01\xFF" (default length 0) {0..64}
19 Setup collection ro = SecureBoot|Asset (default -) {-}
20 Profile configuration-set = Travel (default -) {Office|Travel}
21 Setup collection ro = - (default -) {-}
)";

// The value table's, there and in its descriptor.
inline void DamageCrc(Payloads& payloads) {
  payloads[4].back() ^= 4;
  payloads[1][2 * 28 + 24] ^= 4;
}

inline Out Encode(const Notebook& notebook) {
  FakeUefi uefi;
  AttributeDatabase database;
  EXPECT_EQ(database.AllocateStore(), EFI_SUCCESS);
  for (const std::string& name : notebook.Names) {
    PutText(database, StringArray::Names, std::u16string(name.begin(), name.end()));
  }
  for (const std::u16string& text : notebook.Displays) {
    PutText(database, StringArray::Display, text);
  }
  for (const RecordSpec& spec : notebook.Records) {
    Put(database, spec);
  }
  std::array<TableDescriptor, TABLE_DESCRIPTOR_COUNT> descriptors{};
  TableWriter writer{descriptors.data()};
  ValueEntries values{nullptr, false};
  TableBuilder(database, writer, values).BuildTables();
  Payloads payloads{BytesAt(BuildTableDirectory(descriptors.data()), sizeof(TableDirectory)),
                    BytesAt(descriptors.data(), sizeof(descriptors))};
  std::uint8_t type = TRANSPORT_RECORD_STRINGS;
  for (const UINT32 index : kPublishedTables) {
    const auto* const data = reinterpret_cast<const void*>(UINTN{descriptors[index].Data});
    payloads[type++] = BytesAt(data, descriptors[index].Limit);
  }
  Out stream(AttributeStreamSize(database));
  EncodeAttributes(database, std::as_writable_bytes(std::span(stream)));
  payloads[type] = Join(U32(stream.size()), BytesAt(&database.Store()->Header, 32), stream);
  notebook.Damage(payloads);
  Out capture;
  for (type = 0; const Out& payload : payloads) {
    Append(capture, Join(BytesAt(&gVaroTransportRecordGuid, 16), U64(payload.size()), type++, payload));
  }
  return capture;
}

}  // namespace corvane::inspect
