// cli/session.cpp: the inputs of a session as a script

#include "cli/session.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "script/data/data_error.hpp"
#include "script/data/output_file.hpp"

namespace hvm {
namespace {

constexpr const char* front = "session-";
constexpr const char* lost_front = "lost-session-";
constexpr const char* ending = ".hvm";

/// An input as part of a script. Where a later one reads `_`, the last value that was shown gets this name.
std::string line_of(const SessionInput& input, bool is_named) {
  std::string text = input.text;
  if (is_named && input.shown_at) text.insert(*input.shown_at, "_ = ");
  return text + "\n";
}

bool write_all(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = uninterrupted([&] { return write(file, text.data(), text.size()); });
    if (written < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

void Session::add(SessionInput input) {
  const bool names_older = input.reads_shown;
  inputs_.push_back(std::move(input));
  if (names_older)
    keep(script(), true);
  else
    keep(line_of(inputs_.back(), false), false);
}

std::string Session::script() const {
  std::vector<std::string> lines;
  bool is_read = false;  // by a later input, before another value takes its place
  for (auto input = inputs_.rbegin(); input != inputs_.rend(); ++input) {
    lines.push_back(line_of(*input, is_read));
    if (input->shown_at) is_read = false;
    if (input->reads_shown) is_read = true;
  }
  std::string text;
  for (auto line = lines.rbegin(); line != lines.rend(); ++line) text += *line;
  return text;
}

/// What cannot be written is lost: a session needs no file.
void Session::keep(const std::string& text, bool is_whole) {
  if (folder_.empty() || !open_file()) return;
  const int file = file_.number();
  const bool is_ready = !is_whole || (ftruncate(file, 0) == 0 && lseek(file, 0, SEEK_SET) == 0);
  if (!is_ready || !write_all(file, text)) folder_.clear();
}

bool Session::open_file() {
  if (file_.is_open()) return true;
  std::error_code error;
  if (std::filesystem::create_directories(folder_, error))
    std::filesystem::permissions(folder_, std::filesystem::perms::owner_all, error);
  path_ = fmt::format("{}/{}{}{}", folder_, front, getpid(), ending);
  file_.take(open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY, 0600));
  // The lock tells other sessions that this one runs. The system takes it back when hvm ends.
  if (file_.is_open() && flock(file_.number(), LOCK_EX | LOCK_NB) == 0) return true;
  folder_.clear();
  return false;
}

void Session::end() noexcept {
  if (file_.is_open()) unlink(path_.c_str());
  file_.close();
}

std::vector<std::string> Session::lost_sessions() const {
  std::vector<std::string> lost;
  if (folder_.empty()) return lost;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder_, error), end; !error && entry != end; entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (name.rfind(front, 0) != 0 || entry->path().extension() != ending) continue;
    const Descriptor file(open(entry->path().c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (!file.is_open() || flock(file.number(), LOCK_EX | LOCK_NB) != 0) continue;
    struct stat status = {};
    if (fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
    if (status.st_size == 0) {
      unlink(entry->path().c_str());
      continue;
    }
    const std::string kept = fmt::format("{}/{}{}", folder_, lost_front, name.substr(std::string_view(front).size()));
    if (rename(entry->path().c_str(), kept.c_str()) == 0) lost.push_back(kept);
  }
  std::sort(lost.begin(), lost.end());
  return lost;
}

std::string save_script(const std::string& path, const std::string& script) {
  try {
    OutputFile file(path);
    file.write(script);
    file.finish();
    return {};
  } catch (const DataError& error) {
    return error.what();
  }
}

}  // namespace hvm
