/** @file
  AttributeServiceDxe: an attribute service behind RequestDispatchProtocol.

  Tables are those that came over the transport in this boot. A value that is accepted is stored at once, and the next
  boot gathers the attributes again; a value that cannot be stored is refused.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include <Uefi.h>
#include <Library/BaseLib.h>
#include <Library/BaseMemoryLib.h>
#include <Library/DebugLib.h>
#include <Library/MemoryAllocationLib.h>
#include <Library/PlatformPartLib.h>
#include <Library/UefiBootServicesTableLib.h>
#include <Protocol/RequestDispatch.h>
#include "CallingInterface.h"
#include "ServicePasswords.h"
#include "ServiceTables.h"
#include "ServiceValues.h"

STATIC UINT16  mIoAddress;

///
/// A request for a value, taken apart.
///
typedef struct {
  BOOLEAN       ByName;
  UINT16        Handle;
  ByteReader    Name;
  UINT8         *Length;   ///< UINT16 bytes of the data
  UINT8         *Data;
  ByteReader    Reader;    ///< of the data
  UINT8         *Status;   ///< the byte behind the data
} ValueRequest;

/**
  Takes an attribute payload apart.

  @retval FALSE  It makes no sense, and there is no place to say so in.
**/
STATIC
BOOLEAN
ReadValueRequest (
  IN OUT RequestBlock  *Request,
  OUT    ValueRequest  *Value
  )
{
  AttributePayload  *Payload;
  ByteReader        Reader;
  UINT16            Length;
  UINTN             Signed;

  ZeroMem (Value, sizeof (*Value));
  Payload       = (AttributePayload *)(Request + 1);
  Reader.Next   = (CONST UINT8 *)(Payload + 1);
  Reader.Left   = REQUEST_PAYLOAD_CAPACITY - sizeof (*Payload);
  Reader.Failed = FALSE;
  Value->ByName = (BOOLEAN)(Payload->ByName == 1);
  Value->Handle = Payload->Key.Handle;
  if (Value->ByName) {
    Value->Name = TakePart (&Reader, Payload->Key.NameLength);
  }

  Value->Length = (UINT8 *)Reader.Next;
  Length        = (UINT16)TakeNumber (&Reader, sizeof (Length));
  Value->Data   = (UINT8 *)Reader.Next;
  Value->Reader = TakePart (&Reader, Length);
  Value->Status = (UINT8 *)TakeBytes (&Reader, sizeof (*Value->Status));
  if (Reader.Failed) {
    return FALSE;
  }

  Signed = (UINTN)(((Request->Select == REQUEST_SELECT_SET) ? Value->Status : Value->Data) - (UINT8 *)Payload);
  return (BOOLEAN)((CompareMem (Payload->Signature, ATTRIBUTE_PAYLOAD_SIGNATURE, sizeof (Payload->Signature)) == 0) &&
                   (Payload->ByName <= 1) && (Payload->Reserved == 0) && (Payload->Count == 1) &&
                   (Payload->KeySize == sizeof (UINT16) + Value->Name.Left) &&
                   (CalculateSum8 ((UINT8 *)Payload, Signed) == 0));
}

STATIC
BOOLEAN
FindRequested (
  IN  CONST ValueRequest  *Value,
  OUT ServiceAttribute    *Attribute
  )
{
  if (Value->ByName) {
    return FindAttributeByName (Value->Name.Next, Value->Name.Left, Attribute);
  }

  return FindAttribute (Value->Handle, Attribute);
}

/**
  Answers REQUEST_SELECT_VALUE by handle. No status is read from the answer, so a request without value is not handled.
**/
STATIC
BOOLEAN
AnswerValueByHandle (
  IN OUT RequestBlock  *Request,
  IN OUT ValueRequest  *Value
  )
{
  ServiceAttribute  Attribute;
  UINTN             Size;
  UINTN             Room;
  UINTN             Length;

  //
  // A value that is longer than the data of the request moves the status byte behind itself.
  //
  Room = (UINTN)((UINT8 *)Request + REQUEST_BUFFER_SIZE - Value->Data) - sizeof (Attribute.Type) -
         sizeof (*Value->Status);
  if (!FindRequested (Value, &Attribute) ||
      (GetValuePart (&Attribute, Value->Data + sizeof (Attribute.Type), Room, &Size) != ATTRIBUTE_STATUS_SUCCESS))
  {
    return FALSE;
  }

  *Value->Data = Attribute.Type;
  Length       = MAX (Value->Reader.Left, sizeof (Attribute.Type) + Size);
  WriteUnaligned16 ((UINT16 *)Value->Length, (UINT16)Length);
  Value->Data[Length]     = ATTRIBUTE_STATUS_SUCCESS;
  Request->PayloadLength += (UINT32)(Length - Value->Reader.Left);
  return TRUE;
}

/**
  Answers REQUEST_SELECT_VALUE by name, which has room up to the place of its status byte.
**/
STATIC
BOOLEAN
AnswerValueByName (
  IN OUT RequestBlock  *Request,
  IN OUT ValueRequest  *Value
  )
{
  ServiceAttribute  Attribute;
  UINTN             Size;

  if ((Value->Status != (UINT8 *)Request + ATTRIBUTE_VALUE_BY_NAME_STATUS) || (Value->Reader.Left < sizeof (UINT16))) {
    return FALSE;
  }

  Size           = 0;
  *Value->Status = ATTRIBUTE_STATUS_UNSUPPORTED;
  if (FindRequested (Value, &Attribute)) {
    *Value->Status = GetValueText (
                       &Attribute,
                       Value->Data + sizeof (UINT16),
                       Value->Reader.Left - sizeof (UINT16),
                       &Size
                       );
  }

  WriteUnaligned16 ((UINT16 *)Value->Data, (*Value->Status == ATTRIBUTE_STATUS_SUCCESS) ? (UINT16)Size : 0);
  return TRUE;
}

/**
  Answers REQUEST_SELECT_SET.
**/
STATIC
BOOLEAN
AnswerSet (
  IN OUT RequestBlock  *Request,
  IN OUT ValueRequest  *Value
  )
{
  ServiceAttribute  Attribute;
  UINT16            Length;
  UINT8             Type;

  if (!FindRequested (Value, &Attribute)) {
    *Value->Status = ATTRIBUTE_STATUS_UNSUPPORTED;
    return TRUE;
  }

  if (Value->ByName) {
    Length         = (UINT16)TakeNumber (&Value->Reader, sizeof (Length));
    *Value->Status = (Value->Reader.Failed || (Length != Value->Reader.Left)) ? ATTRIBUTE_STATUS_INVALID_PARAMETER :
                     SetValueText (&Attribute, Request->Arguments[1], Value->Reader);
    return TRUE;
  }

  Type           = (UINT8)TakeNumber (&Value->Reader, sizeof (Type));
  *Value->Status = (Value->Reader.Failed || (Type != Attribute.Type)) ? ATTRIBUTE_STATUS_INVALID_PARAMETER :
                   SetValuePart (&Attribute, Request->Arguments[1], Value->Reader);
  return TRUE;
}

/**
  Answers a request for a value or for a new one.
**/
STATIC
BOOLEAN
AnswerValueRequest (
  IN OUT RequestBlock  *Request
  )
{
  ValueRequest  Value;

  if (!ReadValueRequest (Request, &Value)) {
    DEBUG ((DEBUG_WARN, "%a: a request for a value that makes no sense\n", gEfiCallerBaseName));
    return FALSE;
  }

  if (Request->Select == REQUEST_SELECT_SET) {
    return AnswerSet (Request, &Value);
  }

  return Value.ByName ? AnswerValueByName (Request, &Value) : AnswerValueByHandle (Request, &Value);
}

STATIC
BOOLEAN
AnswerAttributes (
  IN OUT RequestBlock  *Request
  )
{
  switch (Request->Select) {
    case REQUEST_SELECT_DIRECTORY:
      return AnswerDirectory (Request);
    case REQUEST_SELECT_TABLE:
      return AnswerTable (Request);
    case REQUEST_SELECT_VALUE:
    case REQUEST_SELECT_SET:
      return AnswerValueRequest (Request);
    default:
      return FALSE;
  }
}

STATIC
BOOLEAN
AnswerPasswords (
  IN OUT RequestBlock  *Request
  )
{
  switch (Request->Select) {
    case REQUEST_SELECT_PASSWORD_QUERY:
      return AnswerPasswordQuery (Request);
    case REQUEST_SELECT_PASSWORD_VERIFY:
      return AnswerPasswordVerify (Request);
    default:
      return FALSE;
  }
}

STATIC
BOOLEAN
AnswerRequest (
  IN OUT RequestBlock  *Request
  )
{
  switch (Request->Class) {
    case REQUEST_CLASS_ATTRIBUTES:
      return AnswerAttributes (Request);
    case REQUEST_CLASS_SYSTEM_PASSWORD:
    case REQUEST_CLASS_ADMIN_PASSWORD:
      return AnswerPasswords (Request);
    default:
      return FALSE;
  }
}

STATIC
EFI_STATUS
EFIAPI
DispatchRequest (
  IN OUT DispatchDescriptor  *Descriptor
  )
{
  RequestBlock  *Request;
  BOOLEAN       Query;

  if ((Descriptor == NULL) || (Descriptor->Marker != DISPATCH_DESCRIPTOR_MARKER)) {
    return EFI_INVALID_PARAMETER;
  }

  Request = (RequestBlock *)(UINTN)Descriptor->RequestBuffer;
  if (Descriptor != &Request->Descriptor) {
    return EFI_INVALID_PARAMETER;
  }

  //
  // Nobody listens at any other address, and a request that names none for its data does not mean this buffer.
  //
  Query = (BOOLEAN)((Request->Class != REQUEST_CLASS_ATTRIBUTES) &&
                    (Request->Select == REQUEST_SELECT_PASSWORD_QUERY));
  if ((Descriptor->IoAddress != mIoAddress) ||
      (Request->Arguments[0] != (Query ? 1 : (UINT32)(UINTN)&Request->PayloadLength)))
  {
    DEBUG ((DEBUG_WARN, "%a: a request to %04x that makes no sense\n", gEfiCallerBaseName, Descriptor->IoAddress));
    return EFI_SUCCESS;
  }

  if (AnswerRequest (Request)) {
    Request->Results[0] = 0;
  }

  return EFI_SUCCESS;
}

STATIC RequestDispatchProtocol  mRequestDispatch = { DispatchRequest };

EFI_STATUS
EFIAPI
AttributeServiceDxeEntryPoint (
  IN EFI_HANDLE        ImageHandle,
  IN EFI_SYSTEM_TABLE  *SystemTable
  )
{
  EFI_HANDLE  Handle;
  EFI_STATUS  Status;

  if (PlatformHasPart ("calling-interface")) {
    Status = PublishCallingInterface (&mIoAddress);
    if (EFI_ERROR (Status)) {
      return Status;
    }
  }

  if (!PlatformHasPart ("attribute-service")) {
    return EFI_SUCCESS;
  }

  Handle = NULL;
  return gBS->InstallMultipleProtocolInterfaces (&Handle, &gVaroRequestDispatchProtocolGuid, &mRequestDispatch, NULL);
}
