// script/syntax/parser.cpp: statements and functions, by recursive descent

#include "script/syntax/parser.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "script/syntax/diagnostics.hpp"
#include "script/syntax/expression_parser.hpp"

namespace hvm {
namespace {

bool ends_block(TokenKind kind) {
  return kind == TokenKind::kw_end || kind == TokenKind::kw_else || kind == TokenKind::kw_elseif ||
         kind == TokenKind::kw_catch;
}

bool is_keyword(TokenKind kind) { return kind >= TokenKind::kw_and && kind <= TokenKind::kw_while; }

std::optional<BinaryOperator> operator_of(TokenKind assignment) {
  switch (assignment) {
    case TokenKind::plus_assign:
      return BinaryOperator::add;
    case TokenKind::minus_assign:
      return BinaryOperator::subtract;
    case TokenKind::star_assign:
      return BinaryOperator::multiply;
    case TokenKind::slash_assign:
      return BinaryOperator::divide;
    case TokenKind::percent_assign:
      return BinaryOperator::remainder;
    default:
      return std::nullopt;
  }
}

class Parser {
 public:
  Parser(const SourcePtr& source, NameTable& globals)
      : cursor_(source, lex(source).tokens), expressions_(cursor_, depth_), globals_(globals) {}

  Program program() {
    Program program;
    program.source = cursor_.source();
    for (cursor_.skip_separators(); !cursor_.is_at(TokenKind::end_of_source); cursor_.skip_separators()) {
      require_no_assigned_keyword();
      if (cursor_.is_at(TokenKind::kw_fn))
        program.functions.push_back(function());
      else
        program.statements.push_back(statement());
      end_of_statement();
    }
    resolve_globally();
    return program;
  }

 private:
  // ---- Blocks

  /// Statements up to a keyword that ends a block, which is not taken. `opening` is the first token of the statement
  /// that the block belongs to.
  Block block(const Token& opening) {
    const NestingLevel level(depth_, cursor_);
    Block statements;
    for (cursor_.skip_separators(); !ends_block(cursor_.current().kind); cursor_.skip_separators()) {
      if (cursor_.is_at(TokenKind::end_of_source)) fail_unclosed(opening);
      require_no_assigned_keyword();
      if (cursor_.is_at(TokenKind::kw_fn)) fail_inner_fn(opening);
      statements.push_back(statement());
      remember_foreign(statements.back());
      end_of_statement();
    }
    return statements;
  }

  /// The script ends before the block of `opening` does. What looks like the cause is reported where it is.
  [[noreturn]] void fail_unclosed(const Token& opening) {
    const auto fail = [&](std::string message, Span span) {
      throw ScriptError(std::move(message), cursor_.source(), span, Completeness::incomplete);
    };
    const std::size_t begin = opening.span.begin;
    if (foreign_ && foreign_->begin > begin) fail(foreign_message(), *foreign_);
    if (else_if_ && else_if_->begin > begin)
      fail("'else if' begins an 'if' of its own, which needs its own 'end'; write 'elseif'", *else_if_);
    if (displaced_ && displaced_->opening.begin >= begin)
      fail(fmt::format("{} has no 'end': the 'end' of line {} stands further left", displaced_->word,
                       cursor_.source()->line(displaced_->end.begin)),
           displaced_->opening);
    throw ScriptError(fmt::format("{} has no 'end'", described(opening.kind)), cursor_.source(), opening.span,
                      Completeness::incomplete);
  }

  std::string foreign_message() const {
    const std::string_view word = cursor_.source()->text(*foreign_);
    return fmt::format("unexpected '{}'; {}", word, foreign_advice(ForeignPlace::alone, word));
  }

  /// A fn inside a block. When it stands further left than the statement of the block, that lacks its end.
  [[noreturn]] void fail_inner_fn(const Token& opening) {
    const Span here = cursor_.current().span;
    const auto outer = indent(opening.span.begin);
    const auto inner = indent(here.begin);
    if (outer && inner && (*inner < *outer || (opening.kind == TokenKind::kw_fn && *inner == *outer)))
      cursor_.fail(fmt::format("{} has no 'end' before the 'fn' of line {}", described(opening.kind),
                               cursor_.source()->line(here.begin)),
                   opening.span);
    cursor_.fail(fmt::format("a fn is allowed at the outermost level only, and {} of line {} has no 'end' before it",
                             described(opening.kind), cursor_.source()->line(opening.span.begin)));
  }

  /// Takes the 'end' of a statement.
  void end_of_block(const Token& opening) {
    if (!cursor_.is_at(TokenKind::kw_end)) cursor_.fail_expected(fmt::format("'end' for {}", described(opening.kind)));
    const Span end = cursor_.take().span;
    const auto outer = indent(opening.span.begin);
    const auto inner = indent(end.begin);
    if (outer && inner && *inner < *outer && !displaced_)
      displaced_ = DisplacedEnd{described(opening.kind), opening.span, end};
  }

  Block block_with_end(const Token& opening) {
    Block body = block(opening);
    end_of_block(opening);
    return body;
  }

  void require_no_foreign_word(const Token& opening) const {
    if (foreign_ && foreign_->begin > opening.span.begin) cursor_.fail(foreign_message(), *foreign_);
  }

  /// The blanks before `offset` on its line; no value when something else stands there, too.
  std::optional<std::size_t> indent(std::size_t offset) const {
    const std::string_view before = std::string_view(cursor_.source()->text()).substr(0, offset);
    const std::size_t begin = before.find_last_not_of(" \t") + 1;  // npos + 1 is 0
    const bool begins_line = begin == 0 || before[begin - 1] == '\n';
    return begins_line ? std::optional(before.size() - begin) : std::nullopt;
  }

  /// Remembers a statement that is a word of another language: it may be the cause when a block does not end.
  void remember_foreign(const Statement& read) {
    const auto* form = std::get_if<ExpressionStatement>(&read.form);
    const auto* word = form ? std::get_if<Variable>(&form->expression->form) : nullptr;
    if (word && !foreign_ && !foreign_advice(ForeignPlace::alone, word->name).empty()) foreign_ = read.span;
  }

  void end_of_statement() {
    const TokenKind kind = cursor_.current().kind;
    const bool is_end = kind == TokenKind::newline || kind == TokenKind::semicolon || kind == TokenKind::end_of_source;
    if (is_end || (depth_ > 0 && ends_block(kind))) return;
    cursor_.refuse_foreign(ForeignPlace::statement_end);
    cursor_.fail_expected("the end of the statement");
  }

  // ---- Statements

  void require_no_assigned_keyword() {
    if (is_keyword(cursor_.current().kind) && is_assignment(cursor_.following().kind))
      cursor_.fail(
          fmt::format("{} is a word of the language, not a name for a variable", described(cursor_.current().kind)));
  }

  Statement statement() {
    cursor_.begin_statement();
    if (cursor_.is_at(TokenKind::colon)) cursor_.refuse_foreign(ForeignPlace::statement);
    const std::size_t begin = cursor_.current().span.begin;
    Statement parsed{{}, form()};
    parsed.span = {begin, cursor_.previous().span.end};
    return parsed;
  }

  decltype(Statement::form) form() {
    switch (cursor_.current().kind) {
      case TokenKind::kw_if:
        return conditional();
      case TokenKind::kw_while:
        return loop();
      case TokenKind::kw_for:
        return iteration();
      case TokenKind::kw_return:
        return return_form();
      case TokenKind::kw_break:
        return loop_exit<Break>();
      case TokenKind::kw_continue:
        return loop_exit<Continue>();
      case TokenKind::kw_try:
        return guarded_block();
      case TokenKind::kw_use:
        return use_form();
      case TokenKind::kw_end:
      case TokenKind::kw_else:
      case TokenKind::kw_elseif:
      case TokenKind::kw_catch:
        cursor_.fail(fmt::format("{} without a block", described(cursor_.current().kind)));
      default:
        return expression_or_assignment();
    }
  }

  ExpressionPtr condition() {
    ExpressionPtr parsed = expressions_.expression();
    end_of_header();
    return parsed;
  }

  void end_of_header() {
    const bool has_word = cursor_.accept(TokenKind::kw_then) || cursor_.accept(TokenKind::kw_do);
    const bool has_end = cursor_.is_at(TokenKind::newline) || cursor_.is_at(TokenKind::semicolon);
    if (has_word || has_end) return;
    cursor_.refuse_foreign(ForeignPlace::header);
    cursor_.fail_expected("the end of the line, ';', 'then' or 'do'");
  }

  If conditional() {
    If parsed;
    const Token opening = cursor_.current();
    do {
      cursor_.take();
      ExpressionPtr tested = condition();
      parsed.arms.push_back({std::move(tested), block(opening)});
    } while (cursor_.is_at(TokenKind::kw_elseif));
    if (cursor_.accept(TokenKind::kw_else)) {
      remember_else_if();
      parsed.otherwise = block(opening);
    }
    end_of_block(opening);
    return parsed;
  }

  /// Remembers an 'if' right behind 'else': it may be meant as 'elseif'.
  void remember_else_if() {
    if (cursor_.is_at(TokenKind::kw_if) && !else_if_)
      else_if_ = joined(cursor_.previous().span, cursor_.current().span);
  }

  While loop() {
    const Token opening = cursor_.take();
    ExpressionPtr tested = condition();
    return {std::move(tested), loop_body(opening)};
  }

  For iteration() {
    const Token opening = cursor_.take();
    For parsed;
    if (cursor_.is_at(TokenKind::left_paren)) cursor_.refuse_foreign(ForeignPlace::loop);
    parsed.variable = assigned_variable();
    if (cursor_.is_at(TokenKind::assign)) cursor_.refuse_foreign(ForeignPlace::loop);
    if (cursor_.accept(TokenKind::comma)) parsed.key = std::exchange(parsed.variable, assigned_variable());
    cursor_.expect(TokenKind::kw_in, "after the variable");
    parsed.sequence = sequence();
    parsed.body = loop_body(opening);
    return parsed;
  }

  /// What a loop walks. `1:3` looks like a block that begins behind a colon.
  ExpressionPtr sequence() {
    ExpressionPtr parsed = expressions_.expression();
    if (cursor_.is_at(TokenKind::colon) && !cursor_.is_before(TokenKind::newline))
      cursor_.refuse_foreign(ForeignPlace::sequence);
    end_of_header();
    return parsed;
  }

  Block loop_body(const Token& opening) {
    ++loops_;
    Block body = block_with_end(opening);
    --loops_;
    return body;
  }

  template <class Form>
  Form loop_exit() {
    const Token word = cursor_.take();
    if (loops_ == 0) cursor_.fail(fmt::format("{} is allowed in a loop only", described(word.kind)), word.span);
    return {};
  }

  Try guarded_block() {
    const Token opening = cursor_.take();
    Try parsed;
    parsed.body = block(opening);
    if (!cursor_.is_at(TokenKind::kw_catch)) require_no_foreign_word(opening);
    cursor_.expect(TokenKind::kw_catch, "for 'try'");
    parsed.variable = assigned_variable();
    parsed.handler = block(opening);
    end_of_block(opening);
    return parsed;
  }

  Use use_form() {
    const Token word = cursor_.take();
    if (depth_ > 0) cursor_.fail("use is allowed at the outermost level only", word.span);
    return {cursor_.expect(TokenKind::string, "with the path of a script after 'use'").text};
  }

  /// A variable that the statement gives a value.
  ExpressionPtr assigned_variable() {
    ExpressionPtr variable = expressions_.variable();
    make_local(*variable);
    return variable;
  }

  Return return_form() {
    const Token word = cursor_.take();
    if (!locals_) cursor_.fail("return is allowed in a fn only", word.span);
    const TokenKind kind = cursor_.current().kind;
    const bool is_bare = kind == TokenKind::newline || kind == TokenKind::semicolon || ends_block(kind);
    return {is_bare ? nullptr : expressions_.expression()};
  }

  decltype(Statement::form) expression_or_assignment() {
    ExpressionPtr target = expressions_.expression();
    if (!is_assignment(cursor_.current().kind)) {
      mark_statement(*target);
      return ExpressionStatement{std::move(target)};
    }
    const Token sign = cursor_.take();
    const auto op = operator_of(sign.kind);
    if (std::holds_alternative<Variable>(target->form)) {
      make_local(*target);
      ExpressionPtr value = expressions_.expression();
      return VariableAssignment{std::move(target), op, std::move(value)};
    }
    return element_assignment(std::move(target), op, sign);
  }

  /// Marks a call whose value nothing takes.
  static void mark_statement(Expression& expression) {
    if (auto* call = std::get_if<Call>(&expression.form)) call->is_statement = true;
    auto* postfix = std::get_if<Postfix>(&expression.form);
    auto* method = postfix ? std::get_if<MethodCall>(&postfix->suffixes.back().form) : nullptr;
    if (method) method->is_statement = true;
  }

  ElementAssignment element_assignment(ExpressionPtr target, std::optional<BinaryOperator> op, const Token& sign) {
    auto* postfix = std::get_if<Postfix>(&target->form);
    Index* index = postfix ? std::get_if<Index>(&postfix->suffixes.back().form) : nullptr;
    if (!index) cursor_.fail("only a variable or an element can be assigned to", sign.span);
    for (const ExpressionPtr& item : index->indices)
      if (std::holds_alternative<KeyRange>(item->form)) cursor_.fail("a range cannot be assigned to", item->span);
    ElementAssignment parsed{nullptr, std::move(*index), postfix->suffixes.back().span, op, nullptr};
    postfix->suffixes.pop_back();
    parsed.container = postfix->suffixes.empty() ? std::move(postfix->operand) : std::move(target);
    parsed.value = expressions_.expression();
    return parsed;
  }

  // ---- Functions and names

  std::shared_ptr<const Function> function() {
    const Token opening = cursor_.take();
    resolve_globally();
    locals_.emplace();
    Function parsed;
    Token name = cursor_.expect(TokenKind::name, "for the fn");
    parsed.name = std::move(name.text);
    parameters(parsed);
    parsed.body = block_with_end(opening);
    parsed.source = cursor_.source();
    resolve_locally(parsed);
    return std::make_shared<const Function>(std::move(parsed));
  }

  void parameters(Function& function) {
    if (!cursor_.is_at(TokenKind::left_paren)) cursor_.expect(TokenKind::left_paren, "after the name of the fn");
    cursor_.open();
    while (!cursor_.is_at(TokenKind::right_paren)) {
      const Token name = cursor_.expect(TokenKind::name, "for a parameter");
      if (locals_->find(name.text)) cursor_.fail(fmt::format("two parameters are called '{}'", name.text), name.span);
      locals_->slot_of(name.text);
      if (!cursor_.accept(TokenKind::comma)) break;
    }
    cursor_.close("or ',' after the parameter");
    if (cursor_.is_at(TokenKind::assign)) cursor_.fail("the statements of a fn follow, and then 'end': return x * 2");
    function.parameter_count = locals_->size();
  }

  void make_local(const Expression& target) {
    if (locals_) locals_->slot_of(std::get<Variable>(target.form).name);
  }

  void resolve_globally() {
    for (Variable* variable : expressions_.take_variables()) variable->slot = globals_.slot_of(variable->name);
  }

  void resolve_locally(Function& function) {
    for (Variable* variable : expressions_.take_variables()) {
      const auto local = locals_->find(variable->name);
      variable->is_local = local.has_value();
      variable->slot = local ? *local : globals_.slot_of(variable->name);
    }
    for (std::size_t slot = 0; slot < locals_->size(); ++slot) function.locals.push_back(locals_->name(slot));
    locals_.reset();
  }

  TokenCursor cursor_;
  int depth_ = 0;
  int loops_ = 0;  // that are open
  ExpressionParser expressions_;
  NameTable& globals_;
  std::optional<NameTable> locals_;  // of the fn that is being read

  // What may be the cause when a block does not end, each the first of the script.
  struct DisplacedEnd {
    const char* word;
    Span opening;
    Span end;
  };
  std::optional<DisplacedEnd> displaced_;  // an 'end' further left than its statement
  std::optional<Span> else_if_;
  std::optional<Span> foreign_;  // a statement that is a word of another language
};

}  // namespace

Program parse(const SourcePtr& source, NameTable& globals) { return Parser(source, globals).program(); }

}  // namespace hvm
