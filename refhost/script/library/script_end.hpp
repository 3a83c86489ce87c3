// script/library/script_end.hpp: what ends a script at once, wherever it is
//
// Neither is an error of the script, and nothing in the language catches it. Both are carried over the frames of
// modules as errors are.

#pragma once

#include <exception>

namespace hvm {

/// The end of a script before its last statement.
class ScriptEnd : public std::exception {};

/// The script has asked for its end, with an exit status.
class ScriptExit final : public ScriptEnd {
 public:
  explicit ScriptExit(int status) : status_(status) {}
  const char* what() const noexcept override { return "the script has ended itself"; }
  int status() const { return status_; }

 private:
  int status_;
};

/// The script has taken as many steps as it may.
class StepLimitReached final : public ScriptEnd {
 public:
  const char* what() const noexcept override { return "the script has taken more steps than it may"; }
};

}  // namespace hvm
