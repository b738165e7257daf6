/** @file
  Tests of the installation and removal of the attribute access protocol, and of what it reads from SMBIOS.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <sys/mman.h>

#include "Host/access/AccessFixture.hpp"

extern "C" {
#include <Guid/SmBios.h>
}

namespace {

class AttributeAccessTest : public AccessFixture {
 protected:
  static EFI_STATUS Install() { return InstallAttributeAccessProtocol(gImageHandle, UnloadAttributeAccess); }
  [[nodiscard]] AttributeAccessProtocol* Installed() const {
    return uefi.Find<AttributeAccessProtocol>(gVaroAttributeAccessProtocolGuid);
  }
};

TEST_F(AttributeAccessTest, Install_WhenAnEarlierInstanceExists_ReplacesIt) {
  ASSERT_EQ(Install(), EFI_SUCCESS);
  EXPECT_EQ(Installed()->Revision, 3U);
  EXPECT_EQ(uefi.LoadedImage.Unload, UnloadAttributeAccess);
  const AccessState first = std::exchange(mAccess, {});
  EFI_LOADED_IMAGE_PROTOCOL second{};
  EFI_HANDLE handle = uefi.Install(gEfiLoadedImageProtocolGuid, &second);
  ASSERT_EQ(InstallAttributeAccessProtocol(handle, UnloadAttributeAccess), EFI_SUCCESS);
  EXPECT_EQ(Installed(), mAccess.Interface);
  const AccessState later = std::exchange(mAccess, first);
  EXPECT_TRUE(EFI_ERROR(UnloadAttributeAccess(gImageHandle)));  // its record is gone: nothing to free
  mAccess = later;
  EXPECT_EQ(UnloadAttributeAccess(handle), EFI_SUCCESS);
  EXPECT_EQ(uefi.LivePoolBlocks(), 2U);  // the two request buffers
}

TEST_F(AttributeAccessTest, Install_WhenTheEarlierInterfaceIsNull_RemovesItToo) {
  EFI_HANDLE earlier = uefi.Install(gVaroAttributeAccessProtocolGuid, nullptr);
  ASSERT_EQ(Install(), EFI_SUCCESS);
  void* interface = nullptr;
  EXPECT_TRUE(EFI_ERROR(gBS->HandleProtocol(earlier, &gVaroAttributeAccessProtocolGuid, &interface)));
  EXPECT_EQ(Installed(), mAccess.Interface);
  EXPECT_EQ(UnloadAttributeAccess(gImageHandle), EFI_SUCCESS);
}

TEST_F(AttributeAccessTest, Unload_FreesTheRecordAndLeavesTheProtocol) {
  ASSERT_EQ(Install(), EFI_SUCCESS);
  UINT32 size = 0;
  EXPECT_EQ(Installed()->GetAttributeString(Installed(), 16, nullptr, &size), EFI_BUFFER_TOO_SMALL);
  EXPECT_EQ(UnloadAttributeAccess(nullptr), EFI_INVALID_PARAMETER);
  EXPECT_EQ(UnloadAttributeAccess(gImageHandle), EFI_SUCCESS);
  EXPECT_EQ(uefi.LivePoolBlocks(), 1U);  // the request buffer
  EXPECT_NE(Installed(), nullptr);
  EXPECT_TRUE(EFI_ERROR(UnloadAttributeAccess(gImageHandle)));  // nothing left to free
}

TEST_F(AttributeAccessTest, Install_WhenACallFails_InstallsTheRest) {
  struct Row {
    Service Of;
    size_t Nth;
    EFI_STATUS Status;
    bool Installed;
    bool Buffer;
  };
  const Row rows[] = {
      {Service::ProtocolLookup, 2, EFI_DEVICE_ERROR, false, false},  // the handles of the earlier instance
      {Service::Registration, 1, EFI_SUCCESS, true, true},           // it cannot be removed
      {Service::Allocation, 1, EFI_OUT_OF_RESOURCES, false, false},
      {Service::Registration, 2, EFI_SUCCESS, false, true},         // its own cannot be installed
      {Service::ProtocolLookup, 3, EFI_DEVICE_ERROR, true, false},  // the loaded image
      {Service::Allocation, 2, EFI_SUCCESS, true, false},
  };
  for (const Row& row : rows) {
    uefi.Reboot();
    mAccess = {};
    uefi.Install(gVaroAttributeAccessProtocolGuid, uefi.GivePool(8));  // an earlier image's
    uefi.Fail(row.Of, row.Nth, row.Status == EFI_SUCCESS ? EFI_DEVICE_ERROR : row.Status);
    EXPECT_EQ(Install(), row.Status);
    void* interface = nullptr;
    const bool installed = !EFI_ERROR(gBS->HandleProtocol(gImageHandle, &gVaroAttributeAccessProtocolGuid, &interface));
    EXPECT_EQ(installed, row.Installed) << row.Nth;
    EXPECT_EQ(mAccess.RequestBuffer != nullptr, row.Buffer) << row.Nth;
  }
}

/// An SMBIOS table below 4 GiB, where its entry point's 32-bit address reaches. It ends with the last readable byte.
class SmbiosTest : public AccessFixture {
 protected:
  SmbiosTest() {
    pages_ = static_cast<std::uint8_t*>(
        mmap(nullptr, 2 * kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_32BIT, -1, 0));
    mprotect(pages_ + kPage, kPage, PROT_NONE);
  }
  ~SmbiosTest() override { munmap(pages_, 2 * kPage); }

  /// Reads the calling interface of a table, and checks that its memory is freed.
  struct Found {
    UINT16 IoAddress;
    UINT32 Capabilities;
    std::vector<unsigned> Tokens;  ///< id * 0x100 + its first byte
    unsigned Structures;
  };
  Found Read(const Bytes& table) {
    std::copy(table.begin(), table.end(), pages_ + kPage - table.size());
    const auto address = static_cast<UINT32>(reinterpret_cast<UINTN>(pages_ + kPage - table.size()));
    entryPoint_ = Join("_SM_", Bytes(18), U16(static_cast<unsigned>(table.size())), address, Bytes(3));
    uefi.SetConfigurationTable({{gEfiGlobalVariableGuidOther, entryPoint_.data()},
                                {gEfiSmbiosTableGuid, nullptr},
                                {gEfiSmbiosTableGuid, entryPoint_.data()}});
    CallingInterfaceInfo* const info = BuildCallingInterfaceInfo();
    Found found{
        info->IoAddress, info->Capabilities, {}, info->Walker == nullptr ? 999U : StructureCount(*info->Walker)};
    for (const CallingInterfaceToken& token : std::span(info->Tokens, info->TokenCount)) {
      found.Tokens.push_back(token.TokenId * 0x100U + token.Data[0]);
    }
    ReleaseCallingInterfaceInfo(info);
    EXPECT_EQ(uefi.LivePoolBlocks(), 0U);
    return found;
  }
  static Bytes Structure(unsigned type, const Bytes& body, std::string_view strings = "") {
    return Join(U8(type), U8(static_cast<unsigned>(4 + body.size())), U16(1), body, strings, U16(0));
  }
  static Bytes Calling(UINT16 address, const Bytes& tokens) {
    return Structure(218, Join(address, U8(0x7C), U32(0x55), tokens));
  }
  static Bytes Token(unsigned id, unsigned data) { return Join(U16(id), U8(data), Bytes(3)); }

  const EFI_GUID gEfiGlobalVariableGuidOther{};

 private:
  static constexpr size_t kPage = 0x10000;
  std::uint8_t* pages_;
  Bytes entryPoint_;
};

TEST_F(SmbiosTest, Tokens_ComeInOrderFromEveryStructure) {
  const Found found = Read(Join(Structure(1, Bytes(8, 1), "a string"), Calling(0xB2, Join(Token(5, 1), Token(3, 2))),
                                Structure(218, Bytes(7)),  // of 11 bytes: no tokens
                                Calling(0xB3, Join(Token(0, 3), Token(5, 4), Token(0xFFFF, 0), Token(1, 5)))));
  EXPECT_EQ(found.IoAddress, 0xB2);
  EXPECT_EQ(found.Capabilities, 0x55U);
  EXPECT_THAT(found.Tokens, ElementsAre(0x302, 0x501, 0x504));
  EXPECT_EQ(found.Structures, 4U);
}

TEST_F(SmbiosTest, Walk_WhenTheTableIsCut_StaysInIt) {
  const Bytes whole = Join(Structure(1, Bytes(8, 1)), Calling(0xB2, Join(Token(5, 1), Token(3, 2))));
  for (size_t cut = 0; cut <= whole.size(); ++cut) {
    const Found found = Read(Middle(whole, 0, cut));
    EXPECT_EQ(found.Structures, cut == 0 ? 2U : cut <= 25 ? 1U : 0U) << cut;
  }
  // A formatted length that reaches beyond structure and table; one that wraps, and finds the first two zero bytes.
  Bytes longer = Calling(0xB2, Token(5, 1));
  longer[1] = 200;
  EXPECT_EQ(Read(longer).Structures, 0U);
  longer[1] = 254;
  EXPECT_EQ(Read(longer).Structures, 3U);
  EXPECT_THAT(Read(longer).Tokens, IsEmpty());              // longer than any structure
  Bytes ragged = Calling(0xB2, Join(Token(5, 1), U16(3)));  // two bytes of a token, and the zeros behind
  EXPECT_THAT(Read(ragged).Tokens, ElementsAre(0x501));
  EXPECT_THAT(Read(Join(ragged, Structure(127, {}))).Tokens, ElementsAre(0x300, 0x501));
}

TEST_F(SmbiosTest, Tokens_OfNestedStructures_AreAtMostAsManyAsTheTableHolds) {
  Bytes table = Structure(1, Bytes(240, 1), "and a string, so that 254 bytes are not more than any structure");
  while (table.size() < 60000) {
    table = Join(table, U8(218), U8(254), U16(0));
  }
  EXPECT_EQ(Read(table).Tokens.size(), table.size() / 6);
}

TEST_F(SmbiosTest, CallingInterface_WithoutTableOrMemory_HasNoAddress) {
  uefi.SetConfigurationTable({});
  for (size_t nth = 1; nth <= 5; ++nth) {
    uefi.Fail(Service::Allocation, nth, EFI_OUT_OF_RESOURCES);
    CallingInterfaceInfo* const info = BuildCallingInterfaceInfo();
    EXPECT_TRUE(info == nullptr || (info->IoAddress == 0 && info->TokenCount == 0));
    ReleaseCallingInterfaceInfo(info);
  }
  EXPECT_EQ(uefi.LivePoolBlocks(), 0U);
}

}  // namespace
