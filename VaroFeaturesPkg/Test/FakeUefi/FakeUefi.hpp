/** @file
  FakeUefi: a UEFI for the host. A driver cannot tell its behaviour from that of a real one.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include <cstdint>
#include <cstring>
#include <deque>
#include <list>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "uefi/Edk2.hpp"

extern "C" {
#include <Protocol/HiiDatabase.h>
#include <Protocol/HiiString.h>
#include <Protocol/LoadedImage.h>
}

using Bytes = std::vector<std::uint8_t>;

/// UCS-2 text with a terminator.
using Ucs2String = std::basic_string<CHAR16>;
inline Ucs2String Ucs2(std::u16string_view text) {
  return {text.begin(), text.end()};
}

struct GuidLess {
  bool operator()(const EFI_GUID& left, const EFI_GUID& right) const {
    return std::memcmp(&left, &right, sizeof(EFI_GUID)) < 0;
  }
};
inline bool SameGuid(const EFI_GUID& left, const EFI_GUID& right) {
  return std::memcmp(&left, &right, sizeof(EFI_GUID)) == 0;
}

/// Calls that are counted and can be made to fail.
enum class Service { Allocation, VariableRead, VariableWrite, ProtocolLookup, Registration, HiiString, PlatformCall };

/// One machine. There is one at a time; gBS, gRT and gST lead to it. What a driver may never do (free a block twice,
/// lower the TPL by RaiseTPL, fail an assertion) fails the running test.
class FakeUefi {
 public:
  FakeUefi();
  FakeUefi(const FakeUefi&) = delete;
  FakeUefi& operator=(const FakeUefi&) = delete;
  ~FakeUefi();

  [[nodiscard]] static FakeUefi& Current();

  /// Reports a misuse: fails the running test, or aborts if there is none.
  static void Misuse(const std::string& what);

  /// Keeps only the non-volatile variables.
  void Reboot();

  // Faults.

  enum class Later { Succeed, Fail };
  /// Makes the nth call of a kind from now on, counted from 1, return `status`; with Later::Fail all later ones too.
  void Fail(Service service, size_t nth, EFI_STATUS status, Later later = Later::Succeed);
  [[nodiscard]] size_t Calls(Service service) const;
  /// Makes these calls fail as their services usually do, counted from now over all kinds.
  void FailCalls(const std::set<size_t>& calls);
  [[nodiscard]] size_t AllCalls() const { return allCalls_; }
  /// Counts one call; the status that it fails with, or EFI_SUCCESS.
  [[nodiscard]] EFI_STATUS Enter(Service service);

  // Pool. A block is filled with 0xA5 when it is given out.

  [[nodiscard]] size_t LivePoolBlocks() const { return pool_.size(); }
  /// The live blocks and their bytes.
  [[nodiscard]] const std::map<const void*, size_t>& PoolBlocks() const { return pool_; }
  /// A block as a driver would get it, which never fails and is not counted as a call.
  [[nodiscard]] void* GivePool(size_t size);

  // Protocols and events.

  EFI_HANDLE Install(const EFI_GUID& guid, void* interface, EFI_HANDLE handle = nullptr);
  template <typename T>
  [[nodiscard]] T* Find(const EFI_GUID& guid) const {
    for (const Installation& installation : installed_) {
      if (SameGuid(installation.Guid, guid)) {
        return static_cast<T*>(installation.Interface);
      }
    }
    return nullptr;
  }
  /// Status of LocateProtocol for a protocol instead of EFI_SUCCESS. A warning comes with the interface.
  std::map<EFI_GUID, EFI_STATUS, GuidLess> LookupStatus;
  [[nodiscard]] EFI_TPL Tpl() const { return tpl_; }
  EFI_LOADED_IMAGE_PROTOCOL LoadedImage{};  ///< of the driver, on gImageHandle
  /// What gST->ConfigurationTable holds.
  void SetConfigurationTable(std::vector<EFI_CONFIGURATION_TABLE> entries);

  // Variables.

  struct Variable {
    UINT32 Attributes;
    Bytes Data;
    bool operator==(const Variable&) const = default;
  };
  using VariableKey = std::pair<Ucs2String, EFI_GUID>;
  struct VariableLess {
    bool operator()(const VariableKey& left, const VariableKey& right) const {
      return left.first != right.first ? left.first < right.first : GuidLess()(left.second, right.second);
    }
  };
  std::map<VariableKey, Variable, VariableLess> Variables;
  std::set<Ucs2String> Protected;       ///< names of variables that cannot be changed, as authenticated ones
  size_t VariableSizeLimit = 0x8000;    ///< of one, name included
  size_t VariableSpaceLimit = 0x40000;  ///< of all

  // HII.

  [[nodiscard]] EFI_HII_HANDLE AddPackageList();
  /// One text in several languages. An identifier exists in those languages only. Equal texts share one.
  EFI_STRING_ID AddString(EFI_HII_HANDLE package, const std::map<std::string, std::u16string>& texts);
  EFI_HII_DATABASE_PROTOCOL HiiDatabase{};  ///< located, never called
  EFI_HII_STRING_PROTOCOL HiiString{};

  // What a driver reports.

  struct DebugMessage {
    UINTN Level;
    std::string Text;
  };
  std::vector<DebugMessage> DebugMessages;
  /// Messages at DEBUG_WARN or DEBUG_ERROR that contain `text`.
  [[nodiscard]] size_t Warnings(std::string_view text = {}) const;
  std::vector<std::string> Measurements;  ///< "start TOKEN MODULE", "end TOKEN MODULE"

 private:
  struct Installation {
    EFI_HANDLE Handle;
    EFI_GUID Guid;
    void* Interface;
  };
  struct Event {
    UINT32 Type;
    EFI_TPL NotifyTpl;
    EFI_EVENT_NOTIFY Notify;
    void* Context;
  };
  struct Registration {
    EFI_GUID Guid;
    Event* Signalled;
  };
  struct Fault {
    size_t First;
    bool AndLater;
    EFI_STATUS Status;
  };
  struct PackageList {
    std::map<std::string, std::map<EFI_STRING_ID, Ucs2String>> Languages;
    std::map<std::map<std::string, std::u16string>, EFI_STRING_ID> Identifiers;
  };

  void FillPoolServices();
  void FillEventServices();
  void FillProtocolServices();
  void FillVariableServices();
  void FillHiiServices();

  void Signal(Event& event);
  void DispatchNotifications();
  [[nodiscard]] Installation* Installed(EFI_HANDLE handle, const EFI_GUID& guid);
  [[nodiscard]] std::vector<EFI_HANDLE> HandlesOf(const EFI_GUID& guid);
  EFI_STATUS InstallInterface(EFI_HANDLE* handle, const EFI_GUID* guid, void* interface);
  EFI_STATUS UninstallInterface(EFI_HANDLE handle, const EFI_GUID& guid, const void* interface);
  EFI_STATUS SetVariable(const CHAR16* name, const EFI_GUID& vendor, UINT32 attributes, UINTN size, const void* data);

  EFI_BOOT_SERVICES bootServices_{};
  EFI_RUNTIME_SERVICES runtimeServices_{};
  EFI_SYSTEM_TABLE systemTable_{};

  std::map<Service, size_t> calls_;
  std::map<Service, Fault> faults_;
  size_t allCalls_ = 0;
  std::set<size_t> failingCalls_;
  std::map<const void*, size_t> pool_;
  std::set<void*> pages_;

  EFI_TPL tpl_ = TPL_APPLICATION;
  std::list<Event> events_;
  std::deque<Event*> signalled_;  ///< in the order of their signals
  std::deque<char> handles_;      ///< a handle is the address of one of these
  std::vector<Installation> installed_;
  std::list<Registration> registrations_;
  std::vector<EFI_CONFIGURATION_TABLE> configuration_;

  std::list<PackageList> packageLists_;
};
