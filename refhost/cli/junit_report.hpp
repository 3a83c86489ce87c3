// cli/junit_report.hpp: the results of tests as a JUnit file, which programs for continuous integration read

#pragma once

#include <string>
#include <vector>

namespace hvm {

/// A test as the file tells of it.
struct ReportedTest {
  enum class Kind { passed, failed, broken };  // broken: it could not run to its end
  std::string path;
  Kind kind = Kind::passed;
  double seconds = 0;
  std::string message;  // of a test that did not pass: one line
  std::string output;   // what it wrote
  std::string errors;   // what it wrote to the error output
};

/// The file as XML, in UTF-8. Text that XML cannot hold is replaced.
std::string junit_report(const std::vector<ReportedTest>& tests, double seconds);

}  // namespace hvm
