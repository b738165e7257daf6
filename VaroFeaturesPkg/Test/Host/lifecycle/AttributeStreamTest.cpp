/** @file
  Tests of the attribute stream.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/DatabaseFixture.hpp"
#include "lifecycle/AttributeStream.hpp"

namespace {

class AttributeStreamTest : public DatabaseFixture {
 protected:
  Bytes Stream() {
    Bytes room(AttributeStreamSize(database));
    EncodeAttributes(database, std::as_writable_bytes(std::span(room)));
    return room;
  }
};

TEST_F(AttributeStreamTest, AnEmptyStoreIsSixteenEmptySlots) {
  EXPECT_EQ(Stream(), Bytes(16, 0xFF));
}

TEST_F(AttributeStreamTest, EncodingsByType) {
  struct Row {
    RecordSpec Spec;
    Bytes Body;
  };
  const Row rows[] = {
      {{.Handle = 1, .Type = 2, .Token = 9, .SubType = 0, .MaxLength = 32, .Installed = 1},
       Join(U8(0), U16(0), U16(32), U16(0), U8(1))},
      {{.Handle = 6, .Type = 4, .Handles = {17, 18}, .SubType = 2, .Order = {1}},
       Join(Bytes{2, 3, 1, 2, 2}, U16(17), U16(18), Bytes{2, 3, 1, 1}, Bytes(19))},
      {{.Type = 0x80,
        .ValueSize = 1,
        .Token = 0x11223344,
        .Handles = {17, 18},
        .Values = {1, 0x8877665544332211},
        .Default = 1},
       Join(U8(2), U16(17), U16(18), U64(1), U64(0x8877665544332211), U8(1), U8(0))},
      {{.Type = 1, .MinLength = 1, .MaxLength = 5, .Text = "abc"}, Join(U8(1), U16(1), U16(5), U16(0), "abc", U8(0))},
      {{.Type = 1}, Join(U8(1), Bytes(6), U8(0))},
      {{.Type = 0x83, .Default = 3, .Current = 4, .Lower = 1, .Upper = 2, .Step = 5},
       Join(U64(1), U64(2), U32(5), U64(3), U64(4))},
      {{.Type = 0x85, .Name = 0x0110, .Handles = {16}}, Join(U16(0x0110), U8(255), U8(0), U8(1), U16(16))},
      {{.Type = 6, .Handles = {16, 17}, .Current = 1}, Join(U8(2), U16(16), U16(17), U8(1))},
  };
  std::map<UINT16, Bytes> slots;
  UINT16 next = 16;
  for (const Row& row : rows) {
    Put(database, row.Spec);
    const UINT16 handle = row.Spec.Handle != 0 ? row.Spec.Handle : next++;
    slots[handle] = Join(handle, row.Spec.Type, row.Spec.Name, row.Spec.ValueSize, row.Spec.Token, row.Body);
  }
  Put(database, {.Type = 7});  // adds to the size alone
  Put(database, {.Type = 0x82});
  Bytes expected;
  for (UINT16 slot = 0; slot < next; ++slot) {
    Append(expected, slots.contains(slot) ? slots[slot] : Bytes{0xFF});
  }
  Append(expected, Join(U16(next + 1U), U8(0x82), Bytes(8), U8(1), Bytes(7), Bytes(11)));
  EXPECT_EQ(Stream(), expected);
}

TEST_F(AttributeStreamTest, SlotsEndAt255) {
  for (int i = 0; i < 256; ++i) {
    Put(database, {.Type = 0x86});
  }
  const Bytes whole = Stream();
  EXPECT_EQ(whole.size(), 16U + 240 * 13);
  EXPECT_EQ(whole[whole.size() - 13], 255);
}

}  // namespace
