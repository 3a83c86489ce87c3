// script/syntax/lexer.hpp: the tokens of a script

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "script/syntax/source_text.hpp"

namespace hvm {

enum class TokenKind {
  end_of_source,
  newline,
  semicolon,
  name,
  integer,
  integer64,
  real,
  string,
  wide_string,
  // keywords
  kw_and,
  kw_break,
  kw_catch,
  kw_continue,
  kw_do,
  kw_else,
  kw_elseif,
  kw_end,
  kw_false,
  kw_fn,
  kw_for,
  kw_if,
  kw_in,
  kw_nil,
  kw_not,
  kw_or,
  kw_return,
  kw_then,
  kw_true,
  kw_try,
  kw_use,
  kw_while,
  // punctuation
  left_paren,
  right_paren,
  left_bracket,
  right_bracket,
  comma,
  colon,
  dot,
  at,
  dollar,
  // operators
  plus,
  minus,
  star,
  slash,
  percent,
  equal,
  not_equal,
  less,
  less_equal,
  greater,
  greater_equal,
  assign,
  plus_assign,
  minus_assign,
  star_assign,
  slash_assign,
  percent_assign,
};

/// A token with its place. Only the value of its kind is set.
struct Token {
  TokenKind kind = TokenKind::end_of_source;
  Span span;
  std::uint64_t magnitude = 0;  // integer, integer64: without its sign, which the parser reads
  double real = 0;
  std::string text;     // name, string
  std::u16string wide;  // wide_string
};

/// A comment, from its `#` to the end of the line.
struct Comment {
  Span span;
  bool is_alone = false;  // only blanks before it on its line
};

struct TokenList {
  std::vector<Token> tokens;  // the last is end_of_source
  std::vector<Comment> comments;
};

/// Splits `source` into tokens. A newline inside round or square brackets gives no token. Throws `ScriptError`.
TokenList lex(const SourcePtr& source);

/// The words that are no names, in the order of the alphabet.
std::vector<std::string> keyword_names();

/// The name of a kind of token in messages, such as `')'` or `a name`.
const char* described(TokenKind kind);

}  // namespace hvm
