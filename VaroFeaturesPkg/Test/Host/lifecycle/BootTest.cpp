#include <gtest/gtest.h>
#include "FakeUefi/FakeNotebook.hpp"
TEST(BootTest, Smoke) {
  FakeNotebook notebook;
  auto& set = notebook.AddFormSet(u"System Setup");
  set.OneOf(300, u"BootMode", u"Boot Mode").Option(1, u"Uefi", u"UEFI").Option(2, u"Legacy", u"Legacy").Help(u"how");
  set.Checkbox(301, u"SecureBoot", u"Secure Boot").Value(1);
  set.Numeric(302, u"Hour", u"Hour").Bounds(0, 23).Value(5);
  set.String(303, u"Tag", u"Tag").Text("abc").Bounds(0, 10);
  EXPECT_EQ(notebook.Boot(), EFI_SUCCESS);
  EXPECT_EQ(notebook.Records.size(), 8u);
  for (auto& m : notebook.Uefi.DebugMessages)
    printf("%s", m.Text.c_str());
  for (auto& [k, v] : notebook.Uefi.Variables)
    printf("%s %zu\n", std::string(k.first.begin(), k.first.end()).c_str(), v.Data.size());
  notebook.Reboot();
  EXPECT_EQ(notebook.Boot(), EFI_SUCCESS);
  EXPECT_EQ(notebook.Records.size(), 8u);
  EXPECT_EQ(notebook.FormSetsParsed, 0u);
  for (auto& m : notebook.Uefi.DebugMessages)
    printf("%s", m.Text.c_str());
}
