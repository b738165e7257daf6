/** @file
  ServicePasswords: the two passwords that open the attributes, and the keys that stand for them.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef SERVICE_PASSWORDS_H_
#define SERVICE_PASSWORDS_H_

#include <Corvane/AttributeRequest.h>

/**
  Answers REQUEST_SELECT_PASSWORD_QUERY.

  @return  Whether the request was handled.
**/
BOOLEAN
AnswerPasswordQuery (
  IN OUT RequestBlock  *Request
  );

/**
  Answers REQUEST_SELECT_PASSWORD_VERIFY. No copy of the password is left in the request.

  @return  Whether the password is the right one; its key is in the request then.
**/
BOOLEAN
AnswerPasswordVerify (
  IN OUT RequestBlock  *Request
  );

/**
  Tells whether a set request with this key may change an attribute: always when no password is installed.
**/
BOOLEAN
KeyOpensAttributes (
  IN UINT32  Key
  );

#endif
