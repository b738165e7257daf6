/** @file
  Fixture of tests that boot a FakeNotebook and look at what the driver gathered.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeUefi/FakeNotebook.hpp"
#include "FakeUefi/KeptBlocks.hpp"
#include "Host/StoreBuilder.hpp"
#include "Host/TestBytes.hpp"
#include "lifecycle/DriverState.hpp"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::string>;

/// A record in one line: handle, name, type (! = read-only), #token, bytes of the setting, and what its type adds:
/// enum a=0|b=1 default,current; int lower..upper/step default,current; str min..max text; pw max installed;
/// boot names order; set members.
std::string Describe(const AttributeDatabase& database, const AttributeRecord& record);

/// Gives a notebook something of every source: two form sets with every kind of question, colliding prompts and an
/// annotation; passwords, a camera, boot options, platform strings. No value is above 255.
void Furnish(FakeNotebook& notebook);

/// What a boot published, as the inspector reads the records.
struct Reading {
  std::set<std::string> Lines;  ///< one for each attribute, without its handle
  std::set<std::string> Texts;  ///< display and help texts
  std::set<std::string> Findings;
};

class NotebookFixture : public testing::Test {
 protected:
  /// Boots until the form sets are updated.
  void Gather() {
    notebook.Start();
    notebook.SignalFormSetsUpdated();
  }
  /// Boots again, with the changes of the test.
  void GatherAnew() {
    notebook.Reboot();
    Gather();
  }
  static AttributeDatabase& Database() { return mState.Database; }
  [[nodiscard]] Reading Read() const;

  /// All records, in handle order.
  static Texts Attributes();
  /// One record, or "".
  static std::string Attribute(const AttributeRecord* record);
  static std::string Attribute(UINT16 handle) { return Attribute(Database().AttributeAt(handle)); }
  static std::string ByToken(UINT32 token) { return Attribute(Database().FindAttributeByToken(token)); }
  /// All strings of an array from handle 16 on.
  static Texts Strings(StringArray array);

  FakeNotebook notebook;
};
