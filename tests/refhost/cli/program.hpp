// refhost/cli/program.hpp: runs hvm as a process of its own

#pragma once

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

using Environment = std::vector<std::pair<std::string, std::string>>;

/// Runs hvm with these arguments and this standard input.
Outcome run_hvm(const std::vector<std::string>& arguments, const std::string& input = "",
                const Environment& environment = {});
/// The same over the toy module.
Outcome run_toy(std::vector<std::string> arguments, const std::string& input = "");

/// The path of a stand-in module.
std::string module_path(const std::string& name);

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
