/** @file
  Attributes of the MIPI cameras.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#include "sources/Cameras.hpp"

#include "sources/PlatformAttributes.hpp"
#include "uefi/Protocols.hpp"

extern "C" {
#include <Protocol/CameraIdentifiers.h>
}

namespace {

constexpr std::array<OwnAttribute, 4> kCameras = {{OWN_CAMERA_1, OWN_CAMERA_2, OWN_CAMERA_3, OWN_CAMERA_4}};

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
        BuildFixedText(database, kCameras[camera], identifier, 0, static_cast<UINT16>(AsciiLength(identifier) + 1));
      }
    }
    ++camera;
  } while (camera < cameras->Count);
  return EFI_SUCCESS;
}
