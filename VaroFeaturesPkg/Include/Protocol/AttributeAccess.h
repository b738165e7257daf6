/** @file
  AttributeAccessProtocol: reads and changes the attributes that the platform's attribute service holds. Produced by
  CorvaneDxe on its image handle.

  The driver is a client of the service behind RequestDispatchProtocol: tables (strings, attributes, texts) are fetched
  when an operation first needs one, and kept; current values are asked for each time, so that a changed value is seen
  by the next read. All operations share one RequestBuffer: call them one at a time, at TPL_CALLBACK or below, before
  ExitBootServices.

  The firmware unloads an image whose entry point returned an error, but its protocol stays installed. Its operations
  are then unmapped code. Look for EFI_LOADED_IMAGE_PROTOCOL on the handle that carries this protocol, and call only if
  the handle has both.

  An operation that needs a missing table first fetches all tables that the service lists. It returns EFI_NOT_READY if
  the service does not answer, or the error of locating RequestDispatchProtocol. A table that the service does not list
  stays missing: each operation that needs the table fetches all others again, and the blocks of the earlier fetch stay
  allocated until boot services end. Do not repeat such an operation.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef PROTOCOL_ATTRIBUTE_ACCESS_H_
#define PROTOCOL_ATTRIBUTE_ACCESS_H_

#include <Uefi/UefiBaseType.h>
#include <Corvane/Packed.h>

#define VARO_ATTRIBUTE_ACCESS_PROTOCOL_GUID \
  { 0x3455650B, 0x64BB, 0x455F, { 0x9B, 0xBE, 0x72, 0x5B, 0x2D, 0x86, 0x67, 0xEB } }

#define ATTRIBUTE_ACCESS_REVISION  3

#pragma pack (1)

///
/// Head of the record of GetAttributeInfo and SetAttributeValue. Two parts follow without a gap, both as DSP0247 lays
/// them out (string and password defaults included); the second begins where the first ends:
///
///   type             attribute part                                            value part
///   0 enumeration    UINT8 n, n UINT16 value names, UINT8 d, d UINT8 defaults  UINT8 k, k UINT8 current indices
///   1 string         UINT8 string type, UINT16 minimum, UINT16 maximum,        UINT16 length, that many bytes
///                    UINT16 default length d, d bytes
///   2 password       as string                                                 as string
///   3 integer        UINT64 lower, UINT64 upper bound, UINT32 step,            UINT64 current value
///                    UINT64 default
///   4 boot config    4 bytes, UINT8 n, n UINT16 source names                   2 bytes, UINT8 k, k UINT8 positions
///   5 collection     4 bytes                                                   UINT8 n, n UINT16 members
///   6 config set     UINT8 n, n UINT16 names                                   UINT8 current index
///
typedef struct {
  UINT32    Type;         ///< attribute type, 0x80 set = read-only; ATTRIBUTE_INFO_UNKNOWN_TYPE for an unknown one
  UINT16    Handle;       ///< of the attribute; set by the caller before both operations
  UINT16    NameHandle;   ///< string handle of the name
} CORVANE_PACKED AttributeInfo;

#pragma pack ()

#define ATTRIBUTE_INFO_UNKNOWN_TYPE  255

typedef struct _AttributeAccessProtocol AttributeAccessProtocol;

/**
  Gives a text of the string table: the name of an attribute or of a value.

  @param[in]      This    The protocol.
  @param[in]      Handle  String handle.
  @param[out]     Buffer  Room for the text and a zero byte: one byte more than Size says is written when Size is
                          exactly the text's length.
  @param[in,out]  Size    Bytes of Buffer on input. Left as it is on success; the bytes needed, zero byte included, with
                          EFI_BUFFER_TOO_SMALL.

  @retval EFI_SUCCESS            Buffer holds the text, terminated.
  @retval EFI_BUFFER_TOO_SMALL   Size is less than the text's length; Size holds the bytes needed.
  @retval EFI_NOT_FOUND          There is no such handle.
  @retval EFI_INVALID_PARAMETER  This or Size is NULL, or Buffer is NULL where the text would fit.
  @retval others                 The string table could not be fetched.
**/
typedef
EFI_STATUS
(EFIAPI *ATTRIBUTE_GET_STRING)(
  IN     AttributeAccessProtocol  *This,
  IN     UINT16                   Handle,
  OUT    CHAR8                    *Buffer OPTIONAL,
  IN OUT UINT32                   *Size
  );

/**
  Finds an attribute by its name.

  @param[in]   This    The protocol.
  @param[in]   Name    Compared exactly with each attribute's name up to its first "[".
  @param[out]  Handle  Attribute handle of the first match.

  @retval EFI_SUCCESS            Handle is set.
  @retval EFI_INVALID_PARAMETER  No attribute has this name (this status, not EFI_NOT_FOUND), or This or Handle is NULL.
  @retval EFI_UNSUPPORTED        An attribute of unknown type stands before the one sought.
  @retval EFI_OUT_OF_RESOURCES   There is no memory for the search.
  @retval others                 The attribute table could not be fetched.
**/
typedef
EFI_STATUS
(EFIAPI *ATTRIBUTE_FIND_HANDLE)(
  IN  AttributeAccessProtocol  *This,
  IN  CONST CHAR8              *Name,
  OUT UINT16                   *Handle
  );

/**
  Gives a text of one of the two text tables: GetTextStringA the help texts, GetTextStringB the display texts. Both are
  lists in order of creation; nothing in them says which attribute a text belongs to.

  @param[in]      This    The protocol.
  @param[in]      Handle  Text handle; the low 16 bits count.
  @param[out]     Buffer  Room for the text and a zero character: two bytes more than Size says are written when Size is
                          exactly the text's length.
  @param[in,out]  Size    Bytes of Buffer on input. Left as it is on success; the bytes needed, zero character included,
                          with EFI_BUFFER_TOO_SMALL.

  @retval EFI_SUCCESS            Buffer holds the text, terminated.
  @retval EFI_BUFFER_TOO_SMALL   Size is less than the text's length; Size holds the bytes needed.
  @retval EFI_NOT_FOUND          There is no such handle.
  @retval EFI_INVALID_PARAMETER  This or Size is NULL, or Buffer is NULL where the text would fit.
  @retval others                 The text table could not be fetched.
**/
typedef
EFI_STATUS
(EFIAPI *ATTRIBUTE_GET_TEXT)(
  IN     AttributeAccessProtocol  *This,
  IN     UINT32                   Handle,
  OUT    CHAR16                   *Buffer OPTIONAL,
  IN OUT UINT32                   *Size
  );

/**
  Lists the handles of all attributes, in the order of the attribute table.

  @param[in]      This     The protocol.
  @param[out]     Handles  Room for the handles and a 0 after them: one handle more than Size says is written when Size
                           is exactly that of the handles.
  @param[in,out]  Size     Bytes of Handles on input. Left as it is on success; the bytes needed, the 0 included, with
                           EFI_BUFFER_TOO_SMALL.

  @retval EFI_SUCCESS            Handles holds all handles and a 0. Without any attribute it is the 0 alone, whatever
                                 Size says.
  @retval EFI_BUFFER_TOO_SMALL   Size is less than that of the handles; Size holds the bytes needed.
  @retval EFI_UNSUPPORTED        The table holds an attribute of unknown type; the handles before it have been
                                 written as far as they fit.
  @retval EFI_INVALID_PARAMETER  This or Size is NULL, or Handles is NULL where the handles would fit.
  @retval others                 The attribute table could not be fetched.
**/
typedef
EFI_STATUS
(EFIAPI *ATTRIBUTE_GET_HANDLES)(
  IN     AttributeAccessProtocol  *This,
  OUT    UINT16                   *Handles OPTIONAL,
  IN OUT UINT32                   *Size
  );

/**
  Gives type, name, attribute part and current value of an attribute.

  @param[in]      This  The protocol.
  @param[in,out]  Info  At least the head, with Handle set, whatever Size says. Type and NameHandle are written when the
                        attribute is there; both parts when Size is enough for them.
  @param[in,out]  Size  Bytes of the record on input. Left as it is on success; the bytes needed with
                        EFI_BUFFER_TOO_SMALL.

  @retval EFI_SUCCESS            The record is filled. Also when there is no attribute of this handle: the record is
                                 then as it was, so set Type to something no attribute has before asking.
  @retval EFI_BUFFER_TOO_SMALL   Size is too small; Size holds the bytes needed.
  @retval EFI_ABORTED            The service gave no value, or one that does not fit.
  @retval EFI_UNSUPPORTED        An attribute of unknown type stands before the one sought.
  @retval EFI_INVALID_PARAMETER  An argument is NULL.
  @retval others                 The attribute table could not be fetched.
**/
typedef
EFI_STATUS
(EFIAPI *ATTRIBUTE_GET_INFO)(
  IN     AttributeAccessProtocol  *This,
  IN OUT AttributeInfo            *Info,
  IN OUT UINT32                   *Size
  );

/**
  Asks the service to change an integer, string or enumeration.

  @param[in]      This      The protocol.
  @param[in,out]  Info      A record as GetAttributeInfo fills it, with the new value in its value part. Of an
                            enumeration the first current index is sent; its head is written again.
  @param[in]      Size      Bytes of the record. Of an enumeration exactly what GetAttributeInfo asks for.
  @param[in]      Password  NUL-terminated; NULL or one that the service refuses = the request goes without a key.

  @retval EFI_SUCCESS            The service accepted the value. Of a string it means no more than that the service
                                 handled the request: read the value back.
  @retval EFI_ACCESS_DENIED      The service wants a password, or the attribute is read-only.
  @retval EFI_UNSUPPORTED        The service does not know the attribute.
  @retval EFI_INVALID_PARAMETER  The service refuses the value, or it does not fit the request; or This or Info is NULL
                                 or Size is 0.
  @retval EFI_BUFFER_TOO_SMALL   The record is shorter than what would be sent, or an enumeration's is not exactly as
                                 long as GetAttributeInfo asks for.
  @retval EFI_ABORTED            The attribute is of another type (nothing is sent), or the service did not answer.
  @retval EFI_OUT_OF_RESOURCES   There is no RequestBuffer.
  @retval others                 The attribute table could not be fetched.
**/
typedef
EFI_STATUS
(EFIAPI *ATTRIBUTE_SET_VALUE)(
  IN     AttributeAccessProtocol  *This,
  IN OUT AttributeInfo            *Info,
  IN     UINT32                   Size,
  IN     CONST CHAR8              *Password OPTIONAL
  );

/**
  Gives the buffer that the operations send their requests in, for requests of the caller's own. It may not be used
  while an operation runs, and every operation that sends a request leaves it zeroed.

  @param[in]   This    The protocol.
  @param[out]  Buffer  Address of the RequestBuffer.
  @param[out]  Size    REQUEST_BUFFER_SIZE.

  @retval EFI_SUCCESS            Buffer is set.
  @retval EFI_OUT_OF_RESOURCES   There is none.
  @retval EFI_INVALID_PARAMETER  Buffer is NULL.
**/
typedef
EFI_STATUS
(EFIAPI *ATTRIBUTE_GET_REQUEST_BUFFER)(
  IN  AttributeAccessProtocol  *This,
  OUT VOID                     **Buffer,
  OUT UINT32                   *Size OPTIONAL
  );

/**
  Gives the current value of an attribute, found by the service by its name.

  @param[in]      This    The protocol.
  @param[in]      Name    As the service knows it. The answer's status stands at a fixed place, which a name of more
                          than 131 characters reaches into: there the status says nothing.
  @param[out]     Buffer  The value's bytes, in the service's form, unterminated.
  @param[in,out]  Size    Bytes of Buffer on input. Left as it is on success (the value's own length is not given); the
                          bytes needed with EFI_BUFFER_TOO_SMALL, so ask with Size 0 first.

  @retval EFI_SUCCESS            Buffer holds the value.
  @retval EFI_BUFFER_TOO_SMALL   Size is too small (Size holds the bytes needed), or the service returned this status.
  @retval EFI_UNSUPPORTED        The service does not know the attribute.
  @retval EFI_ACCESS_DENIED      The service does not give the value.
  @retval EFI_INVALID_PARAMETER  This, Name or Size is NULL, Buffer is NULL where the value would fit, the name does not
                                 fit the request, or the service returned this status.
  @retval EFI_ABORTED            The service did not handle the request, or its answer is malformed.
  @retval EFI_OUT_OF_RESOURCES   There is no RequestBuffer.
  @retval others                 The request was not delivered, or the attribute table could not be fetched.
**/
typedef
EFI_STATUS
(EFIAPI *ATTRIBUTE_GET_VALUE_BY_NAME)(
  IN     AttributeAccessProtocol  *This,
  IN     CONST CHAR8              *Name,
  OUT    UINT8                    *Buffer OPTIONAL,
  IN OUT UINT32                   *Size
  );

/**
  Asks the service to change an attribute, both given as text.

  @param[in]  This      The protocol.
  @param[in]  Name      As the service knows it.
  @param[in]  Value     Name of an enumeration's value, decimal integer, or string.
  @param[in]  Password  NUL-terminated; NULL or one that the service refuses = the request goes without a key.

  @retval EFI_SUCCESS            The service accepted the value, or nobody handled the request: read the value back.
  @retval EFI_ACCESS_DENIED      The service wants a password, or the attribute is read-only.
  @retval EFI_UNSUPPORTED        The service does not know the attribute.
  @retval EFI_INVALID_PARAMETER  The service refuses the value, name and value do not fit the request, or an argument
                                 that is not optional is NULL.
  @retval EFI_BUFFER_TOO_SMALL   The service returned this status.
  @retval EFI_ABORTED            The service returned another status.
  @retval EFI_OUT_OF_RESOURCES   There is no RequestBuffer.
  @retval others                 The attribute table could not be fetched.
**/
typedef
EFI_STATUS
(EFIAPI *ATTRIBUTE_SET_VALUE_BY_NAME)(
  IN AttributeAccessProtocol  *This,
  IN CONST CHAR8              *Name,
  IN CONST CHAR8              *Value,
  IN CONST CHAR8              *Password OPTIONAL
  );

struct _AttributeAccessProtocol {
  UINT32                          Revision;   ///< ATTRIBUTE_ACCESS_REVISION
  ATTRIBUTE_GET_STRING            GetAttributeString;
  ATTRIBUTE_FIND_HANDLE           FindAttributeHandle;
  ATTRIBUTE_GET_TEXT              GetTextStringB;
  ATTRIBUTE_GET_TEXT              GetTextStringA;
  ATTRIBUTE_GET_HANDLES           GetAttributeHandles;
  ATTRIBUTE_GET_INFO              GetAttributeInfo;
  ATTRIBUTE_SET_VALUE             SetAttributeValue;
  ATTRIBUTE_GET_REQUEST_BUFFER    GetRequestBuffer;
  ATTRIBUTE_GET_VALUE_BY_NAME     GetAttributeValueByName;
  ATTRIBUTE_SET_VALUE_BY_NAME     SetAttributeValueByName;
};

extern EFI_GUID  gVaroAttributeAccessProtocolGuid;

#endif
