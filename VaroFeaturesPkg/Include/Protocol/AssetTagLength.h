/** @file
  AssetTagLengthProtocol: bounds of the asset tag and the platform's strings. Provided by the platform.

  When it is missing, a boot with a valid cache publishes nothing, and the strings with Token 9752 and 1559 keep their
  cached text in a boot from the cache.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_ASSET_TAG_LENGTH_H_
#define PROTOCOL_ASSET_TAG_LENGTH_H_

#include <Uefi/UefiBaseType.h>

#define VARO_ASSET_TAG_LENGTH_PROTOCOL_GUID \
  { 0xFBFD295D, 0xECDF, 0x4914, { 0x9A, 0x3E, 0xE4, 0xDD, 0x71, 0x89, 0xA3, 0x47 } }

#define PLATFORM_STRING_ASSET_TAG    0   ///< of Token 9752
#define PLATFORM_STRING_SECOND       1   ///< of Token 1559

/**
  Gives the bounds of the asset tag.

  @param[in]   Selector  1.
  @param[in]   Context   NULL.
  @param[out]  Minimum   Fewest characters; 0 before the driver calls.
  @param[out]  Maximum   Most characters; 10 before the driver calls.

  @retval EFI_SUCCESS  The bounds are valid.
  @retval others       The bounds could not be read. With a valid cache, nothing is published in this boot.
**/
typedef
EFI_STATUS
(EFIAPI *ASSET_TAG_GET_LENGTH)(
  IN  UINT32  Selector,
  IN  VOID    *Context,
  OUT UINT64  *Minimum,
  OUT UINT64  *Maximum
  );

/**
  Gives one of the platform's strings.

  @param[in]      Selector  PLATFORM_STRING_...
  @param[in]      Context   0.
  @param[in,out]  Size      Bytes of Buffer on input; bytes of the string on output. 0 on success = the string is
                            cleared.
  @param[out]     Buffer    The string, ASCII; NULL with Size 0.

  @retval EFI_SUCCESS           Buffer holds the string.
  @retval EFI_BUFFER_TOO_SMALL  Size holds the bytes needed.
  @retval others                The string could not be read.
**/
typedef
EFI_STATUS
(EFIAPI *PLATFORM_STRING_GET)(
  IN     UINT32  Selector,
  IN     UINT32  Context,
  IN OUT UINT64  *Size,
  OUT    CHAR8   *Buffer OPTIONAL
  );

typedef struct {
  ASSET_TAG_GET_LENGTH    GetLength;
  PLATFORM_STRING_GET     GetString;
} AssetTagLengthProtocol;

extern EFI_GUID  gVaroAssetTagLengthProtocolGuid;

#endif
