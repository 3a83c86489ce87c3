// cli/test_process.hpp: a script that is tested in a process of its own

#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string_view>

#include "script/data/descriptor.hpp"

namespace hvm {

/// How a test has ended.
struct TestEnd {
  enum class Kind { passed, failed, ended_by_signal, ended_early };  // early: a module has ended the process
  Kind kind = Kind::ended_early;
  int signal = 0;
  double seconds = 0;
};

/// A process for one script. It keeps what the script writes to the standard output and the error output, finds its
/// standard input empty, and ends when the process that made it ends, in whatever way.
class TestProcess {
 public:
  using Clock = std::chrono::steady_clock;

  /// Starts a process that asks `passes` whether its script passes. SIGALRM ends it after `time_limit` seconds, 0 for
  /// never. Throws `std::system_error`.
  TestProcess(const std::function<bool()>& passes, double time_limit);

  pid_t id() const { return id_; }
  /// Takes note that the process has ended with a status as `waitpid` gives it.
  void end(int wait_status);
  bool has_ended() const { return has_ended_; }
  /// Requires: the process has ended.
  const TestEnd& how_it_ended() const { return end_; }

  /// Gives the texts that the script wrote, piece by piece.
  void read_output(const std::function<void(std::string_view)>& take) const { read(output_, take); }
  void read_errors(const std::function<void(std::string_view)>& take) const { read(errors_, take); }

 private:
  /// What both processes see: the answer of `passes`, once there is one. A module may end the process with any status.
  enum class Answer { none, passes, fails };
  struct Unmap {
    void operator()(Answer* answer) const noexcept;
  };

  static Answer* shared_answer();
  static void read(const Descriptor& file, const std::function<void(std::string_view)>& take);

  std::unique_ptr<Answer, Unmap> answer_{shared_answer()};
  Descriptor output_{-1};
  Descriptor errors_{-1};
  Clock::time_point start_ = Clock::now();
  pid_t id_ = -1;
  bool has_ended_ = false;
  TestEnd end_;
};

}  // namespace hvm
