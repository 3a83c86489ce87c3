// script/explain/result_conditions.cpp: functions that give nothing, or something else than their result

#include "script/explain/result_conditions.hpp"

#include <fmt/format.h>

#include <cmath>

#include "script/explain/condition_words.hpp"
#include "script/explain/script_words.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

constexpr Word words_instead[] = {
    {"xpow", "power(a, p) of use \"arrays\" raises elements to a power"},
    {"xclip", "clip(a, low, high) of use \"arrays\" does what its name says"},
    {"xfma", "write a * b + c"},
    {"xinterp", "interpolate(x, xp, fp) of use \"arrays\" does what its name says"},
    {"xchoice", "choice(a, n) of use \"arrays\" does what its name says"},
    {"xrandint", "as_int(xrand(n) * k) of use \"arrays\" draws integers below k"},
    {"xsearchsorted", "write xdigitize(values, a)"},
    {"xmatrix_power", "multiply with xdot as often as it takes"},
    {"xremainder", "write a % b with integer arrays"},
    {"xeig", "for a symmetric matrix write xeigh(a)"},
    {"xeigvals", "for a symmetric matrix write xeigvalsh(a)"},
    {"xpermutation", "write c = a + 0 and then xshuffle(c), or permutation(n) of use \"arrays\""},
};

}  // namespace

std::vector<std::string_view> functions_without_result() { return functions_of(words_instead); }

Found nothing_computed(const AnsweredCall& call) {
  const std::string_view gives = call.function == "xpermutation" ? "0 and no permuted array"
                                 : call.function == "xeig"       ? "an empty table"
                                                                 : "nothing";
  return Finding{fmt::format("{} gives {}, whatever its arguments are; {}", call.function, gives,
                             words_for(words_instead, call.function))};
}

Found values_for_positions(const AnsweredCall&) {
  return Finding{
      fmt::format("xargpartition gives values, not positions; argpartition(a, k) {} and xargsort(a) give "
                  "positions",
                  library)};
}

Found bool_array(const AnsweredCall& call) {
  for (std::size_t i = 0; i < call.arguments.size(); ++i) {
    if (!is_of_kind(call.arguments[i], "bool")) continue;
    const std::string text = argument_text(call, i, "m");
    const bool counts = call.function == "xsum" || call.function == "xcount_nonzero";
    return Finding{counts ? fmt::format("{} gives nothing for a bool array; count({}) {} counts its true elements",
                                        call.function, text, library)
                          : fmt::format("{} gives nothing for a bool array; as_double({}) {} makes 0.0 and 1.0 of its "
                                        "elements",
                                        call.function, text, library)};
  }
  return {};
}

Found two_kinds(const AnsweredCall& call) {
  if (call.arguments.size() < 2) return {};
  const auto first = kind_of_array(call.arguments[0]);
  const auto second = kind_of_array(call.arguments[1]);
  if (!first || !second || first == second) return {};
  const std::string name = argument_name(call, *first == "double" ? 1 : 0, "i");
  return Finding{
      fmt::format("{0} gives nothing for arrays of two kinds, {1} and {2}; make one kind of them: "
                  "xminimum({3}, {3}) has the elements of {3} as doubles",
                  call.function, *first, *second, name)};
}

Found integers_without_result(const AnsweredCall& call) {
  if (call.arguments.empty() || !is_integer_array(call.arguments[0])) return {};
  return Finding{fmt::format("{0} gives nothing for {1} array; write {0}(xminimum({2}, {2}))", call.function,
                             with_article(*kind_of_array(call.arguments[0])), argument_name(call, 0, "i"))};
}

Found no_diagonal(const AnsweredCall&) {
  return Finding{
      "xtrace gives nothing for an array of fewer than two dimensions, which has no diagonal; give a matrix"};
}

Found unused_order(const AnsweredCall& call) {
  if (call.caller.source->is_typed() || !call.result.is_object()) return {};
  const std::string name = argument_name(call, 0, "");
  if (name.empty()) return {};  // only what has a name can be meant to change
  return Finding{fmt::format("{0} gives a new array and does not change {1}; write {1} = {2}", call.function, name,
                             short_text(call.text(), call.function + "(a)"))};
}

Found value_of_shuffle(const AnsweredCall& call) {
  if (!call.result.is_number()) return {};
  const std::string name = argument_name(call, 0, "a");
  return Finding{
      fmt::format("xshuffle changes {0} itself and gives 0; write xshuffle({0}) on a line of its own and "
                  "then use {0}",
                  name)};
}

namespace {

constexpr Word of_nan[] = {
    {"xsort", "no defined order"},      {"xargsort", "no defined order"},
    {"xpartition", "no defined order"}, {"xunique", "no defined order and may repeat elements"},
    {"xmedian", "no defined number"},
};

/// The number in a real; no value for anything else.
std::optional<double> real_of(const Value& value) {
  if (value.tag() != ValueTag::real) return std::nullopt;
  return arrayfold::load<double>(value.record().payload);
}

bool is_nan(const Value& value) {
  const auto real = real_of(value);
  return real && std::isnan(*real);
}

/// What a function of the module gives for one argument; nil where the module has no such function.
Value asked(const AnsweredCall& call, const std::string& function, const Value& argument) {
  const arrayfold::EntryFunction entry = call.module.find(function);
  std::vector<Value> arguments{argument};
  return entry ? call_function(call.caller, function, entry, arguments) : Value();
}

/// Whether an array of doubles holds NaN. The sum alone tells of most arrays that they do not: with NaN it is NaN. The
/// sum of two infinities may be NaN as well, and then each element is looked at.
bool holds_nan(const AnsweredCall& call, const Value& array) {
  try {
    if (!is_nan(asked(call, "xsum", array))) return false;
    return real_of(asked(call, "xsum", asked(call, "xisnan", array))).value_or(0) > 0;
  } catch (const Failure&) {
    return false;
  }
}

/// What leaves NaN out of the first argument.
std::string without_nan(const AnsweredCall& call) {
  return fmt::format("mask({0}, xisnan({0}) < 1) {1} leaves NaN out", argument_name(call, 0, "a"), library);
}

}  // namespace

std::vector<std::string_view> functions_that_order_elements() { return functions_of(of_nan); }

Found order_with_nan(const AnsweredCall& call) {
  if (call.arguments.empty() || !is_of_kind(call.arguments[0], "double") || !holds_nan(call, call.arguments[0]))
    return {};
  return Finding{fmt::format("{} gives {}, since {} holds NaN; {}", call.function, words_for(of_nan, call.function),
                             argument_name(call, 0, "its argument"), without_nan(call))};
}

Found position_with_nan(const AnsweredCall& call) {
  if (call.arguments.empty() || !is_of_kind(call.arguments[0], "double")) return {};
  Value& array = call.arguments[0];
  const auto extents = shape_of(call.caller, array);
  if (!extents || element_count(*extents) < 2) return {};
  std::vector<Value> first{Value(0)};  // indices stand for the last axes, and 0 for each one before them
  const auto element = read_element(call.caller, array, first);
  if (!element || !is_nan(*element)) return {};
  return Finding{fmt::format("{} gives 0, since the first element is NaN; {}", call.function, without_nan(call))};
}

}  // namespace hvm
