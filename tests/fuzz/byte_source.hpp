// fuzz/byte_source.hpp: the bytes of an input, read as decisions

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace arrayfold::fuzz {

/// Reads an input from its beginning to its end, and zeros from there on. Decisions are letters, so that a seed can be
/// written by hand: a byte that is none of the letters at hand stands for one of them all the same.
class ByteSource {
 public:
  ByteSource(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

  bool is_empty() const { return next_ == end_; }
  std::uint8_t byte() { return is_empty() ? std::uint8_t{0} : *next_++; }

  /// One of `letters`; the first of them at the end of the input.
  char pick(std::string_view letters) {
    const std::uint8_t at_hand = byte();
    if (at_hand != 0 && letters.find(static_cast<char>(at_hand)) != letters.npos) return static_cast<char>(at_hand);
    return letters[at_hand % letters.size()];
  }

  /// A digit stands for itself, every other byte for a number from -8 to 23.
  int small_number() {
    const std::uint8_t at_hand = byte();
    if (at_hand >= '0' && at_hand <= '9') return at_hand - '0';
    return at_hand % 32 - 8;
  }

 private:
  const std::uint8_t* next_;
  const std::uint8_t* end_;
};

}  // namespace arrayfold::fuzz
