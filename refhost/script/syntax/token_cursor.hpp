// script/syntax/token_cursor.hpp: the parser's position among the tokens, and its errors

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "script/syntax/foreign_words.hpp"
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
  /// Whether a token of this kind follows the current one.
  bool is_before(TokenKind kind) const { return at_ + 1 < tokens_.size() && tokens_[at_ + 1].kind == kind; }
  Token take();
  /// Steps over a token of this kind; false when the current one is another.
  bool accept(TokenKind kind);
  /// Takes a token of this kind; otherwise fails with `'x' expected` and `purpose`, which says for what.
  Token expect(TokenKind kind, const char* purpose);
  void skip_newlines();
  void skip_separators();

  /// Takes an opening bracket. `close` or `accept_close` must follow when its content has been read.
  Token open();
  /// Takes the bracket that closes the one opened last; otherwise fails as `expect` does, or with what is wrong with
  /// the brackets.
  Token close(const char* purpose);
  /// Takes the bracket that closes the one opened last, if it is here.
  bool accept_close();

  /// Remembers that a statement begins here, for messages.
  void begin_statement() { statement_ = at_; }

  [[noreturn]] void fail(std::string message) const;
  [[noreturn]] void fail(std::string message, Span span) const;
  /// Fails with what was expected at the current token, or with the likely cause: an open bracket, a form of another
  /// language, an assignment.
  [[noreturn]] void fail_expected(const std::string& what) const;
  /// Fails when the current token is a word or sign of another language at this place.
  void refuse_foreign(ForeignPlace place) const;

 private:
  /// The text of the token at an index.
  std::string_view text(std::size_t index) const { return source_->text(tokens_[index].span); }
  /// The text of the tokens at an index and behind it when no blank is between them; empty when there is one.
  std::string_view joined_text(std::size_t index) const;
  bool is_closed_later() const;
  TokenKind closing_kind() const;
  [[noreturn]] void fail_unclosed() const;
  [[noreturn]] void fail_named_argument() const;
  bool is_named_argument() const;
  bool is_in_table() const;
  void refuse_foreign_joined(std::size_t index) const;
  void refuse_foreign_forms() const;

  SourcePtr source_;
  std::vector<Token> tokens_;
  std::size_t at_ = 0;
  std::size_t statement_ = 0;
  std::vector<std::size_t> open_;  // the opening brackets whose content is being read, by their index
};

bool is_assignment(TokenKind kind);

}  // namespace hvm
