/** @file
  FakeNotebook: the platform side of a notebook on a FakeUefi. A test changes what differs from an ordinary one, and
  boots it.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include <array>
#include <functional>
#include <optional>

#include "FakeUefi/FakeUefi.hpp"

extern "C" {
#include <Corvane/AttributeCache.h>
#include <Corvane/TransportRecord.h>
#include <Protocol/AssetTagLength.h>
#include <Protocol/BootOptionSource.h>
#include <Protocol/CameraIdentifiers.h>
#include <Protocol/FirmwareVersion.h>
#include <Protocol/FormBrowserData.h>
#include <Protocol/FormSetsUpdated.h>
#include <Protocol/ModeQuery.h>
#include <Protocol/PasswordService.h>
#include <Protocol/PasswordStateQuery.h>
#include <Protocol/PublishedTables.h>
#include <Protocol/SettingDefaults.h>
#include <Protocol/Settings.h>
#include <Protocol/TableTransport.h>
#include <Protocol/TablesRequested.h>
}

/// One setup question. By default it is eligible, has IFR, no help, a value of 0 in one byte, and the same text in
/// "en-US" as in "x-UEFI".
class FakeQuestion : public QuestionRecord {
 public:
  FakeQuestion(UINT8 opcode, UINT32 identifier, std::u16string keyword, std::u16string prompt);

  FakeQuestion& Help(std::u16string text) { return With(help_, std::move(text)); }
  FakeQuestion& Value(UINT64 value, UINT16 size = 1) { return With(CurrentValue, value).With(ValueSize, size); }
  FakeQuestion& Text(std::optional<std::string> text) { return With(text_, std::move(text)); }
  FakeQuestion& Bounds(UINT64 lowest, UINT64 highest, UINT64 step = 1) {
    return With(Minimum, lowest).With(Maximum, highest).With(Step, step);
  }
  FakeQuestion& Option(UINT64 value, std::u16string keyword, std::u16string text);
  /// A copy becomes another question.
  void Rename(UINT32 identifier, std::u16string keyword, std::u16string prompt) {
    With(Identifier, identifier).With(prompt_, std::move(prompt));
    keyword_ = keyword_ ? std::optional(std::move(keyword)) : std::nullopt;
  }
  FakeQuestion& Ineligible() { return With(Eligible, UINT8{0}); }
  FakeQuestion& WithoutIfr() { return With(Ifr, nullptr); }
  FakeQuestion& WithoutKeyword() { return With(keyword_, std::nullopt); }

 private:
  friend class FakeNotebook;
  template <typename Field>
  FakeQuestion& With(Field& field, std::type_identity_t<Field> value) {
    field = std::move(value);
    return *this;
  }
  struct Choice {
    UINT64 Value;
    std::u16string Keyword;
    std::u16string Text;
  };
  std::optional<std::u16string> keyword_;
  std::u16string prompt_;
  std::u16string help_;
  std::optional<std::string> text_;
  std::vector<Choice> options_;
};

class FakeFormSet {
 public:
  // Each takes an identifier, a keyword and a prompt.
  FakeQuestion& OneOf(auto&&... of) { return Question(EFI_IFR_ONE_OF_OP, of...); }
  FakeQuestion& Checkbox(auto&&... of) { return Question(EFI_IFR_CHECKBOX_OP, of...); }
  FakeQuestion& Numeric(auto&&... of) { return Question(EFI_IFR_NUMERIC_OP, of...); }
  FakeQuestion& String(auto&&... of) { return Question(EFI_IFR_STRING_OP, of...); }
  FakeQuestion& Question(UINT8 opcode, UINT32 identifier, std::u16string keyword, std::u16string prompt);

  EFI_GUID Guid{};
  std::u16string Title;
  EFI_STATUS ParseStatus = EFI_SUCCESS;
  std::list<FakeQuestion> Questions;
};

struct FakeSetting {
  UINT64 Value = 0;
  EFI_STATUS Status = EFI_SUCCESS;
};

struct FakeBootOption {
  UINT16 Priority;
  bool Active;
  std::u16string Description;
  Bytes DevicePath;

  /// A device path of one BBS node, and its end.
  static Bytes Bbs(UINT16 deviceType);
};

struct FakePassword {
  PasswordEntry Entry;
  UINT32 State;
};

/// A platform with all its protocols. Reboot() keeps what the test set here and the non-volatile variables.
class FakeNotebook {
 public:
  FakeNotebook();
  FakeNotebook(const FakeNotebook&) = delete;
  FakeNotebook& operator=(const FakeNotebook&) = delete;
  ~FakeNotebook();

  FakeUefi Uefi;

  // What the notebook is like.

  std::set<EFI_GUID, GuidLess> Absent;               ///< protocols that are not installed
  std::map<EFI_GUID, EFI_STATUS, GuidLess> Failing;  ///< status of every call of a protocol
  std::optional<std::string> PlatformLanguage = "en-US";
  std::map<UINT32, FakeSetting> Settings;  ///< other numbers read the question with this identifier
  std::map<UINT32, UINT64> Defaults;
  std::list<FakeFormSet> FormSets;
  bool FactoryMode = false;
  PasswordServiceProtocol PasswordService{PASSWORD_SERVICE_OWNER_REVISION, {}, 0};
  std::vector<FakePassword> Passwords;
  std::array<std::optional<std::string>, 2> PlatformStrings;
  std::optional<std::string> Version = "1.2.3";
  std::vector<const CHAR8*> Cameras;
  std::optional<UINT8> CameraCount;  ///< announced count, if not the number of Cameras
  std::vector<FakeBootOption> BootOptions;
  size_t BootBlockCut = 0;  ///< bytes missing at the end of their block

  FakeFormSet& AddFormSet(std::u16string title);
  [[nodiscard]] FakeQuestion& QuestionOf(UINT32 identifier);

  // The boot.

  /// Installs what is not Absent and not installed yet. Part of Start.
  void InstallProtocols();
  /// Installs the platform's protocols and starts the driver; what its entry point returns.
  EFI_STATUS Start();
  EFI_HANDLE SignalFormSetsUpdated() { return Uefi.Install(gVaroFormSetsUpdatedProtocolGuid, nullptr); }
  EFI_HANDLE SignalTablesRequested() { return Uefi.Install(gVaroTablesRequestedProtocolGuid, nullptr); }
  /// Start and both signals.
  EFI_STATUS Boot();
  void Reboot();

  // Results of the boot.

  std::vector<Bytes> Records;  ///< as sent, header included
  std::vector<UINT32> ModesAsked;
  std::vector<std::pair<UINT32, UINT64>> SettingsRead;  ///< number and announced size
  size_t FormSetsParsed = 0;
  size_t QuestionListsOut = 0;             ///< parsed and not yet released
  const void* BootOptionsGiven = nullptr;  ///< their last block
  std::function<void()> OnSend;

  [[nodiscard]] Bytes Payload(size_t record) const;
  [[nodiscard]] const PublishedTablesInterface* Published() const;
  [[nodiscard]] const FakeUefi::Variable* Variable(std::u16string_view name) const;
  void SetVariable(std::u16string_view name, UINT32 attributes, const Bytes& data);

 private:
  struct ParsedFormSet {
    QuestionRecord* First = nullptr;
    std::deque<QuestionRecord> Questions;
    std::deque<std::vector<QuestionOption>> Options;
    std::deque<std::string> Texts;
  };

  void FillProtocols();

  [[nodiscard]] EFI_STATUS Enter(const EFI_GUID& guid);
  template <EFI_GUID* Guid, typename Routine>
  static auto Answering(Routine routine);
  static EFI_STATUS EFIAPI QueryModes(UINT32* result, ...);
  EFI_STATUS ReadSetting(UINT32 setting, UINT64* size, void* value);
  EFI_STATUS ParseFormSet(const FormSetRecord& formSet, QuestionRecord** questions);
  EFI_STATUS ReleaseQuestions(const QuestionRecord* questions);
  EFI_STATUS GetOptions(UINT64* size, BootOptionBlock** block);
  EFI_STATUS AnswerPassword(UINT32 question, UINT32 entry, UINT64* size, void* answer);

  SettingsProtocol settings_{};
  SettingDefaultsProtocol defaults_{};
  FormBrowserDataProtocol browser_{};
  TableTransportProtocol transport_{};
  ModeQueryProtocol mode_{};
  PasswordStateQueryProtocol passwordState_{};
  AssetTagLengthProtocol assetTag_{};
  FirmwareVersionData versionData_{};
  FirmwareVersionProtocol version_{};
  CameraIdentifiersProtocol cameras_{};
  BootOptionSourceProtocol bootOptions_{};

  std::list<FormSetRecord> formSetRecords_;
  std::list<ParsedFormSet> parsed_;
};
