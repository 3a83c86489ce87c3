// script/explain/reduction_conditions.cpp: reductions and products that count other elements than they are given

#include "script/explain/reduction_conditions.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "script/explain/condition_words.hpp"
#include "script/text/number_text.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {

Found largest_of_doubles(const AnsweredCall& call) {
  if (call.result.tag() != ValueTag::real) return {};
  const auto extents = shape_of(call.caller, call.arguments[0]);
  if (extents && std::find(extents->begin(), extents->end(), 0) != extents->end())
    return Finding{fmt::format("xamax gives 2.2250738585072014e-308 of no elements; look at len({}) first",
                               argument_name(call, 0, "a"))};
  return Finding{
      fmt::format("xamax gives 2.2250738585072014e-308 of doubles without an element above it; write "
                  "-xamin(-{})",
                  argument_name(call, 0, "a"))};
}

Found largest_of_int64(const AnsweredCall& call) {
  if (call.result.tag() != ValueTag::integer64) return {};
  const auto extents = shape_of(call.caller, call.arguments[0]);
  if (!extents || element_count(*extents) < 2) return {};
  return Finding{fmt::format("xamax gives the smallest element of an int64 array; write -xamin(-{})",
                             argument_name(call, 0, "a"))};
}

namespace {

// The elements behind the last whole block may all equal the first one, or may not matter to an extreme. The answer is
// then right by chance, and the warning comes all the same.
constexpr std::string_view of_last_elements = "counts the first element in place of the last {} of {}";

constexpr Word on_columns[] = {
    {"xsum", of_last_elements},
    {"xamin", of_last_elements},
    {"xamax", of_last_elements},
    {"xsort", "sorts nothing, since each row has one element"},
    {"xargsort", "gives zeros, since each row has one element"},
    {"xpartition", "orders nothing, since each row has one element"},
    {"xdiff", "gives no elements, since each row has one"},
    {"xtrapz", "gives 0.0, since only the first row counts"},
    {"xhistogram", "counts the first element alone, {} times"},
    {"xbincount", "counts the first element alone, {} times"},
    {"xdigitize", "looks up the first element alone and gives 0.0 for all others"},
};

}  // namespace

std::vector<std::string_view> functions_odd_on_columns() { return functions_of(on_columns); }

Found column(const AnsweredCall& call) {
  if (call.arguments.empty() || !call.columns.has(call.arguments[0])) return {};
  Value& array = call.arguments[0];
  const auto extents = shape_of(call.caller, array);
  if (!extents || extents->size() < 2 || extents->back() != 1) {
    call.columns.forget(object_in(array));
    return {};
  }
  std::int64_t count = element_count(*extents);
  if (count < 2) return {};
  const std::string_view words = words_for(on_columns, call.function);
  const std::int64_t whole = count;
  if (words == of_last_elements) count %= is_of_kind(array, "int") ? 8 : 4;
  if (count == 0) return {};
  return Finding{fmt::format("{} of a column {} {}; give it one dimension first: {}.reshape({})", call.function,
                             in_parentheses(*extents), fmt::format(fmt::runtime(words), count, whole),
                             argument_name(call, 0, "a"), whole)};
}

Found rows_beyond_the_matrix(const AnsweredCall& call) {
  if (call.arguments.size() < 2) return {};
  const auto matrix = shape_of(call.caller, call.arguments[0]);
  const auto right = shape_of(call.caller, call.arguments[1]);
  const bool are_usual = matrix && right && matrix->size() == 2 && (right->size() == 1 || right->size() == 2);
  if (!are_usual || right->front() <= matrix->front()) return {};
  return Finding{
      fmt::format("xsolve solves for {0} of {1} rows and leaves the last ones of {2} as they are; give {0} rows",
                  matrix->front(), right->front(), argument_name(call, 1, "b"))};
}

Found kind_of_product(const AnsweredCall& call) {
  if (call.arguments.size() < 2 || !is_of_kind(call.arguments[1], "double")) return {};
  const std::string a = argument_name(call, 0, "i");
  return Finding{
      fmt::format("{0} gives {1} array, the kind of its first argument, and drops all fractions; write "
                  "{0}(xminimum({2}, {2}), {3})",
                  call.function, with_article(*kind_of_array(call.arguments[0])), a, argument_text(call, 1, "d"))};
}

namespace {

constexpr std::string_view no_axis =
    "there is no axis argument; row({0}, i) of use \"arrays\" gives each row of a matrix";
constexpr std::string_view sorts_rows =
    "there is no axis argument, and each row is sorted; transpose({0}) of use \"arrays\" makes rows of columns";

constexpr Word without_more[] = {
    {"xsum", "there is no axis argument; sum_rows({0}) and sum_columns({0}) of use \"arrays\" sum rows and columns"},
    {"xmean", "there is no axis argument; mean_columns({0}) of use \"arrays\" gives the means of columns"},
    {"xstddev",
     "there is no axis argument and no degree of freedom; for a sample of n multiply by sqrt(n / (n - 1.0))"},
    {"xvariance", "there is no axis argument and no degree of freedom; for a sample of n multiply by n / (n - 1.0)"},
    {"xprod", no_axis},
    {"xamin", no_axis},
    {"xamax", no_axis},
    {"xmedian", no_axis},
    {"xcount_nonzero", no_axis},
    {"xargmin", no_axis},
    {"xargmax", no_axis},
    {"xsort", sorts_rows},
    {"xargsort", sorts_rows},
    {"xdiff", "there is no axis argument and no order; write xdiff(xdiff({0})) for the second differences"},
    {"xtrapz", "there is no spacing; multiply the result by it"},
    {"xnorm", "there is one norm, the root of the sum of the squares"},
    {"xhistogram_bin_edges", "there are always ten bins; xlinspace(low, high, n + 1) gives other edges"},
    {"xlogspace", "the base is always 10"},
};

}  // namespace

Found unused_argument(const AnsweredCall& call) {
  const std::size_t most = call.most_arguments;
  const std::string_view words = words_for(without_more, call.function);
  const std::string hint =
      words.empty() ? "leave it out" : fmt::format(fmt::runtime(words), argument_name(call, 0, "a"));
  const std::string given = argument_text(call, most, "");
  return Finding{fmt::format("{} takes {} and ignores {}: {}", call.function, counted(most, "argument", "arguments"),
                             given.empty() ? "what follows" : given, hint)};
}

}  // namespace hvm
