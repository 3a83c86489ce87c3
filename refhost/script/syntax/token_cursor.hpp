// script/syntax/token_cursor.hpp: the parser's position among the tokens, and its errors

#pragma once

#include <string>

#include "script/syntax/lexer.hpp"

namespace hvm {

/// Walks a list of tokens, never beyond its last, which is the end of the source.
class TokenCursor {
 public:
  TokenCursor(SourcePtr source, std::vector<Token> tokens);

  const SourcePtr& source() const { return source_; }
  const Token& current() const { return tokens_[at_]; }
  const Token& following() const { return tokens_[at_ + 1 < tokens_.size() ? at_ + 1 : at_]; }
  /// The token before the current one; the current one at the beginning.
  const Token& previous() const { return tokens_[at_ > 0 ? at_ - 1 : 0]; }
  bool is_at(TokenKind kind) const { return current().kind == kind; }
  Token take();
  /// Steps over a token of this kind; false when the current one is another.
  bool accept(TokenKind kind);
  /// Takes a token of this kind; otherwise fails with `'x' expected` and `purpose`, which says for what.
  Token expect(TokenKind kind, const char* purpose);
  void skip_newlines();
  void skip_separators();

  [[noreturn]] void fail(std::string message) const;
  [[noreturn]] void fail(std::string message, Span span) const;
  /// Fails with what was expected at the current token; suggests '==' at an assignment.
  [[noreturn]] void fail_expected(const std::string& what) const;

 private:
  SourcePtr source_;
  std::vector<Token> tokens_;
  std::size_t at_ = 0;
};

bool is_assignment(TokenKind kind);

}  // namespace hvm
