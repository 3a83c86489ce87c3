// script/data/text_input.cpp: the text of a file, read in chunks

#include "script/data/text_input.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "script/data/data_error.hpp"
#include "script/data/waiting.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

constexpr std::size_t chunk_size = std::size_t{1} << 18;

std::string shown_name(const std::string& path) { return is_standard_input(path) ? "the standard input" : path; }

int opened(const std::string& path) { return is_standard_input(path) ? STDIN_FILENO : open_to_read(path); }

bool is_ascii(std::string_view text) {
  unsigned char all = 0;
  for (const char c : text) all = static_cast<unsigned char>(all | static_cast<unsigned char>(c));
  return all < 0x80;
}

/// The length of `text` without a character at its end that goes on behind it.
std::size_t whole_characters(std::string_view text) {
  for (std::size_t back = 1; back <= std::min<std::size_t>(3, text.size()); ++back) {
    const auto byte = static_cast<unsigned char>(text[text.size() - back]);
    if ((byte & 0xC0) == 0x80) continue;
    const std::size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
    return length > back ? text.size() - back : text.size();
  }
  return text.size();
}

std::uint64_t lines_in(std::string_view text) {
  return static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n'));
}

bool is_same_time(const timespec& a, const timespec& b) { return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec; }

}  // namespace

bool is_standard_input(std::string_view path) { return path == "-"; }

TextInput::TextInput(const std::string& path)
    : name_(shown_name(path)), progress_("reading", name_), buffer_(chunk_size), file_(opened(path)) {
  if (!file_.is_open() || fstat(file_.number(), &status_) != 0) fail_by_system();
}

std::string_view TextInput::next() {
  pass({buffer_.data(), given_});
  std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(given_),
            buffer_.begin() + static_cast<std::ptrdiff_t>(filled_), buffer_.begin());
  filled_ -= given_;
  given_ = 0;
  while (given_ == 0 && !has_ended_) {
    has_ended_ = !read_more();
    const std::string_view read(buffer_.data(), filled_);
    given_ = has_ended_ ? filled_ : whole_characters(read);
  }
  if (is_at_start_ && given_ > 0) {
    is_at_start_ = false;
    leave_out_mark();
    if (given_ == 0) return next();
  }
  const std::string_view text(buffer_.data(), given_);
  require_text(text);
  return text;
}

void TextInput::fail(const std::string& cause) const { throw DataError(fmt::format("{}: {}", name_, cause)); }

std::uint64_t TextInput::size() const {
  return S_ISREG(status_.st_mode) ? static_cast<std::uint64_t>(status_.st_size) : 0;
}

void TextInput::fail_by_system() const { fail(std::generic_category().message(errno)); }

/// Removes a byte order mark from the front of the buffer.
void TextInput::leave_out_mark() {
  const std::size_t length = byte_order_mark.size();
  if (std::string_view(buffer_.data(), given_).substr(0, length) != byte_order_mark) return;
  std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(length),
            buffer_.begin() + static_cast<std::ptrdiff_t>(filled_), buffer_.begin());
  filled_ -= length;
  given_ -= length;
}

/// Moves the place at which the buffer begins behind `text`.
void TextInput::pass(std::string_view text) {
  lines_ += lines_in(text);
  const std::size_t end = text.rfind('\n');
  if (end != std::string_view::npos) characters_ = 0;
  characters_ += character_count(text.substr(end + 1));  // npos + 1 is 0
}

void TextInput::fail_at(std::string_view text, std::size_t offset, const char* cause) {
  pass(text.substr(0, offset));
  fail(fmt::format("line {}, character {}: {}", lines_ + 1, characters_ + 1, cause));
}

/// False at the end of the file.
bool TextInput::read_more() {
  await_input(file_.number());
  const ssize_t count =
      uninterrupted([&] { return read(file_.number(), buffer_.data() + filled_, buffer_.size() - filled_); });
  if (count < 0) fail_by_system();
  if (count == 0) return require_unchanged(), false;
  filled_ += static_cast<std::size_t>(count);
  bytes_ += static_cast<std::uint64_t>(count);
  progress_.bytes(bytes_, size());
  return true;
}

void TextInput::require_unchanged() const {
  struct stat now = {};
  if (!S_ISREG(status_.st_mode) || fstat(file_.number(), &now) != 0) return;
  if (now.st_size != status_.st_size || !is_same_time(now.st_mtim, status_.st_mtim))
    fail("the file changed while it was read");
}

void TextInput::require_text(std::string_view text) {
  const std::size_t nul = text.find('\0');
  if (nul != std::string_view::npos) fail_at(text, nul, "a byte is 0: the file does not hold text");
  if (is_ascii(text)) return;
  const std::size_t invalid = first_invalid_utf8(text);
  if (invalid != std::string_view::npos) fail_at(text, invalid, "the bytes are not valid UTF-8");
}

}  // namespace hvm
