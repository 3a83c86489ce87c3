// cli/conformance_process.hpp: what the process of a call or a script hands on to the one that made it
//
// It writes lines that begin with a mark of their own. What else the module or a script writes is not looked at.

#pragma once

#include <string>
#include <vector>

#include "cli/test_process.hpp"

namespace hvm {

/// In the process of a test: says that it runs this line to prepare a call, and that the call is prepared.
void hand_on_line(const std::string& line);
void hand_on_preparation();
/// Says that it has come to its end, with these differences. Returns whether there are none.
bool hand_on_differences(const std::vector<std::string>& differences);
/// Says that it has come to its end, and why nothing is known of the call. Returns false.
bool hand_on_reason(const std::string& reason);

/// What the process of a test has handed on.
struct HandedOn {
  bool is_prepared = false;  // the last call
  std::string line;          // the last one that prepared a call
  bool is_whole = false;     // it has come to its end; a module may end the process with any status
  std::vector<std::string> differences;
  std::string reason;

  bool is_good() const { return is_whole && differences.empty() && reason.empty(); }
};

/// Requires: the process has ended.
HandedOn handed_on(const TestProcess& process);

/// How a process ended that did not come to its end, such as `it takes longer than 60 s`.
std::string words_of_end(const TestEnd& end, double time_limit);

}  // namespace hvm
