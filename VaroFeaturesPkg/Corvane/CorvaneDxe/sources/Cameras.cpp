/** @file
  Attributes of the MIPI cameras.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "sources/Cameras.hpp"

#include "sources/Interning.hpp"
#include "uefi/Protocols.hpp"

extern "C" {
#include <Corvane/OwnAttributes.h>
#include <Protocol/CameraIdentifiers.h>
}

namespace {

constexpr std::array<OwnAttribute, 4> kCameras = {{OWN_CAMERA_1, OWN_CAMERA_2, OWN_CAMERA_3, OWN_CAMERA_4}};

void BuildCamera(AttributeDatabase& database, const OwnAttribute& camera, const CHAR8* identifier) {
  OwnedRecord<StringRecord> record = MakeRecord<StringRecord>(true);
  PoolPtr<CHAR8[]> copy = CopyAscii(identifier);
  if (!record || !copy) {
    DEBUG((DEBUG_WARN, "CorvaneDxe: attribute \"%a\" dropped: out of memory\n", camera.Name));
    return;
  }
  record->Head.NameHandle = Raw(InternOwnTexts(database, camera.Name, camera.DisplayText).Name);
  record->Head.Token = camera.Token;
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
    if (camera < kCameras.size() && cameras->Identifiers != nullptr) {
      const CHAR8* const identifier = cameras->Identifiers[camera];
      if (identifier != nullptr && *identifier != 0) {
        BuildCamera(database, kCameras[camera], identifier);
      }
    }
    ++camera;
  } while (camera < cameras->Count);
  return EFI_SUCCESS;
}
