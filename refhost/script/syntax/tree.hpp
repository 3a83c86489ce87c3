// script/syntax/tree.hpp: the tree of a script
//
// The nesting of a tree is limited by the parser, so that walking and destroying it may recurse. What may become long
// without nesting is one flat node: a sum of 100,000 terms is one `Chain`, successive calls and brackets behind an
// operand are one `Postfix`, the conditions of an `if` one list of arms.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "script/syntax/source_text.hpp"

namespace hvm {

struct Expression;
using ExpressionPtr = std::unique_ptr<Expression>;
using Expressions = std::vector<ExpressionPtr>;

enum class BinaryOperator {
  add,
  subtract,
  multiply,
  divide,
  remainder,
  less_equal,
  greater_equal,
  not_equal,
  less,
  greater,
  equal
};

/// The operator as it is written, such as `<=`.
const char* spelling(BinaryOperator op);
/// The word for it in the names of pages, such as `add`. Operators that share a page share the word.
const char* page_word(BinaryOperator op);

// ---- Expressions

struct IntegerLiteral {
  std::int32_t value;
};
struct Integer64Literal {
  std::int64_t value;
};
struct RealLiteral {
  double value;
};
struct StringLiteral {
  std::string text;
};
struct WideStringLiteral {
  std::u16string text;
};
struct NilLiteral {};

struct TableEntry {
  ExpressionPtr key;  // null: the entry takes the next position
  ExpressionPtr value;
};
struct TableLiteral {
  std::vector<TableEntry> entries;
};

/// A variable. In a `fn` it is local when anything there assigns to its name, otherwise global.
struct Variable {
  std::string name;
  bool is_local = false;
  std::size_t slot = 0;
};

struct Call {
  std::string name;
  Expressions arguments;
  bool has_quotation = false;  // somewhere among the arguments
  bool is_statement = false;   // nothing takes its value
};

/// `low:high` between brackets: a range of keys in a quotation, a range of characters elsewhere. An end that is left
/// open is null.
struct KeyRange {
  ExpressionPtr low;
  ExpressionPtr high;
};
struct Index {
  Expressions indices;
};
struct MethodCall {
  std::string name;
  Expressions arguments;
  bool is_statement = false;  // nothing takes its value
};
struct Suffix {
  Span span;
  std::variant<Index, MethodCall> form;
};
/// An operand with at least one bracket or method call behind it.
struct Postfix {
  ExpressionPtr operand;
  std::vector<Suffix> suffixes;
};

struct Negation {
  ExpressionPtr operand;
};
struct Not {
  ExpressionPtr operand;
};

struct Link {
  BinaryOperator op;
  Span op_span;
  ExpressionPtr operand;
};
/// Operators of one precedence, applied from left to right. A comparison has a single link.
struct Chain {
  ExpressionPtr first;
  std::vector<Link> links;
};
/// `and` or `or` over two operands or more.
struct Logic {
  bool is_and;
  Expressions operands;
};

struct Quotation;
/// What an `@` quotes. The code made of it may outlive the script's tree, for example in the REPL.
struct QuotationLiteral {
  std::shared_ptr<const Quotation> quotation;
};

struct Expression {
  Span span;
  std::variant<IntegerLiteral, Integer64Literal, RealLiteral, StringLiteral, WideStringLiteral, NilLiteral,
               TableLiteral, Variable, Call, Postfix, Negation, Not, Chain, Logic, KeyRange, QuotationLiteral>
      form;
};

/// A quoted expression: a name with or without arguments in one of four forms, or a data literal.
struct Quotation {
  enum class Form {
    plain,     // @name, @name(arguments)
    nested,    // @@name, @@name(arguments)
    text,      // @$name
    labelled,  // @label: name, @label: name(arguments)
    data       // @[...]
  };
  Span span;
  Form form = Form::plain;
  std::string label;
  ExpressionPtr subject;  // a Variable; of a data literal a TableLiteral of literals, variables and rows
  bool has_arguments = false;
  Expressions arguments;
  std::vector<const Variable*> variables;  // all that occur in it
};

template <class Form>
ExpressionPtr made(Span span, Form form) {
  return std::make_unique<Expression>(Expression{span, std::move(form)});
}

/// Whether it is the literal of a number or a string.
inline bool is_literal(const Expression& expression) {
  const auto& form = expression.form;
  return std::holds_alternative<IntegerLiteral>(form) || std::holds_alternative<Integer64Literal>(form) ||
         std::holds_alternative<RealLiteral>(form) || std::holds_alternative<StringLiteral>(form) ||
         std::holds_alternative<WideStringLiteral>(form);
}
/// The name of a variable; empty for any other expression.
std::string variable_name(const Expression& expression);
/// The variable of a selection `t[...]`; null for everything else.
const Expression* selected_variable(const Expression& expression);

// ---- Statements

struct Statement;
using Block = std::vector<Statement>;

struct ExpressionStatement {
  ExpressionPtr expression;
};
/// `variable = value`, or `variable op= value`.
struct VariableAssignment {
  ExpressionPtr variable;  // a Variable
  std::optional<BinaryOperator> op;
  ExpressionPtr value;
};
/// `container[indices] = value`, or `container[indices] op= value`.
struct ElementAssignment {
  ExpressionPtr container;
  Index index;
  Span index_span;
  std::optional<BinaryOperator> op;
  ExpressionPtr value;
};
struct ConditionalArm {
  ExpressionPtr condition;
  Block body;
};
struct If {
  std::vector<ConditionalArm> arms;
  Block otherwise;
};
struct While {
  ExpressionPtr condition;
  Block body;
};
struct For {
  ExpressionPtr key;       // a Variable; null when the loop asks for values only
  ExpressionPtr variable;  // a Variable
  ExpressionPtr sequence;
  Block body;
};
struct Return {
  ExpressionPtr value;  // null: nil
};
struct Break {};
struct Continue {};
/// Runs `handler` when `body` fails, with the message of the error in `variable`.
struct Try {
  Block body;
  ExpressionPtr variable;  // a Variable
  Block handler;
};
/// Runs another script, unless it has run before.
struct Use {
  std::string path;  // relative to the folder of the script
};

struct Statement {
  Span span;
  std::variant<ExpressionStatement, VariableAssignment, ElementAssignment, If, While, For, Return, Break, Continue, Try,
               Use>
      form;
};

/// A `fn`. Its parameters are the first of its locals.
struct Function {
  std::string name;
  std::size_t parameter_count = 0;
  std::vector<std::string> locals;
  Block body;
  SourcePtr source;
};

struct Program {
  SourcePtr source;
  std::vector<std::shared_ptr<const Function>> functions;
  Block statements;
};

}  // namespace hvm
