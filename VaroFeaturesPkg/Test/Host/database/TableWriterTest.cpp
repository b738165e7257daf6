/** @file
  Tests of TableWriter.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/DatabaseFixture.hpp"

namespace {

class TableWriterTest : public DatabaseFixture {
 protected:
  TableWriterTest() { writer.InitTableDescriptors(); }
};

TEST_F(TableWriterTest, FinishTable_PadsToFourAndAppendsTheCrc) {
  const std::tuple<Bytes, Bytes, UINT8, UINT32> rows[] = {
      // CRC-32 values as zlib gives them.
      {{}, {0, 0, 0, 0}, 0, 0},
      {{0x10, 0, 1, 0, 'A'}, {0x10, 0, 1, 0, 'A', 0, 0, 0, 0xBF, 0x02, 0x6D, 0xF1}, 3, 0xF16D02BF},
      {{1, 2, 3, 4}, {1, 2, 3, 4, 0xCD, 0xFB, 0x3C, 0xB6}, 0, 0xB63CFBCD},
  };
  for (const auto& [entries, sealed, pad, crc] : rows) {
    writer.InitTableDescriptors();
    const size_t blocks = uefi.LivePoolBlocks();
    ASSERT_EQ(writer.AllocateTable(TABLE_STRINGS), EFI_SUCCESS);
    EXPECT_EQ(writer.AllocateTable(TABLE_STRINGS), EFI_INVALID_PARAMETER);
    ASSERT_EQ(writer.AppendTableBytes(TABLE_STRINGS, Span(entries)), EFI_SUCCESS);
    ASSERT_EQ(writer.CountTableEntry(TABLE_STRINGS), EFI_SUCCESS);
    ASSERT_EQ(writer.FinishTable(TABLE_STRINGS), EFI_SUCCESS);
    EXPECT_EQ(Table(TABLE_STRINGS), sealed);
    const TableDescriptor& table = descriptors[TABLE_STRINGS];
    EXPECT_EQ(BytesAt(&table.Limit, 15),
              Join(U16(static_cast<unsigned>(sealed.size())), U16(7680), U16(0), U16(1), crc, pad, U8(1), U8(0)));
    EXPECT_EQ(uefi.PoolBlocks().at(reinterpret_cast<const void*>(UINTN{table.Data})), sealed.size());
    EXPECT_EQ(uefi.LivePoolBlocks(), blocks + 1);  // the building buffer went back

    // Locked.
    EXPECT_EQ(writer.AppendTableBytes(TABLE_STRINGS, Span({1})), EFI_INVALID_PARAMETER);
    EXPECT_EQ(writer.CountTableEntry(TABLE_STRINGS), EFI_INVALID_PARAMETER);
    EXPECT_EQ(writer.FinishTable(TABLE_STRINGS), EFI_INVALID_PARAMETER);
    EXPECT_EQ(writer.AllocateTable(TABLE_STRINGS), EFI_INVALID_PARAMETER);
  }
}

TEST_F(TableWriterTest, Append_UpToTheCapacity_Succeeds) {
  ASSERT_EQ(writer.AllocateTable(TABLE_VALUES), EFI_SUCCESS);
  EXPECT_EQ(writer.Room(TABLE_VALUES), 2044U);
  EXPECT_EQ(writer.AppendTableBytes(TABLE_VALUES, Span(Bytes(2045, 7))), EFI_SUCCESS);
  EXPECT_EQ(writer.Room(TABLE_VALUES), 0U);  // beyond the limit, below the capacity
  EXPECT_EQ(writer.AppendTableBytes(TABLE_VALUES, Span(Bytes(4))), EFI_OUT_OF_RESOURCES);
  EXPECT_EQ(writer.AppendTableBytes(TABLE_VALUES, Span(Bytes(3, 9))), EFI_SUCCESS);
  EXPECT_EQ(writer.AppendTableBytes(TABLE_VALUES, Span(Bytes(1))), EFI_OUT_OF_RESOURCES);
  // A full table is sealed without pad and checksum.
  EXPECT_EQ(writer.FinishTable(TABLE_VALUES), EFI_SUCCESS);
  EXPECT_EQ(Table(TABLE_VALUES), Join(Bytes(2045, 7), Bytes(3, 9)));
}

TEST_F(TableWriterTest, AppendAsciiFromUcs2_OfAnyLength_WritesAByteForEachCharacter) {
  const Ucs2String text = Ucs2(u"\u0142\u0141bcdefghi");
  for (size_t length = 0; length < text.size(); ++length) {
    Bytes room(12, 0xEE);
    TableWriter::AppendAsciiFromUcs2(Writable(room).data(), Ucs2View(text).first(length));
    EXPECT_EQ(room, Join(std::string_view("BAbcdefghi").substr(0, length), Bytes(12 - length, 0xEE)));
  }
}

TEST_F(TableWriterTest, EveryOperation_WithoutATable_IsRejected) {
  for (TableWriter missing : {writer, TableWriter(nullptr)}) {  // not allocated; no tables at all
    EXPECT_EQ(missing.AppendTableBytes(TABLE_STRINGS, Span({1})), EFI_INVALID_PARAMETER);
    EXPECT_EQ(missing.CountTableEntry(TABLE_STRINGS), EFI_INVALID_PARAMETER);
    EXPECT_EQ(missing.FinishTable(TABLE_STRINGS), EFI_INVALID_PARAMETER);
    EXPECT_EQ(missing.Room(TABLE_STRINGS), 0U);
  }
  TableWriter missing(nullptr);
  missing.InitTableDescriptors();
  EXPECT_EQ(missing.AllocateTable(TABLE_STRINGS), EFI_INVALID_PARAMETER);
}

}  // namespace
