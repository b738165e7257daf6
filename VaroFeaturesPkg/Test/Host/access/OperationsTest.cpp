/** @file
  Tests of the ten operations against a service that may misbehave.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/access/AccessFixture.hpp"
#include "access/service/FetchedTables.hpp"

namespace {

constexpr UINT16 kClass = REQUEST_CLASS_ATTRIBUTES;
const Bytes kFanInteger = Join(U64(10), U64(90), U32(5), U64(50));  // 28 bytes

class OperationsTest : public AccessFixture {
 protected:
  OperationsTest() {
    tables[1].Content = Join(Attribute(16, 0x83, 16, kFanInteger),                                          //
                             Attribute(17, 1, 17, Join(U8(1), U16(0), U16(10), U16(2), U8('d'), U8('d'))),  //
                             Attribute(18, 0, 99, Join(U8(2), U16(20), U16(21), U8(1), U8(0))));
    values = {{16, Join(U64(0x1122334455667788))}, {17, Join(U16(2), U8('o'), U8('k'))}, {18, Join(U8(1), U8(1))}};
    Install();
  }

  /// A record with the given parts, and the handle it asks for.
  static Bytes Record(UINT32 type, unsigned handle, const Bytes& parts) {
    return Join(type, U16(handle), U16(0), parts);
  }
  EFI_STATUS Set(Bytes record, const char* password = nullptr) {
    return protocol->SetAttributeValue(protocol, reinterpret_cast<AttributeInfo*>(record.data()),
                                       static_cast<UINT32>(record.size()), password);
  }
  /// Calls GetAttributeInfo with a record of `size` bytes for a handle. `size` becomes the returned one.
  EFI_STATUS Info(unsigned handle, UINT32& size, Bytes& record) {
    record = Join(U32(0xEEEEEEEE), U16(handle), U16(0xEEEE), Bytes(size > 8 ? size - 8 : 0, 0xEE));
    return protocol->GetAttributeInfo(protocol, reinterpret_cast<AttributeInfo*>(record.data()), &size);
  }
  EFI_STATUS Find(const char* name, UINT16& handle) { return protocol->FindAttributeHandle(protocol, name, &handle); }

  void TearDown() override {
    EXPECT_EQ(Buffer(), Bytes(kSize));  // zeroed after every request
  }
};

TEST_F(OperationsTest, Fetch_AsksForDirectoryAndEachListedTableOnce) {
  tables[7] = {4, 0, Bytes(3)};
  tables[8] = {3, 2, Bytes(3)};
  tables[9] = {3, 0, Join(U16(0))};
  UINT32 size = 0;
  EXPECT_EQ(protocol->GetAttributeString(protocol, 16, nullptr, &size), EFI_BUFFER_TOO_SMALL);
  EXPECT_EQ(protocol->GetAttributeHandles(protocol, nullptr, &size), EFI_BUFFER_TOO_SMALL);
  const auto low = static_cast<UINT32>(reinterpret_cast<UINTN>(mAccess.RequestBuffer) + 92);
  EXPECT_EQ(SentBytes(kClass, 3, 0, 36),
            Join(kClass, U16(3), low, U32(0), U32(0), U32(0), U32(0xFFFFFFFD), U32(0), U32(0), U32(0)));
  EXPECT_EQ(SentBytes(kClass, 3, 92, 104), Join(U32(65440), "DSCIDSCI"));
  std::vector<unsigned> ids;
  for (const Bytes& request : Sent(kClass, 4)) {
    ids.push_back(request[12]);
    EXPECT_EQ(Middle(request, 92, 0), Middle(Sent(kClass, 3)[0], 92, 0));
    EXPECT_EQ(Middle(request, 16, kSize - 20), Bytes(4));
  }
  EXPECT_THAT(ids, ElementsAre(0, 1, 2, 9, 9));  // a text table is announced, even a small one
}

TEST_F(OperationsTest, Fetch_WhenTheDirectoryIsNotAnswered_IsNotReady) {
  struct Row {
    std::function<EFI_STATUS(RequestBlock&)> After;
    EFI_STATUS Status;
  };
  const Row rows[] = {
      {[](RequestBlock&) { return EFI_DEVICE_ERROR; }, EFI_NOT_READY},
      {[](RequestBlock& request) { return request.Results[0] = REQUEST_NOT_HANDLED, EFI_SUCCESS; }, EFI_NOT_READY},
      {[](RequestBlock& request) { return request.PayloadLength = 65445, EFI_SUCCESS; }, EFI_NOT_READY},
      // No entry within the answer: ready, without tables.
      {[](RequestBlock& request) { return request.PayloadLength = 27, EFI_SUCCESS; }, EFI_SUCCESS},
      {[](RequestBlock& request) { return request.PayloadLength = 43, EFI_SUCCESS; }, EFI_SUCCESS},
      {[](RequestBlock& request) { return request.PayloadLength = 0, EFI_SUCCESS; }, EFI_SUCCESS},
  };
  for (const Row& row : rows) {
    Forget();
    after = row.After;
    const bool empty = row.Status == EFI_SUCCESS;
    UINT32 size = 0;
    UINT16 handles[1] = {0xEEEE};
    EXPECT_EQ(protocol->GetAttributeString(protocol, 16, nullptr, &size), empty ? EFI_NOT_FOUND : row.Status);
    EXPECT_EQ(protocol->GetTextStringA(protocol, 16, nullptr, &size), empty ? EFI_NOT_FOUND : row.Status);
    EXPECT_EQ(Find("Fan", handles[0]), empty ? EFI_INVALID_PARAMETER : row.Status);
    EXPECT_EQ(protocol->GetAttributeHandles(protocol, handles, &size), row.Status);
    EXPECT_EQ(handles[0], empty ? 0 : 0xEEEE);
    EXPECT_EQ(Set(Record(3, 16, Bytes(36))), empty ? EFI_SUCCESS : row.Status);
    EXPECT_THAT(Sent(kClass, 4), IsEmpty());
    EXPECT_THAT(Sent(kClass, 3), SizeIs(5));  // asked again by each
  }
  after = nullptr;
  Forget();
  mAccess.Dispatcher = nullptr;
  uefi.LookupStatus[gVaroRequestDispatchProtocolGuid] = EFI_NOT_FOUND;
  UINT16 handle = 0;
  EXPECT_EQ(Find("Fan", handle), EFI_NOT_FOUND);
}

TEST_F(OperationsTest, Fetch_WhenATableIsRefusedOrCut_FindsNoName) {
  for (const UINT32 length : {65445U, 0xFFFFFFFFU, 0U, 3U, 8U, 11U}) {
    Forget();
    after = [length](RequestBlock& request) {
      request.PayloadLength = request.Select == REQUEST_SELECT_TABLE ? length : request.PayloadLength;
      return EFI_SUCCESS;
    };
    UINT16 handle = 0;
    EXPECT_EQ(Find("Fan", handle), EFI_INVALID_PARAMETER) << length;
  }
  for (const size_t nth : {1U, 5U, 6U, 7U}) {  // calling interface, then directory, strings, attributes
    Forget();
    after = nullptr;
    uefi.Fail(Service::Allocation, nth, EFI_OUT_OF_RESOURCES);
    UINT16 handle = 0;
    EXPECT_TRUE(EFI_ERROR(Find("Fan", handle)) || handle == 16) << nth;
  }
}

// Whole up to 65,439 bytes, in chunks from 65,444 on; the count of a table in chunks is four bytes short of its block.
TEST_F(OperationsTest, Fetch_OfATextTable_TakesOneAnswerOrChunks) {
  struct Row {
    size_t Content;
    size_t Chunk;
    size_t Requests;
    std::optional<UINT16> LastText;  ///< the handle of the last entry that can be read
  };
  const Row rows[] = {
      {2 + 8 * 100, 65440, 2, 115},     {65434, 65440, 2, 16 + 8178},    {65444, 65440, 3, 16 + 8179},
      {160002, 65440, 4, 16 + 19999},   {160002, 1000, 162, 16 + 19999}, {160002, 0, 2, std::nullopt},
      {160002, 65441, 2, std::nullopt},  // more than the buffer holds
  };
  for (const Row& row : rows) {
    Forget();
    Bytes content = Join(U16(0));
    for (UINT16 handle = 16; content.size() + 8 <= row.Content; ++handle) {
      Append(content, Entry(handle, std::u16string_view(u"ab")));
    }
    content.resize(row.Content);
    tables[9] = {3, 1, content};
    chunkSize = row.Chunk;
    CHAR16 text[4] = {};
    UINT32 size = sizeof(text);
    const auto last = row.LastText.value_or(16);
    EXPECT_EQ(protocol->GetTextStringB(protocol, last | 0x10000U, text, &size),
              row.LastText ? EFI_SUCCESS : EFI_NOT_FOUND)
        << row.Content;
    EXPECT_EQ(Ucs2String(text), row.LastText ? Ucs2(u"ab") : Ucs2String());
    EXPECT_EQ(Sent(kClass, 4).size() - 3, row.Requests) << row.Content;
  }
  // A chunk beyond the announced length is cut. After a failing chunk, the earlier ones stay.
  Forget();
  chunkSize = 65440;
  after = [](RequestBlock& request) {
    if (request.Select == REQUEST_SELECT_TABLE && request.Arguments[3] >= 130880) {
      request.PayloadLength = 65440;
    }
    return EFI_SUCCESS;
  };
  CHAR16 text[4] = {};
  UINT32 size = sizeof(text);
  EXPECT_EQ(protocol->GetTextStringB(protocol, 16, text, &size), EFI_SUCCESS);
  Forget();
  after = [](RequestBlock& request) {
    return request.Select == REQUEST_SELECT_TABLE && request.Arguments[3] > 0 ? EFI_DEVICE_ERROR : EFI_SUCCESS;
  };
  EXPECT_EQ(protocol->GetTextStringB(protocol, 16, text, &size), EFI_SUCCESS);
  EXPECT_EQ(protocol->GetTextStringB(protocol, 19999, text, &size), EFI_NOT_FOUND);
}

TEST_F(OperationsTest, GetText_WhenOnlyTheTerminatorExceedsTheSize_Succeeds) {
  tables[9] = {3, 0, Join(U16(3), Bytes(3), Entry(16, std::u16string_view(u"Help")), U16(17), U16(3), "abc")};
  struct Row {
    UINT16 Handle;
    UINT32 Size;
    EFI_STATUS Status;
    UINT32 SizeAfter;
    const char16_t* Text;
  };
  const Row strings[] = {
      {16, 2, EFI_BUFFER_TOO_SMALL, 4, u""}, {16, 3, EFI_SUCCESS, 3, u"Fan"}, {15, 9, EFI_NOT_FOUND, 9, u""}};
  for (const Row& row : strings) {
    CHAR8 text[8] = {};
    UINT32 size = row.Size;
    EXPECT_EQ(protocol->GetAttributeString(protocol, row.Handle, text, &size), row.Status);
    EXPECT_EQ(size, row.SizeAfter);
    EXPECT_EQ(Ucs2(row.Text), Ucs2String(text, text + AsciiLength(text)));
  }
  const Row texts[] = {{16, 7, EFI_BUFFER_TOO_SMALL, 10, u""},
                       {16, 8, EFI_SUCCESS, 8, u"Help"},
                       {17, 3, EFI_SUCCESS, 3, u"\x6261"},
                       {18, 9, EFI_NOT_FOUND, 9, u""}};
  for (const Row& row : texts) {
    CHAR16 text[8] = {0, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    UINT32 size = row.Size;
    EXPECT_EQ(protocol->GetTextStringA(protocol, row.Handle, text, &size), row.Status);
    EXPECT_EQ(size, row.SizeAfter);
    EXPECT_EQ(Ucs2String(text), Ucs2(row.Text));
  }
  UINT32 size = 9;
  EXPECT_EQ(protocol->GetAttributeString(protocol, 16, nullptr, &size), EFI_INVALID_PARAMETER);
  EXPECT_EQ(protocol->GetTextStringA(protocol, 16, nullptr, &size), EFI_INVALID_PARAMETER);
}

TEST_F(OperationsTest, FindAttributeHandle_ComparesNamesUpToTheBracket) {
  struct Row {
    const char* Name;
    EFI_STATUS Status;
    UINT16 Handle;
  };
  const Row rows[] = {{"Fan", EFI_SUCCESS, 16},
                      {"Asset", EFI_SUCCESS, 17},
                      {"Asset[RegEx:^x$]", EFI_INVALID_PARAMETER, 0},
                      {"fan", EFI_INVALID_PARAMETER, 0},
                      {"Fa", EFI_INVALID_PARAMETER, 0},
                      {"", EFI_INVALID_PARAMETER, 0},
                      {nullptr, EFI_INVALID_PARAMETER, 0}};
  for (const Row& row : rows) {
    UINT16 handle = 0;
    EXPECT_EQ(Find(row.Name, handle), row.Status) << (row.Name == nullptr ? "null" : row.Name);
    EXPECT_EQ(handle, row.Handle);
  }
  // An unknown type ends the walk after it. Of two strings with one handle, the first counts.
  tables[0].Content = Join(tables[0].Content, Entry(16, std::string_view("Other")), Entry(20, std::string_view("")));
  tables[1].Content =
      Join(Attribute(15, 1, 20, Join(U8(1), U16(0), U16(1), U16(0))), Attribute(16, 7, 16, {}), tables[1].Content);
  Forget();
  UINT16 handle = 0;
  EXPECT_EQ(Find("Fan", handle), EFI_SUCCESS);
  EXPECT_EQ(Find("Other", handle), EFI_UNSUPPORTED);
  uefi.Fail(Service::Allocation, 1, EFI_OUT_OF_RESOURCES);
  EXPECT_EQ(Find("Fan", handle), EFI_OUT_OF_RESOURCES);
  // Without an attribute table the string table is not fetched.
  tables.erase(1);
  tables.erase(0);
  Forget();
  const size_t asked = Sent(kClass, 3).size();
  EXPECT_EQ(Find("Fan", handle), EFI_INVALID_PARAMETER);
  EXPECT_EQ(Sent(kClass, 3).size(), asked + 1);
}

TEST_F(OperationsTest, Release_FreesDisplayTextsFirstAndStringsLast) {
  UINT32 size = 0;
  EXPECT_EQ(protocol->GetAttributeString(protocol, 16, nullptr, &size), EFI_BUFFER_TOO_SMALL);
  static std::vector<const void*> freed;
  static EFI_FREE_POOL freePool;
  freed.clear();
  freePool = gBS->FreePool;
  gBS->FreePool = [](VOID* block) -> EFI_STATUS {
    freed.push_back(block);
    return freePool(block);
  };
  std::vector<const void*> expected;
  for (const ServiceTable table : {ServiceTable::Display, ServiceTable::Help, ServiceTable::Values,
                                   ServiceTable::Attributes, ServiceTable::Strings}) {
    if (mAccess[table].Block != nullptr) {
      expected.push_back(mAccess[table].Block);
    }
  }
  ReleaseFetchedTables(mAccess);
  EXPECT_GE(expected.size(), 3U);
  freed.resize(std::min(freed.size(), expected.size()));
  EXPECT_EQ(freed, expected);
}

TEST_F(OperationsTest, GetAttributeHandles_WhenOnlyTheEndExceedsTheSize_Succeeds) {
  UINT16 handles[5] = {1, 1, 1, 1, 1};
  UINT32 size = 5;
  EXPECT_EQ(protocol->GetAttributeHandles(protocol, handles, &size), EFI_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 8U);
  size = 6;
  EXPECT_EQ(protocol->GetAttributeHandles(protocol, handles, &size), EFI_SUCCESS);
  EXPECT_EQ(size, 6U);
  EXPECT_THAT(handles, ElementsAre(16, 17, 18, 0, 1));
  EXPECT_EQ(protocol->GetAttributeHandles(protocol, nullptr, &size), EFI_INVALID_PARAMETER);
  tables[1].Content = Join(tables[1].Content, Attribute(19, 0x87, 16, {}));
  Forget();
  std::fill(std::begin(handles), std::end(handles), U16(1));
  size = 4;
  EXPECT_EQ(protocol->GetAttributeHandles(protocol, handles, &size), EFI_UNSUPPORTED);
  EXPECT_THAT(handles, ElementsAre(16, 17, 1, 1, 1));  // nothing beyond the size
  for (UINT32 any : {0, 4, 100}) {
    EXPECT_EQ(protocol->GetAttributeHandles(protocol, nullptr, &any), EFI_UNSUPPORTED);
  }
}

// An entry that runs past the block, or begins in its last three bytes, does not count.
TEST_F(OperationsTest, Walk_WhenTheLastEntryIsCut_EndsBeforeIt) {
  const Bytes whole = tables[1].Content;
  for (size_t length = 0; length <= whole.size(); ++length) {
    tables[1].Content = Middle(whole, 0, whole.size() - length);
    Forget();
    UINT32 size = 0;
    const size_t count = length < 33 ? 0 : length < 47 ? 1 : length < 59 ? 2 : 3;
    UINT16 handles[4] = {};
    EXPECT_EQ(protocol->GetAttributeHandles(protocol, handles, &size), count == 0 ? EFI_SUCCESS : EFI_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, count == 0 ? 0 : count * 2 + 2) << length;
  }
}

TEST_F(OperationsTest, GetAttributeInfo_ReadsEveryType) {
  struct Row {
    Bytes Part;
    Bytes Value;
  };
  const Row rows[] = {
      {Join(U8(2), U16(1), U16(2), U8(1), U8(0)), Join(U8(2), U8(1), U8(0))},
      {Join(U8(0), U8(0)), Join(U8(0))},
      {Join(U8(1), U16(0), U16(9), U16(1), U8('d')), Join(U16(0))},
      {Join(U8(1), U16(0), U16(9), U16(0)), Join(U16(3), "abc")},
      {kFanInteger, Join(U64(7))},
      {Join(U32(0), U8(1), U16(3)), Join(U16(0), U8(2), U8(1), U8(0))},
      {Join(U32(0xFF0010)), Join(U8(1), U16(16))},
      {Join(U8(1), U16(3)), Join(U8(0))},
  };
  const unsigned types[] = {0, 0, 1, 2, 3, 4, 5, 6};
  for (size_t i = 0; i < std::size(rows); ++i) {
    for (const unsigned type : {types[i], types[i] | 0x80U}) {
      tables[1].Content = Join(Attribute(9, 3, 1, kFanInteger), Attribute(40, type, 77, rows[i].Part));
      values[40] = rows[i].Value;
      Forget();
      Bytes record;
      UINT32 size = 0;
      EXPECT_EQ(Info(40, size, record), EFI_BUFFER_TOO_SMALL);
      EXPECT_EQ(record, Join(U32(type), U16(40), U16(77)));
      EXPECT_EQ(Info(40, size, record), EFI_SUCCESS);
      EXPECT_EQ(record, Join(U32(type), U16(40), U16(77), rows[i].Part, rows[i].Value)) << type;
    }
  }
  const auto requests = Sent(kClass, 5);
  ASSERT_THAT(requests, SizeIs(3));  // to size it, to size it again, to read it
  const Bytes body = Join(U8(0), U16(0), U32(162), U16(1), U16(2), U16(40), U16(128));
  for (const Bytes& request : requests) {
    EXPECT_EQ(Middle(request, 92, kSize - 104), Join(U32(166), "$ACIPLDM"));
    EXPECT_EQ(Middle(request, 105, kSize - 120), body);
  }
  const auto sum = [](const Bytes& bytes, size_t count) {
    return std::accumulate(bytes.begin() + 96, bytes.begin() + 96 + static_cast<std::ptrdiff_t>(count), 0U) % 256;
  };
  EXPECT_EQ(sum(requests[0], 35), 0U);
  EXPECT_EQ(sum(requests[2], 162), 0U);
}

TEST_F(OperationsTest, GetAttributeInfo_WithoutHandleRoomOrAnswer_LeavesTheRest) {
  Bytes record;
  UINT32 size = 44;
  EXPECT_EQ(Info(1, size, record), EFI_SUCCESS);  // no such handle: the record stays as it was
  EXPECT_EQ(record, Join(U32(0xEEEEEEEE), U16(1), U16(0xEEEE), Bytes(36, 0xEE)));
  size = 20;  // one byte short: the head is there, the rest as it was
  EXPECT_EQ(Info(17, size, record), EFI_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 21U);
  using After = std::function<EFI_STATUS(RequestBlock&)>;
  int asked = 0;
  const After misbehaviours[] = {
      [](RequestBlock&) { return EFI_DEVICE_ERROR; },
      [](RequestBlock& request) { return request.Results[0] = 1, EFI_SUCCESS; },
      [](RequestBlock& request) {  // past the end of the buffer
        std::memset(reinterpret_cast<UINT8*>(&request) + 121, 0xFF, 2);
        return EFI_SUCCESS;
      },
      [&asked](RequestBlock& request) {  // longer when asked again
        return reinterpret_cast<UINT8*>(&request)[121] = static_cast<UINT8>(2 + asked++ % 2), EFI_SUCCESS;
      },
      [&asked](RequestBlock&) { return asked++ % 2 == 0 ? EFI_SUCCESS : EFI_DEVICE_ERROR; },
  };
  for (const After& misbehaviour : misbehaviours) {
    asked = 0;
    after = misbehaviour;
    size = 44;
    EXPECT_EQ(Info(17, size, record), EFI_ABORTED);
  }
  after = nullptr;
  tables[1].Content = Join(Attribute(16, 9, 1, {}), Attribute(17, 6, 2, Join(U8(0))));
  Forget();
  EXPECT_EQ(Info(17, size, record), EFI_UNSUPPORTED);
  EXPECT_EQ(Info(16, size, record), EFI_ABORTED);
  EXPECT_EQ(Middle(record, 0, record.size() - 4), Join(U32(255)));
}

TEST_F(OperationsTest, SetAttributeValue_SendsTheValueAndMapsTheStatus) {
  struct Row {
    Bytes Record;
    Bytes Sent;  ///< from byte 116 on
  };
  const Row rows[] = {
      {Record(3, 16, Join(kFanInteger, U64(60))), Join(U16(16), U16(9), U8(3), U64(60), U8(0))},
      {Record(1, 17, Join(U8(1), U16(0), U16(10), U16(2), "dd", U16(3), "new")),
       Join(U16(17), U16(6), U8(1), U16(3), "new", U8(0))},
      {Record(1, 17, Join(U8(1), U16(0), U16(10), U16(0), U16(0))), Join(U16(17), U16(3), U8(1), U16(0), U8(0))},
      {Record(0, 18, Join(U8(2), U16(20), U16(21), U8(1), U8(0), U8(1), U8(0))),
       Join(U16(18), U16(3), U8(0), U8(1), U8(0), U8(0))},
  };
  for (const Row& row : rows) {
    const auto length = static_cast<UINT32>(row.Sent.size() + 20);
    for (const auto& [answer, expected] : std::map<unsigned, EFI_STATUS>{{0, EFI_SUCCESS},
                                                                         {1, EFI_UNSUPPORTED},
                                                                         {2, EFI_ACCESS_DENIED},
                                                                         {3, EFI_INVALID_PARAMETER},
                                                                         {4, EFI_BUFFER_TOO_SMALL},
                                                                         {5, EFI_ABORTED}}) {
      Forget();
      status = U8(answer);
      EXPECT_EQ(Set(row.Record), row.Record[0] == 1 ? EFI_SUCCESS : expected);  // the status of a string is not read
    }
    EXPECT_EQ(SentBytes(kClass, 6, 92, 104), Join(length, "$ACIPLDM"));
    EXPECT_EQ(SentBytes(kClass, 6, 105, 116 + row.Sent.size()), Join(U8(0), U16(0), length, U16(1), U16(2), row.Sent));
    const Bytes summed = SentBytes(kClass, 6, 96, 96 + length);
    EXPECT_EQ(std::accumulate(summed.begin(), summed.end(), 0U) % 256, 0U);
    status = 0;
    after = [](RequestBlock& request) { return request.Results[0] = request.Select == 6 ? 1 : 0, EFI_SUCCESS; };
    EXPECT_EQ(Set(row.Record), EFI_ABORTED);
    after = [](RequestBlock& request) { return request.Select == 6 ? EFI_DEVICE_ERROR : EFI_SUCCESS; };
    EXPECT_EQ(Set(row.Record), EFI_SUCCESS);  // the status of the delivery does not count
    after = nullptr;
    // A record that is shorter than what would be sent.
    for (size_t cut = 1; cut <= row.Record.size() - 8; ++cut) {
      EXPECT_EQ(Set(Middle(row.Record, 0, cut)), EFI_BUFFER_TOO_SMALL) << cut;
    }
  }
}

TEST_F(OperationsTest, SetAttributeValue_WithAWrongRecord_SendsNothing) {
  UINT32 ready = 0;
  EXPECT_EQ(protocol->GetAttributeHandles(protocol, nullptr, &ready), EFI_BUFFER_TOO_SMALL);
  struct Row {
    Bytes Record;
    EFI_STATUS Status;
  };
  const Row rows[] = {
      {Record(2, 17, Bytes(40)), EFI_ABORTED},
      {Record(0x80, 18, Bytes(40)), EFI_ABORTED},
      {Record(0x83, 16, Bytes(40)), EFI_ABORTED},
      {Record(255, 16, Bytes(40)), EFI_ABORTED},
      {Record(0x100, 16, Bytes(40)), EFI_ABORTED},
      {Record(3, 16, {}), EFI_BUFFER_TOO_SMALL},
      {Record(0, 18, Join(U8(2), U32(0), U8(1), U8(0), U8(1), U8(0), U8(0))), EFI_BUFFER_TOO_SMALL},  // a byte too long
      {Record(0, 99, Join(U8(2), U32(0), U8(1), U8(0), U8(1), U8(0))), EFI_BUFFER_TOO_SMALL},         // no such handle
      {Record(1, 17, Join(U8(1), U16(0), U16(0), U16(0), U16(65413), Bytes(65413))), EFI_INVALID_PARAMETER},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Set(row.Record, "secret"), row.Status);
    EXPECT_THAT(Sent(kClass, 6), IsEmpty());
  }
  EXPECT_EQ(Set(Record(1, 17, Join(U8(1), U16(0), U16(0), U16(0), U16(65412), Bytes(65412)))), EFI_SUCCESS);
}

TEST_F(OperationsTest, GetAttributeValueByName_SendsTheNameAndReadsTheAnswer) {
  namedValue = Join("Enabled");
  UINT8 value[8] = {0, 0, 0, 0, 0, 0, 0, 0xEE};
  UINT32 size = 6;
  EXPECT_EQ(protocol->GetAttributeValueByName(protocol, "Fan", value, &size), EFI_BUFFER_TOO_SMALL);
  EXPECT_EQ(size, 7U);
  EXPECT_EQ(protocol->GetAttributeValueByName(protocol, "Fan", nullptr, &size), EFI_INVALID_PARAMETER);
  Forget();
  EXPECT_EQ(protocol->GetAttributeValueByName(protocol, "Fan", value, &size), EFI_SUCCESS);
  EXPECT_EQ(BytesAt(value, 8), Join("Enabled", U8(0xEE)));
  EXPECT_EQ(SentBytes(kClass, 5, 92, 104), Join(U32(166), "$ACIPLDM"));
  EXPECT_EQ(SentBytes(kClass, 5, 105, 124),
            Join(U8(1), U16(0), U32(162), U16(1), U16(5), U16(3), "Fan", U16(130), Bytes(1)));
  const Bytes summed = SentBytes(kClass, 5, 96, 96 + 27);
  EXPECT_EQ(std::accumulate(summed.begin(), summed.end(), 0U) % 256, 0U);

  const auto get = [&](const std::string& name) {
    return protocol->GetAttributeValueByName(protocol, name.c_str(), value, &size);
  };
  const EFI_STATUS statuses[] = {EFI_SUCCESS,           EFI_UNSUPPORTED,      EFI_ACCESS_DENIED,
                                 EFI_INVALID_PARAMETER, EFI_BUFFER_TOO_SMALL, EFI_ABORTED};
  for (status = 0; status < 6; ++status) {
    EXPECT_EQ(get("Fan"), statuses[status]);
  }
  status = 0;
  EXPECT_EQ(get(std::string(65417, 'n')), EFI_INVALID_PARAMETER);
  after = [](RequestBlock&) { return EFI_DEVICE_ERROR; };
  EXPECT_EQ(get("Fan"), EFI_DEVICE_ERROR);
  after = [](RequestBlock& request) { return request.Results[0] = 1, EFI_SUCCESS; };
  EXPECT_EQ(get("Fan"), EFI_ABORTED);
  after = [](RequestBlock& request) {
    std::memset(reinterpret_cast<UINT8*>(&request) + 123, 0xFF, 2);
    return EFI_SUCCESS;
  };
  EXPECT_EQ(get("Fan"), EFI_ABORTED);  // a length past the buffer
}

TEST_F(OperationsTest, SetAttributeValueByName_SendsTextAndMapsTheStatus) {
  const auto set = [&](const std::string& name, const std::string& value) {
    return protocol->SetAttributeValueByName(protocol, name.c_str(), value.c_str(), nullptr);
  };
  const EFI_STATUS statuses[] = {EFI_SUCCESS,           EFI_UNSUPPORTED,      EFI_ACCESS_DENIED,
                                 EFI_INVALID_PARAMETER, EFI_BUFFER_TOO_SMALL, EFI_ABORTED};
  for (status = 0; status < 6; ++status) {
    Forget();
    EXPECT_EQ(set("Fan", "60"), statuses[status]);
  }
  status = 0;
  EXPECT_EQ(SentBytes(kClass, 6, 92, 104), Join(U32(166), "$ACIPLDM"));
  EXPECT_EQ(SentBytes(kClass, 6, 105, 128),
            Join(U8(1), U16(0), U32(162), U16(1), U16(5), U16(3), "Fan", U16(4), U16(2), "60", U8(0)));
  const Bytes summed = SentBytes(kClass, 6, 96, 96 + 31);
  EXPECT_EQ(std::accumulate(summed.begin(), summed.end(), 0U) % 256, 0U);
  after = [](RequestBlock& request) {
    return request.Results[0] = request.Class == kClass ? 1U : 0U, EFI_DEVICE_ERROR;
  };
  EXPECT_EQ(set("Fan", ""), EFI_SUCCESS);  // neither counts
  EXPECT_EQ(set(std::string(65400, 'n'), std::string(13, 'v')), EFI_SUCCESS);
  EXPECT_EQ(set(std::string(65400, 'n'), std::string(14, 'v')), EFI_INVALID_PARAMETER);
}

TEST_F(OperationsTest, Password_BecomesTheKeyOfTheFirstServiceThatVerifiesIt) {
  struct Row {
    const char* Password;
    UINT32 System;  ///< properties: the low byte 0 = installed, then the longest length
    UINT32 Admin;
    std::vector<unsigned> Verified;  ///< classes that judged it
    UINT32 Key;
  };
  const std::string longest(32, 'p');
  const Row rows[] = {
      {"admin", 0x2000, 0x2000, {10}, 0xC0DE000A},
      {"system", 0x2000, 0x2000, {10, 9}, 0xC0DE0009},
      {"wrong", 0x2000, 0x2000, {10, 9}, 0},
      {"system", 0x2000, 0x2001, {9}, 0xC0DE0009},
      {"system", 0x2000, 0x0500, {9}, 0xC0DE0009},
      {"system", 0x0500, 0x2000, {10}, 0},
      {"admin", 0x2001, 0x2001, {}, 0},
      {"", 0x2000, 0x2000, {10, 9}, 0},
  };
  passwords = {{9, "system"}, {10, "admin"}};
  for (const Row& row : rows) {
    for (const bool byName : {false, true}) {
      Forget();
      passwordProperties = {{9, row.System}, {10, row.Admin}};
      EXPECT_EQ(byName ? protocol->SetAttributeValueByName(protocol, "Fan", "1", row.Password)
                       : Set(Record(3, 16, Join(kFanInteger, U64(60))), row.Password),
                EFI_SUCCESS);
      EXPECT_EQ(SentBytes(kClass, 6, 8, 12), Join(row.Key)) << row.Password;
      std::vector<unsigned> verified;
      for (const UINT16 passwordClass : std::initializer_list<UINT16>{10, 9}) {
        EXPECT_EQ(SentBytes(passwordClass, 3, 4, 20), Join(U32(1), Bytes(12)));
        for (const Bytes& request : Sent(passwordClass, 4)) {
          verified.push_back(passwordClass);
          EXPECT_EQ(Middle(request, 92, kSize - 92 - std::strlen(row.Password) - 1), Join(row.Password, U8(0)));
          EXPECT_EQ(Middle(request, 8, kSize - 20), Bytes(12));
        }
      }
      EXPECT_EQ(verified, row.Verified) << row.Password;
      EXPECT_EQ(Buffer(), Bytes(kSize));
    }
  }
  // A class that does not answer, or cannot be reached, gives no key.
  for (const auto& [requestClass, select] : std::map<unsigned, unsigned>{{9, 3}, {10, 3}}) {
    for (const bool delivered : {true, false}) {
      Forget();
      after = [&, c = requestClass, s = select](RequestBlock& request) {
        const bool meant = request.Class == c && request.Select == s;
        request.Results[0] = meant && delivered ? 1 : request.Results[0];
        return meant && !delivered ? EFI_DEVICE_ERROR : EFI_SUCCESS;
      };
      EXPECT_EQ(protocol->SetAttributeValueByName(protocol, "Fan", "1", "admin"), EFI_SUCCESS);
      EXPECT_EQ(SentBytes(kClass, 6, 8, 12), Bytes(4));
    }
  }
  Forget();
  after = [](RequestBlock& request) {
    return request.Select == 4 && request.Class == 10 ? EFI_DEVICE_ERROR : EFI_SUCCESS;
  };
  EXPECT_EQ(protocol->SetAttributeValueByName(protocol, "Fan", "1", "system"), EFI_SUCCESS);
  EXPECT_EQ(SentBytes(kClass, 6, 8, 12), Bytes(4));
  EXPECT_THAT(Sent(9, 4), IsEmpty());
}

TEST_F(OperationsTest, Operation_WithoutThisOrArguments_IsRejected) {
  AttributeAccessProtocol& p = *protocol;
  UINT32 size = 0;
  UINT16 handle = 0;
  AttributeInfo info{};
  void* buffer = nullptr;
  const EFI_STATUS missing = EFI_INVALID_PARAMETER;
  EXPECT_EQ(p.GetAttributeString(nullptr, 16, nullptr, &size), missing);
  EXPECT_EQ(p.GetAttributeString(&p, 16, nullptr, nullptr), missing);
  EXPECT_EQ(p.FindAttributeHandle(nullptr, "", &handle), missing);
  EXPECT_EQ(p.FindAttributeHandle(&p, "", nullptr), missing);
  EXPECT_EQ(p.GetTextStringA(nullptr, 16, nullptr, &size), missing);
  EXPECT_EQ(p.GetTextStringB(&p, 16, nullptr, nullptr), missing);
  EXPECT_EQ(p.GetAttributeHandles(nullptr, nullptr, &size), missing);
  EXPECT_EQ(p.GetAttributeHandles(&p, nullptr, nullptr), missing);
  EXPECT_EQ(p.GetAttributeInfo(nullptr, &info, &size), missing);
  EXPECT_EQ(p.GetAttributeInfo(&p, nullptr, &size), missing);
  EXPECT_EQ(p.GetAttributeInfo(&p, &info, nullptr), missing);
  EXPECT_EQ(p.SetAttributeValue(nullptr, &info, 9, nullptr), missing);
  EXPECT_EQ(p.SetAttributeValue(&p, nullptr, 9, nullptr), missing);
  EXPECT_EQ(p.SetAttributeValue(&p, &info, 0, nullptr), missing);
  EXPECT_EQ(p.SetAttributeValue(&p, &info, 8, nullptr), EFI_BUFFER_TOO_SMALL);
  EXPECT_EQ(p.GetRequestBuffer(&p, nullptr, &size), missing);
  EXPECT_EQ(p.GetAttributeValueByName(nullptr, "", nullptr, &size), missing);
  EXPECT_EQ(p.GetAttributeValueByName(&p, nullptr, nullptr, &size), missing);
  EXPECT_EQ(p.GetAttributeValueByName(&p, "", nullptr, nullptr), missing);
  EXPECT_EQ(p.SetAttributeValueByName(nullptr, "", "", nullptr), missing);
  EXPECT_EQ(p.SetAttributeValueByName(&p, nullptr, "", nullptr), missing);
  EXPECT_EQ(p.SetAttributeValueByName(&p, "", nullptr, nullptr), missing);
  EXPECT_THAT(Sent(kClass, 3), IsEmpty());

  EXPECT_EQ(p.GetRequestBuffer(&p, &buffer, &size), EFI_SUCCESS);
  EXPECT_EQ(buffer, mAccess.RequestBuffer);
  EXPECT_EQ(size, 65536U);
  EXPECT_EQ(p.GetRequestBuffer(&p, &buffer, nullptr), EFI_SUCCESS);
  SetMem(buffer, size, 0xEE);                            // a caller may leave any bytes in the buffer
  ZeroMem(mAccess.RequestBuffer->Descriptor.Unused, 8);  // never written
  EXPECT_EQ(p.GetAttributeHandles(&p, nullptr, &size), EFI_INVALID_PARAMETER);  // fetches the tables
  RequestBlock* const kept = std::exchange(mAccess.RequestBuffer, nullptr);
  size = 100;
  info.Handle = 16;
  EXPECT_EQ(p.GetRequestBuffer(&p, &buffer, &size), EFI_OUT_OF_RESOURCES);
  EXPECT_EQ(p.GetAttributeInfo(&p, &info, &size), EFI_ABORTED);
  EXPECT_EQ(Set(Record(3, 16, Join(kFanInteger, U64(1)))), EFI_OUT_OF_RESOURCES);
  EXPECT_EQ(p.GetAttributeValueByName(&p, "Fan", nullptr, &size), EFI_OUT_OF_RESOURCES);
  EXPECT_EQ(p.SetAttributeValueByName(&p, "Fan", "1", "password"), EFI_OUT_OF_RESOURCES);
  mAccess.RequestBuffer = kept;
}

}  // namespace
