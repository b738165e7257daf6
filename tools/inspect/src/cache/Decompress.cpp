/** @file
  Decompress: decodes a block of the UEFI compression algorithm (UEFI specification, compression algorithm).

  Copyright (c) 2026, Corvane contributors
  SPDX-License-Identifier: BSD-2-Clause-Patent
**/

#include "cache/Decompress.hpp"

#include <algorithm>
#include <array>
#include <optional>

#include <fmt/format.h>

namespace corvane::inspect {
namespace {

constexpr std::size_t kCodes = 510;               // bytes and match lengths
constexpr std::size_t kLengthCodes = 19;          // code lengths of these
constexpr std::size_t kDistanceCodes = 14;        // widths of match distances
constexpr std::size_t kLongestCode = 16;          // bits
constexpr std::size_t kShortestMatch = 3;         // bytes
constexpr std::size_t kLargestContent = 1 << 24;  // bytes; ten times a full store of 5,104 strings
constexpr std::size_t kNoGap = SIZE_MAX;

// Reads the most significant bit first. Bits after the end are zero.
class BitReader {
 public:
  explicit BitReader(Bytes bytes) : bytes_(bytes) {}

  std::uint32_t Take(std::size_t count) {
    std::uint32_t bits = 0;
    for (; count > 0; --count, ++position_) {
      const std::size_t byte = position_ / 8;
      bits = bits << 1 | (byte < bytes_.size() ? bytes_[byte] >> (7 - position_ % 8) & 1U : 0U);
    }
    return bits;
  }
  bool IsPastEnd() const { return position_ > 8 * bytes_.size(); }
  std::size_t UsedBytes() const { return (position_ + 7) / 8; }
  bool RestIsZero() const {
    const std::size_t byte = position_ / 8;
    return byte >= bytes_.size() || (bytes_[byte] & (0xFF >> position_ % 8)) == 0;
  }

 private:
  Bytes bytes_;
  std::size_t position_ = 0;  // in bits
};

// A canonical prefix code: codes are assigned by length, and within a length by symbol.
class PrefixCode {
 public:
  // Every code is `symbol` and takes no bit.
  void SetSingle(std::uint32_t symbol) { single_ = symbol; }

  // Returns false unless the lengths make a complete code.
  bool SetLengths(const std::vector<std::uint8_t>& lengths) {
    single_.reset();
    symbols_.clear();
    counts_.fill(0);
    std::uint32_t room = 1U << kLongestCode;
    for (std::size_t length = 1; length <= kLongestCode; ++length) {
      for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
        if (lengths[symbol] == length) {
          ++counts_[length];
          symbols_.push_back(static_cast<std::uint16_t>(symbol));
        }
      }
      const std::uint32_t taken = counts_[length] << (kLongestCode - length);
      if (taken > room) {
        return false;
      }
      room -= taken;
    }
    return room == 0 && std::all_of(lengths.begin(), lengths.end(), [](auto length) { return length <= kLongestCode; });
  }

  std::uint32_t Read(BitReader& bits) const {
    if (single_) {
      return *single_;
    }
    std::uint32_t code = 0;
    std::uint32_t first = 0;
    std::size_t before = 0;
    for (std::size_t length = 1; length <= kLongestCode; ++length) {
      code = code << 1 | bits.Take(1);
      if (code - first < counts_[length]) {
        return symbols_[before + code - first];
      }
      before += counts_[length];
      first = (first + counts_[length]) << 1;
    }
    return 0;  // unreachable: the code is complete
  }

 private:
  std::optional<std::uint32_t> single_;
  std::array<std::uint32_t, kLongestCode + 1> counts_{};
  std::vector<std::uint16_t> symbols_;
};

class Decoder {
 public:
  explicit Decoder(Bytes stream) : bits_(stream), stream_(stream) {}

  void Run(Decompressed& result) {
    std::vector<std::uint8_t>& content = result.Content;
    content.reserve(result.Announced);
    std::uint32_t left = 0;
    while (content.size() < result.Announced && problem_.empty()) {
      if (left == 0) {
        left = bits_.Take(16);
        left = left == 0 ? 1U << 16 : left;
        ReadBlockHeader();
        continue;
      }
      --left;
      const std::uint32_t code = codes_.Read(bits_);
      if (bits_.IsPastEnd()) {
        problem_ = "it ends early";
      } else if (code >= kCodes) {
        problem_ = "it has an impossible code";
      } else if (code < 256) {
        content.push_back(static_cast<std::uint8_t>(code));
      } else {
        Copy(code - 256 + kShortestMatch, content, result.Announced);
      }
    }
    if (problem_.empty() && (left != 0 || bits_.UsedBytes() != stream_.size() || !bits_.RestIsZero())) {
      result.Oddity = "its last block continues after the end";
    }
    result.Problem = problem_;
  }

 private:
  void Copy(std::size_t count, std::vector<std::uint8_t>& content, std::size_t announced) {
    const std::uint32_t width = distances_.Read(bits_);
    if (width >= kDistanceCodes) {
      problem_ = "it has an impossible distance";
      return;
    }
    const std::size_t distance = width < 2 ? width + 1 : (std::size_t{1} << (width - 1)) + bits_.Take(width - 1) + 1;
    if (distance > content.size()) {
      problem_ = "it refers to bytes before the first";
      return;
    }
    for (; count > 0 && content.size() < announced; --count) {
      content.push_back(content[content.size() - distance]);
    }
  }

  void ReadBlockHeader() {
    ReadShortCode(lengths_, kLengthCodes, 5, 3);
    if (problem_.empty()) {
      ReadCodes();
    }
    if (problem_.empty()) {
      ReadShortCode(distances_, kDistanceCodes, 4, kNoGap);
    }
    if (problem_.empty() && bits_.IsPastEnd()) {
      problem_ = "it ends early";
    }
  }

  // Reads a code of few symbols. After length number `gap`, two bits give the number of zeros that follow.
  void ReadShortCode(PrefixCode& code, std::size_t symbols, std::size_t countBits, std::size_t gap) {
    const std::uint32_t count = bits_.Take(countBits);
    if (count == 0) {
      code.SetSingle(bits_.Take(countBits));
      return;
    }
    std::vector<std::uint8_t> lengths;
    while (lengths.size() < count) {
      std::uint32_t length = bits_.Take(3);
      while (length >= 7 && length <= kLongestCode && bits_.Take(1) == 1) {
        ++length;
      }
      lengths.push_back(static_cast<std::uint8_t>(length));
      if (lengths.size() == gap) {
        lengths.resize(lengths.size() + bits_.Take(2));
      }
    }
    Set(code, lengths, symbols);
  }

  void ReadCodes() {
    const std::uint32_t count = bits_.Take(9);
    if (count == 0) {
      codes_.SetSingle(bits_.Take(9));
      return;
    }
    std::vector<std::uint8_t> lengths;
    while (lengths.size() < count && !bits_.IsPastEnd()) {
      const std::uint32_t symbol = lengths_.Read(bits_);
      if (symbol > 2) {
        lengths.push_back(static_cast<std::uint8_t>(symbol - 2));
      } else {
        lengths.resize(lengths.size() + (symbol == 0 ? 1 : symbol == 1 ? bits_.Take(4) + 3 : bits_.Take(9) + 20));
      }
    }
    Set(codes_, lengths, kCodes);
  }

  void Set(PrefixCode& code, std::vector<std::uint8_t>& lengths, std::size_t symbols) {
    const auto excess = lengths.begin() + static_cast<std::ptrdiff_t>(std::min(symbols, lengths.size()));
    if (std::any_of(excess, lengths.end(), [](std::uint8_t length) { return length != 0; })) {
      problem_ = "it has more codes than there are symbols";
    } else if (!code.SetLengths(lengths)) {
      problem_ = "its code lengths are impossible";
    }
  }

  BitReader bits_;
  Bytes stream_;
  PrefixCode lengths_;
  PrefixCode codes_;
  PrefixCode distances_;
  std::string problem_;
};

}  // namespace

Decompressed Decompress(Bytes block) {
  Decompressed result;
  ByteReader reader(block);
  const auto streamSize = reader.Read<std::uint32_t>();
  result.Announced = reader.Read<std::uint32_t>();
  if (!reader.Ok()) {
    result.Problem = fmt::format("it has {} bytes, too few for its header", block.size());
  } else if (streamSize > reader.Left()) {
    result.Problem = fmt::format("it announces {} compressed bytes and has {}", streamSize, reader.Left());
  } else if (result.Announced == 0 || result.Announced > kLargestContent) {
    result.Problem = fmt::format("it announces {} bytes of content", result.Announced);
  } else {
    Decoder(reader.Take(streamSize)).Run(result);
    if (reader.Left() > 0 && result.Oddity.empty()) {
      result.Oddity = fmt::format("{} bytes follow it", reader.Left());
    }
  }
  return result;
}

}  // namespace corvane::inspect
