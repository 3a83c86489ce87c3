// cli/history_file.cpp: the inputs of earlier sessions

#include "cli/history_file.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "cli/private_file.hpp"
#include "cli/safe_text.hpp"
#include "script/data/descriptor.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

constexpr std::size_t most_inputs = 1000;
constexpr std::size_t longest_input = std::size_t{64} << 10;
constexpr off_t longest_part = off_t{8} << 20;  // of the file, from its end

constexpr std::string_view hexadecimal = "0123456789abcdef";

/// Control characters are escaped: a terminal that shows the file shall not obey them.
std::string in_one_line(std::string_view input) {
  std::string line;
  while (!input.empty()) {
    const std::string_view before = input;
    const char32_t c = take_character(input);
    const std::string_view bytes = before.substr(0, before.size() - input.size());
    if (c == '\\')
      line += "\\\\";
    else if (c == '\n')
      line += "\\n";
    else if (c == '\t' || !is_control(c))
      line += bytes;
    else
      for (const char byte : bytes) line += fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
  }
  return line;
}

/// The byte of an escape `\xHH` behind its x; no value when it is none.
std::optional<char> escaped_byte(std::string_view digits) {
  if (digits.size() < 2) return std::nullopt;
  const std::size_t high = hexadecimal.find(digits[0]);
  const std::size_t low = hexadecimal.find(digits[1]);
  const bool is_byte = high != std::string_view::npos && low != std::string_view::npos;
  return is_byte ? std::optional(static_cast<char>(16 * high + low)) : std::nullopt;
}

/// Bytes that are not UTF-8, which nobody has typed, are replaced.
std::string in_its_lines(std::string_view line) {
  std::string input;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const bool is_escape = line[i] == '\\' && i + 1 < line.size();
    if (is_escape) ++i;
    const auto byte = is_escape && line[i] == 'x' ? escaped_byte(line.substr(i + 1)) : std::nullopt;
    if (byte) i += 2;
    input += byte ? *byte : is_escape && line[i] == 'n' ? '\n' : line[i];
  }
  return valid_text(input);
}

std::string directory_from(const char* variable, const char* below) {
  const char* value = std::getenv(variable);
  return value && value[0] == '/' ? std::string(value) + below : std::string();
}

/// Opens the file and waits until no other session uses it. Another one may put a new file in its place meanwhile.
int open_alone(const std::string& path, int mode) {
  while (true) {
    const int number =
        uninterrupted([&] { return open(path.c_str(), mode | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0600); });
    if (number < 0) return -1;
    struct stat opened = {};
    struct stat present = {};
    const bool is_locked = uninterrupted([&] { return flock(number, LOCK_EX); }) == 0;
    if (!is_locked || fstat(number, &opened) != 0 || !S_ISREG(opened.st_mode)) {
      close(number);
      errno = is_locked ? EINVAL : errno;
      return -1;
    }
    if (stat(path.c_str(), &present) == 0 && present.st_ino == opened.st_ino && present.st_dev == opened.st_dev)
      return number;
    close(number);
  }
}

/// The end of the file, in whole lines.
std::string last_lines(int file) {
  const off_t size = lseek(file, 0, SEEK_END);
  const off_t begin = std::max<off_t>(0, size - longest_part);
  std::string text(static_cast<std::size_t>(std::max<off_t>(0, size - begin)), '\0');
  std::size_t filled = 0;
  while (filled < text.size()) {
    const ssize_t count = uninterrupted(
        [&] { return pread(file, text.data() + filled, text.size() - filled, begin + static_cast<off_t>(filled)); });
    if (count <= 0) break;
    filled += static_cast<std::size_t>(count);
  }
  text.resize(filled);
  return begin > 0 ? text.substr(std::min(text.find('\n'), text.size() - 1) + 1) : text;
}

/// Puts a file with these lines in the place of the one that is open, and locked.
void shorten(const std::string& path, const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  const std::string other = fmt::format("{}.{}", path, getpid());
  const Descriptor file(open(other.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  const bool is_written = file.is_open() && write_all(file.number(), text);
  if (!is_written || rename(other.c_str(), path.c_str()) != 0) unlink(other.c_str());
}

}  // namespace

std::string history_path() {
  if (const char* named = std::getenv("HVM_HISTORY")) return named == std::string_view("/dev/null") ? "" : named;
  const std::string state = directory_from("XDG_STATE_HOME", "/hvm/history");
  return state.empty() ? directory_from("HOME", "/.local/state/hvm/history") : state;
}

std::vector<std::string> HistoryFile::read() {
  if (path_.empty()) return {};
  const Descriptor file(open_alone(path_, O_RDONLY));
  if (!file.is_open()) {
    if (errno != ENOENT) fail();
    return {};
  }
  const std::string text = last_lines(file.number());
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    if (end > at) lines.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  const std::size_t extra = lines.size() - std::min(lines.size(), most_inputs);
  lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(extra));
  if (extra > most_inputs) shorten(path_, lines);
  std::transform(lines.begin(), lines.end(), lines.begin(), [](const std::string& line) { return in_its_lines(line); });
  return lines;
}

void HistoryFile::add(const std::string& input) {
  if (path_.empty() || has_failed_ || input.size() > longest_input) return;
  make_private_folder(std::filesystem::path(path_).parent_path());
  const Descriptor file(open_alone(path_, O_WRONLY | O_APPEND | O_CREAT));
  if (!file.is_open() || !write_all(file.number(), in_one_line(input) + "\n")) fail();
}

std::string HistoryFile::complaint() { return std::exchange(complaint_, {}); }

void HistoryFile::fail() {
  if (has_failed_) return;
  has_failed_ = true;
  const std::string reason = errno == EINVAL ? "this is not a regular file" : std::generic_category().message(errno);
  complaint_ = fmt::format("the history is not kept: {}: {}", path_, reason);
}

}  // namespace hvm
