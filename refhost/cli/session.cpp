// cli/session.cpp: the inputs of a session as a script

#include "cli/session.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "cli/names.hpp"
#include "cli/private_file.hpp"
#include "script/data/data_error.hpp"
#include "script/data/output_file.hpp"

namespace hvm {
namespace {

constexpr const char* front = "session-";
constexpr const char* lost_front = "lost-session-";
constexpr const char* ending = ".hvm";

/// Whether `_` stands in the text as a word. In a string or a comment it counts, too, which does no harm.
bool reads_shown(const std::string& text) {
  for (std::size_t at = text.find('_'); at != std::string::npos; at = text.find('_', at + 1)) {
    const bool begins = at == 0 || !is_in_name(text[at - 1]);
    if (begins && (at + 1 == text.size() || !is_in_name(text[at + 1]))) return true;
  }
  return false;
}

}  // namespace

void Session::add(SessionPart part) {
  const bool names_older = !names_shown_ && reads_shown(part.text);
  parts_.push_back(std::move(part));
  names_shown_ = names_shown_ || names_older;
  keep(names_older ? script() : in_script(parts_.back()), names_older);
}

std::string Session::script() const {
  std::string text;
  for (const SessionPart& part : parts_) text += in_script(part);
  return text;
}

/// The value that was shown gets its name where it is read.
std::string Session::in_script(const SessionPart& part) const {
  return (names_shown_ && part.is_shown == IsShown::yes ? "_ = " : "") + part.text;
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
  make_private_folder(folder_);
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

bool Session::is_lost(const std::string& path) const {
  const std::filesystem::path file = std::filesystem::path(path);
  std::error_code error;
  const bool is_here = !folder_.empty() && std::filesystem::equivalent(folder_, file.parent_path(), error);
  return is_here && file.filename().string().rfind(lost_front, 0) == 0;
}

void Session::forget(const std::string& path) const {
  if (file_.is_open()) unlink(path.c_str());
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
