/** @file
  RequestBuffer: the wire format between the attribute access protocol and the platform's attribute service.

  One buffer of REQUEST_BUFFER_SIZE bytes carries a request to the service and the answer back. It is sent through
  RequestDispatchProtocol. Before each dispatch Results[0] is REQUEST_NOT_HANDLED and the other results are 0; a service
  that handles the request sets Results[0] to 0. After each answer has been read the whole buffer is set to zero.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef CORVANE_ATTRIBUTE_REQUEST_H_
#define CORVANE_ATTRIBUTE_REQUEST_H_

#include <Base.h>
#include <Corvane/Packed.h>

#define REQUEST_BUFFER_SIZE  65536

#define REQUEST_NOT_HANDLED  0xFFFFFFFDU

//
// RequestBlock.Class and, for each class, RequestBlock.Select.
//
#define REQUEST_CLASS_ATTRIBUTES         5
#define REQUEST_SELECT_DIRECTORY         3   ///< answer: TableDirectory
#define REQUEST_SELECT_TABLE             4   ///< answer: a table, or a chunk of it
#define REQUEST_SELECT_VALUE             5   ///< AttributePayload; answer: the current value
#define REQUEST_SELECT_SET               6   ///< AttributePayload; answer: a status byte

#define REQUEST_CLASS_SYSTEM_PASSWORD    9
#define REQUEST_CLASS_ADMIN_PASSWORD     10
#define REQUEST_SELECT_PASSWORD_QUERY    3   ///< Results[1]: PASSWORD_REQUEST_...
#define REQUEST_SELECT_PASSWORD_VERIFY   4   ///< password at PayloadLength, unterminated; Results[1]: its key

//
// Results[1] of REQUEST_SELECT_PASSWORD_QUERY.
//
#define PASSWORD_REQUEST_STATE(Result)           ((UINT8)(Result))          ///< 0: a password is installed
#define PASSWORD_REQUEST_MAXIMUM_LENGTH(Result)  ((UINT8)((Result) >> 8))   ///< characters

///
/// What the payload area is filled with before a directory or table request: memory bytes "DSCI".
///
#define REQUEST_PAYLOAD_FILL  0x49435344U

//
// The status byte of a set or value answer, and the EFI_STATUS that it becomes. Any other value is EFI_ABORTED.
//
#define ATTRIBUTE_STATUS_SUCCESS            0   ///< EFI_SUCCESS
#define ATTRIBUTE_STATUS_UNSUPPORTED        1   ///< EFI_UNSUPPORTED
#define ATTRIBUTE_STATUS_ACCESS_DENIED      2   ///< EFI_ACCESS_DENIED
#define ATTRIBUTE_STATUS_INVALID_PARAMETER  3   ///< EFI_INVALID_PARAMETER
#define ATTRIBUTE_STATUS_BUFFER_TOO_SMALL   4   ///< EFI_BUFFER_TOO_SMALL

#pragma pack (1)

///
/// What RequestDispatchProtocol is called with; it stands within the RequestBuffer that it describes.
///
typedef struct {
  UINT8     Marker;            ///< DISPATCH_DESCRIPTOR_MARKER
  UINT8     Reserved0[7];      ///< 0
  UINT64    RequestBuffer;     ///< address of the RequestBlock
  UINT8     Unused[8];         ///< not written
  UINT16    IoAddress;         ///< of the platform's calling interface, from SMBIOS type 218; 0 when there is none
  UINT8     Reserved1[6];      ///< 0
} CORVANE_PACKED DispatchDescriptor;

#define DISPATCH_DESCRIPTOR_MARKER  0x7C

///
/// Start of the RequestBuffer.
///
typedef struct {
  UINT16                Class;           ///< REQUEST_CLASS_...
  UINT16                Select;          ///< REQUEST_SELECT_...
  ///
  /// [0] low 32 bits of the address of PayloadLength; 1 for REQUEST_SELECT_PASSWORD_QUERY
  /// [1] password key of a set request, 0 without a password
  /// [2] table id of REQUEST_SELECT_TABLE
  /// [3] byte offset of REQUEST_SELECT_TABLE within the table
  ///
  UINT32                Arguments[4];
  UINT32                Results[4];      ///< [0] 0 = handled
  DispatchDescriptor    Descriptor;
  UINT8                 Unused[24];      ///< not written
  ///
  /// Bytes of the payload, which follows; in a request at most REQUEST_PAYLOAD_CAPACITY. Answers with a directory or a
  /// table are described below.
  ///
  UINT32                PayloadLength;
} CORVANE_PACKED RequestBlock;

#define REQUEST_PAYLOAD_CAPACITY  (REQUEST_BUFFER_SIZE - sizeof (RequestBlock))

//
// Answers of REQUEST_SELECT_DIRECTORY and REQUEST_SELECT_TABLE.
//
// A directory, and a table of up to 65,439 bytes, is a whole answer: PayloadLength counts its own four bytes and the
// payload. A text table (TABLE_DIRECTORY_TYPE_TEXT) of 65,444 bytes or more is announced and sent in chunks: the first
// answer at offset 0 announces, with the table's length as PayloadLength; the next request at offset 0 and those at
// higher offsets are answered with a chunk each, PayloadLength being the bytes of the chunk alone. The service sends
// tables without pad and checksum.
//

///
/// Payload of REQUEST_SELECT_VALUE and REQUEST_SELECT_SET, followed by
///
///   value, by handle    UINT16 128; the answer's value part stands where its type byte ends, 25 bytes into the payload
///   value, by name      the name, UINT16 133 - NameLength; the answer is UINT16 length and the value in place of what
///                       follows that, and a status byte 157 bytes into the payload whatever the name's length
///   set, by handle      UINT16 bytes that follow, UINT8 type, the value, and a status byte for the answer
///                         integer      UINT64
///                         string       UINT16 length and that many bytes
///                         enumeration  UINT8 1 and UINT8 index
///   set, by name        the name, UINT16 m + 2, UINT16 m, m bytes of the value as text; the answer's status byte
///                       follows
///
typedef struct {
  CHAR8     Signature[8];   ///< ATTRIBUTE_PAYLOAD_SIGNATURE
  UINT8     Checksum;       ///< makes the checksummed bytes, which start at Signature, sum to 0 modulo 256
  UINT8     ByName;         ///< 1 = NameLength and a name, 0 = Handle
  UINT16    Reserved;       ///< 0
  UINT32    Length;         ///< of a set by handle the bytes from Signature on, else ATTRIBUTE_PAYLOAD_LENGTH
  UINT16    Count;          ///< 1
  UINT16    KeySize;        ///< bytes of what names the attribute: 2, or NameLength + 2
  union {
    UINT16    Handle;       ///< attribute handle
    UINT16    NameLength;   ///< bytes of the name that follows, unterminated
  } Key;
} CORVANE_PACKED AttributePayload;

#define ATTRIBUTE_PAYLOAD_SIGNATURE  "$ACIPLDM"
#define ATTRIBUTE_PAYLOAD_LENGTH     162          ///< PayloadLength is 4 more

//
// Bytes from AttributePayload.Signature on that the checksum covers.
//
#define ATTRIBUTE_CHECKSUM_VALUE_SIZE                35                              ///< value by handle, for its size
#define ATTRIBUTE_CHECKSUM_VALUE                     162                             ///< value by handle, to read it
#define ATTRIBUTE_CHECKSUM_INTEGER                   34
#define ATTRIBUTE_CHECKSUM_ENUMERATION               28
#define ATTRIBUTE_CHECKSUM_STRING(Length)            ((Length) + 28)
#define ATTRIBUTE_CHECKSUM_VALUE_BY_NAME(Name)       ((Name) + 24)
#define ATTRIBUTE_CHECKSUM_SET_BY_NAME(Name, Value)  ((Name) + (Value) + 26)

//
// Offsets of answers in the RequestBuffer.
//
#define ATTRIBUTE_VALUE_OFFSET                121   ///< value part of a value by handle
#define ATTRIBUTE_VALUE_BY_NAME_STATUS        253   ///< status byte of a value by name

#pragma pack ()

#endif
