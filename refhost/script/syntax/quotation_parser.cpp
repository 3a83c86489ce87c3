// script/syntax/quotation_parser.cpp: what may follow '@'

#include <fmt/format.h>

#include <algorithm>

#include "script/syntax/expression_parser.hpp"

namespace hvm {
namespace {

constexpr const char* quotable = "a name, a call or a data literal after '@'";

/// The ranges of keys that an argument may have: between the brackets of a selection, which is the argument itself or
/// an argument of a call that is.
std::size_t allowed_ranges(const Expression& argument) {
  if (const auto* call = std::get_if<Call>(&argument.form)) {
    std::size_t allowed = 0;
    for (const ExpressionPtr& inner : call->arguments) allowed += allowed_ranges(*inner);
    return call->has_quotation ? 0 : allowed;
  }
  if (!selected_variable(argument)) return 0;
  const auto& index = std::get<Index>(std::get<Postfix>(argument.form).suffixes.front().form);
  return static_cast<std::size_t>(
      std::count_if(index.indices.begin(), index.indices.end(),
                    [](const ExpressionPtr& item) { return std::holds_alternative<KeyRange>(item->form); }));
}

}  // namespace

const Expression* selected_variable(const Expression& expression) {
  const auto* postfix = std::get_if<Postfix>(&expression.form);
  if (!postfix || postfix->suffixes.size() != 1) return nullptr;
  if (!std::holds_alternative<Index>(postfix->suffixes.front().form)) return nullptr;
  return std::holds_alternative<Variable>(postfix->operand->form) ? postfix->operand.get() : nullptr;
}

ExpressionPtr ExpressionParser::quotation() {
  const NestingLevel level(depth_, cursor_);
  const std::size_t begin = cursor_.take().span.begin;
  const std::size_t known = variables_.size();
  ++quotation_count_;
  ++quotation_depth_;
  auto quotation = std::make_shared<Quotation>();
  quoted(*quotation);
  --quotation_depth_;
  quotation->variables.assign(variables_.begin() + static_cast<std::ptrdiff_t>(known), variables_.end());
  const Span span{begin, cursor_.previous().span.end};
  quotation->span = span;
  return made(span, QuotationLiteral{std::move(quotation)});
}

void ExpressionParser::quoted(Quotation& quotation) {
  if (cursor_.is_at(TokenKind::left_bracket)) {
    quotation.form = Quotation::Form::data;
    quotation.subject = data_literal();
  } else if (cursor_.accept(TokenKind::at)) {
    if (cursor_.is_at(TokenKind::at)) cursor_.fail("a quotation is quoted once at most");
    quotation.form = Quotation::Form::nested;
    quoted_name(quotation);
  } else if (cursor_.accept(TokenKind::dollar)) {
    quotation.form = Quotation::Form::text;
    quotation.subject = variable();
  } else if (cursor_.is_at(TokenKind::name) && cursor_.following().kind == TokenKind::colon) {
    quotation.form = Quotation::Form::labelled;
    quotation.label = cursor_.take().text;
    cursor_.take();
    quoted_name(quotation);
  } else {
    quoted_name(quotation);
  }
}

void ExpressionParser::quoted_name(Quotation& quotation) {
  if (!cursor_.is_at(TokenKind::name)) cursor_.fail_expected(quotable);
  quotation.subject = variable();
  quotation.has_arguments = cursor_.is_at(TokenKind::left_paren);
  if (quotation.has_arguments) quotation.arguments = quoted_arguments();
}

Expressions ExpressionParser::quoted_arguments() {
  cursor_.open();
  Expressions arguments;
  if (cursor_.accept_close()) return arguments;
  do arguments.push_back(quoted_argument());
  while (cursor_.accept(TokenKind::comma));
  cursor_.close("or ',' after the argument");
  return arguments;
}

ExpressionPtr ExpressionParser::quoted_argument() {
  std::vector<Span> outer = std::move(key_ranges_);
  key_ranges_.clear();
  ExpressionPtr argument = expression();
  if (key_ranges_.size() > allowed_ranges(*argument))
    cursor_.fail("a range of keys is allowed in a selection that is an argument of its own, such as @int(t[1:3])",
                 key_ranges_.front());
  key_ranges_ = std::move(outer);
  return argument;
}

// ---- Data literals

ExpressionPtr ExpressionParser::data_literal() {
  const NestingLevel level(depth_, cursor_);
  const Span begin = cursor_.open().span;
  if (cursor_.is_at(TokenKind::right_bracket)) cursor_.fail("a data literal needs an element in every row");
  TableLiteral row;
  bool holds_rows = false;
  while (!cursor_.is_at(TokenKind::right_bracket)) {
    row.entries.push_back({nullptr, data_element(row.entries.empty(), holds_rows)});
    if (!cursor_.accept(TokenKind::comma)) break;
  }
  const Span end = cursor_.close("or ',' in the data literal").span;
  return made(joined(begin, end), std::move(row));
}

ExpressionPtr ExpressionParser::data_element(bool is_first, bool& holds_rows) {
  const bool is_row = cursor_.is_at(TokenKind::left_bracket);
  if (is_first) holds_rows = is_row;
  const bool is_end = cursor_.is_at(TokenKind::end_of_source);
  if (is_row != holds_rows && !is_end) cursor_.fail("a row of a data literal holds rows or elements, not both");
  ExpressionPtr element = is_row ? data_literal() : data_value();
  if (cursor_.is_at(TokenKind::colon)) cursor_.fail("a data literal has no keys");
  return element;
}

ExpressionPtr ExpressionParser::data_value() {
  ExpressionPtr value = expression();
  const bool is_variable = std::holds_alternative<Variable>(value->form);
  if (!is_variable && !is_literal(*value))
    cursor_.fail("a data literal holds only literals and variables; give the value to a variable first", value->span);
  return value;
}

}  // namespace hvm
