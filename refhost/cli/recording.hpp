// cli/recording.hpp: what of an input becomes part of the session

#pragma once

#include <string>
#include <string_view>

#include "cli/session.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/syntax/tree.hpp"

namespace hvm {

/// Takes down the text of a program while its statements run, so that the session is a script that runs. A statement
/// that came to its end stays as it was written, and so does what stands between statements, among it the fns. One that
/// failed may have done a part of its work: where it can leave that behind it stays in a `try`. All others become
/// comments.
class Recording {
 public:
  Recording(Session& session, const Program& program) : session_(session), source_(program.source) {}

  /// Takes down what stands in front of the statement.
  void begin(const Statement& statement);
  void finish(const Statement& statement, IsShown is_shown);
  void fail(const Statement& statement, const ScriptError& error);
  /// The statement has not run, or what it did cannot be done again.
  void leave_out(const Statement& statement, std::string_view reason = {});
  /// Takes down what stands behind the last statement.
  void end();

 private:
  void add_between(std::string_view text);

  Session& session_;
  const SourcePtr& source_;
  std::size_t taken_ = 0;  // of the text
  bool is_behind_comment_ = false;
};

}  // namespace hvm
