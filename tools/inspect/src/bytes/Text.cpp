/** @file
  Text of tables on its way to people and to JSON: escapes for ASCII output, UTF-8 from 8-bit and from UCS-2 text.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "bytes/Text.hpp"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

namespace corvane::inspect {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

void AppendUtf8(std::string& out, char32_t point) {
  const auto put = [&out](char32_t unit) { out.push_back(static_cast<char>(unit)); };
  if (point < 0x80) {
    put(point);
  } else if (point < 0x800) {
    put(0xC0 | (point >> 6));
    put(0x80 | (point & 0x3F));
  } else if (point < 0x10000) {
    put(0xE0 | (point >> 12));
    put(0x80 | ((point >> 6) & 0x3F));
    put(0x80 | (point & 0x3F));
  } else {
    put(0xF0 | (point >> 18));
    put(0x80 | ((point >> 12) & 0x3F));
    put(0x80 | ((point >> 6) & 0x3F));
    put(0x80 | (point & 0x3F));
  }
}

// The first character of valid UTF-8. The JSON parser rejects invalid UTF-8, so no input here is invalid.
char32_t TakePoint(std::string_view& utf8) {
  const auto unit = [&utf8](std::size_t i) -> char32_t {
    return i < utf8.size() ? static_cast<unsigned char>(utf8[i]) : 0;
  };
  const char32_t first = unit(0);
  const std::size_t length = first < 0xC0 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  char32_t point = length == 1 ? first : first & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    point = (point << 6) | (unit(i) & 0x3F);
  }
  utf8.remove_prefix(std::min(length, utf8.size()));
  return point;
}

template <typename Keep>
std::string Escape(std::string_view text, Keep keep) {
  std::string out;
  out.reserve(text.size());
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (keep(byte)) {
      out.push_back(character);
    } else {
      fmt::format_to(std::back_inserter(out), "\\x{:02X}", byte);
    }
  }
  return out;
}

bool IsPrintable(unsigned char byte) {
  return byte >= 0x20 && byte <= 0x7E;
}

bool NeedsEscapeInQuotes(unsigned char byte) {
  return byte == '"' || byte == '\\';
}

}  // namespace

std::string EscapeName(std::string_view text) {
  return Escape(text, IsPrintable);
}

std::string Quote(std::string_view text) {
  const auto keep = [](unsigned char byte) { return IsPrintable(byte) && !NeedsEscapeInQuotes(byte); };
  return '"' + Escape(text, keep) + '"';
}

std::string QuoteUtf8(std::string_view utf8) {
  const auto keep = [](unsigned char byte) { return byte >= 0x20 && byte != 0x7F && !NeedsEscapeInQuotes(byte); };
  return '"' + Escape(utf8, keep) + '"';
}

std::string Utf8FromLatin1(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (const char character : text) {
    AppendUtf8(out, static_cast<unsigned char>(character));
  }
  return out;
}

std::string Utf8FromUcs2(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char32_t unit = text[i];
    if (unit < 0xD800 || unit > 0xDFFF) {
      AppendUtf8(out, unit);
    } else if (unit < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
      ++i;
      AppendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (char32_t{text[i]} - 0xDC00));
    } else {
      AppendUtf8(out, kReplacement);
    }
  }
  return out;
}

std::string PrintableUtf8(std::string_view utf8) {
  return Escape(utf8, [](unsigned char byte) { return byte >= 0x20 && byte != 0x7F; });
}

std::optional<std::string> Latin1FromUtf8(std::string_view utf8) {
  std::string out;
  out.reserve(utf8.size());
  while (!utf8.empty()) {
    const char32_t point = TakePoint(utf8);
    if (point > 0xFF) {
      return std::nullopt;
    }
    out.push_back(static_cast<char>(point));
  }
  return out;
}

std::u16string Ucs2FromUtf8(std::string_view utf8) {
  std::u16string out;
  out.reserve(utf8.size());
  while (!utf8.empty()) {
    const char32_t point = TakePoint(utf8);
    if (point < 0x10000) {
      out.push_back(static_cast<char16_t>(point));
    } else {
      out.push_back(static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF)));
    }
  }
  return out;
}

std::u16string Ucs2FromBytes(Bytes bytes) {
  std::u16string text;
  text.reserve(bytes.size() / 2);
  for (ByteReader reader(bytes); reader.Left() >= 2;) {
    text.push_back(static_cast<char16_t>(reader.Read<std::uint16_t>()));
  }
  return text;
}

std::string CountOf(std::size_t count, std::string_view noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string_view WithoutAnnotations(std::string_view name) {
  return name.substr(0, name.find('['));
}

}  // namespace corvane::inspect
