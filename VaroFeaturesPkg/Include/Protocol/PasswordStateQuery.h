/** @file
  PasswordStateQueryProtocol: which passwords the platform keeps, and their states. Optional.

  Two protocols share this interface. gVaroPasswordDirectoryProtocolGuid answers what there is
  (PASSWORD_QUERY_ENTRY_COUNT, PASSWORD_QUERY_ENTRY), gVaroPasswordStateProtocolGuid answers for the state
  (PASSWORD_QUERY_STATE). One driver may install both on one handle with one interface. Without either of them every
  password counts as not installed.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_PASSWORD_STATE_QUERY_H_
#define PROTOCOL_PASSWORD_STATE_QUERY_H_

#include <Uefi/UefiBaseType.h>

#define VARO_PASSWORD_DIRECTORY_PROTOCOL_GUID \
  { 0x4FC92D54, 0x4C86, 0x4038, { 0x83, 0xCE, 0x96, 0x7B, 0x87, 0x83, 0x81, 0x8E } }
#define VARO_PASSWORD_STATE_PROTOCOL_GUID \
  { 0xC45A22C5, 0x55C4, 0x4ADA, { 0xAA, 0x0B, 0x47, 0x8F, 0x99, 0x08, 0xCC, 0x8A } }

///
/// Owner of the entries that the driver publishes. The driver skips entries of other owners.
///
#define VARO_SYSTEM_PASSWORDS_GUID \
  { 0xBC8F69B5, 0xE43B, 0x4D23, { 0xB2, 0xDF, 0xB9, 0x69, 0x30, 0x19, 0x09, 0xF2 } }

typedef enum {
  PasswordQueryEntryCount = 1,   ///< Answer: UINT32, number of entries
  PasswordQueryEntry      = 2,   ///< Answer: PasswordEntry of the entry asked for
  PasswordQueryState      = 3    ///< Answer: UINT32, state of the entry asked for; PASSWORD_STATE_INSTALLED
} PASSWORD_QUERY;

#define PASSWORD_KIND_SYSTEM  0
#define PASSWORD_KIND_ADMIN   1
#define PASSWORD_KIND_OWNER   2

#define PASSWORD_STATE_INSTALLED  BIT0

typedef struct {
  UINT32      Kind;   ///< PASSWORD_KIND_...; a later entry of a kind replaces an earlier one
  EFI_GUID    Owner;  ///< gVaroSystemPasswordsGuid
} PasswordEntry;

typedef struct _PasswordStateQueryProtocol PasswordStateQueryProtocol;

/**
  Answers one question.

  @param[in]      This      The protocol.
  @param[in]      Question  PASSWORD_QUERY.
  @param[in]      Entry     Number of the entry, from 0; 0 for PasswordQueryEntryCount.
  @param[in,out]  Size      Bytes of Answer on input; bytes written on output.
  @param[out]     Answer    The answer of the question's type; zero before the driver calls.

  @retval EFI_SUCCESS      Answer is filled.
  @retval EFI_NOT_FOUND    There is no such entry.
  @retval EFI_UNSUPPORTED  This protocol does not answer this question.
**/
typedef
EFI_STATUS
(EFIAPI *PASSWORD_STATE_QUERY)(
  IN     PasswordStateQueryProtocol   *This,
  IN     UINT32                       Question,
  IN     UINT32                       Entry,
  IN OUT UINT64                       *Size,
  OUT    VOID                         *Answer
  );

struct _PasswordStateQueryProtocol {
  PASSWORD_STATE_QUERY    Query;
};

extern EFI_GUID  gVaroPasswordDirectoryProtocolGuid;
extern EFI_GUID  gVaroPasswordStateProtocolGuid;
extern EFI_GUID  gVaroSystemPasswordsGuid;

#endif
