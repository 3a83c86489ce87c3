// cli/recording.cpp: what of an input becomes part of the session

#include "cli/recording.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "cli/performed_calls.hpp"
#include "cli/safe_text.hpp"
#include "script/syntax/string_literals.hpp"

namespace hvm {
namespace {

namespace fs = std::filesystem;

bool has_block(const Statement& statement) {
  const auto& form = statement.form;
  return std::holds_alternative<If>(form) || std::holds_alternative<While>(form) || std::holds_alternative<For>(form) ||
         std::holds_alternative<Try>(form);
}

/// Whether the statement may have done a part of its work before the error: in its block, in a fn, or by a call that
/// came to its end.
bool may_have_acted(const Statement& statement, const ScriptError& error, const SourcePtr& source) {
  const Span place = error.span();
  const bool is_here =
      error.source() == source && place.begin >= statement.span.begin && place.end <= statement.span.end;
  return has_block(statement) || !is_here || may_have_called(statement, place.begin);
}

/// The statement as it was written. A script that it uses gets its whole path: the session's is in another folder.
std::string text_of(const Statement& statement, const SourceText& source) {
  const auto* use = std::get_if<Use>(&statement.form);
  if (!use || fs::path(use->path).extension() != ".hvm") return std::string(source.text(statement.span));
  const fs::path path = fs::path(source.name()).parent_path() / use->path;
  std::error_code error;
  return fmt::format("use {}", string_literal(fs::absolute(path, error).lexically_normal().string()));
}

std::string as_comment(std::string_view text) {
  std::string comment = "# ";
  for (const char c : text) {
    comment += c;
    if (c == '\n') comment += "# ";
  }
  return comment;
}

}  // namespace

void Recording::begin(const Statement& statement) {
  add_between(std::string_view(source_->text()).substr(taken_, statement.span.begin - taken_));
  taken_ = statement.span.end;
}

void Recording::finish(const Statement& statement, IsShown is_shown) {
  session_.add({text_of(statement, *source_), is_shown});
}

void Recording::fail(const Statement& statement, const ScriptError& error) {
  // A `use` can stand in no `try`.
  const bool is_kept = !std::holds_alternative<Use>(statement.form) && may_have_acted(statement, error, source_);
  if (!is_kept) return leave_out(statement, error.message());
  session_.add({fmt::format("try  # error: {}\n{}\ncatch session_error end", briefly(error.message()),
                            source_->text(statement.span)),
                IsShown::no});
}

void Recording::leave_out(const Statement& statement, std::string_view reason) {
  std::string comment = as_comment(source_->text(statement.span));
  if (!reason.empty()) comment += fmt::format("  # error: {}", briefly(reason));
  session_.add({std::move(comment), IsShown::no});
  is_behind_comment_ = true;
}

void Recording::end() {
  std::string_view rest = std::string_view(source_->text()).substr(taken_);
  rest = rest.substr(0, rest.find_last_not_of('\n') + 1);  // npos + 1 is 0
  add_between(fmt::format("{}\n", rest));
}

void Recording::add_between(std::string_view text) {
  if (is_behind_comment_) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t;"), text.size()));
    if (text.empty() || text.front() != '\n') session_.add({"\n", IsShown::no});
    is_behind_comment_ = false;
  }
  if (!text.empty()) session_.add({std::string(text), IsShown::no});
}

}  // namespace hvm
