// script/stop/script_end.hpp: what ends a script at once, wherever it is
//
// None of them is an error of the script, and nothing in the language catches them. All are carried over the frames of
// modules as errors are.

#pragma once

#include <exception>
#include <optional>
#include <string>
#include <utility>

#include "script/syntax/diagnostics.hpp"

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

/// The user has interrupted the script. The innermost statement gives it its place, and the calls around it add
/// themselves, as to an error.
class ScriptInterrupted final : public ScriptEnd {
 public:
  const char* what() const noexcept override { return "interrupted"; }
  /// Does nothing when the place is known.
  void set_place(const SourcePtr& source, Span span) {
    if (!place_) place_.emplace(what(), source, span);
  }
  /// The place becomes the line that calls a library.
  void move_to(const SourcePtr& source, Span span) { place_.emplace(what(), source, span); }
  /// How it is reported; no value where no statement ran.
  std::optional<ScriptError>& place() { return place_; }

 private:
  std::optional<ScriptError> place_;
};

}  // namespace hvm
