/** @file
  Fixture of tests that boot a FakeNotebook: records in readable form.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/NotebookFixture.hpp"

#include <sstream>

#include "Image.hpp"
#include "Show.hpp"

namespace {

std::set<std::string> LinesOf(std::stringstream text) {
  std::set<std::string> lines;
  for (std::string line; std::getline(text, line);) {
    lines.insert(line.substr(line.find(' ') + 1));
  }
  return lines;
}

template <typename T>
std::vector<T> Elements(const T* array, size_t count) {
  return std::vector<T>(array, array + count);
}

std::string Body(const AttributeDatabase& database, const AttributeRecord& record) {
  const auto name = [&](UINT16 handle) { return TextOf(database, StringArray::Names, handle); };
  std::ostringstream text;
  switch (BaseType(record)) {
    case AttributeType::Enumeration: {
      const auto& body = As<EnumerationRecord>(record);
      text << "enum";
      const char* separator = " ";
      for (size_t i = 0; i < body.PossibleValueCount; ++i) {
        text << std::exchange(separator, "|") << name(body.PossibleValueNames[i]) << "=" << body.PossibleValues[i];
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
      const bool usual = body.BootConfigType == 2 && body.SupportedModes == 3 && body.MinSourceCount == 1 &&
                         body.MaxSourceCount == body.PossibleSourceCount && body.CurrentBootConfigType == 2 &&
                         body.CurrentMode == 3;
      text << "boot" << (usual ? "" : "?");
      for (const UINT16 source : Elements<UINT16>(body.PossibleSourceNames, body.PossibleSourceCount)) {
        text << " " << name(source);
      }
      text << " order";
      for (size_t i = 0; i < body.CurrentSourceCount; ++i) {
        text << " " << int{body.CurrentSourceOrder[i]};
      }
      break;
    }
    case AttributeType::Collection: {
      const auto& body = As<CollectionRecord>(record);
      const bool usual = body.CollectionInfo[0] == (record.NameHandle & 0xFF) &&
                         body.CollectionInfo[1] == record.NameHandle >> 8 && body.CollectionInfo[2] == 255 &&
                         body.CollectionInfo[3] == 0;
      text << "set" << (usual ? "" : "?");
      for (const UINT16 item : Elements<UINT16>(body.Items, body.ItemCount)) {
        text << " " << item;
      }
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

std::string NotebookFixture::Attribute(UINT16 handle) {
  const AttributeRecord* const record = Database().AttributeAt(handle);
  return record == nullptr ? "" : Describe(Database(), *record);
}

std::string NotebookFixture::ByToken(UINT32 token) {
  const AttributeRecord* const record = Database().FindAttributeByToken(token);
  return record == nullptr ? "" : Describe(Database(), *record);
}

Texts NotebookFixture::Strings(StringArray array) {
  Texts texts;
  for (UINT16 handle = kFirstHandle; handle < Database().StringLimit(array); ++handle) {
    texts.push_back(TextOf(Database(), array, handle));
  }
  return texts;
}
