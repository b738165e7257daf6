/** @file
  FieldReader: the archive of Layout.hpp that reads bytes.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <vector>

#include "bytes/ByteReader.hpp"
#include "bytes/Text.hpp"
#include "capture/Stream.hpp"
#include "capture/Tables.hpp"

namespace corvane::inspect {

// A field after the end of the bytes is zero or empty, and the byte reader has failed.
class FieldReader {
 public:
  static constexpr bool kWrites = false;

  explicit FieldReader(ByteReader& bytes, TextForm form = TextForm::Terminated) : bytes_(bytes), form_(form) {}

  template <typename T>
  void Number(const char*, T& value) const {
    value = bytes_.Read<T>();
  }
  void Flag(const char*, bool& value) const { value = bytes_.Read<std::uint8_t>() != 0; }
  template <typename T>
  void List(const char* key, std::vector<T>& values) const {
    Array(key, values, bytes_.Read<std::uint8_t>());
  }
  template <typename T>
  void Array(const char*, std::vector<T>& values, std::size_t count) const {
    values = ReadMany<T>(bytes_, count);
  }
  void Padded(const char* key, std::vector<std::uint8_t>& values, std::size_t size) const {
    const std::size_t count = bytes_.Read<std::uint8_t>();
    Array(key, values, size);
    values.resize(std::min(count, values.size()));
  }
  void Text(const char*, std::string& text) const { text = ReadText(bytes_, bytes_.Read<std::uint16_t>()); }
  // In the cache, a length precedes such a text, and no zero follows.
  void Terminated(const char* key, std::string& text) const {
    form_ == TextForm::Counted ? Text(key, text) : void(text = ReadTerminated(bytes_));
  }
  void WideText(const char*, std::u16string& text) const {
    text = Ucs2FromBytes(bytes_.Take(bytes_.Read<std::uint16_t>()));
  }
  void Reserved(std::size_t count) const { bytes_.Take(count); }

 private:
  ByteReader& bytes_;
  TextForm form_;
};

}  // namespace corvane::inspect
