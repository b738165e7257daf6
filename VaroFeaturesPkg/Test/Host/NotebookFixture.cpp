/** @file
  Fixture of tests that boot a FakeNotebook: records in readable form.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/NotebookFixture.hpp"

#include <sstream>

#include "capture/Image.hpp"
#include "command/Show.hpp"

namespace {

std::set<std::string> LinesOf(std::stringstream text) {
  std::set<std::string> lines;
  for (std::string line; std::getline(text, line);) {
    lines.insert(line.substr(line.find(' ') + 1));
  }
  return lines;
}

/// The parts, each with a blank in front.
template <typename T, typename Shown>
std::string Listed(const T* parts, size_t count, Shown shown) {
  std::string list;
  for (size_t i = 0; i < count; ++i) {
    list += " " + shown(parts[i]);
  }
  return list;
}

std::string Body(const AttributeDatabase& database, const AttributeRecord& record) {
  const auto name = [&](UINT16 handle) { return TextOf(database, StringArray::Names, handle); };
  const auto number = [](UINT16 value) { return std::to_string(value); };
  std::ostringstream text;
  switch (BaseType(record)) {
    case AttributeType::Enumeration: {
      const auto& body = As<EnumerationRecord>(record);
      for (size_t i = 0; i < body.PossibleValueCount; ++i) {
        text << (i == 0 ? "enum " : "|") << name(body.PossibleValueNames[i]) << "=" << body.PossibleValues[i];
      }
      text << " " << int{body.DefaultIndex} << "," << int{body.CurrentIndex};
      break;
    }
    case AttributeType::String: {
      const auto& body = As<StringRecord>(record);
      text << "str" << (body.StringType == 1 && body.DefaultLength == 0 ? " " : "? ") << UINT16{body.MinLength} << ".."
           << UINT16{body.MaxLength} << " " << (body.CurrentString == nullptr ? "(null)" : body.CurrentString);
      break;
    }
    case AttributeType::Password: {
      const auto& body = As<PasswordRecord>(record);
      text << "pw" << (body.PasswordType == 0 && body.MinLength == 0 && body.DefaultLength == 0 ? " " : "? ")
           << UINT16{body.MaxLength} << " " << int{body.PasswordInstalled};
      break;
    }
    case AttributeType::Integer: {
      const auto& body = As<IntegerRecord>(record);
      text << "int " << UINT64{body.LowerBound} << ".." << UINT64{body.UpperBound} << "/"
           << UINT32{body.ScalarIncrement} << " " << UINT64{body.DefaultValue} << "," << UINT64{body.CurrentValue};
      break;
    }
    case AttributeType::BootConfiguration: {
      const auto& body = As<BootConfigurationRecord>(record);
      const UINT8 count = body.PossibleSourceCount;
      const bool usual = BytesAt(&body.BootConfigType, 4) == Bytes{2, 3, 1, count} &&
                         BytesAt(&body.CurrentBootConfigType, 2) == Bytes{2, 3};
      text << "boot" << (usual ? "" : "?") << Listed<UINT16>(body.PossibleSourceNames, count, name) << " order"
           << Listed(body.CurrentSourceOrder, body.CurrentSourceCount, number);
      break;
    }
    case AttributeType::Collection: {
      const auto& body = As<CollectionRecord>(record);
      const bool usual = BytesAt(body.CollectionInfo, 4) == Join(UINT16{record.NameHandle}, U8(255), U8(0));
      text << "set" << (usual ? "" : "?") << Listed<UINT16>(body.Items, body.ItemCount, number);
      break;
    }
    default:
      text << "type " << int{record.Type};
  }
  return text.str();
}

}  // namespace

std::string Describe(const AttributeDatabase& database, const AttributeRecord& record) {
  std::ostringstream text;
  text << UINT16{record.Handle} << " " << TextOf(database, StringArray::Names, record.NameHandle)
       << ((record.Type & PLDM_BIOS_ATTRIBUTE_READ_ONLY) != 0 ? "!" : "") << " #" << UINT32{record.Token} << "/"
       << UINT16{record.ValueSize} << " " << Body(database, record);
  return text.str();
}

void Furnish(FakeNotebook& notebook) {
  FakeFormSet& setup = notebook.AddFormSet(u"System Setup");
  setup.OneOf(300, u"BootMode", u"Boot Mode").Help(u"How the system starts.").Value(2);
  notebook.QuestionOf(300).Option(1, u"Uefi", u"UEFI").Option(2, u"Legacy", u"Boot Mode");
  setup.Checkbox(301, u"SecureBoot[ForceIf:BootMode=Uefi]", u"Secure Boot").Value(1);
  setup.Numeric(1142, u"AutoOnHour", u"Hour").Bounds(0, 23).Value(7);
  setup.String(9752, u"Asset", u"Asset Tag").Text("tag 1").Bounds(0, 64);
  FakeFormSet& other = notebook.AddFormSet(u"Other");
  other.Numeric(302, u"Volume", u"Volume").Bounds(0, 100000).Value(200, 2);
  other.Checkbox(1568, u"Wake", u"Volume").Help(u"Has a switch.");
  other.Checkbox(303, u"Mute", u"Volume").WithoutKeyword();
  notebook.Defaults = {{300, 1}, {302, 100}};
  notebook.BootOptions = {{1, true, u"Disk", FakeBootOption::Bbs(2)}, {0, false, u"Net", {}}};
  notebook.Passwords = {{{PASSWORD_KIND_ADMIN, gVaroSystemPasswordsGuid}, 1}};
  notebook.Cameras = {"CAM-A"};
  notebook.PlatformStrings[0] = "tag 1";
}

Reading NotebookFixture::Read() const {
  Bytes capture;
  for (const Bytes& record : notebook.Records) {
    Append(capture, record);
  }
  const corvane::inspect::Image image = corvane::inspect::DecodeImage(capture);
  std::stringstream lines;
  std::stringstream texts;
  ShowAttributes(image, lines);
  ShowTexts(image, corvane::inspect::Style(false), texts);
  Reading reading{LinesOf(std::move(lines)), LinesOf(std::move(texts)), {}};
  for (const corvane::inspect::Finding& finding : image.Findings.List()) {
    reading.Findings.insert(finding.Code);
  }
  return reading;
}

Texts NotebookFixture::Attributes() {
  Texts texts;
  UINT16 slot = 0;
  while (const AttributeRecord* const record = Database().NextAttribute(slot)) {
    texts.push_back(Describe(Database(), *record));
  }
  return texts;
}

std::string NotebookFixture::Attribute(const AttributeRecord* record) {
  return record == nullptr ? "" : Describe(Database(), *record);
}

Texts NotebookFixture::Strings(StringArray array) {
  Texts texts;
  for (UINT16 handle = kFirstHandle; handle < Database().StringLimit(array); ++handle) {
    texts.push_back(TextOf(Database(), array, handle));
  }
  return texts;
}
