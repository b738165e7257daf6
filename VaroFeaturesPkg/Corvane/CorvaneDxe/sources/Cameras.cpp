/** @file
  Attributes of the MIPI cameras.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "sources/Cameras.hpp"

#include "sources/Interning.hpp"
#include "uefi/Protocols.hpp"

extern "C" {
#include <Protocol/CameraIdentifiers.h>
}

namespace {

constexpr UINT32 kFirstCameraToken = 3732;
constexpr UINT32 kCameraAttributes = 4;

void BuildCamera(AttributeDatabase& database, UINT32 camera, const CHAR16* name, const CHAR16* displayName,
                 const CHAR8* identifier) {
  OwnedRecord<StringRecord> record = MakeRecord<StringRecord>(true);
  PoolPtr<CHAR8[]> copy = CopyAscii(identifier);
  if (!record || !copy) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: attribute \"%s\" dropped: out of memory\n", name));
    return;
  }
  record->Head.NameHandle = Raw(InternName(database, name));
  InternDisplayString(database, displayName);
  record->Head.Token = kFirstCameraToken + camera;
  record->StringType = PLDM_BIOS_STRING_TYPE_ASCII;
  record->MaxLength = static_cast<UINT16>(AsciiLength(identifier) + 1);
  record->CurrentString = copy.release();
  database.AddAttribute(AsAttribute(std::move(record)));
}

}  // namespace

EFI_STATUS BuildCameras(AttributeDatabase& database) {
  const auto* const cameras = FindProtocol<CameraIdentifiersProtocol>(gVaroCameraIdentifiersProtocolGuid);
  if (cameras == nullptr) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: gVaroCameraIdentifiersProtocolGuid not found: no camera attribute is built\n"));
    return EFI_UNSUPPORTED;
  }
  UINT32 camera = 0;
  do {  // once even for no camera: the first identifier then tells
    std::array<CHAR16, 12> name{};
    std::array<CHAR16, 24> displayName{};
    TextWriter{name}.Put(ViewOf(u"MIPICam"_ucs2)).PutDecimal(camera + 1);
    TextWriter{displayName}.Put(ViewOf(u"MIPI Camera "_ucs2)).PutDecimal(camera + 1);
    if (camera < kCameraAttributes && cameras->Identifiers != nullptr) {
      const CHAR8* const identifier = cameras->Identifiers[camera];
      if (identifier != nullptr && *identifier != 0) {
        BuildCamera(database, camera, name.data(), displayName.data(), identifier);
      }
    }
    ++camera;
  } while (camera < cameras->Count);
  return EFI_SUCCESS;
}
