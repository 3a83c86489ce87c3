// cli/performed_calls.cpp: whether a statement has called anything before it failed

#include "cli/performed_calls.hpp"

#include <algorithm>

namespace hvm {
namespace {

/// Looks through an expression for calls. Parts that are absent are null.
class Search {
 public:
  explicit Search(std::size_t place) : place_(place) {}

  bool in(const ExpressionPtr& expression) const {
    return expression &&
           std::visit([&](const auto& form) { return in_form(form, expression->span); }, expression->form);
  }
  bool in(const Index& index) const { return in_any(index.indices); }

 private:
  bool in_any(const Expressions& expressions) const {
    return std::any_of(expressions.begin(), expressions.end(), [&](const auto& each) { return in(each); });
  }

  /// Literals and variables.
  template <class Form>
  bool in_form(const Form&, Span) const {
    return false;
  }
  bool in_form(const Call& call, Span span) const {
    const bool is_around = span.begin <= place_ && place_ < span.end;
    return !is_around || in_any(call.arguments);
  }
  bool in_form(const TableLiteral& table, Span) const {
    return std::any_of(table.entries.begin(), table.entries.end(),
                       [&](const TableEntry& entry) { return in(entry.key) || in(entry.value); });
  }
  bool in_form(const Postfix& postfix, Span) const {
    return in(postfix.operand) ||
           std::any_of(postfix.suffixes.begin(), postfix.suffixes.end(), [&](const auto& suffix) {
             const auto* index = std::get_if<Index>(&suffix.form);
             return !index || in(*index);
           });
  }
  bool in_form(const Negation& negation, Span) const { return in(negation.operand); }
  bool in_form(const Not& negation, Span) const { return in(negation.operand); }
  bool in_form(const Chain& chain, Span) const {
    return in(chain.first) ||
           std::any_of(chain.links.begin(), chain.links.end(), [&](const Link& link) { return in(link.operand); });
  }
  bool in_form(const Logic& logic, Span) const { return in_any(logic.operands); }
  bool in_form(const KeyRange& range, Span) const { return in(range.low) || in(range.high); }
  bool in_form(const QuotationLiteral& literal, Span) const {
    return in(literal.quotation->subject) || in_any(literal.quotation->arguments);
  }

  std::size_t place_;
};

}  // namespace

bool may_have_called(const Statement& statement, std::size_t place) {
  const Search search(place);
  if (const auto* expression = std::get_if<ExpressionStatement>(&statement.form))
    return search.in(expression->expression);
  if (const auto* assignment = std::get_if<VariableAssignment>(&statement.form)) return search.in(assignment->value);
  if (const auto* assignment = std::get_if<ElementAssignment>(&statement.form))
    return search.in(assignment->container) || search.in(assignment->index) || search.in(assignment->value);
  return false;
}

}  // namespace hvm
