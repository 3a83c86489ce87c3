// script/data/output_file.cpp: writing a file so that a failure loses nothing

#include "script/data/output_file.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <limits.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "script/data/data_error.hpp"
#include "script/data/waiting.hpp"

namespace hvm {
namespace {

constexpr std::size_t written_at_once = std::size_t{1} << 18;
constexpr unsigned mode_of_new_files = 0666;  // less what the user's mask takes away
constexpr unsigned permissions = 07777;
constexpr int most_links = 40;
constexpr int most_attempts = 1000;

std::string folder_of(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

/// The file that the symbolic links from `path` on end at, which need not exist. Empty, with an error in `errno`, when
/// they form a circle.
std::string end_of_links(std::string path) {
  char named[PATH_MAX];
  for (int i = 0; i < most_links; ++i) {
    const ssize_t length = readlink(path.c_str(), named, sizeof(named));
    if (length < 0) return path;
    std::string next = named[0] == '/' ? "" : folder_of(path);
    next.append(named, static_cast<std::size_t>(length));
    path = std::move(next);
  }
  errno = ELOOP;
  return {};
}

bool is_same_file(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

bool is_standard_output(const struct stat& file) {
  struct stat output = {};
  return fstat(STDOUT_FILENO, &output) == 0 && is_same_file(file, output);
}

}  // namespace

Temporary::~Temporary() {
  if (exists()) unlink(path_.c_str());
}

OutputFile::OutputFile(const std::string& path) : name_(path), progress_("writing", path) {
  struct stat old = {};
  const bool exists = stat(path.c_str(), &old) == 0;
  if (!exists && errno != ENOENT) fail_by_system();
  if (exists && !S_ISREG(old.st_mode)) {
    file_.take(open_to_write(path));
    if (!file_.is_open()) fail_by_system();
    return;
  }
  if (exists && is_standard_output(old)) fail("this is the standard output, to which 'print' writes");
  // A rename would also replace a file that may not be written.
  if (exists && faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) fail_by_system();
  replace_later(end_of_links(path), exists ? old.st_mode & 0777 : mode_of_new_files);
  if (exists) keep_owner_and_mode(old);
}

void OutputFile::write(std::string_view text) {
  if (waiting_.size() + text.size() >= written_at_once) flush();
  if (text.size() >= written_at_once)
    write_all(text);
  else
    waiting_ += text;
}

void OutputFile::finish() {
  flush();
  if (!temporary_.exists()) {
    if (file_.close() != 0) fail_by_system();
    return;
  }
  if (uninterrupted([&] { return fsync(file_.number()); }) != 0 || file_.close() != 0) fail_by_system();
  if (std::rename(temporary_.path().c_str(), target_.c_str()) != 0) fail_by_system();
  temporary_.keep();
}

void OutputFile::replace_later(const std::string& target, unsigned mode) {
  if (target.empty()) fail_by_system();
  target_ = target;
  const std::string folder = folder_of(target);
  for (int i = 0; i < most_attempts; ++i) {
    std::string temporary = fmt::format("{}.hvm-{}-{}", folder, getpid(), i);
    file_.take(uninterrupted(
        [&] { return open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode); }));
    if (file_.is_open()) {
      temporary_.set(std::move(temporary));
      return;
    }
    if (errno != EEXIST) break;
  }
  const std::string reason = std::generic_category().message(errno);
  fail(fmt::format("no file can be made in its folder: {}", reason));
}

/// Only the superuser gives a file to somebody else; without that the new file is the user's own.
void OutputFile::keep_owner_and_mode(const struct stat& old) {
  unsigned mode = old.st_mode & permissions;
  if (fchown(file_.number(), old.st_uid, old.st_gid) != 0) mode &= 0777;
  if (fchmod(file_.number(), mode) != 0) fail_by_system();
}

void OutputFile::flush() {
  write_all(waiting_);
  waiting_.clear();
}

void OutputFile::write_all(std::string_view text) {
  while (!text.empty()) {
    const std::string_view part = text.substr(0, written_at_once);
    const ssize_t count = uninterrupted([&] { return ::write(file_.number(), part.data(), part.size()); });
    if (count < 0 && errno == EAGAIN) {
      await_output(file_.number());
      continue;
    }
    if (count < 0) fail_by_system();
    text.remove_prefix(static_cast<std::size_t>(count));
    bytes_ += static_cast<std::uint64_t>(count);
    progress_.bytes(bytes_, 0);
  }
}

void OutputFile::fail(const std::string& cause) const { throw DataError(fmt::format("{}: {}", name_, cause)); }

void OutputFile::fail_by_system() const { fail(std::generic_category().message(errno)); }

}  // namespace hvm
