/** @file
  Things to compress: the same on every run.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include <random>

#include "Host/TestBytes.hpp"

/// A string list like a notebook's help texts: handle, length, UCS-2 text.
inline Bytes HelpTextSample(size_t size) {
  constexpr std::u16string_view kWords[] = {
      u"the",    u"system",  u"battery",    u"enable", u"disable",  u"option",   u"when",       u"this",
      u"boot",   u"device",  u"password",   u"set",    u"controls", u"charging", u"network",    u"support",
      u"memory", u"whether", u"if",         u"is",     u"to",       u"of",       u"and",        u"a",
      u"for",    u"from",    u"supervisor", u"port",   u"wireless", u"radio",    u"thunderbolt"};
  std::mt19937 random{7};
  Bytes list;
  for (UINT16 handle = 16; list.size() < size; ++handle) {
    Bytes text;
    for (auto words = 4 + random() % 16; words > 0; --words) {
      // The better of two favours the words at the end.
      const auto pick = random() % std::size(kWords);
      Append(text, kWords[std::max(pick, random() % std::size(kWords))]);
      Append(text, random() % 9 == 0 ? u", " : u" ");
    }
    Append(list, Join(handle, static_cast<UINT16>(text.size() + 2), text, UINT16{0}));
  }
  list.resize(size);
  return list;
}

/// Bytes below `alphabet`, without any order.
inline Bytes RandomSample(size_t size, unsigned alphabet, unsigned seed = 1) {
  std::mt19937 random{seed};
  Bytes bytes(size);
  for (std::uint8_t& byte : bytes) {
    byte = static_cast<std::uint8_t>(random() % alphabet);
  }
  return bytes;
}
