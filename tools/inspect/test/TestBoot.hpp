/** @file
  Boots of the fake notebook: the capture and the flash image that each left.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "FakeUefi/FakeNotebook.hpp"
#include "Host/TestBytes.hpp"
#include "capture/Describe.hpp"
#include "capture/Pairing.hpp"

extern "C" {
#include <Corvane/AttributeCache.h>
}

namespace corvane::inspect {
using Out = ::Bytes;
using Arrange = std::function<void(FakeNotebook&)>;
using Records = std::vector<Out>;

inline Out Joined(const Records& records) {
  Out capture;
  for (const Out& record : records) {
    Append(capture, record);
  }
  return capture;
}

// A flash image with the notebook's variables, and deleted ones and others' among them.
inline Out FlashOf(const FakeNotebook& notebook, bool authenticated = true) {
  Out variables;
  const auto put = [&](std::u16string_view name, unsigned state, const EFI_GUID& vendor, const Out& data,
                       UINT32 attributes = 3) {
    Append(variables, Join(U16(0x55AA), U8(state), U8(0), U32(attributes)));
    variables.resize(variables.size() + (authenticated ? 28 : 0));
    Append(variables, Join(U32(2 * name.size() + 2), U32(data.size()), BytesAt(&vendor, 16)));
    for (const char16_t unit : name) {
      Append(variables, U16(unit));
    }
    Append(variables, Join(U16(0), data));
    variables.resize((variables.size() + 3) / 4 * 4, 0xFF);
  };
  put(u"BiosVersion", 0x3C, gVaroAttributeVariableGuid, Out(5, 'x'));
  put(u"BiosVersion", 0x3F, gVaroSetupFormSetsGuid, Out(5, 'y'));
  for (const auto& [key, variable] : notebook.Uefi.Variables) {
    const std::u16string name(key.first.begin(), key.first.end());
    if (variable.Data.empty()) {
      continue;  // taken away by a test
    }
    put(name, name == u"DispString" ? 0x3E : 0x3F, key.second, variable.Data, variable.Attributes);
  }
  constexpr EFI_GUID kVolume = {0xFFF12B8D, 0x7696, 0x4C8B, {0xA9, 0x85, 0x27, 0x47, 0x07, 0x5B, 0x4F, 0x50}};
  constexpr EFI_GUID kPlain = {0xDDCF3616, 0x3275, 0x4164, {0x98, 0xB6, 0xFE, 0x85, 0x70, 0x7F, 0xFE, 0x7D}};
  constexpr EFI_GUID kSigned = {0xAAF32C78, 0x947B, 0x439A, {0xA1, 0x80, 0x2E, 0x14, 0x4E, 0xC3, 0x77, 0x92}};
  Out header = Join(Out(16), BytesAt(&kVolume, 16), U64(1 << 20), U32(0x4856465F), U32(0), U16(72), U16(0), U16(0),
                    U8(0), U8(2), Out(16));
  unsigned sum = 0;
  for (std::size_t i = 0; i < header.size(); i += 2) {
    sum += header[i] + header[i + 1] * 256U;
  }
  header[50] = static_cast<std::uint8_t>(-sum);
  header[51] = static_cast<std::uint8_t>(-sum >> 8);
  return Join(header, BytesAt(authenticated ? &kSigned : &kPlain, 16), U32(28 + variables.size() + 64), U8(0x5A),
              U8(0xFE), U16(0), U32(0), variables, Out(64, 0xFF));
}

// A boot of a notebook: what it sent, and the flash that it left.
struct Boot {
  explicit Boot(const Arrange& arrange, bool authenticated = true) {
    FakeNotebook notebook;
    notebook.Settings[1843] = {};
    arrange(notebook);
    EXPECT_EQ(notebook.Boot(), EFI_SUCCESS);
    Sent = notebook.Records;
    Flash = FlashOf(notebook, authenticated);
  }
  Image Decode() const { return DecodeImage(Joined(Sent)); }

  Records Sent;
  Out Flash;
};

inline void Ordinary(FakeNotebook& notebook) {
  FakeFormSet& power = notebook.AddFormSet(u"Power Setup");
  power.Numeric(300, u"Start", u"Start").Help(u"When it starts.").Bounds(1, 9).Value(3);
  power.OneOf(301, u"Mode", u"Mode")
      .Help(u"How.")
      .Option(1, u"Enabled", u"On")
      .Option(2, u"Auto", u"Automatic")
      .Value(1);
  power.Checkbox(302, u"Lamp", u"Lamp").Help(u"Light.");
  power.String(303, u"Tag[RegEx:^a*$]", u"Start").Help(u"Not kept.").Bounds(0, 9).Text("a");
  FakeFormSet& other = notebook.AddFormSet(u"Other");
  other.Checkbox(304, u"Lock[ForceIf:Lamp=Enabled]", u"Lock it").Help(u"Lock.");
  other.OneOf(305, u"Pick", u"Pick").Option(0, u"Disabled", u"Off").Option(1, u"Enabled", u"Other on");
  other.Numeric(1568, u"Card", u"Card").Bounds(0, 9);
  notebook.Defaults = {{300, 1}, {301, 1}};
  notebook.Cameras = {"CAM"};
  notebook.BootOptions = {{1, true, u"Disk", FakeBootOption::Bbs(2)}};
}

// "name=display|help" of each attribute that is paired, a line each.
inline std::string TextsOf(const Image& image, const StoredTexts* stored = nullptr) {
  const Pairing pairing = PairTexts(image, stored);
  std::string lines;
  for (const AttributeEntry& attribute : image.Attributes.Entries) {
    if (const PairedTexts* texts = pairing.Find(attribute.Handle)) {
      lines +=
          DescribeName(image, attribute.NameHandle) + "=" + *texts->Display + "|" + texts->Help.value_or("") + "\n";
    }
  }
  return lines + pairing.Reason;
}

}  // namespace corvane::inspect
