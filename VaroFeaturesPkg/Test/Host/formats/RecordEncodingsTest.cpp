/** @file
  Tests of how records of every type are laid out: in attribute and value table, attribute stream and cache.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/DatabaseFixture.hpp"

namespace {

using RecordEncodingsTest = DatabaseFixture;

TEST_F(RecordEncodingsTest, Encoding_OfEachType_HasTheExpectedBytes) {
  // What follows the head: handle, type and name in the attribute table, handle and type in the value table, the whole
  // head in stream and cache.
  struct Row {
    RecordSpec Spec;
    Bytes Attribute;
    std::optional<Bytes> Value;
    Bytes Stream;
    std::optional<Bytes> Cached{};  ///< when it is not as in the stream
  };
  const UINT64 large = 0x8877665544332211;
  const Bytes integer = Join(U64(1), large, U32(5), U64(3));
  const Row rows[] = {
      {{.Handle = 1, .Type = 2, .Name = 16, .Token = 9, .SubType = 0, .MinLength = 1, .MaxLength = 32, .Installed = 1},
       Join(U8(0), U16(1), U16(32), U16(0)),
       Bytes(2),
       Join(U8(0), U16(1), U16(32), U16(0), U8(1))},
      {{.Handle = 2, .Type = 2, .SubType = 0}, Bytes(7), std::nullopt, Bytes(8)},
      {{.Handle = 6, .Type = 4, .Name = 20, .Handles = {21, 0x1234}, .SubType = 2, .Order = {1}},
       Join(Bytes{2, 3, 1, 2, 2}, U16(21), U16(0x1234)),
       Bytes{2, 3, 1, 1},
       Join(Bytes{2, 3, 1, 2, 2}, U16(21), U16(0x1234), Bytes{2, 3, 1, 1}, Bytes(19))},
      {{.Type = 0x80,
        .Name = 16,
        .ValueSize = 1,
        .Token = 0x11223344,
        .Handles = {17, 0x1234},
        .Values = {1, large},
        .Default = 1},
       Join(U8(2), U16(17), U16(0x1234), U8(1), U8(1)),
       Bytes{1, 0},
       Join(U8(2), U16(17), U16(0x1234), U64(1), large, U8(1), U8(0))},
      {{.Type = 0}, {0, 1, 0}, Bytes{1, 0}, Bytes(3)},
      {{.Type = 1, .Token = 9752, .MinLength = 1, .MaxLength = 0x102, .DefaultLength = 3, .Text = "abc"},
       Join(U8(1), U16(1), U16(0x102), U16(3)),
       Join(U16(3), "abc"),
       Join(U8(1), U16(1), U16(0x102), U16(3), "abc", U8(0)),
       Join(U8(1), U16(1), U16(0x102), U16(3), U16(3), "abc")},
      {{.Type = 0x81}, Join(U8(1), Bytes(6)), Bytes(2), Join(U8(1), Bytes(7)), Join(U8(1), Bytes(8))},
      {{.Type = 0x83, .ValueSize = 2, .Default = 3, .Current = large + 1, .Lower = 1, .Upper = large, .Step = 5},
       integer,
       Join(large + 1),
       Join(integer, large + 1)},
      {{.Type = 0x85, .Name = 0x0117, .Handles = {16, 0x0110}},
       Join(U16(0x0117), U8(255), U8(0)),
       Join(U8(2), U16(16), U16(0x0110)),
       Join(U16(0x0117), U8(255), U8(0), U8(2), U16(16), U16(0x0110))},
      {{.Type = 6, .Handles = {25, 26}, .Current = 1},
       Join(U8(2), U16(25), U16(26)),
       Bytes{1},
       Join(U8(2), U16(25), U16(26), U8(1))},
      {{.Type = 0x87}, {}, Bytes(), {}},  // adds eleven bytes to the stream's size alone
      {{.Type = 0x82}, Join(U8(1), Bytes(6)), std::nullopt, Join(U8(1), Bytes(7))},
  };
  Bytes attributes;
  Bytes values;
  Bytes stream;
  Bytes cached;
  UINT16 slot = 0;
  for (const Row& row : rows) {
    const UINT16 handle = Put(database, row.Spec)->Handle;
    const Bytes head = Join(handle, row.Spec.Type, row.Spec.Name, row.Spec.ValueSize, row.Spec.Token);
    const UINT8 type = row.Spec.Type & 0x7F;
    Append(attributes, Join(handle, row.Spec.Type, row.Spec.Name, row.Attribute));
    Append(values, row.Value ? Join(handle, row.Spec.Type, *row.Value) : Bytes());
    Append(stream, Join(Bytes(handle - slot, 0xFF), type == 7 ? Bytes() : Join(head, row.Stream)));
    Append(cached, type == 4 || type == 7 ? Bytes() : Join(head, row.Cached.value_or(row.Stream)));
    slot = static_cast<UINT16>(handle + 1);
  }
  BuildTables();
  EXPECT_EQ(Entries(TABLE_ATTRIBUTES), attributes);
  EXPECT_EQ(Entries(TABLE_VALUES), values);
  EXPECT_EQ(descriptors[TABLE_ATTRIBUTES].EntryCount, std::size(rows));
  EXPECT_EQ(descriptors[TABLE_VALUES].EntryCount, std::size(rows) - 2);
  EXPECT_EQ(Stream(), Join(stream, Bytes(11)));
  WriteOut();
  EXPECT_EQ(ReferenceDecompress(Cached(u"" ATTRIBUTE_CACHE_ATTRIBUTES_DATA)), cached);
}

TEST_F(RecordEncodingsTest, Stream_HasAllSlotsBelow256) {
  EXPECT_EQ(Stream(), Bytes(16, 0xFF));
  for (int i = 0; i < 256; ++i) {
    Put(database, {.Type = 0x86});
  }
  const Bytes whole = Stream();
  EXPECT_EQ(whole.size(), 16U + 240 * 13);
  EXPECT_EQ(whole[whole.size() - 13], 255);
  EXPECT_EQ(uefi.Warnings("cut before handle 256: 16 slots are left out"), 1U);
}

}  // namespace
