/** @file
  ServiceTables: the tables that CorvaneDxe has sent over the transport.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef SERVICE_TABLES_H_
#define SERVICE_TABLES_H_

#include <Corvane/AttributeRequest.h>
#include <Corvane/TransportRecord.h>
#include "ByteReader.h"

/**
  Opens the payload of the last record of a type.

  @param[in]   Type     TRANSPORT_RECORD_...
  @param[out]  Payload  Reader of the payload; it stays valid until the end of boot services.

  @retval FALSE  No such record was sent. The reader has nothing to read.
**/
BOOLEAN
OpenRecord (
  IN  UINT8       Type,
  OUT ByteReader  *Payload
  );

/**
  Opens a table without the pad and the checksum behind its last entry.

  @param[in]   Type   TRANSPORT_RECORD_STRINGS to TRANSPORT_RECORD_HELP.
  @param[out]  Table  Reader of the entries.

  @retval FALSE  The table was not sent. The reader has nothing to read.
**/
BOOLEAN
OpenTable (
  IN  UINT8       Type,
  OUT ByteReader  *Table
  );

/**
  Answers REQUEST_SELECT_DIRECTORY.

  @return  Whether the request was handled.
**/
BOOLEAN
AnswerDirectory (
  IN OUT RequestBlock  *Request
  );

/**
  Answers REQUEST_SELECT_TABLE.

  @return  Whether the request was handled.
**/
BOOLEAN
AnswerTable (
  IN OUT RequestBlock  *Request
  );

#endif
