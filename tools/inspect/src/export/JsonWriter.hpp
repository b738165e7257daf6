/** @file
  JsonWriter: the archive of Layout.hpp that writes JSON.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#pragma once

#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "bytes/Text.hpp"
#include "capture/Layout.hpp"

namespace corvane::inspect {

class JsonWriter {
 public:
  static constexpr bool kWrites = true;

  template <typename T>
  void Number(const char* key, const T& value) {
    Object[key] = value;
  }
  void Flag(const char* key, bool value) { Object[key] = value; }
  template <typename T>
  void List(const char* key, const std::vector<T>& values) {
    Object[key] = values;
  }
  template <typename T>
  void Array(const char* key, const std::vector<T>& values, std::size_t) {
    Object[key] = values;
  }
  void Padded(const char* key, const std::vector<std::uint8_t>& values, std::size_t) { Object[key] = values; }
  void Text(const char* key, const std::string& text) { Object[key] = Utf8FromLatin1(text); }
  void Terminated(const char* key, const std::string& text) { Text(key, text); }
  void WideText(const char* key, const std::u16string& text) { Object[key] = Utf8FromUcs2(text); }
  void Reserved(std::size_t) {}

  nlohmann::ordered_json Object = nlohmann::ordered_json::object();
};

// Takes a copy, because archives take entries by reference to non-const.
template <typename Entries>
nlohmann::ordered_json EntriesAsJson(Entries entries) {
  auto list = nlohmann::ordered_json::array();
  for (auto& entry : entries) {
    JsonWriter writer;
    Fields(writer, entry);
    list.push_back(std::move(writer.Object));
  }
  return list;
}

}  // namespace corvane::inspect
