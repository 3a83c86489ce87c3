// script/syntax/token_cursor.cpp: the parser's position among the tokens, and its errors

#include "script/syntax/token_cursor.hpp"

#include <fmt/format.h>

#include "script/syntax/diagnostics.hpp"

namespace hvm {

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

void TokenCursor::fail(std::string message) const { fail(std::move(message), current().span); }

void TokenCursor::fail(std::string message, Span span) const { throw ScriptError(std::move(message), source_, span); }

void TokenCursor::fail_expected(const std::string& what) const {
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
