// cli/session.cpp: the inputs of a session as a script

#include "cli/session.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "cli/names.hpp"
#include "cli/private_file.hpp"
#include "script/data/data_error.hpp"
#include "script/data/descriptor.hpp"
#include "script/data/output_file.hpp"

namespace hvm {
namespace {

constexpr const char* front = "session-";
constexpr const char* lost_front = "lost-session-";
constexpr const char* ending = ".hvm";
constexpr std::time_t seconds_kept = 30 * 24 * 60 * 60;  // of a lost session, from when it was offered

bool has_form(const std::string& name, std::string_view beginning) {
  return name.compare(0, beginning.size(), beginning) == 0 && std::filesystem::path(name).extension() == ending;
}

/// The paths `folder/beginning...hvm`.
std::vector<std::string> files_in(const std::string& folder, std::string_view beginning) {
  std::vector<std::string> paths;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
    if (has_form(entry->path().filename().string(), beginning)) paths.push_back(entry->path().string());
  std::sort(paths.begin(), paths.end());
  return paths;
}

/// A path `folder/beginningNUMBER.hvm` that does not exist.
std::string free_path(const std::string& folder, std::string_view beginning, long number) {
  std::error_code error;
  std::string path;
  do path = fmt::format("{}/{}{}{}", folder, beginning, number++, ending);
  while (std::filesystem::exists(path, error));
  return path;
}

/// Whether it is a file that this user has made: the folder may belong to many.
bool is_own_file(const struct stat& status) { return S_ISREG(status.st_mode) && status.st_uid == geteuid(); }

/// Removes what was offered long ago, and not taken.
void remove_old(const std::string& folder) {
  for (const std::string& path : files_in(folder, lost_front)) {
    struct stat status = {};
    const bool is_old =
        lstat(path.c_str(), &status) == 0 && is_own_file(status) && std::time(nullptr) - status.st_mtime > seconds_kept;
    if (is_old) unlink(path.c_str());
  }
}

/// Whether an open file has the lock that a running session keeps. The system takes it back when hvm ends.
bool takes_lock(const Descriptor& file) { return file.is_open() && flock(file.number(), LOCK_EX | LOCK_NB) == 0; }

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

/// Sessions of other machines and containers may have the same process numbers, in the same folder.
bool Session::open_file() {
  constexpr int most_attempts = 10;
  if (file_.is_open()) return true;
  make_private_folder(folder_);
  for (int i = 0; i < most_attempts; ++i) {
    path_ = free_path(folder_, front, getpid());
    file_.take(open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOCTTY, 0600));
    if (!file_.is_open() && errno != EEXIST) break;
    // One that starts takes a file without a lock for that of a lost session.
    struct stat status = {};
    if (takes_lock(file_) && fstat(file_.number(), &status) == 0 && status.st_nlink > 0) return true;
    if (file_.is_open()) unlink(path_.c_str());
  }
  file_.close();
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
  remove_old(folder_);
  for (const std::string& path : files_in(folder_, front)) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW));
    struct stat status = {};
    if (!takes_lock(file) || fstat(file.number(), &status) != 0 || !is_own_file(status)) continue;
    if (status.st_size == 0) {
      unlink(path.c_str());
      continue;
    }
    const std::string kept = free_path(folder_, lost_front, getpid());
    if (rename(path.c_str(), kept.c_str()) != 0) continue;
    futimens(file.number(), nullptr);  // the time until it is removed begins
    lost.push_back(kept);
  }
  return lost;
}

bool Session::is_lost(const std::string& path) const {
  std::error_code error;
  const std::filesystem::path file = std::filesystem::absolute(path, error);
  const bool is_here = !folder_.empty() && std::filesystem::equivalent(folder_, file.parent_path(), error);
  return is_here && has_form(file.filename().string(), lost_front);
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
