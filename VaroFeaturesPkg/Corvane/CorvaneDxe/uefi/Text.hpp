/** @file
  UCS-2 and ASCII text: literals, lengths, comparison.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include "uefi/Edk2.hpp"

/// EDK II's CHAR16 is unsigned short, so that u"" is no literal of it: this makes one at compile time.
template <size_t N>
struct Ucs2Literal {
  CHAR16 Text[N];
  consteval Ucs2Literal(const char16_t (&text)[N]) { std::copy_n(text, N, Text); }
};

template <Ucs2Literal Literal>
consteval const CHAR16* operator""_ucs2() {
  return Literal.Text;
}

/// The characters of a text, its terminator not included.
using Ucs2View = std::span<const CHAR16>;

constexpr size_t StringLength(const CHAR16* text) {
  const CHAR16* end = text;
  while (*end++ != 0) {
  }
  return static_cast<size_t>(end - 1 - text);
}

constexpr size_t AsciiLength(const CHAR8* text) {
  size_t length = 0;
  while (text[length] != 0) {
    ++length;
  }
  return length;
}

constexpr Ucs2View ViewOf(const CHAR16* text) {
  return {text, StringLength(text)};
}

constexpr bool Equal(Ucs2View left, Ucs2View right) {
  if (left.size() != right.size()) {
    return false;
  }
  for (size_t i = 0; i < left.size(); ++i) {
    if (left[i] != right[i]) {
      return false;
    }
  }
  return true;
}

/// Composes a text in a buffer; what does not fit is left out. The buffer stays terminated.
class TextWriter {
 public:
  /// `buffer` is zero-filled and at least one character long.
  constexpr explicit TextWriter(std::span<CHAR16> buffer) : rest_(buffer) {}

  constexpr TextWriter& Put(Ucs2View text) {
    for (const CHAR16 character : text) {
      PutCharacter(character);
    }
    return *this;
  }

  /// A decimal number of at least `digits` digits.
  constexpr TextWriter& PutDecimal(UINT64 value, size_t digits = 1) {
    std::array<CHAR16, 20> reversed{};
    size_t count = 0;
    for (; count < reversed.size() && (value != 0 || count < digits); ++count) {
      reversed[count] = static_cast<CHAR16>('0' + value % 10);
      value /= 10;
    }
    while (count > 0) {
      PutCharacter(reversed[--count]);
    }
    return *this;
  }

 private:
  constexpr void PutCharacter(CHAR16 character) {
    if (rest_.size() > 1) {
      rest_[0] = character;
      rest_ = rest_.subspan(1);
    }
  }

  std::span<CHAR16> rest_;
};

/// What a stored text leaves out: leading blanks, and every character whose bit 7 is set. Readers of the tables depend
/// on exactly this test: U+00E9 goes, U+0142 stays.
constexpr const CHAR16* SkipBlanks(const CHAR16* text) {
  while (*text == ' ') {
    ++text;
  }
  return text;
}
constexpr bool IsKept(CHAR16 character) {
  return (character & 0x80) == 0;
}

/// Copies `source` without what a stored text leaves out, and terminates the copy. `destination` has room for `source`.
/// Returns the terminator of the copy; a null argument does nothing and gives null.
constexpr CHAR16* CleanString(CHAR16* destination, const CHAR16* source) {
  if (destination == nullptr || source == nullptr) {
    return nullptr;
  }
  for (source = SkipBlanks(source); *source != 0; ++source) {
    if (IsKept(*source)) {
      *destination++ = *source;
    }
  }
  *destination = 0;
  return destination;
}

/// What a text is found by, its clean copy not made: equal copies have equal hashes.
struct TextKey {
  const CHAR16* Start;  // behind the leading blanks
  size_t Length;        // characters of the text as it stands
  UINT32 Hash;

  constexpr explicit TextKey(const CHAR16* text) : Start(SkipBlanks(text)) {
    const CHAR16* next = Start;
    UINT32 hash = 0;
    while (const UINT32 character = *next++) {
      if (IsKept(static_cast<CHAR16>(character))) {
        hash = hash * 33 ^ character;
      }
    }
    Hash = hash;
    Length = static_cast<size_t>(next - 1 - text);
  }

  /// Whether CleanString makes `clean` of the text.
  [[nodiscard]] constexpr bool Matches(const CHAR16* clean) const {
    for (const CHAR16* next = Start;;) {
      const CHAR16 character = *next++;
      if (!IsKept(character)) {
        continue;
      }
      if (*clean++ != character) {
        return false;
      }
      if (character == 0) {
        return true;
      }
    }
  }
};
