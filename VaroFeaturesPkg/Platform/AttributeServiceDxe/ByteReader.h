/** @file
  ByteReader: the package's reader of records and requests.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#ifndef ATTRIBUTE_SERVICE_BYTE_READER_H_
#define ATTRIBUTE_SERVICE_BYTE_READER_H_

#include <Corvane/ByteReader.h>

#endif
