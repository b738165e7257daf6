/** @file
  FakeNotebook: the platform's protocols.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <cstdarg>
#include <utility>

#include "FakeUefi/FakeNotebook.hpp"

#include "access/service/AccessState.hpp"
#include "lifecycle/DriverState.hpp"

extern "C" {
#include <Guid/GlobalVariable.h>
EFI_STATUS EFIAPI CorvaneDxeEntryPoint(EFI_HANDLE imageHandle, EFI_SYSTEM_TABLE* systemTable);
}

namespace {

FakeNotebook* gCurrent = nullptr;

template <typename T>
void Append(Bytes& bytes, const T& value) {
  const auto* const first = reinterpret_cast<const std::uint8_t*>(&value);
  bytes.insert(bytes.end(), first, first + sizeof(value));
}

/// Copies an answer into a caller's buffer by the two-call pattern.
EFI_STATUS Give(const void* answer, size_t length, UINT64* size, void* buffer) {
  const UINT64 room = std::exchange(*size, length);
  if (room < length) {
    return EFI_BUFFER_TOO_SMALL;
  }
  if (length != 0) {
    std::memcpy(buffer, answer, length);
  }
  return EFI_SUCCESS;
}

}  // namespace

FakeQuestion::FakeQuestion(UINT8 opcode, UINT32 identifier, std::u16string keyword, std::u16string prompt)
    : QuestionRecord{}, keyword_(std::move(keyword)), prompt_(std::move(prompt)) {
  static constexpr EFI_IFR_OP_HEADER kIfr{};
  Ifr = &kIfr;
  Identifier = identifier;
  Opcode = opcode;
  Eligible = 1;
  ValueSize = 1;
}

FakeQuestion& FakeQuestion::Option(UINT64 value, std::u16string keyword, std::u16string text) {
  options_.push_back({value, std::move(keyword), std::move(text)});
  return *this;
}

FakeQuestion& FakeFormSet::Question(UINT8 opcode, UINT32 identifier, std::u16string keyword, std::u16string prompt) {
  return Questions.emplace_back(opcode, identifier, std::move(keyword), std::move(prompt));
}

Bytes FakeBootOption::Bbs(UINT16 deviceType) {
  Bytes path = {BBS_DEVICE_PATH, BBS_BBS_DP, 9, 0};
  Append(path, deviceType);
  path.resize(9);
  Append(path, UINT32{END_DEVICE_PATH_TYPE | END_ENTIRE_DEVICE_PATH_SUBTYPE << 8 | 4 << 16});
  return path;
}

FakeNotebook::FakeNotebook() {
  gCurrent = this;
  FillProtocols();
  for (const UINT32 readable : {0x2618U, 1843U, 1340U, 1621U, 1623U, 1874U}) {
    Settings[readable] = {};
  }
}

FakeNotebook::~FakeNotebook() {
  if (QuestionListsOut != 0) {
    FakeUefi::Misuse("a list of questions is not released");
  }
  mState = {};  // as in an image that has just been loaded
  mAccess = {};
  gCurrent = nullptr;
}

FakeFormSet& FakeNotebook::AddFormSet(std::u16string title) {
  FakeFormSet& formSet = FormSets.emplace_back();
  formSet.Guid.Data1 = static_cast<UINT32>(FormSets.size());
  formSet.Title = std::move(title);
  return formSet;
}

FakeQuestion& FakeNotebook::QuestionOf(UINT32 identifier) {
  for (FakeFormSet& formSet : FormSets) {
    for (FakeQuestion& question : formSet.Questions) {
      if (question.Identifier == identifier) {
        return question;
      }
    }
  }
  FakeUefi::Misuse("no question " + std::to_string(identifier));
  std::abort();
}

EFI_STATUS FakeNotebook::Enter(const EFI_GUID& guid) {
  const EFI_STATUS status = Uefi.Enter(Service::PlatformCall);
  const auto failing = Failing.find(guid);
  return failing == Failing.end() ? status : failing->second;
}

EFI_STATUS FakeNotebook::ReadSetting(UINT32 setting, UINT64* size, void* value) {
  SettingsRead.emplace_back(setting, *size);
  FakeSetting answer{0, EFI_NOT_FOUND};
  if (const auto found = Settings.find(setting); found != Settings.end()) {
    answer = found->second;
  } else {
    for (const FakeFormSet& formSet : FormSets) {
      for (const FakeQuestion& question : formSet.Questions) {
        answer = question.Identifier == setting ? FakeSetting{question.CurrentValue} : answer;
      }
    }
  }
  if (!EFI_ERROR(answer.Status)) {
    *size = std::min<UINT64>(*size, sizeof(answer.Value));
    std::memcpy(value, &answer.Value, *size);
  }
  return answer.Status;
}

EFI_STATUS FakeNotebook::ParseFormSet(const FormSetRecord& record, QuestionRecord** questions) {
  *questions = nullptr;
  const auto position = std::find_if(formSetRecords_.begin(), formSetRecords_.end(),
                                     [&](const FormSetRecord& candidate) { return &candidate == &record; });
  const FakeFormSet& formSet = *std::next(FormSets.begin(), std::distance(formSetRecords_.begin(), position));
  ++FormSetsParsed;
  if (EFI_ERROR(formSet.ParseStatus)) {
    return formSet.ParseStatus;
  }
  ParsedFormSet& parsed = parsed_.emplace_back();
  const auto publish = [&](const std::u16string& text, const std::optional<std::u16string>& keyword) {
    std::map<std::string, std::u16string> texts{{"en-US", text}};
    if (keyword) {
      texts["x-UEFI"] = *keyword;
    }
    return Uefi.AddString(record.HiiHandle, texts);
  };
  for (const FakeQuestion& question : formSet.Questions) {
    QuestionRecord& made = parsed.Questions.emplace_back(question);
    made.Prompt = publish(question.prompt_, question.keyword_);
    made.Help = question.help_.empty() ? EFI_STRING_ID{0} : publish(question.help_, std::nullopt);
    made.HiiHandle = record.HiiHandle;
    made.CurrentString = question.text_ ? parsed.Texts.emplace_back(*question.text_).c_str() : nullptr;
    auto& options = parsed.Options.emplace_back();
    for (const FakeQuestion::Choice& choice : question.options_) {
      options.push_back({choice.Value, publish(choice.Text, choice.Keyword)});
    }
    made.OptionCount = static_cast<UINT32>(options.size());
    made.Options = options.data();
  }
  for (size_t i = 1; i < parsed.Questions.size(); ++i) {
    parsed.Questions[i - 1].Next = &parsed.Questions[i];
  }
  if (parsed.Questions.empty()) {
    parsed_.pop_back();
    return EFI_SUCCESS;
  }
  ++QuestionListsOut;
  *questions = parsed.First = &parsed.Questions.front();
  return EFI_SUCCESS;
}

EFI_STATUS FakeNotebook::ReleaseQuestions(const QuestionRecord* questions) {
  if (questions == nullptr) {
    return EFI_SUCCESS;
  }
  if (parsed_.remove_if([&](const ParsedFormSet& parsed) { return parsed.First == questions; }) == 0) {
    FakeUefi::Misuse("a list of questions is released that is not out");
    return EFI_INVALID_PARAMETER;
  }
  --QuestionListsOut;
  return EFI_SUCCESS;
}

EFI_STATUS FakeNotebook::GetOptions(UINT64* size, BootOptionBlock** block) {
  Bytes bytes;
  Append(bytes, static_cast<UINT32>(BootOptions.size()));
  for (const FakeBootOption& option : BootOptions) {
    Append(bytes, option.Priority);
  }
  for (const FakeBootOption& option : BootOptions) {
    Append(bytes, UINT32{option.Active ? 1U : 0U});
    Append(bytes, static_cast<UINT16>(option.DevicePath.size()));
    for (const char16_t character : option.Description + u'\0') {
      Append(bytes, character);
    }
    bytes.insert(bytes.end(), option.DevicePath.begin(), option.DevicePath.end());
  }
  bytes.resize(bytes.size() - std::min(bytes.size(), BootBlockCut));
  *size = bytes.size();
  *block = static_cast<BootOptionBlock*>(Uefi.GivePool(bytes.size()));
  std::memcpy(*block, bytes.data(), bytes.size());
  BootOptionsGiven = *block;
  return EFI_SUCCESS;
}

EFI_STATUS FakeNotebook::AnswerPassword(UINT32 question, UINT32 entry, UINT64* size, void* answer) {
  const auto count = static_cast<UINT32>(Passwords.size());
  if (question == PasswordQueryEntryCount) {
    return Give(&count, sizeof(count), size, answer);
  }
  if (entry >= count) {
    return EFI_NOT_FOUND;
  }
  return question == PasswordQueryEntry ? Give(&Passwords[entry].Entry, sizeof(Passwords[entry].Entry), size, answer)
                                        : Give(&Passwords[entry].State, sizeof(Passwords[entry].State), size, answer);
}

EFI_STATUS FakeNotebook::QueryModes(UINT32* result, ...) {
  const EFI_STATUS status = gCurrent->Enter(gVaroModeQueryProtocolGuid);
  va_list list;
  va_start(list, result);
  do {
    gCurrent->ModesAsked.push_back(va_arg(list, UINT32));
  } while (gCurrent->ModesAsked.back() != 0);
  va_end(list);
  if (status == EFI_SUCCESS) {
    *result = gCurrent->FactoryMode ? 1 : 0;
  }
  return status;
}

/// A protocol's routine. It fails if the test says so, and otherwise runs `routine`.
template <EFI_GUID* Guid, typename Routine>
auto FakeNotebook::Answering(Routine routine) {
  return []<typename... Arguments>(EFI_STATUS (*)(Arguments...)) {
    return +[](Arguments... arguments) -> EFI_STATUS {
      const EFI_STATUS status = gCurrent->Enter(*Guid);
      return status != EFI_SUCCESS ? status : Routine()(arguments...);
    };
  }(+routine);
}

void FakeNotebook::FillProtocols() {
  settings_.Read = Answering<&gVaroSettingsProtocolGuid>([](SettingsProtocol*, UINT32 setting, const EFI_GUID* space,
                                                            UINT64* size, VOID* value) -> EFI_STATUS {
    return SameGuid(*space, gVaroSettingsNamespaceGuid) ? gCurrent->ReadSetting(setting, size, value) : EFI_NOT_FOUND;
  });
  defaults_.GetDefault = Answering<&gVaroSettingDefaultsProtocolGuid>(
      [](UINT32 identifier, const EFI_GUID*, UINT64* size, VOID* value) -> EFI_STATUS {
        const auto found = gCurrent->Defaults.find(identifier);
        return found == gCurrent->Defaults.end() ? EFI_NOT_FOUND
                                                 : Give(&found->second, std::min<size_t>(*size, 8), size, value);
      });
  browser_.ListFormSets = Answering<&gVaroFormBrowserDataProtocolGuid>(
      [](FormBrowserDataProtocol*, const EFI_GUID* kind, const FormSetRecord*** formSets) -> EFI_STATUS {
        auto& records = gCurrent->formSetRecords_;
        *formSets = nullptr;
        if (!SameGuid(*kind, gVaroSetupFormSetsGuid) || records.empty()) {
          return EFI_SUCCESS;
        }
        *formSets = static_cast<const FormSetRecord**>(gCurrent->Uefi.GivePool((records.size() + 1) * sizeof(void*)));
        const FormSetRecord** next = *formSets;
        for (const FormSetRecord& record : records) {
          *next++ = &record;
        }
        *next = nullptr;
        return EFI_SUCCESS;
      });
  browser_.ParseFormSet = Answering<&gVaroFormBrowserDataProtocolGuid>(
      [](FormBrowserDataProtocol*, const FormSetRecord* formSet, QuestionRecord** questions) -> EFI_STATUS {
        return gCurrent->ParseFormSet(*formSet, questions);
      });
  browser_.ReleaseQuestions = [](FormBrowserDataProtocol*, QuestionRecord* questions) -> EFI_STATUS {
    return gCurrent->ReleaseQuestions(questions);
  };
  transport_.Send = [](TableTransportProtocol*, const TransportRecord* record, const UINT64* size) -> EFI_STATUS {
    const EFI_STATUS status = gCurrent->Enter(gVaroTableTransportProtocolGuid);
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(record);
    gCurrent->Records.emplace_back(bytes, bytes + *size);
    if (gCurrent->OnSend) {
      gCurrent->OnSend();
    }
    return status;
  };
  mode_.QueryAny = QueryModes;
  passwordState_.Query = Answering<&gVaroPasswordStateProtocolGuid>(
      [](PasswordStateQueryProtocol*, UINT32 question, UINT32 entry, UINT64* size, VOID* answer) -> EFI_STATUS {
        return gCurrent->AnswerPassword(question, entry, size, answer);
      });
  assetTag_.GetLength = Answering<&gVaroAssetTagLengthProtocolGuid>(
      [](UINT32 selector, VOID*, UINT64* minimum, UINT64* maximum) -> EFI_STATUS {
        *minimum = 0;
        *maximum = 10;
        return selector == 1 ? EFI_SUCCESS : EFI_UNSUPPORTED;
      });
  assetTag_.GetString = Answering<&gVaroAssetTagLengthProtocolGuid>(
      [](UINT32 selector, UINT32, UINT64* size, CHAR8* buffer) -> EFI_STATUS {
        const auto& text = gCurrent->PlatformStrings.at(selector);
        return text ? Give(text->data(), text->size(), size, buffer) : EFI_NOT_FOUND;
      });
  bootOptions_.GetOptions = Answering<&gVaroBootOptionSourceProtocolGuid>([](UINT32 kind, UINT32 select, UINT64* size,
                                                                             BootOptionBlock** block) -> EFI_STATUS {
    return kind == BOOT_OPTION_SOURCE_CLASS && select == BOOT_OPTION_SOURCE_SELECT ? gCurrent->GetOptions(size, block)
                                                                                   : EFI_UNSUPPORTED;
  });
}

void FakeNotebook::InstallProtocols() {
  versionData_.Version = Version ? Version->c_str() : nullptr;
  version_.Data = &versionData_;
  cameras_.Count = CameraCount.value_or(static_cast<UINT8>(Cameras.size()));
  cameras_.Identifiers = Cameras.empty() ? nullptr : Cameras.data();
  const std::pair<const EFI_GUID*, void*> protocols[] = {
      {&gEfiHiiDatabaseProtocolGuid, &Uefi.HiiDatabase},
      {&gEfiHiiStringProtocolGuid, &Uefi.HiiString},
      {&gVaroSettingsProtocolGuid, &settings_},
      {&gVaroSettingDefaultsProtocolGuid, &defaults_},
      {&gVaroFormBrowserDataProtocolGuid, &browser_},
      {&gVaroTableTransportProtocolGuid, &transport_},
      {&gVaroModeQueryProtocolGuid, &mode_},
      {&gVaroPasswordServiceProtocolGuid, &PasswordService},
      {&gVaroPasswordDirectoryProtocolGuid, &passwordState_},
      {&gVaroPasswordStateProtocolGuid, &passwordState_},
      {&gVaroAssetTagLengthProtocolGuid, &assetTag_},
      {&gVaroFirmwareVersionProtocolGuid, &version_},
      {&gVaroCameraIdentifiersProtocolGuid, &cameras_},
      {&gVaroBootOptionSourceProtocolGuid, &bootOptions_},
  };
  for (const auto& [guid, interface] : protocols) {
    if (!Absent.contains(*guid) && Uefi.Find<void>(*guid) == nullptr) {
      Uefi.Install(*guid, interface);
    }
  }
  if (PlatformLanguage) {
    Bytes language(PlatformLanguage->begin(), PlatformLanguage->end());
    language.push_back(0);
    Uefi.Variables[{Ucs2(u"PlatformLang"), gEfiGlobalVariableGuid}] = {EFI_VARIABLE_BOOTSERVICE_ACCESS, language};
  }
  formSetRecords_.clear();
  for (const FakeFormSet& formSet : FormSets) {
    const EFI_HII_HANDLE package = Uefi.AddPackageList();
    formSetRecords_.push_back({formSet.Guid, package, Uefi.AddString(package, {{"en-US", formSet.Title}})});
  }
}

EFI_STATUS FakeNotebook::Start() {
  InstallProtocols();
  return CorvaneDxeEntryPoint(gImageHandle, gST);
}

EFI_STATUS FakeNotebook::Boot() {
  const EFI_STATUS status = Start();
  SignalFormSetsUpdated();
  SignalTablesRequested();
  return status;
}

void FakeNotebook::Reboot() {
  Uefi.Reboot();
  mState = {};  // as in an image that has just been loaded
  mAccess = {};
  Records.clear();
  ModesAsked.clear();
  SettingsRead.clear();
  FormSetsParsed = 0;
  BootOptionsGiven = nullptr;
}

Bytes FakeNotebook::Payload(size_t record) const {
  return record < Records.size() ? Bytes(Records[record].begin() + sizeof(TransportRecord), Records[record].end())
                                 : Bytes();
}

const PublishedTablesInterface* FakeNotebook::Published() const {
  return Uefi.Find<PublishedTablesInterface>(gVaroPublishedTablesProtocolGuid);
}

const FakeUefi::Variable* FakeNotebook::Variable(std::u16string_view name) const {
  const auto found = Uefi.Variables.find({Ucs2(name), gVaroAttributeVariableGuid});
  return found == Uefi.Variables.end() ? nullptr : &found->second;
}

void FakeNotebook::SetVariable(std::u16string_view name, UINT32 attributes, const Bytes& data) {
  Uefi.Variables[{Ucs2(name), gVaroAttributeVariableGuid}] = {attributes, data};
}
