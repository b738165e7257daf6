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

TEST_F(TableWriterTest, SealingPadsToFourAndAppendsTheCrc) {
  struct Row {
    Bytes Entries;
    Bytes Sealed;
    UINT8 Pad;
    UINT32 Crc;
  };
  const Row rows[] = {
      // CRC-32 values as zlib gives them.
      {{}, {0, 0, 0, 0}, 0, 0},
      {{0x10, 0, 1, 0, 'A'}, {0x10, 0, 1, 0, 'A', 0, 0, 0, 0xBF, 0x02, 0x6D, 0xF1}, 3, 0xF16D02BF},
      {{1, 2, 3, 4}, {1, 2, 3, 4, 0xCD, 0xFB, 0x3C, 0xB6}, 0, 0xB63CFBCD},
  };
  for (const Row& row : rows) {
    writer.InitTableDescriptors();
    const size_t blocks = uefi.LivePoolBlocks();
    ASSERT_EQ(writer.AllocateTable(TABLE_STRINGS), EFI_SUCCESS);
    EXPECT_EQ(writer.AllocateTable(TABLE_STRINGS), EFI_INVALID_PARAMETER);
    ASSERT_EQ(writer.AppendTableBytes(TABLE_STRINGS, Span(row.Entries)), EFI_SUCCESS);
    ASSERT_EQ(writer.CountTableEntry(TABLE_STRINGS), EFI_SUCCESS);
    ASSERT_EQ(writer.FinishTable(TABLE_STRINGS), EFI_SUCCESS);
    EXPECT_EQ(Table(TABLE_STRINGS), row.Sealed);
    const TableDescriptor& table = descriptors[TABLE_STRINGS];
    EXPECT_EQ(BytesAt(&table.Limit, 15), Join(U16(static_cast<unsigned>(row.Sealed.size())), U16(7680), U16(0), U16(1),
                                              row.Crc, row.Pad, U8(1), U8(0)));
    EXPECT_EQ(uefi.PoolBlocks().at(reinterpret_cast<const void*>(UINTN{table.Data})), row.Sealed.size());
    EXPECT_EQ(uefi.LivePoolBlocks(), blocks + 1);  // the building buffer went back

    // Locked.
    EXPECT_EQ(writer.AppendTableBytes(TABLE_STRINGS, Span({1})), EFI_INVALID_PARAMETER);
    EXPECT_EQ(writer.AppendAsciiFromUcs2(TABLE_STRINGS, {}), EFI_INVALID_PARAMETER);
    EXPECT_EQ(writer.CountTableEntry(TABLE_STRINGS), EFI_INVALID_PARAMETER);
    EXPECT_EQ(writer.FinishTable(TABLE_STRINGS), EFI_INVALID_PARAMETER);
    EXPECT_EQ(writer.AllocateTable(TABLE_STRINGS), EFI_INVALID_PARAMETER);
  }
}

TEST_F(TableWriterTest, AppendsGoUpToTheCapacityAndNotBeyond) {
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

}  // namespace
