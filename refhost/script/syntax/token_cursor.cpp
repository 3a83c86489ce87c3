// script/syntax/token_cursor.cpp: the parser's position among the tokens, and its errors

#include "script/syntax/token_cursor.hpp"

#include <fmt/format.h>

#include "script/syntax/diagnostics.hpp"

namespace hvm {
namespace {

bool is_bracket_begin(TokenKind kind) { return kind == TokenKind::left_paren || kind == TokenKind::left_bracket; }
bool is_bracket_end(TokenKind kind) { return kind == TokenKind::right_paren || kind == TokenKind::right_bracket; }

/// Whether an expression can end with a token of this kind.
bool ends_value(TokenKind kind) {
  switch (kind) {
    case TokenKind::name:
    case TokenKind::integer:
    case TokenKind::integer64:
    case TokenKind::real:
    case TokenKind::string:
    case TokenKind::wide_string:
    case TokenKind::kw_true:
    case TokenKind::kw_false:
    case TokenKind::kw_nil:
      return true;
    default:
      return is_bracket_end(kind);
  }
}

Span joined_span(Span first, std::size_t size) { return {first.begin, first.begin + size}; }

}  // namespace

TokenCursor::TokenCursor(SourcePtr source, std::vector<Token> tokens)
    : source_(std::move(source)), tokens_(std::move(tokens)) {}

Token TokenCursor::take() {
  if (is_at(TokenKind::end_of_source)) return current();
  return std::move(tokens_[at_++]);
}

bool TokenCursor::accept(TokenKind kind) {
  if (!is_at(kind)) return false;
  ++at_;
  return true;
}

Token TokenCursor::expect(TokenKind kind, const char* purpose) {
  if (!is_at(kind)) fail_expected(fmt::format("{} {}", described(kind), purpose));
  return take();
}

void TokenCursor::skip_newlines() {
  while (accept(TokenKind::newline)) {
  }
}

void TokenCursor::skip_separators() {
  while (accept(TokenKind::newline) || accept(TokenKind::semicolon)) {
  }
}

Token TokenCursor::open() {
  open_.push_back(at_);
  return take();
}

TokenKind TokenCursor::closing_kind() const {
  return tokens_[open_.back()].kind == TokenKind::left_paren ? TokenKind::right_paren : TokenKind::right_bracket;
}

Token TokenCursor::close(const char* purpose) {
  const TokenKind closing = closing_kind();
  if (is_bracket_end(current().kind) && !is_at(closing)) {
    const Token& opening = tokens_[open_.back()];
    const std::size_t line = source_->line(opening.span.begin);
    const bool is_here = line == source_->line(current().span.begin);
    fail(fmt::format("the {}{} is closed by {}, but here is {}", described(opening.kind),
                     is_here ? "" : fmt::format(" of line {}", line), described(closing), described(current().kind)));
  }
  Token token = expect(closing, purpose);
  open_.pop_back();
  return token;
}

bool TokenCursor::accept_close() {
  if (!accept(closing_kind())) return false;
  open_.pop_back();
  return true;
}

void TokenCursor::fail(std::string message) const { fail(std::move(message), current().span); }

void TokenCursor::fail(std::string message, Span span) const { throw ScriptError(std::move(message), source_, span); }

// A bracket that is closed somewhere is not the cause of what is wrong here.
bool TokenCursor::is_closed_later() const {
  std::size_t depth = 0;
  for (std::size_t i = at_; i < tokens_.size(); ++i) {
    if (is_bracket_begin(tokens_[i].kind)) ++depth;
    if (is_bracket_end(tokens_[i].kind) && depth-- == 0) return true;
  }
  return false;
}

void TokenCursor::fail_unclosed() const {
  const Token& opening = tokens_[open_.back()];
  throw ScriptError(fmt::format("{} is not closed", described(opening.kind)), source_, opening.span,
                    is_at(TokenKind::end_of_source) ? Completeness::incomplete : Completeness::complete);
}

std::string_view TokenCursor::joined_text(std::size_t index) const {
  if (index + 1 >= tokens_.size() || tokens_[index].span.end != tokens_[index + 1].span.begin) return {};
  const Token& second = tokens_[index + 1];
  const std::size_t end = second.kind == TokenKind::string ? second.span.begin + 1 : second.span.end;
  return source_->text({tokens_[index].span.begin, end});
}

void TokenCursor::refuse_foreign(ForeignPlace place) const {
  const std::string_view advice = foreign_advice(place, text(at_));
  if (!advice.empty()) fail(fmt::format("unexpected '{}'; {}", text(at_), advice));
}

void TokenCursor::refuse_foreign_joined(std::size_t index) const {
  const std::string_view joined = joined_text(index);
  const std::string_view advice = foreign_advice(ForeignPlace::joined, joined);
  if (!advice.empty())
    fail(fmt::format("unexpected '{}'; {}", joined, advice), joined_span(tokens_[index].span, joined.size()));
}

/// Fails when what cannot be read looks like a form of another language.
void TokenCursor::refuse_foreign_forms() const {
  const bool ends_early = at_ == statement_ + 1 && !is_at(TokenKind::end_of_source) && !is_at(TokenKind::newline);
  const std::string_view first = ends_early ? foreign_advice(ForeignPlace::first, text(statement_)) : "";
  if (!first.empty()) fail(fmt::format("unexpected '{}'; {}", text(statement_), first), tokens_[statement_].span);
  refuse_foreign_joined(at_);
  for (std::size_t i = at_; i-- > statement_;) {
    const bool is_here = i + 1 == at_;
    if (is_here || joined_text(i) == "--") refuse_foreign_joined(i);
  }
  if (at_ == 0 || at_ == statement_) return;
  const std::string_view before = foreign_advice(ForeignPlace::before_value, text(at_ - 1));
  if (!before.empty() && previous().kind == TokenKind::name)
    fail(fmt::format("unexpected '{}'; {}", text(at_ - 1), before), previous().span);
  if (ends_value(previous().kind)) refuse_foreign(ForeignPlace::behind_value);
}

/// Whether the current '=' stands behind the name of an argument of a call.
bool TokenCursor::is_named_argument() const {
  if (!is_at(TokenKind::assign) || at_ < 3 || open_.empty() || previous().kind != TokenKind::name) return false;
  const std::size_t opening = open_.back();
  const TokenKind before = tokens_[at_ - 2].kind;
  const bool begins_argument = at_ - 2 == opening || before == TokenKind::comma;
  const bool is_call =
      tokens_[opening].kind == TokenKind::left_paren && opening > 0 && tokens_[opening - 1].kind == TokenKind::name;
  return is_call && begins_argument;
}

/// Whether the innermost open bracket is that of a table, not of an index, which stands behind a value.
bool TokenCursor::is_in_table() const {
  if (open_.empty() || tokens_[open_.back()].kind != TokenKind::left_bracket) return false;
  if (open_.back() == 0) return true;
  const TokenKind before = tokens_[open_.back() - 1].kind;
  return before != TokenKind::name && before != TokenKind::right_bracket && before != TokenKind::right_paren;
}

void TokenCursor::fail_named_argument() const {
  const std::size_t opening = open_.back();
  if (opening > 1 && tokens_[opening - 2].kind == TokenKind::kw_fn)
    fail("a parameter of a fn has no default value; each call gives all arguments");
  const std::string_view advice = foreign_advice(ForeignPlace::argument, text(at_ - 1));
  if (!advice.empty()) fail(fmt::format("a call takes no named arguments; {}", advice), previous().span);
  fail("an assignment is not an expression, and a call takes no named arguments; did you mean ==");
}

void TokenCursor::fail_expected(const std::string& what) const {
  if (!open_.empty() && !is_closed_later()) fail_unclosed();
  refuse_foreign_forms();
  if (is_named_argument()) fail_named_argument();
  if (is_at(TokenKind::assign) && is_in_table()) fail("an entry of a table is written \"key\": value");
  if (is_at(TokenKind::assign)) fail("an assignment is not an expression; did you mean ==");
  if (is_assignment(current().kind)) fail("an assignment is not an expression");
  const bool is_end = is_at(TokenKind::end_of_source);
  throw ScriptError(fmt::format("{} expected, but here is {}", what, described(current().kind)), source_,
                    current().span, is_end ? Completeness::incomplete : Completeness::complete);
}

bool is_assignment(TokenKind kind) {
  switch (kind) {
    case TokenKind::assign:
    case TokenKind::plus_assign:
    case TokenKind::minus_assign:
    case TokenKind::star_assign:
    case TokenKind::slash_assign:
    case TokenKind::percent_assign:
      return true;
    default:
      return false;
  }
}

}  // namespace hvm
