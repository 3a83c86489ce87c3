// refhost/script/syntax/tree_text.hpp: the tree of a script as one line of text, for tests

#pragma once

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>

#include "narrow_text.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/syntax/parser.hpp"
#include "script/syntax/string_literals.hpp"

namespace hvm::testing {

std::string tree_text(const Expression& expression);

inline std::string tree_text(const Expressions& list) {
  std::string text;
  for (const ExpressionPtr& item : list) text += " " + tree_text(*item);
  return text;
}

struct ExpressionText {
  std::string operator()(const IntegerLiteral& x) const { return fmt::format("{}", x.value); }
  std::string operator()(const Integer64Literal& x) const { return fmt::format("{}L", x.value); }
  std::string operator()(const RealLiteral& x) const { return fmt::format("{:#}", x.value); }
  std::string operator()(const StringLiteral& x) const { return string_literal(x.text); }
  std::string operator()(const WideStringLiteral& x) const { return "w" + string_literal(narrow_text(x.text)); }
  std::string operator()(const NilLiteral&) const { return "nil"; }
  std::string operator()(const TableLiteral& x) const {
    std::string text = "(table";
    for (const TableEntry& entry : x.entries)
      text += " " + (entry.key ? tree_text(*entry.key) + ":" : "") + tree_text(*entry.value);
    return text + ")";
  }
  std::string operator()(const Variable& x) const { return (x.is_local ? "local." : "") + x.name; }
  std::string operator()(const Call& x) const { return "(call " + x.name + tree_text(x.arguments) + ")"; }
  std::string operator()(const Postfix& x) const {
    std::string text = tree_text(*x.operand);
    for (const Suffix& suffix : x.suffixes) {
      if (const auto* index = std::get_if<Index>(&suffix.form)) text = "(at " + text + tree_text(index->indices) + ")";
      if (const auto* method = std::get_if<MethodCall>(&suffix.form))
        text = "(method " + text + " " + method->name + tree_text(method->arguments) + ")";
    }
    return text;
  }
  std::string operator()(const Negation& x) const { return "(- " + tree_text(*x.operand) + ")"; }
  std::string operator()(const Not& x) const { return "(not " + tree_text(*x.operand) + ")"; }
  std::string operator()(const Chain& x) const {
    std::string text = tree_text(*x.first);
    for (const Link& link : x.links)
      text = fmt::format("({} {} {})", spelling(link.op), text, tree_text(*link.operand));
    return text;
  }
  std::string operator()(const KeyRange& x) const {
    return (x.low ? tree_text(*x.low) : "") + ".." + (x.high ? tree_text(*x.high) : "");
  }
  std::string operator()(const QuotationLiteral& x) const {
    static constexpr const char* forms[] = {"quote", "quote-twice", "quote-text", "quote-labelled", "quote-data"};
    const Quotation& quotation = *x.quotation;
    std::string text = fmt::format("({} ", forms[static_cast<int>(quotation.form)]);
    if (!quotation.label.empty()) text += quotation.label + ": ";
    text += tree_text(*quotation.subject);
    if (quotation.has_arguments) text += " of" + tree_text(quotation.arguments);
    return text + ")";
  }
  std::string operator()(const Logic& x) const { return (x.is_and ? "(and" : "(or") + tree_text(x.operands) + ")"; }
};

inline std::string tree_text(const Expression& expression) { return std::visit(ExpressionText{}, expression.form); }

std::string tree_text(const Block& block);

struct StatementText {
  static std::string assigned(const std::optional<BinaryOperator>& op) { return op ? spelling(*op) : ""; }
  std::string operator()(const ExpressionStatement& x) const { return tree_text(*x.expression); }
  std::string operator()(const VariableAssignment& x) const {
    return fmt::format("({}= {} {})", assigned(x.op), tree_text(*x.variable), tree_text(*x.value));
  }
  std::string operator()(const ElementAssignment& x) const {
    return fmt::format("({}= (at {}{}) {})", assigned(x.op), tree_text(*x.container), tree_text(x.index.indices),
                       tree_text(*x.value));
  }
  std::string operator()(const If& x) const {
    std::string text = "(if";
    for (const ConditionalArm& arm : x.arms) text += " " + tree_text(*arm.condition) + " " + tree_text(arm.body);
    return text + (x.otherwise.empty() ? "" : " else " + tree_text(x.otherwise)) + ")";
  }
  std::string operator()(const While& x) const {
    return "(while " + tree_text(*x.condition) + " " + tree_text(x.body) + ")";
  }
  std::string operator()(const For& x) const {
    return "(for " + (x.key ? tree_text(*x.key) + ", " : "") + tree_text(*x.variable) + " " + tree_text(*x.sequence) +
           " " + tree_text(x.body) + ")";
  }
  std::string operator()(const Return& x) const {
    return x.value ? "(return " + tree_text(*x.value) + ")" : "(return)";
  }
  std::string operator()(const Break&) const { return "(break)"; }
  std::string operator()(const Continue&) const { return "(continue)"; }
  std::string operator()(const Try& x) const {
    return "(try " + tree_text(x.body) + " " + tree_text(*x.variable) + " " + tree_text(x.handler) + ")";
  }
  std::string operator()(const Use& x) const { return "(use " + string_literal(x.path) + ")"; }
};

inline std::string tree_text(const Block& block) {
  std::string text = "{";
  for (const Statement& statement : block)
    text += (text.size() > 1 ? " " : "") + std::visit(StatementText{}, statement.form);
  return text + "}";
}

inline SourcePtr source_of(std::string text) { return std::make_shared<SourceText>("test.hvm", std::move(text)); }

/// The statements of a script as text.
inline std::string parsed(const std::string& text) {
  NameTable globals;
  return tree_text(parse(source_of(text), globals).statements);
}

/// The error of a script that cannot be read.
inline ScriptError error_of(const std::string& text) {
  try {
    parsed(text);
  } catch (const ScriptError& error) {
    return error;
  }
  ADD_FAILURE() << "no error in: " << text;
  return ScriptError("none", source_of(text), {});
}

/// The place and the words of an error, as `line:column message`.
inline std::string placed_error_of(const std::string& text) {
  const ScriptError error = error_of(text);
  const Place place = error.source()->place(error.span().begin);
  return std::to_string(place.line) + ":" + std::to_string(place.column) + " " + error.message();
}

}  // namespace hvm::testing
