// script/syntax/diagnostics.hpp: errors of a script, and how they are shown

#pragma once

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "script/syntax/source_text.hpp"

namespace hvm {

/// Whether more text could make the script valid: a REPL then asks for another line.
enum class Completeness { complete, incomplete };

/// An error at a place of a script: what parsing and running throw.
class ScriptError : public std::exception {
 public:
  ScriptError(std::string message, SourcePtr source, Span span, Completeness completeness = Completeness::complete);

  const char* what() const noexcept override { return message_.c_str(); }
  const std::string& message() const { return message_; }
  const SourcePtr& source() const { return source_; }
  Span span() const { return span_; }
  std::size_t line() const { return source_->line(span_.begin); }
  bool is_incomplete() const { return completeness_ == Completeness::incomplete; }
  /// Says from where the failing `fn` was called. Only the innermost calls are kept.
  void add_call(const std::string& function, const SourceText& source, Span span);

  /// Says where the failing script was used. It counts as a call.
  void add_use(const std::string& script, const SourceText& source, Span span);

  /// Gives lines that follow the caret of the report and are no part of the message.
  void set_notes(std::vector<std::string> notes) { notes_ = std::move(notes); }
  const std::vector<std::string>& notes() const { return notes_; }

  /// `file:line:column: error: message`, the line, a caret under the column, the notes, and the calls that led there.
  std::string report() const;

 private:
  void add_step(const std::string& what, const SourceText& source, Span span);

  std::string message_;
  SourcePtr source_;
  Span span_;
  Completeness completeness_;
  std::vector<std::string> notes_;
  std::vector<std::string> calls_;
  std::size_t omitted_calls_ = 0;
};

/// A failure that does not know its place yet. The evaluation of the expression turns it into a `ScriptError`.
class Failure : public std::exception {
 public:
  explicit Failure(std::string message, std::vector<std::string> notes = {})
      : message_(std::move(message)), notes_(std::move(notes)) {}
  const char* what() const noexcept override { return message_.c_str(); }
  const std::string& message() const { return message_; }
  /// Lines for the report, such as `usage: xinv(a)`.
  const std::vector<std::string>& notes() const { return notes_; }

 private:
  std::string message_;
  std::vector<std::string> notes_;
};

/// `file:line:column: warning: message`, the line, and a caret under the column.
std::string warning_report(const std::string& message, const SourceText& source, Span span);

/// ` (did you mean 'xsum'?)` with the candidate most similar to `name`; empty when none is similar.
std::string suggestion(std::string_view name, const std::vector<std::string_view>& candidates);

}  // namespace hvm
