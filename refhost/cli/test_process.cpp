// cli/test_process.cpp: a script that is tested in a process of its own

#include "cli/test_process.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <system_error>

#include "cli/process_end.hpp"

namespace hvm {
namespace {

[[noreturn]] void fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

/// A file without a name, in memory.
int nameless_file() {
  const int file = memfd_create("output of a test", MFD_CLOEXEC);
  if (file < 0) fail("a file for the output of a test");
  return file;
}

bool is_empty(const Descriptor& file) {
  struct stat state = {};
  return fstat(file.number(), &state) == 0 && state.st_size == 0;
}

// ---- In the script's process

/// Lets the system end this process when `parent` ends, in whatever way.
void end_with(pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) std::_Exit(EXIT_FAILURE);  // it has ended already
}

/// Lets SIGALRM end this process after the time limit.
void start_clock(double time_limit) {
  if (time_limit <= 0) return;
  signal(SIGALRM, SIG_DFL);
  sigset_t alarm = {};
  sigemptyset(&alarm);
  sigaddset(&alarm, SIGALRM);
  sigprocmask(SIG_UNBLOCK, &alarm, nullptr);
  itimerval timer = {};
  timer.it_value.tv_sec = static_cast<time_t>(time_limit);
  // At least a microsecond: a timer of zero never ends.
  const double fraction = time_limit - std::floor(time_limit);
  timer.it_value.tv_usec = std::max(static_cast<suseconds_t>(fraction * 1e6), suseconds_t{1});
  setitimer(ITIMER_REAL, &timer, nullptr);
}

void redirect(int output, int errors) {
  const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
  const bool are_redirected =
      dup2(nothing, STDIN_FILENO) >= 0 && dup2(output, STDOUT_FILENO) >= 0 && dup2(errors, STDERR_FILENO) >= 0;
  if (!are_redirected) std::_Exit(EXIT_FAILURE);
}

}  // namespace

void TestProcess::Unmap::operator()(Answer* answer) const noexcept { munmap(answer, sizeof(Answer)); }

TestProcess::Answer* TestProcess::shared_answer() {
  void* const memory = mmap(nullptr, sizeof(Answer), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) fail("memory for the answer of a test");
  return new (memory) Answer(Answer::none);
}

TestProcess::TestProcess(const std::function<bool()>& passes, double time_limit) {
  output_.take(nameless_file());
  errors_.take(nameless_file());
  std::fflush(nullptr);  // or both processes would write what waits
  const pid_t parent = getpid();
  id_ = fork();
  if (id_ < 0) fail("fork");
  if (id_ > 0) return;
  end_with(parent);
  redirect(output_.number(), errors_.number());
  start_clock(time_limit);
  *answer_ = passes() ? Answer::passes : Answer::fails;
  end_process(*answer_ == Answer::passes ? EXIT_SUCCESS : EXIT_FAILURE);
}

void TestProcess::end(int wait_status) {
  has_ended_ = true;
  end_.seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  if (WIFSIGNALED(wait_status)) {
    end_.kind = TestEnd::Kind::ended_by_signal;
    end_.signal = WTERMSIG(wait_status);
  } else if (*answer_ != Answer::none) {
    const bool is_good = *answer_ == Answer::passes && WEXITSTATUS(wait_status) == EXIT_SUCCESS;
    end_.kind = is_good ? TestEnd::Kind::passed : TestEnd::Kind::failed;
  }
  // Scripts that wait for their turn to be reported hold no files, unless they have written something.
  if (is_empty(output_)) output_.close();
  if (is_empty(errors_)) errors_.close();
}

void TestProcess::read(const Descriptor& file, const std::function<void(std::string_view)>& take) {
  if (!file.is_open()) return;
  char piece[1 << 16];
  off_t at = 0;
  while (true) {
    const ssize_t count = uninterrupted([&] { return pread(file.number(), piece, sizeof(piece), at); });
    if (count < 0) fail("the output of a test");
    if (count == 0) return;
    take({piece, static_cast<std::size_t>(count)});
    at += count;
  }
}

}  // namespace hvm
