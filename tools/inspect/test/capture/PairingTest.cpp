/** @file
  Tests of which texts are paired with which attributes.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "test/TestBoot.hpp"

namespace corvane::inspect {
namespace {

using ::testing::EndsWith;

// In every boot.
const std::string kPlacedTexts =
    "AdminPassword[RegEx:^\\\\133\\\\x20-\\\\x7e\\\\135{0,32}$]=Admin Password|\n"
    "SystemPassword[RegEx:^\\\\133\\\\x20-\\\\x7e\\\\135{0,32}$]=System Password|\n"
    "System boot configuration=System boot configuration|\n";
const std::string kLockout = "MasterPasswordLockout=Master Password Lockout|\n";
const std::string kSupport = "AuxoraSupportLevel=Auxora Support Level|\n";

TEST(PairingTest, Attributes_GetTheTextsOfTheirQuestions) {
  const std::pair<Arrange, std::string> rows[] = {
      {Ordinary,
       "Start=Start|When it starts.\nMode=Mode|How.\nLamp=Lamp|Light.\nTag[RegEx:^a*$]=Start|\nPowerSetup=Power "
       "Setup|\n"
       "Lock[ForceIf:Lamp=Enabled]=Lock it|Lock.\nPick=Pick|\nCard=Card Switch|\nOther=Other|\n" +
           kLockout + "MIPICam1=MIPI Camera 1|\n" + kSupport},
      // Which prompt of the form set was too long and left out cannot be told; what is behind it is not paired, either.
      {[](FakeNotebook& notebook) {
         notebook.AddFormSet(u"First").Numeric(300, u"A", u"Prompt A").Bounds(0, 9);
         FakeFormSet& second = notebook.AddFormSet(u"Second");
         second.Numeric(301, u"B", std::u16string(175, u'x')).Bounds(0, 9);
         second.Numeric(302, u"C", u"Prompt C").Bounds(0, 9);
         notebook.AddFormSet(u"Third");
       },
       "A=Prompt A|\nFirst=First|\n" + kLockout + kSupport + "the texts can have been created in more than one way"},
      // A prompt that begins with stars, and a list of values that looks like a checkbox.
      {[](FakeNotebook& notebook) {
         FakeFormSet& first = notebook.AddFormSet(u"First");
         first.OneOf(300, u"A", u"**A").Option(0, u"Disabled", u"Aus").Option(1, u"Enabled", u"An").Help(u"?");
         first.Checkbox(301, u"B", u"Aus").Help(u"Not kept.");
       },
       "A=A|?\nB=Aus|\nFirst=First|\n" + kLockout + kSupport},
      // Of 241 one-of and checkbox questions on, questions leave texts and are no attribute.
      {[](FakeNotebook& notebook) {
         notebook.AddFormSet(u"First").Numeric(1, u"N", u"Number").Bounds(0, 9);
         FakeFormSet& second = notebook.AddFormSet(u"Second");
         for (char16_t i = 0; i < 245; ++i) {
           const char16_t digits[] = {u'Q', static_cast<char16_t>(u'0' + i / 100),
                                      static_cast<char16_t>(u'0' + i / 10 % 10), static_cast<char16_t>(u'0' + i % 10),
                                      0};
           second.Checkbox(3000U + i, digits, digits);
         }
       },
       "N=Number|\nFirst=First|\nlater questions may have created texts but no attribute"},
  };
  for (const auto& [arrange, expected] : rows) {
    EXPECT_EQ(TextsOf(Boot(arrange).Decode()), kPlacedTexts + expected);
  }
}

TEST(PairingTest, Texts_OutOfOrder_AreNotPaired) {
  Boot boot(Ordinary);
  Out& display = boot.Sent[5];
  const Out title = Join(u"Power Setup");
  std::search(display.begin(), display.end(), title.begin(), title.end())[0] = 'T';
  EXPECT_THAT(TextsOf(boot.Decode()), EndsWith("the texts cannot have been created in the order of the attributes"));
}

}  // namespace
}  // namespace corvane::inspect
