// refhost/cli/program.hpp: runs hvm as a process of its own

#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace hvm::testing {

/// How a run ended.
struct Outcome {
  int status = -1;  // exit status; -1 when a signal ended it
  int signal = 0;
  std::string out;
  std::string err;
};

/// Where a stream of a run leads.
enum class Stream {
  file,            // its text is in the outcome
  full,            // a device that is full
  without_reader,  // a pipe that nobody reads any more
  closed
};

/// Under what conditions hvm runs.
struct Conditions {
  Conditions() = default;
  Conditions(const char* given) : input(given) {}

  std::string input;
  bool has_input = true;                                         // false: the standard input is closed
  std::vector<std::pair<std::string, std::string>> environment;  // what is added to it
  Stream out = Stream::file;
  Stream err = Stream::file;
  std::size_t memory = 0;          // of its addresses, in bytes; 0: any
  std::size_t file_size = 0;       // of a file that it writes, in bytes; 0: any
  bool obeys_permissions = false;  // also when root runs the test
};

/// Runs hvm with these arguments.
Outcome run_hvm(const std::vector<std::string>& arguments, const Conditions& conditions = {});
/// The same over the toy module.
Outcome run_toy(std::vector<std::string> arguments, const Conditions& conditions = {});

/// The same for `--test` among the arguments. The time that the summary ends with is not in the output.
Outcome run_tests(std::vector<std::string> arguments, const Conditions& conditions = {});
/// What --test prints, without the time that its summary ends with.
std::string without_time(const std::string& report);

/// For a child before it becomes hvm: bounds a resource; 0 leaves it as it is.
void limit(decltype(RLIMIT_AS) resource, std::size_t most);
/// The same: root reads and writes everything; without these two rights it is a user like any
/// other. Other users do not have them.
void drop_rights_of_root();

/// The path of a stand-in module.
std::string module_path(const std::string& name);

/// The bytes of a file; none when it cannot be read.
std::string contents(const std::string& path);

/// Tests under a limit on memory. The address sanitizer reserves terabytes of addresses, so that no limit on them can
/// be set: they are for the other builds. Under the sanitizer script_memory_test lets every single allocation fail
/// instead.
class LimitedMemory : public ::testing::Test {
 protected:
  void SetUp() override;
};

/// A directory for a test's files that is gone when the test is.
class Workplace {
 public:
  Workplace();
  ~Workplace();
  Workplace(const Workplace&) = delete;
  Workplace& operator=(const Workplace&) = delete;

  const std::string& path() const { return path_; }
  /// Writes a file, also below new directories, and gives its path.
  std::string write(const std::string& name, const std::string& text) const;

 private:
  std::string path_;
};

}  // namespace hvm::testing
