/** @file
  The driver's encoder and decoder on whole blocks, and data to compress, the same in every run.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include <cmath>
#include <random>

#include "Host/TestBytes.hpp"
#include "database/compression/Compressor.hpp"
#include "database/compression/Decompressor.hpp"

/// The driver's stream, asked for in two calls; empty when it fails.
inline Bytes DriverCompress(const Bytes& source) {
  UINT32 size = 0;
  Bytes stream;
  if (Compress(Span(source), nullptr, size) == EFI_BUFFER_TOO_SMALL) {
    stream.resize(size);
    const bool done = Compress(Span(source), Writable(stream).data(), size) == EFI_SUCCESS && size == stream.size();
    stream.resize(done ? size : 0);
  }
  return stream;
}

/// The status and the content that the driver decodes.
inline std::pair<EFI_STATUS, Bytes> DriverDecompress(const Bytes& stream) {
  UINT32 size = 0;
  UINT32 scratchSize = 0;
  if (DecompressGetInfo(Span(stream), size, scratchSize) != EFI_SUCCESS) {
    return {EFI_INVALID_PARAMETER, {}};
  }
  Bytes output(size);
  Bytes scratch(scratchSize, 0xA5);  // any content
  const EFI_STATUS status = Decompress(Span(stream), Writable(output), Writable(scratch));
  return {status, output};
}

/// A string list like a notebook's help texts: handle, length, UCS-2 text. As in a language, few of the words are
/// common.
inline Bytes HelpTextSample(size_t size) {
  constexpr std::u16string_view kSyllables[] = {u"the", u"on",    u"a",  u"ble",  u"dis", u"en",
                                                u"set", u"power", u"to", u"tion", u"re",  u"boot",
                                                u"de",  u"vice",  u"al", u"er",   u"in",  u"port"};
  constexpr double kWords = 700;
  std::mt19937 random{7};
  Bytes list;
  for (UINT16 handle = 16; list.size() < size; ++handle) {
    Bytes text;
    for (auto words = 4 + random() % 24; words > 0; --words) {
      auto word = static_cast<size_t>(std::pow(kWords, static_cast<double>(random()) / 4294967296.0));
      for (; word > 0; word /= std::size(kSyllables)) {
        Append(text, kSyllables[word % std::size(kSyllables)]);
      }
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
