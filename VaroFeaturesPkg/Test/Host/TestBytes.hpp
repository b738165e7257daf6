/** @file
  Bytes as tests write them down.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

inline void Append(Bytes& bytes, std::string_view text) {
  bytes.insert(bytes.end(), text.begin(), text.end());
}
inline void Append(Bytes& bytes, std::u16string_view text) {
  for (const char16_t character : text) {
    bytes.push_back(static_cast<std::uint8_t>(character));
    bytes.push_back(static_cast<std::uint8_t>(character >> 8));
  }
}
inline void Append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}
template <std::unsigned_integral T>
void Append(Bytes& bytes, T value) {
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    bytes.push_back(static_cast<std::uint8_t>(static_cast<std::uint64_t>(value) >> (8 * i)));
  }
}

/// The parts one after the other: integers little-endian in their own width, "" one byte and u"" two bytes a character.
template <typename... Parts>
Bytes Join(const Parts&... parts) {
  Bytes bytes;
  (Append(bytes, parts), ...);
  return bytes;
}

constexpr auto U8 = [](std::size_t value) { return static_cast<std::uint8_t>(value); };
constexpr auto U16 = [](std::size_t value) { return static_cast<std::uint16_t>(value); };
constexpr auto U32 = [](std::size_t value) { return static_cast<std::uint32_t>(value); };
constexpr auto U64 = [](std::size_t value) { return std::uint64_t{value}; };

inline Bytes BytesAt(const void* address, std::size_t size) {
  const auto* const first = static_cast<const std::uint8_t*>(address);
  return Bytes(first, first + size);
}

inline std::span<const std::byte> Span(const Bytes& bytes) {
  return std::as_bytes(std::span(bytes));
}

inline std::span<std::byte> Writable(Bytes& bytes) {
  return std::as_writable_bytes(std::span(bytes));
}

/// `bytes` from `from` on, without the last `tail`.
inline Bytes Middle(const Bytes& bytes, std::size_t from, std::size_t tail) {
  return bytes.size() < from + tail ? Bytes()
                                    : Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                                            bytes.end() - static_cast<std::ptrdiff_t>(tail));
}
