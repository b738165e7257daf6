/** @file
  The console and the Shell of AttrFixture.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "Host/attr/AttrFixture.hpp"

namespace {

void AppendWide(std::string& text, const CHAR16* wide) {
  for (; *wide != 0; ++wide) {
    if (*wide != u'\r') {
      text.push_back(static_cast<char>(*wide));
    }
  }
}

}  // namespace

AttrFixture* AttrFixture::current_ = nullptr;

AttrFixture::AttrFixture() {
  current_ = this;
  tables[0].Content.clear();
  tables[3] = {3, 0, Join(U16(0))};
  tables[4] = {3, 1, Join(U16(0))};
  after = [this](RequestBlock& request) { return Apply(request); };
  out_.OutputString = [](EFI_SIMPLE_TEXT_OUTPUT_PROTOCOL*, CHAR16* text) -> EFI_STATUS {
    AppendWide(current_->printed_, text);
    return current_->linesTaken-- == 0 ? EFI_ABORTED : EFI_SUCCESS;
  };
  error_.OutputString = [](EFI_SIMPLE_TEXT_OUTPUT_PROTOCOL*, CHAR16* text) -> EFI_STATUS {
    AppendWide(current_->prompted, text);
    return EFI_SUCCESS;
  };
  in_.ReadKeyStroke = [](EFI_SIMPLE_TEXT_INPUT_PROTOCOL*, EFI_INPUT_KEY* key) -> EFI_STATUS {
    std::u16string& typed = current_->keys;
    if (typed.empty()) {
      return EFI_DEVICE_ERROR;
    }
    const bool escape = typed[0] == u'\x1B';
    *key = {static_cast<UINT16>(escape ? SCAN_ESC : SCAN_NULL), static_cast<CHAR16>(escape ? u'\0' : typed[0])};
    typed.erase(0, 1);
    return EFI_SUCCESS;
  };
  gST->ConOut = &out_;
  gST->StdErr = &error_;
  gST->ConIn = &in_;
  gBS->WaitForEvent = [](UINTN, EFI_EVENT*, UINTN*) -> EFI_STATUS { return EFI_SUCCESS; };
  gBS->CheckEvent = [](EFI_EVENT) -> EFI_STATUS { return current_->breakPressed ? EFI_SUCCESS : EFI_NOT_READY; };
  shell_.SetEnv = [](const CHAR16* name, const CHAR16* value, BOOLEAN) -> EFI_STATUS {
    EXPECT_EQ(Ucs2String(name), Ucs2(u"attrstatus"));
    current_->variable_.clear();
    AppendWide(current_->variable_, value);
    return EFI_SUCCESS;
  };
  shell_.GetPageBreak = []() -> BOOLEAN { return FALSE; };
  shell_.EnablePageBreak = []() { current_->prompted += "[pages]"; };
  shell_.DisablePageBreak = []() { current_->prompted += "[no pages]"; };
}

std::string AttrFixture::Run(const std::vector<std::u16string>& words) {
  std::vector<Ucs2String> typed{Ucs2(u"attr")};
  std::vector<CHAR16*> argv;
  std::transform(words.begin(), words.end(), std::back_inserter(typed), Ucs2);
  std::transform(typed.begin(), typed.end(), std::back_inserter(argv), [](Ucs2String& word) { return word.data(); });
  EFI_SHELL_PARAMETERS_PROTOCOL parameters{argv.data(), argv.size(), nullptr, nullptr, nullptr};
  const size_t blocks = uefi.LivePoolBlocks();
  const bool fetched = mAccess.Tables[0].Block != nullptr;
  printed_.clear();
  const SHELL_STATUS result = RunAttr(&parameters, &shell_);
  EXPECT_TRUE(!fetched || uefi.LivePoolBlocks() == blocks) << "blocks left behind";
  EXPECT_EQ(std::stoul(variable_, nullptr, 16), result);
  return std::to_string(result) + " " + printed_;
}

EFI_STATUS AttrFixture::Apply(RequestBlock& request) {
  const auto* const buffer = reinterpret_cast<const std::uint8_t*>(&request);
  if (request.Class != REQUEST_CLASS_ATTRIBUTES || request.Select != REQUEST_SELECT_SET || status != 0) {
    return EFI_SUCCESS;
  }
  if (buffer[105] != 0) {
    values[namedHandle] = namedPart;
  } else {
    values[static_cast<UINT16>(buffer[116] + buffer[117] * 256)] =
        BytesAt(buffer + 121, size_t{buffer[118]} + size_t{buffer[119]} * 256 - 1);
  }
  return EFI_SUCCESS;
}

UINT16 AttrFixture::Name(std::string_view name) {
  auto found = std::find(names_.begin(), names_.end(), name);
  if (found == names_.end()) {
    names_.emplace_back(name);
    found = names_.end() - 1;
    Append(tables[0].Content, Entry(static_cast<unsigned>(15 + names_.size()), name));
  }
  return static_cast<UINT16>(16 + (found - names_.begin()));
}

void AttrFixture::Add(UINT16 handle, unsigned type, std::string_view name, const Bytes& part, const Bytes& value) {
  const unsigned nameHandle = Name(name);
  Append(tables[1].Content, Attribute(handle, type, nameHandle, part));
  values[handle] = value;
}
