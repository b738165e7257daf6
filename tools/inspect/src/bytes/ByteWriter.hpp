/** @file
  ByteWriter: the archive of Layout.hpp that writes bytes.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace corvane::inspect {

class ByteWriter {
 public:
  static constexpr bool kWrites = true;

  template <typename T>
  void Number(const char*, const T& value) {
    Put(value);
  }
  void Flag(const char*, bool value) { Put<std::uint8_t>(value ? 1 : 0); }
  template <typename T>
  void List(const char* key, const std::vector<T>& values) {
    Put(static_cast<std::uint8_t>(values.size()));
    Array(key, values, values.size());
  }
  template <typename T>
  void Array(const char*, const std::vector<T>& values, std::size_t) {
    for (const T& value : values) {
      Put(value);
    }
  }
  void Padded(const char* key, const std::vector<std::uint8_t>& values, std::size_t size) {
    List(key, values);
    Reserved(size - values.size());
  }
  void Text(const char*, const std::string& text) {
    Put(static_cast<std::uint16_t>(text.size()));
    Append(text);
  }
  void Terminated(const char*, const std::string& text) {
    Append(text);
    Put<std::uint8_t>(0);
  }
  void WideText(const char*, const std::u16string& text) {
    Put(static_cast<std::uint16_t>(2 * text.size()));
    for (const char16_t unit : text) {
      Put(static_cast<std::uint16_t>(unit));
    }
  }
  void Reserved(std::size_t count) { Content.resize(Content.size() + count); }
  void Append(const auto& bytes) {
    for (const auto element : bytes) {
      Content.push_back(static_cast<std::uint8_t>(element));
    }
  }

  template <typename T>
  void Put(const T& value) {
    const std::size_t at = Content.size();
    Content.resize(at + sizeof(T));
    std::memcpy(Content.data() + at, &value, sizeof(T));
  }

  std::vector<std::uint8_t> Content;
};

}  // namespace corvane::inspect
