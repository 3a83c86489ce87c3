// script/syntax/expression_parser.hpp: expressions, by recursive descent

#pragma once

#include "script/syntax/names.hpp"
#include "script/syntax/token_cursor.hpp"
#include "script/syntax/tree.hpp"

namespace hvm {

/// Counts the nesting of what is being parsed, and fails beyond the limit.
class NestingLevel {
 public:
  NestingLevel(int& depth, const TokenCursor& cursor);
  ~NestingLevel() { --depth_; }
  NestingLevel(const NestingLevel&) = delete;
  NestingLevel& operator=(const NestingLevel&) = delete;

 private:
  int& depth_;
};

/// Reads expressions at a cursor. From loosest to tightest: or, and, not, comparison, + -, * / %, minus, and
/// the brackets and method calls behind an operand.
class ExpressionParser {
 public:
  ExpressionParser(TokenCursor& cursor, int& depth) : cursor_(cursor), depth_(depth) {}

  ExpressionPtr expression();
  /// A variable at the current name.
  ExpressionPtr variable();

  /// The variables read since the last call, for a caller that knows which of them are local. They do not move when the
  /// tree is moved.
  std::vector<Variable*> take_variables() { return std::move(variables_); }

 private:
  ExpressionPtr disjunction();
  ExpressionPtr conjunction();
  ExpressionPtr negated_condition();
  ExpressionPtr comparison();
  ExpressionPtr sum();
  ExpressionPtr product();
  ExpressionPtr signed_operand();
  ExpressionPtr postfix(ExpressionPtr operand);
  ExpressionPtr primary();
  ExpressionPtr number(bool is_negative, std::size_t begin);
  ExpressionPtr integer(const Token& token, bool is_negative, Span span);
  ExpressionPtr parenthesized();
  ExpressionPtr table();
  ExpressionPtr call();
  TableEntry table_entry();
  Suffix method_call();
  Suffix index();
  ExpressionPtr index_item();
  Expressions call_arguments();
  [[noreturn]] void fail_member(const Token& name) const;

  // Quotations.
  ExpressionPtr quotation();
  void quoted(Quotation& quotation);
  void quoted_name(Quotation& quotation);
  Expressions quoted_arguments();
  ExpressionPtr quoted_argument();
  ExpressionPtr data_literal();
  ExpressionPtr data_element(bool is_first, bool& holds_rows);
  ExpressionPtr data_value();

  template <class Operand, class OperatorOf>
  ExpressionPtr chain(Operand operand, OperatorOf operator_of);
  template <class Operand>
  ExpressionPtr logic(TokenKind word, Operand operand);

  TokenCursor& cursor_;
  int& depth_;
  std::vector<Variable*> variables_;
  std::size_t quotation_count_ = 0;
  int quotation_depth_ = 0;       // how many quotations are being read
  std::vector<Span> key_ranges_;  // of the argument that is being read
};

}  // namespace hvm
