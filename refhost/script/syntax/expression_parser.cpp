// script/syntax/expression_parser.cpp: expressions, by recursive descent

#include "script/syntax/expression_parser.hpp"

#include <fmt/format.h>

#include <limits>

#include "script/syntax/parser.hpp"

namespace hvm {
namespace {

std::optional<BinaryOperator> comparison_of(TokenKind kind) {
  switch (kind) {
    case TokenKind::equal:
      return BinaryOperator::equal;
    case TokenKind::not_equal:
      return BinaryOperator::not_equal;
    case TokenKind::less:
      return BinaryOperator::less;
    case TokenKind::less_equal:
      return BinaryOperator::less_equal;
    case TokenKind::greater:
      return BinaryOperator::greater;
    case TokenKind::greater_equal:
      return BinaryOperator::greater_equal;
    default:
      return std::nullopt;
  }
}

std::optional<BinaryOperator> sum_of(TokenKind kind) {
  if (kind == TokenKind::plus) return BinaryOperator::add;
  if (kind == TokenKind::minus) return BinaryOperator::subtract;
  return std::nullopt;
}

std::optional<BinaryOperator> product_of(TokenKind kind) {
  if (kind == TokenKind::star) return BinaryOperator::multiply;
  if (kind == TokenKind::slash) return BinaryOperator::divide;
  if (kind == TokenKind::percent) return BinaryOperator::remainder;
  return std::nullopt;
}

bool is_number(TokenKind kind) {
  return kind == TokenKind::integer || kind == TokenKind::integer64 || kind == TokenKind::real;
}

/// `magnitude` is at most 2^63, which only fits with a minus.
std::int64_t with_sign(std::uint64_t magnitude, bool is_negative) {
  return static_cast<std::int64_t>(is_negative ? 0 - magnitude : magnitude);
}

}  // namespace

const char* spelling(BinaryOperator op) {
  static constexpr const char* spellings[] = {"+", "-", "*", "/", "%", "<=", ">=", "!=", "<", ">", "=="};
  return spellings[static_cast<std::size_t>(op)];
}

std::string variable_name(const Expression& expression) {
  const auto* variable = std::get_if<Variable>(&expression.form);
  return variable ? variable->name : std::string();
}

const char* page_word(BinaryOperator op) {
  static constexpr const char* words[] = {"add",  "subtract", "multiply", "divide", "remainder", "less",
                                          "less", "equal",    "less",     "less",   "equal"};
  return words[static_cast<std::size_t>(op)];
}

NestingLevel::NestingLevel(int& depth, const TokenCursor& cursor) : depth_(depth) {
  if (depth_ >= nesting_limit)
    cursor.fail(fmt::format("the script nests too deeply here: more than {} levels", nesting_limit));
  ++depth_;
}

ExpressionPtr ExpressionParser::expression() {
  const NestingLevel level(depth_, cursor_);
  return disjunction();
}

template <class Operand>
ExpressionPtr ExpressionParser::logic(TokenKind word, Operand operand) {
  ExpressionPtr first = operand();
  if (!cursor_.is_at(word)) return first;
  Logic logic{word == TokenKind::kw_and, {}};
  const Span begin = first->span;
  logic.operands.push_back(std::move(first));
  while (cursor_.accept(word)) {
    cursor_.skip_newlines();
    logic.operands.push_back(operand());
  }
  const Span span = joined(begin, logic.operands.back()->span);
  return made(span, std::move(logic));
}

ExpressionPtr ExpressionParser::disjunction() {
  return logic(TokenKind::kw_or, [this] { return conjunction(); });
}

ExpressionPtr ExpressionParser::conjunction() {
  return logic(TokenKind::kw_and, [this] { return negated_condition(); });
}

ExpressionPtr ExpressionParser::negated_condition() {
  if (!cursor_.is_at(TokenKind::kw_not)) return comparison();
  const NestingLevel level(depth_, cursor_);
  const Span begin = cursor_.take().span;
  ExpressionPtr operand = negated_condition();
  const Span span = joined(begin, operand->span);
  return made(span, Not{std::move(operand)});
}

template <class Operand, class OperatorOf>
ExpressionPtr ExpressionParser::chain(Operand operand, OperatorOf operator_of) {
  ExpressionPtr first = operand();
  if (!operator_of(cursor_.current().kind)) return first;
  const Span begin = first->span;
  Chain chain{std::move(first), {}};
  while (const auto op = operator_of(cursor_.current().kind)) {
    const Span op_span = cursor_.take().span;
    cursor_.skip_newlines();
    chain.links.push_back({*op, op_span, operand()});
  }
  const Span span = joined(begin, chain.links.back().operand->span);
  return made(span, std::move(chain));
}

ExpressionPtr ExpressionParser::comparison() {
  ExpressionPtr left = sum();
  const auto op = comparison_of(cursor_.current().kind);
  if (!op) return left;
  const Span op_span = cursor_.take().span;
  cursor_.skip_newlines();
  const Span begin = left->span;
  Chain compared{std::move(left), {}};
  compared.links.push_back({*op, op_span, sum()});
  if (comparison_of(cursor_.current().kind)) cursor_.fail("comparisons do not follow each other; join them with 'and'");
  const Span span = joined(begin, compared.links.back().operand->span);
  return made(span, std::move(compared));
}

ExpressionPtr ExpressionParser::sum() {
  return chain([this] { return product(); }, sum_of);
}

ExpressionPtr ExpressionParser::product() {
  return chain([this] { return signed_operand(); }, product_of);
}

ExpressionPtr ExpressionParser::signed_operand() {
  if (!cursor_.is_at(TokenKind::minus)) return postfix(primary());
  const NestingLevel level(depth_, cursor_);
  const Span begin = cursor_.take().span;
  // A minus before a numeric literal belongs to it, also where a method call follows.
  if (is_number(cursor_.current().kind)) return postfix(number(true, begin.begin));
  ExpressionPtr operand = signed_operand();
  const Span span = joined(begin, operand->span);
  return made(span, Negation{std::move(operand)});
}

ExpressionPtr ExpressionParser::postfix(ExpressionPtr operand) {
  const bool has_suffix = cursor_.is_at(TokenKind::dot) || cursor_.is_at(TokenKind::left_bracket);
  if (cursor_.is_at(TokenKind::left_paren)) cursor_.fail("only a name can be called");
  if (!has_suffix) return operand;
  const Span begin = operand->span;
  Postfix postfix{std::move(operand), {}};
  while (true) {
    if (cursor_.is_at(TokenKind::dot))
      postfix.suffixes.push_back(method_call());
    else if (cursor_.is_at(TokenKind::left_bracket))
      postfix.suffixes.push_back(index());
    else
      break;
  }
  if (cursor_.is_at(TokenKind::left_paren)) cursor_.fail("only a name can be called");
  return made({begin.begin, cursor_.previous().span.end}, std::move(postfix));
}

ExpressionPtr ExpressionParser::primary() {
  const Token& token = cursor_.current();
  switch (token.kind) {
    case TokenKind::integer:
    case TokenKind::integer64:
    case TokenKind::real:
      return number(false, token.span.begin);
    case TokenKind::kw_true:
    case TokenKind::kw_false: {
      const Token word = cursor_.take();
      return made(word.span, IntegerLiteral{word.kind == TokenKind::kw_true ? 1 : 0});
    }
    case TokenKind::kw_nil:
      return made(cursor_.take().span, NilLiteral{});
    case TokenKind::string: {
      Token text = cursor_.take();
      return made(text.span, StringLiteral{std::move(text.text)});
    }
    case TokenKind::wide_string: {
      Token text = cursor_.take();
      return made(text.span, WideStringLiteral{std::move(text.wide)});
    }
    case TokenKind::name:
      return cursor_.following().kind == TokenKind::left_paren ? call() : variable();
    case TokenKind::left_paren:
      return parenthesized();
    case TokenKind::left_bracket:
      return table();
    case TokenKind::at:
      return quotation();
    default:
      cursor_.fail_expected("an expression");
  }
}

ExpressionPtr ExpressionParser::number(bool is_negative, std::size_t begin) {
  const Token token = cursor_.take();
  const Span span{begin, token.span.end};
  if (token.kind == TokenKind::real) return made(span, RealLiteral{is_negative ? -token.real : token.real});
  return integer(token, is_negative, span);
}

ExpressionPtr ExpressionParser::integer(const Token& token, bool is_negative, Span span) {
  const std::uint64_t limit = std::uint64_t{1} << (token.kind == TokenKind::integer ? 31 : 63);
  const bool fits = is_negative ? token.magnitude <= limit : token.magnitude < limit;
  if (!fits && token.kind == TokenKind::integer64) cursor_.fail("the integer does not fit in 64 bits", span);
  if (!fits)
    cursor_.fail(fmt::format("the integer does not fit in 32 bits; write {}L for 64 bits", token.magnitude), span);
  const std::int64_t value = with_sign(token.magnitude, is_negative);
  if (token.kind == TokenKind::integer64) return made(span, Integer64Literal{value});
  return made(span, IntegerLiteral{static_cast<std::int32_t>(value)});
}

ExpressionPtr ExpressionParser::parenthesized() {
  cursor_.open();
  ExpressionPtr inner = expression();
  if (cursor_.is_at(TokenKind::comma)) cursor_.refuse_foreign(ForeignPlace::parenthesis);
  cursor_.close("after the expression");
  return inner;
}

ExpressionPtr ExpressionParser::table() {
  const Span begin = cursor_.open().span;
  TableLiteral table;
  while (!cursor_.is_at(TokenKind::right_bracket)) {
    table.entries.push_back(table_entry());
    if (!cursor_.accept(TokenKind::comma)) break;
  }
  const Span end = cursor_.close("or ',' in the table").span;
  return made(joined(begin, end), std::move(table));
}

TableEntry ExpressionParser::table_entry() {
  ExpressionPtr first = expression();
  if (!cursor_.accept(TokenKind::colon)) return {nullptr, std::move(first)};
  return {std::move(first), expression()};
}

ExpressionPtr ExpressionParser::variable() {
  Token name = cursor_.expect(TokenKind::name, "for a variable");
  ExpressionPtr variable = made(name.span, Variable{std::move(name.text), false, 0});
  variables_.push_back(&std::get<Variable>(variable->form));
  return variable;
}

ExpressionPtr ExpressionParser::call() {
  Token name = cursor_.take();
  const std::size_t quotations_before = quotation_count_;
  Expressions arguments = call_arguments();
  const bool has_quotation = quotation_count_ > quotations_before;
  return made({name.span.begin, cursor_.previous().span.end},
              Call{std::move(name.text), std::move(arguments), has_quotation, false});
}

Expressions ExpressionParser::call_arguments() {
  cursor_.open();
  Expressions items;
  if (cursor_.accept_close()) return items;
  do items.push_back(expression());
  while (cursor_.accept(TokenKind::comma));
  cursor_.close("or ',' after the argument");
  return items;
}

Suffix ExpressionParser::method_call() {
  const Span begin = cursor_.take().span;
  Token name = cursor_.expect(TokenKind::name, "of a method after '.'");
  if (!cursor_.is_at(TokenKind::left_paren)) fail_member(name);
  Expressions arguments = call_arguments();
  return {{begin.begin, cursor_.previous().span.end}, MethodCall{std::move(name.text), std::move(arguments), false}};
}

void ExpressionParser::fail_member(const Token& name) const {
  const std::string_view advice = foreign_advice(ForeignPlace::member, name.text);
  if (!advice.empty()) cursor_.fail(fmt::format("there is no '.{}'; {}", name.text, advice), name.span);
  cursor_.fail(
      fmt::format("a method is called with parentheses: .{0}(); an entry of a table is written t[\"{0}\"]", name.text),
      name.span);
}

Suffix ExpressionParser::index() {
  const Span begin = cursor_.open().span;
  if (cursor_.is_at(TokenKind::right_bracket)) cursor_.fail("an index expected between the brackets");
  Index index;
  do index.indices.push_back(index_item());
  while (cursor_.accept(TokenKind::comma));
  if (cursor_.is_at(TokenKind::colon)) cursor_.refuse_foreign(ForeignPlace::index);
  cursor_.close("or ',' after the index");
  return {{begin.begin, cursor_.previous().span.end}, std::move(index)};
}

ExpressionPtr ExpressionParser::index_item() {
  const Span begin = cursor_.current().span;
  KeyRange range;
  if (!cursor_.is_at(TokenKind::colon)) range.low = expression();
  if (!cursor_.is_at(TokenKind::colon)) return std::move(range.low);
  cursor_.take();
  const bool is_open = cursor_.is_at(TokenKind::comma) || cursor_.is_at(TokenKind::right_bracket);
  if (!is_open) range.high = expression();
  const Span span{begin.begin, cursor_.previous().span.end};
  key_ranges_.push_back(span);
  return made(span, std::move(range));
}

}  // namespace hvm
