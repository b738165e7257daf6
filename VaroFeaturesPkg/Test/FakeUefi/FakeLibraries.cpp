/** @file
  EDK II library classes that a host answers itself: DebugLib, PerformanceLib, and the GUIDs of a module's AutoGen.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include <array>

#include "FakeUefi/FakeNotebook.hpp"

extern "C" {
#include <Guid/GlobalVariable.h>
#include <Guid/SmBios.h>
#include <Library/PrintLib.h>
#include <Protocol/AttributeAccess.h>
#include <Protocol/RequestDispatch.h>

EFI_GUID gEfiGlobalVariableGuid = EFI_GLOBAL_VARIABLE;
EFI_GUID gEfiHiiDatabaseProtocolGuid = EFI_HII_DATABASE_PROTOCOL_GUID;
EFI_GUID gEfiHiiStringProtocolGuid = EFI_HII_STRING_PROTOCOL_GUID;
EFI_GUID gEfiLoadedImageProtocolGuid = EFI_LOADED_IMAGE_PROTOCOL_GUID;
EFI_GUID gEfiSmbiosTableGuid = SMBIOS_TABLE_GUID;

EFI_GUID gVaroAttributeVariableGuid = VARO_ATTRIBUTE_VARIABLE_GUID;
EFI_GUID gVaroTransportRecordGuid = VARO_TRANSPORT_RECORD_GUID;
EFI_GUID gVaroSettingsNamespaceGuid = VARO_SETTINGS_NAMESPACE_GUID;
EFI_GUID gVaroSetupFormSetsGuid = VARO_SETUP_FORM_SETS_GUID;
EFI_GUID gVaroSetupHiddenFormSetGuid = VARO_SETUP_HIDDEN_FORM_SET_GUID;
EFI_GUID gVaroSystemPasswordsGuid = VARO_SYSTEM_PASSWORDS_GUID;
EFI_GUID gVaroAssetTagLengthProtocolGuid = VARO_ASSET_TAG_LENGTH_PROTOCOL_GUID;
EFI_GUID gVaroAttributeAccessProtocolGuid = VARO_ATTRIBUTE_ACCESS_PROTOCOL_GUID;
EFI_GUID gVaroBootOptionSourceProtocolGuid = VARO_BOOT_OPTION_SOURCE_PROTOCOL_GUID;
EFI_GUID gVaroCameraIdentifiersProtocolGuid = VARO_CAMERA_IDENTIFIERS_PROTOCOL_GUID;
EFI_GUID gVaroFirmwareVersionProtocolGuid = VARO_FIRMWARE_VERSION_PROTOCOL_GUID;
EFI_GUID gVaroFormBrowserDataProtocolGuid = VARO_FORM_BROWSER_DATA_PROTOCOL_GUID;
EFI_GUID gVaroFormSetsUpdatedProtocolGuid = VARO_FORM_SETS_UPDATED_PROTOCOL_GUID;
EFI_GUID gVaroModeQueryProtocolGuid = VARO_MODE_QUERY_PROTOCOL_GUID;
EFI_GUID gVaroPasswordServiceProtocolGuid = VARO_PASSWORD_SERVICE_PROTOCOL_GUID;
EFI_GUID gVaroPasswordDirectoryProtocolGuid = VARO_PASSWORD_DIRECTORY_PROTOCOL_GUID;
EFI_GUID gVaroPasswordStateProtocolGuid = VARO_PASSWORD_STATE_PROTOCOL_GUID;
EFI_GUID gVaroPublishedTablesProtocolGuid = VARO_PUBLISHED_TABLES_PROTOCOL_GUID;
EFI_GUID gVaroRequestDispatchProtocolGuid = VARO_REQUEST_DISPATCH_PROTOCOL_GUID;
EFI_GUID gVaroSettingDefaultsProtocolGuid = VARO_SETTING_DEFAULTS_PROTOCOL_GUID;
EFI_GUID gVaroSettingsProtocolGuid = VARO_SETTINGS_PROTOCOL_GUID;
EFI_GUID gVaroTableTransportProtocolGuid = VARO_TABLE_TRANSPORT_PROTOCOL_GUID;
EFI_GUID gVaroTablesRequestedProtocolGuid = VARO_TABLES_REQUESTED_PROTOCOL_GUID;
}

size_t FakeUefi::Warnings(std::string_view text) const {
  return static_cast<size_t>(
      std::count_if(DebugMessages.begin(), DebugMessages.end(), [text](const DebugMessage& message) {
        return (message.Level & (DEBUG_WARN | DEBUG_ERROR)) != 0 && message.Text.find(text) != std::string::npos;
      }));
}

extern "C" {

VOID EFIAPI DebugPrint(UINTN level, const CHAR8* format, ...) {
  std::array<CHAR8, 8192> text{};
  VA_LIST list;
  VA_START(list, format);
  AsciiVSPrint(text.data(), text.size(), format, list);
  VA_END(list);
  FakeUefi::Current().DebugMessages.push_back({level, text.data()});
}
VOID EFIAPI DebugAssert(const CHAR8* file, UINTN line, const CHAR8* description) {
  FakeUefi::Misuse(std::string("assertion: ") + file + "(" + std::to_string(line) + "): " + description);
}
VOID* EFIAPI DebugClearMemory(VOID* buffer, UINTN) {
  return buffer;
}
BOOLEAN EFIAPI DebugAssertEnabled() {
  return TRUE;
}
BOOLEAN EFIAPI DebugPrintEnabled() {
  return TRUE;
}
BOOLEAN EFIAPI DebugCodeEnabled() {
  return TRUE;
}
BOOLEAN EFIAPI DebugClearMemoryEnabled() {
  return FALSE;
}
BOOLEAN EFIAPI DebugPrintLevelEnabled(const UINTN) {
  return TRUE;
}

BOOLEAN EFIAPI PerformanceMeasurementEnabled() {
  return TRUE;
}
RETURN_STATUS EFIAPI StartPerformanceMeasurement(const VOID*, const CHAR8* token, const CHAR8* module, UINT64) {
  FakeUefi::Current().Measurements.push_back(std::string("start ") + token + " " + module);
  return RETURN_SUCCESS;
}
RETURN_STATUS EFIAPI EndPerformanceMeasurement(const VOID*, const CHAR8* token, const CHAR8* module, UINT64) {
  FakeUefi::Current().Measurements.push_back(std::string("end ") + token + " " + module);
  return RETURN_SUCCESS;
}
}
