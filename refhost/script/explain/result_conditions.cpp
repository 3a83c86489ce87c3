// script/explain/result_conditions.cpp: functions that give nothing, or something else than their result

#include "script/explain/result_conditions.hpp"

#include <fmt/format.h>

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

}  // namespace hvm
