/** @file
  FuzzInput: takes the bytes of one run apart; and the check that ends a run.

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/
#pragma once

#include <algorithm>
#include <concepts>

#include "FakeUefi/FakeUefi.hpp"
#include "Host/TestBytes.hpp"

/// Ends the run with the message `what` unless `condition` holds.
inline void Require(bool condition, const char* what) {
  if (!condition) {
    FakeUefi::Misuse(what);
    __builtin_trap();
  }
}

/// After the end of the bytes, every read gives zeros or an empty block.
class FuzzInput {
 public:
  FuzzInput() = default;
  FuzzInput(const std::uint8_t* data, size_t size) : rest_(data, size) {}

  [[nodiscard]] bool More() const { return !rest_.empty(); }

  template <std::unsigned_integral T = std::uint8_t>
  T Take() {
    T value = 0;
    for (size_t i = 0; i < sizeof(T) && More(); ++i) {
      value = static_cast<T>(value | static_cast<T>(T{Bytes(1)[0]} << (8 * i)));
    }
    return value;
  }
  /// One of the elements of an array.
  template <typename Array>
  const auto& OneOf(const Array& elements) {
    return elements[Take() % std::size(elements)];
  }
  /// Its length in two bytes, then the bytes.
  ::Bytes Block() { return Bytes(Take<std::uint16_t>()); }
  ::Bytes Bytes(size_t count) {
    const auto taken = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return {taken.begin(), taken.end()};
  }
  ::Bytes Rest() { return Bytes(rest_.size()); }

  /// Its length in one byte, then as many characters; from kRepeated on the next text, as often as the byte says.
  std::u16string Text() {
    constexpr std::uint8_t kRepeated = 0xE0;
    const auto length = Take();
    if (length < kRepeated || !More()) {
      const ::Bytes characters = Bytes(length);
      return {characters.begin(), characters.end()};
    }
    const std::u16string part = Text();
    std::u16string text;
    for (int times = length - kRepeated + 2; times > 0 && text.size() < 8192; --times) {
      text += part;
    }
    return text;
  }
  std::string Ascii() {
    const std::u16string text = Text();
    std::string narrow;
    std::transform(text.begin(), text.end(), std::back_inserter(narrow),
                   [](char16_t c) { return static_cast<char>(c); });
    return narrow;
  }

 private:
  std::span<const std::uint8_t> rest_;
};

/// A machine with little memory, so that a damaged length fails to allocate at once.
inline void LimitPool() {
  static constexpr UINTN kLargest = 1 << 20;
  static EFI_ALLOCATE_POOL allocate = nullptr;
  allocate = gBS->AllocatePool;
  gBS->AllocatePool = [](EFI_MEMORY_TYPE type, UINTN size, VOID** block) -> EFI_STATUS {
    return size > kLargest ? EFI_OUT_OF_RESOURCES : allocate(type, size, block);
  };
}
