/** @file
  Tests of the boot options and the attribute made of them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/NotebookFixture.hpp"

namespace {

class BootConfigurationTest : public NotebookFixture {
 protected:
  std::string Boot(std::vector<FakeBootOption> options) {
    notebook.BootOptions = std::move(options);
    notebook.Reboot();
    notebook.Boot();
    return Attribute(6);
  }
};

TEST_F(BootConfigurationTest, Sources_AreNamedAndOrderedByPriority) {
  const Bytes end = {0x7F, 0xFF, 4, 0};
  const auto bbs = FakeBootOption::Bbs;
  const std::pair<std::vector<FakeBootOption>, std::string> rows[] = {
      {{}, "boot order"},
      {{{2, true, u"usb", bbs(5)}, {1, false, u"net", bbs(6)}, {0, true, u"disk", bbs(2)}},
       "boot Varo:HDD:0001 Varo:NIC:0002 Varo:USB:0003 order 2 0"},
      // Every device type, three without a name, another kind of node, none, and paths that do not parse.
      {{{0, true, u"a", bbs(1)},
        {0, true, u"b", bbs(3)},
        {0, true, u"c", bbs(4)},
        {0, true, u"d", bbs(0x80)},
        {0, true, u"e", Join(Bytes{4, 4, 8, 0, 2, 0, 0, 0}, end)},
        {0, true, u"f", {}},
        {0, true, u"g", Join(bbs(2), Bytes{1})},
        {0, true, u"h", {5, 1, 3, 0}},
        {0, true, u"i", {5, 1, 9, 0, 2, 0}},
        {0, true, u"j", Join(Bytes{5, 1, 4, 0}, end)},
        {0, true, u"k", bbs(0)},
        {0, true, u"l", bbs(7)}},
       "boot Varo:FDD:0001 Varo:ODD:0002 Varo:PCC:0003 Varo:d:0004 Varo:e:0005 Varo:f:0006 Varo:g:0007 Varo:h:0008 "
       "Varo:i:0009 Varo:j:0010 Varo:k:0011 Varo:l:0012 order 0 1 2 3 4 5 6 7 8 9 10 11"},
      // Priorities have gaps, repeat, and use the whole range.
      {{{0xFFFF, true, u"last", {}}, {7, true, u"b", {}}, {0, false, u"first", {}}, {7, true, u"c", {}}},
       "boot Varo:first:0001 Varo:b:0002 Varo:c:0003 Varo:last:0004 order 3 1 2"},
      {{{0, true, u"", {}}}, "boot Varo::0001 order 0"},
  };
  for (const auto& [options, attribute] : rows) {
    EXPECT_EQ(Boot(options), "6 System boot configuration #0/0 " + attribute);
    const BootConfigurationState& state = *notebook.Published()->BootConfiguration;
    ASSERT_EQ(state.OptionCount, options.size());
    for (size_t i = 0; i < state.OptionCount; ++i) {
      const FakeBootOption& option = options[i];
      const BootOptionView& view = state.Options[i];
      EXPECT_EQ(view.Attributes, option.Active ? 1U : 0U);
      EXPECT_EQ(BytesAt(view.DevicePath, view.DevicePathLength), option.DevicePath);
      EXPECT_EQ(BytesAt(view.Description, 2 * option.Description.size() + 2), Join(option.Description, U16(0)));
      EXPECT_EQ(view.DevicePathValid,
                option.Description == u"g" || option.Description == u"h" || option.Description == u"i" ? 0 : 1);
    }
  }
}

TEST_F(BootConfigurationTest, Description_EndsAtAWholeCharacter) {
  Boot({{0, true, u"\u4E00x", {}}});
  EXPECT_THAT(Strings(StringArray::Names), Contains(std::string("Varo:\0x:0001", 12)));
}

TEST_F(BootConfigurationTest, Options_AboveSixteen_AreRejected) {
  std::vector<FakeBootOption> options(16, FakeBootOption{3, true, u"o", {}});
  EXPECT_THAT(Boot(options), testing::EndsWith("Varo:o:0016 order 0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15"));
  options.push_back(options.front());
  const size_t blocks = notebook.Uefi.LivePoolBlocks();
  EXPECT_EQ(Boot(options), "");
  EXPECT_LT(notebook.Uefi.LivePoolBlocks(), blocks);
  EXPECT_EQ(BytesAt(notebook.Published()->BootConfiguration, sizeof(BootConfigurationState)),
            Bytes(sizeof(BootConfigurationState)));
}

TEST_F(BootConfigurationTest, Block_ThatEndsEarly_IsRejected) {
  const std::vector<FakeBootOption> options = {{0, true, u"one", FakeBootOption::Bbs(2)}, {1, true, u"two", {}}};
  EXPECT_NE(Boot(options), "");
  for (notebook.BootBlockCut = 1; notebook.BootBlockCut < 50; ++notebook.BootBlockCut) {
    EXPECT_EQ(Boot(options), "") << notebook.BootBlockCut;
    ASSERT_NE(notebook.Published(), nullptr);
    EXPECT_EQ(notebook.Published()->BootConfiguration->OptionCount, 0);
  }
}

}  // namespace
