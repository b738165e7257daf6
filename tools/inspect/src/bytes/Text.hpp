/** @file
  Conversions of table texts for people and for JSON: escapes for ASCII output, UTF-8 from 8-bit and from UCS-2 text.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "bytes/ByteReader.hpp"

namespace corvane::inspect {

std::string EscapeName(std::string_view text);  // bytes outside 0x20 to 0x7E become \xNN
std::string Quote(std::string_view text);       // adds quotation marks; escapes quotation marks and backslashes inside

std::string Utf8FromLatin1(std::string_view text);
std::string Utf8FromUcs2(std::u16string_view text);  // a lone surrogate becomes U+FFFD
std::string QuoteUtf8(std::string_view utf8);        // control characters, quotation marks and backslashes as \xNN
std::string PrintableUtf8(std::string_view utf8);    // control characters as \xNN
std::optional<std::string> Latin1FromUtf8(std::string_view utf8);  // none for a character above U+00FF
std::u16string Ucs2FromUtf8(std::string_view utf8);
std::u16string Ucs2FromBytes(Bytes bytes);  // ignores an odd last byte

std::string CountOf(std::size_t count, std::string_view noun);  // "1 finding", "2 findings"
std::string_view WithoutAnnotations(std::string_view name);     // the text before the first "["

}  // namespace corvane::inspect
