// kernel/keys.cpp: comparing and storing keys

#include "kernel/keys.hpp"

#include <functional>
#include <limits>

#include "kernel/strings.hpp"

namespace hvm::kernel {
namespace {

// Multiplies by an odd constant and keeps the upper half, which depends on every bit of the input.
std::uint32_t mixed(std::uint64_t bits) noexcept {
  bits ^= bits >> 32;
  bits *= 0x9E3779B97F4A7C15U;
  return static_cast<std::uint32_t>(bits >> 32);
}

bool fits_in_32_bits(std::int64_t x) noexcept {
  return x >= std::numeric_limits<std::int32_t>::min() && x <= std::numeric_limits<std::int32_t>::max();
}

// Both zeros are one key, and all NaN are one key.
std::uint64_t real_bits(double x) noexcept {
  if (x == 0) x = 0.0;
  if (x != x) x = std::numeric_limits<double>::quiet_NaN();
  return arrayfold::load<std::uint64_t>(&x);
}

/// No key for what is no text, and for a wide one where memory for its UTF-8 form is missing.
Key key_of_text(const HostValue& record) noexcept {
  if (!is_text(record)) return {};
  const std::string_view text = text_or_null(record);
  return text.data() || record.tag != ValueTag::wide_string ? key_of(text) : Key{};
}

}  // namespace

Key key_of(std::int64_t x) noexcept {
  const auto bits = static_cast<std::uint64_t>(x);
  return {fits_in_32_bits(x) ? ValueTag::integer : ValueTag::integer64, mixed(bits), bits, {}};
}

Key key_of(double x) noexcept {
  const std::uint64_t bits = real_bits(x);
  return {ValueTag::real, mixed(~bits), bits, {}};
}

Key key_of(std::string_view text) noexcept {
  return {ValueTag::string_record, mixed(std::hash<std::string_view>()(text)), 0, text};
}

Key key_of(const HostValue& record) noexcept {
  switch (record.tag) {
    case ValueTag::integer:
      return key_of(std::int64_t{payload_of<std::int32_t>(record)});
    case ValueTag::integer64:
      return key_of(payload_of<std::int64_t>(record));
    case ValueTag::real:
      return key_of(payload_of<double>(record));
    default:
      return key_of_text(record);
  }
}

bool is_same(const HostValue& record, const Key& key) noexcept {
  if (record.tag != key.tag) return false;
  if (key.tag == ValueTag::string_record) return text_or_null(record) == key.text;
  if (key.is_integer()) return payload_of<std::int32_t>(record) == key.integer();
  return payload_of<std::uint64_t>(record) == key.bits;
}

HostValue key_record(const Key& key) noexcept {
  if (key.tag == ValueTag::string_record) return string_record(key.text);
  if (key.is_integer()) return record_of<std::int32_t>(ValueTag::integer, key.integer());
  return record_of<std::uint64_t>(key.tag, key.bits);
}

}  // namespace hvm::kernel
