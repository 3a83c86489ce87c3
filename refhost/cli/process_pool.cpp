// cli/process_pool.cpp: tests in processes of their own, several at the same time

#include "cli/process_pool.hpp"

#include <signal.h>
#include <sys/wait.h>

#include <cerrno>
#include <system_error>

#include "script/data/descriptor.hpp"

namespace hvm {
namespace {

/// So many tests may have started before the first of them is reported. Each may hold two open files.
constexpr std::size_t most_unreported = 256;

}  // namespace

void ProcessPool::run(std::size_t count) {
  // Where it is ignored, the system forgets how a process ended.
  signal(SIGCHLD, SIG_DFL);
  processes_.resize(count);
  while (reported_ < processes_.size()) {
    while (may_start() && start())
      ;
    wait_for_one();
    while (reported_ < started_ && processes_[reported_]->has_ended()) {
      const std::unique_ptr<TestProcess> process = std::move(processes_[reported_]);
      report_(reported_++, *process);
    }
  }
}

bool ProcessPool::may_start() const {
  return started_ < processes_.size() && running_ < settings_.jobs && started_ - reported_ < most_unreported;
}

/// Starts the next test. Returns false when the system allows no more processes or files for now.
bool ProcessPool::start() {
  const std::size_t index = started_;
  try {
    processes_[index] = std::make_unique<TestProcess>([&] { return passes_(index); }, settings_.time_limit);
  } catch (const std::system_error&) {
    if (running_ == 0) throw;
    return false;
  }
  ++started_, ++running_;
  return true;
}

void ProcessPool::wait_for_one() {
  int status = 0;
  const pid_t id = uninterrupted([&] { return waitpid(-1, &status, 0); });
  if (id < 0) throw std::system_error(errno, std::generic_category(), "waitpid");
  for (std::size_t i = reported_; i < started_; ++i)
    if (processes_[i]->id() == id && !processes_[i]->has_ended()) processes_[i]->end(status), --running_;
}

}  // namespace hvm
