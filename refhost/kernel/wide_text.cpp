// kernel/wide_text.cpp: 16-bit text as UTF-8

#include "kernel/wide_text.hpp"

#include <cstddef>
#include <cstdlib>

#include "kernel/state.hpp"

namespace hvm::kernel {
namespace {

constexpr std::size_t kept_texts = 8;

// Allocated outside the counted memory: no record owns the text, and later conversions overwrite it.
struct Buffer {
  char* bytes = nullptr;
  std::size_t capacity = 0;

  bool has_room(std::size_t size) noexcept {
    if (size <= capacity) return true;
    auto* grown = static_cast<char*>(std::realloc(bytes, size));
    if (!grown) return false;
    bytes = grown;
    capacity = size;
    return true;
  }
};

HVM_STATE Buffer buffers[kept_texts];
HVM_STATE std::size_t next_buffer = 0;

bool is_high_surrogate(char16_t unit) noexcept { return unit >= 0xD800 && unit <= 0xDBFF; }
bool is_low_surrogate(char16_t unit) noexcept { return unit >= 0xDC00 && unit <= 0xDFFF; }

// Removes the code point at the front of `text` and returns it.
char32_t take_code_point(std::u16string_view& text) noexcept {
  const char16_t first = text.front();
  text.remove_prefix(1);
  if (!is_high_surrogate(first) || text.empty() || !is_low_surrogate(text.front())) return first;
  const char16_t second = text.front();
  text.remove_prefix(1);
  return 0x10000 + ((char32_t{first} - 0xD800) << 10) + (char32_t{second} - 0xDC00);
}

char* write_code_point(char* out, char32_t point) noexcept {
  const auto tail = [&](int shift) { *out++ = static_cast<char>(0x80 | (point >> shift & 0x3F)); };
  if (point < 0x80) {
    *out++ = static_cast<char>(point);
  } else if (point < 0x800) {
    *out++ = static_cast<char>(0xC0 | point >> 6);
    tail(0);
  } else if (point < 0x10000) {
    *out++ = static_cast<char>(0xE0 | point >> 12);
    tail(6);
    tail(0);
  } else {
    *out++ = static_cast<char>(0xF0 | point >> 18);
    tail(12);
    tail(6);
    tail(0);
  }
  return out;
}

}  // namespace

std::string_view narrowed(std::u16string_view text) noexcept {
  Buffer& buffer = buffers[next_buffer];
  next_buffer = (next_buffer + 1) % kept_texts;
  if (!buffer.has_room(3 * text.size() + 1)) return {};
  char* end = buffer.bytes;
  while (!text.empty()) end = write_code_point(end, take_code_point(text));
  *end = '\0';
  return {buffer.bytes, static_cast<std::size_t>(end - buffer.bytes)};
}

}  // namespace hvm::kernel
