// script/explain/operator_conditions.cpp: operators, elements and methods that do something else than they say

#include "script/explain/operator_conditions.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "script/explain/array_integers.hpp"
#include "script/explain/condition_words.hpp"
#include "script/explain/script_words.hpp"
#include "script/text/number_text.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

bool is_comparison(BinaryOperator op) {
  return op == BinaryOperator::less || op == BinaryOperator::less_equal || op == BinaryOperator::greater ||
         op == BinaryOperator::greater_equal;
}

/// The comparison with its operands exchanged.
BinaryOperator turned(BinaryOperator op) {
  switch (op) {
    case BinaryOperator::less:
      return BinaryOperator::greater;
    case BinaryOperator::less_equal:
      return BinaryOperator::greater_equal;
    case BinaryOperator::greater:
      return BinaryOperator::less;
    default:
      return BinaryOperator::less_equal;
  }
}

std::string page_of(BinaryOperator op) { return fmt::format("docs/functions/operator-{}.md#result", page_word(op)); }

bool is_turned_silently(BinaryOperator op) {
  return op == BinaryOperator::subtract || op == BinaryOperator::divide || op == BinaryOperator::remainder ||
         is_comparison(op);
}

/// What gives the number on the left of the array.
std::string number_first(const ArrayOperation& operation, const std::string& n, const std::string& a) {
  const BinaryOperator op = operation.op;
  const auto extents = shape_of(operation.caller, operation.right);
  if (extents && extents->empty()) return fmt::format("{} {} {}[0]", n, spelling(op), a);
  if (is_comparison(op)) return fmt::format("{} {} {}", a, spelling(turned(op)), n);
  if (op == BinaryOperator::subtract) return fmt::format("{} * -1 + {}", a, n);
  const bool has_ones = op == BinaryOperator::divide && is_of_kind(operation.right, "double") && extents;
  if (has_ones) return fmt::format("xones({}) * {} / {}", fmt::join(*extents, ", "), n, a);
  return fmt::format("({0} * 0 + {1}) {2} {0}", a, n, spelling(op));
}

}  // namespace

Found number_on_the_left(const ArrayOperation& operation) {
  if (!operation.left.is_number() || !is_turned_silently(operation.op)) return {};
  const std::string_view kind = array_kind_of(operation.right);
  const bool fails = operation.op == BinaryOperator::remainder && kind == "double";  // and the error says so
  if (kind.empty() || kind == "bool" || fails) return {};
  const std::string n = operation.left_text("n");
  const std::string a = operation.right_text("a");
  const std::string bare = n.front() == '(' && operation.chain ? n.substr(1, n.size() - 2) : n;
  const std::string sign = spelling(operation.op);
  const std::string written =
      operation.is_compound() ? fmt::format("{} {}= {}", n, sign, a) : fmt::format("{} {} {}", bare, sign, a);
  const std::string front = operation.is_compound() ? n + " = " : "";
  return Finding{fmt::format("{} computes {} {} {}: with a number the array stands on the left; write {}{}", written, a,
                             sign, n, front, number_first(operation, n, a)),
                 page_of(operation.op)};
}

namespace {

/// What a number is that an array of integers has met.
struct MetNumber {
  const Value& number;
  const Value& array;

  bool is_narrow() const { return is_of_kind(array, "int"); }
  std::int64_t read() const { return is_narrow() ? as_int(number) : as_int64(number); }
};

/// Whether the array keeps of the number no more than `kept`.
bool keeps(const MetNumber& met, Kept kept) {
  return met.number.is_number() && is_integer_array(met.array) && kept_by(met.is_narrow(), met.number.record()) == kept;
}

/// What an operator reads of a number otherwise than it is written. Equality with a number is an error by itself.
Found misread_number(const ArrayOperation& operation, Kept kept) {
  if (operation.op == BinaryOperator::equal || operation.op == BinaryOperator::not_equal) return {};
  const bool is_left = operation.left.is_number();
  const MetNumber met{is_left ? operation.left : operation.right, is_left ? operation.right : operation.left};
  if (!keeps(met, kept)) return {};
  const std::string name = is_left ? operation.right_text("") : operation.left_text("");
  const std::string remedy = is_name(name) ? fmt::format("xminimum({0}, {0}) makes doubles of it", name)
                                           : fmt::format("as_double(a) {} makes doubles of it", library);
  const std::string_view what_is_read = kept == Kept::whole_part ? ", an integer" : stored(kept, met.is_narrow());
  return Finding{fmt::format("{} array reads {} as {}{}; {}", with_article(*kind_of_array(met.array)),
                             number_text(met.number), met.read(), what_is_read, remedy),
                 page_of(operation.op)};
}

}  // namespace

Found fraction_of_a_number(const ArrayOperation& operation) { return misread_number(operation, Kept::whole_part); }

Found range_of_a_number(const ArrayOperation& operation) { return misread_number(operation, Kept::another); }

Found remainder_of_doubles(const ArrayOperation& operation) {
  if (operation.op != BinaryOperator::remainder || !is_of_kind(operation.left, "double")) return {};
  if (!is_of_kind(operation.right, "double") && !is_integer_array(operation.right)) return {};
  const std::string a = operation.left_text("a");
  const std::string b = operation.right_text("b");
  const std::string gives = operation.is_compound() ? "changes nothing" : "gives nothing";
  const std::string sign = operation.is_compound() ? "%=" : "%";
  return Finding{fmt::format("{} {} {} {}: doubles have no remainder; make integers of them with as_int(a) {}", a, sign,
                             b, gives, library)};
}

Found bool_product(const ArrayOperation& operation) {
  if (operation.op != BinaryOperator::multiply) return {};
  const bool is_left = is_of_kind(operation.left, "bool");
  if (is_left ? operation.is_compound() : !is_of_kind(operation.right, "bool")) return {};
  const std::string front = operation.is_compound()
                                ? fmt::format("{} *= {} changes nothing, since a bool array times a number is nothing",
                                              operation.left_text("x"), operation.right_text("m"))
                                : std::string("a bool array times a number gives nothing");
  return Finding{fmt::format("{}; as_int({}) {} makes integers of it", front,
                             is_left ? operation.left_text("m") : operation.right_text("m"), library)};
}

namespace {

/// What an element stores of a number otherwise than it is written.
Found misread_element(const ElementAccess& access, Kept kept) {
  if (!access.written) return {};
  const MetNumber met{*access.written, access.object};
  if (!keeps(met, kept)) return {};
  return Finding{fmt::format("{} array stores {} as {}{}; make doubles of it first: a = xminimum(a, a)",
                             with_article(*kind_of_array(access.object)), number_text(*access.written), met.read(),
                             stored(kept, met.is_narrow()))};
}

}  // namespace

Found fraction_of_an_element(const ElementAccess& access) { return misread_element(access, Kept::whole_part); }

Found range_of_an_element(const ElementAccess& access) { return misread_element(access, Kept::another); }

Found fewer_indices(const ElementAccess& access) {
  const auto extents = shape_of(access.caller, access.object);
  const std::size_t given = access.indices.size();
  if (!extents || !kind_of_array(access.object) || given >= extents->size()) return {};
  const auto missing = static_cast<std::ptrdiff_t>(extents->size() - given);
  const bool has_one =
      std::all_of(extents->begin(), extents->begin() + missing, [](auto extent) { return extent == 1; });
  if (has_one) return {};
  std::string present;
  for (const Value& index : access.indices) present += (present.empty() ? "" : ", ") + number_text(index);
  std::string zeros;
  for (std::ptrdiff_t i = 0; i < missing; ++i) zeros += "0, ";
  return Finding{
      fmt::format("[{0}] of an array of the shape {1} is [{2}{0}]: indices count from the last dimension, "
                  "and missing ones are 0; row(a, i) {3} gives a row",
                  present, in_parentheses(*extents), zeros, library)};
}

Found value_of_reshape(const AnsweredMethod& call) {
  if (!call.is_used || call.method != "reshape") return {};
  return Finding{
      "reshape changes the array itself and gives nothing; write a.reshape(...) on a line of its own and "
      "then use a"};
}

std::string ArrayOperation::left_text(std::string_view otherwise) const {
  std::string text;
  if (assignment) text = operand_text(*assignment->variable, *caller.source);
  if (chain) text = chain_text(*chain, link, *caller.source);
  if (chain && !text.empty() && link != chain->links.data()) text = '(' + text + ')';
  return text.empty() ? std::string(otherwise) : text;
}

std::string ArrayOperation::right_text(std::string_view otherwise) const {
  std::string text;
  if (assignment) text = operand_text(*assignment->value, *caller.source);
  if (link) text = operand_text(*link->operand, *caller.source);
  return text.empty() ? std::string(otherwise) : text;
}

}  // namespace hvm
