// processors/function_calls.cpp: every function of the module over fixed input

#include <algorithm>
#include <cmath>
#include <limits>
#include <list>

#include "processors/digest.hpp"
#include "processors/inputs.hpp"
#include "support/code_builder.hpp"
#include "support/functions.hpp"
#include "support/hand_made.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

using Names = std::vector<std::string>;

const Names creations = {"xarray", "xrand", "xeye", "xzeros", "xones", "xempty", "xarange", "xlinspace"};
const Names in_place = {"xshuffle"};
const Names of_two = {"xminimum", "xmaximum", "xhistogram_bin_edges", "xdigitize"};
const Names with_rank = {"xpartition", "xargpartition"};
const Names of_small_counts = {"xbincount"};
const Names of_matrices = {"xtrace", "xnorm"};
const Names products = {"xdot", "xvdot", "xouter", "xkron"};

const Names circular = {"xsin", "xcos", "xtan"};

Names left_out() {
  Names names = functions_of_fused_products();
  for (const LeftOut& function : functions_left_out()) names.emplace_back(function.name);
  return names;
}

Names stubs() {
  Names names;
  for (const FunctionRecord& function : all_functions())
    if (function.is_stub) names.emplace_back(function.name);
  return names;
}

/// All others take one array.
Names of_one() {
  Names names;
  for (const FunctionRecord& function : all_functions()) names.emplace_back(function.name);
  return without(names,
                 {creations, in_place, of_two, with_rank, of_small_counts, of_matrices, products, left_out(), stubs()});
}

/// Whether an array is long enough to be looked at with one content alone.
bool is_long(const Extents& extents) { return size_of(extents) > 10'000; }

/// Calls `use(kind, extents, content)` for every kind, shape and content.
template <class Use>
void for_inputs(const std::vector<Kind>& kinds, Use use) {
  for (const Kind kind : kinds)
    for (const Extents& extents : shapes())
      for (const Content content : all_contents)
        if (!is_long(extents) || content == Content::random) use(kind, extents, content);
}

std::vector<Value> numbers(const std::vector<int>& values) {
  std::vector<Value> made;
  for (const int x : values) made.emplace_back(x);
  return made;
}

// ---- Arrays of numbers

void call_filled(DigestedCalls& calls) {
  for (const std::size_t n : lengths()) {
    const int length = static_cast<int>(n);
    for (const std::vector<int>& extents : {std::vector<int>{length}, {length, 3}, {2, 1, length}}) {
      for (const char* function : {"xzeros", "xones", "xrand"}) calls.call(function, numbers(extents));
      calls.call_for_extents("xempty", numbers(extents));
    }
    if (n > 300) continue;
    calls.call("xeye", {Value(length)});
    calls.call("xeye", {Value(length), Value(7)});
  }
}

void call_ranged(DigestedCalls& calls) {
  constexpr int largest = std::numeric_limits<int>::max();
  for (const std::size_t n : lengths()) {
    const int length = static_cast<int>(n);
    calls.call("xarange", {Value(length)});
    calls.call("xarange", {Value(length), Value(-length), Value(-3)});
    calls.call("xarange", {Value(largest - length), Value(largest)});
    calls.call("xlinspace", {Value(-3), Value(1'000'003), Value(length)});
    calls.call("xlinspace", {Value(std::int64_t{1} << 60), Value(-7), Value(length)});
    for (const double stop : {1.0, 0.1, -3.7, 1e300, std::numeric_limits<double>::infinity()})
      calls.call("xlinspace", {Value(0.3), Value(stop), Value(length)});
  }
  calls.call("xlinspace", {Value(0.0), Value(1.0)});
}

/// Tables and dimensions as scripts give them.
void call_xarray(DigestedCalls& calls) {
  CodeBuilder code;
  for (const std::size_t n : lengths()) {
    if (n > 300) continue;
    std::vector<Value> leaves;
    const TestArray wanted = fixed_array(Kind::float64, {n}, Content::special);
    for (std::size_t i = 0; i < n; ++i)
      leaves.push_back(i % 4 == 3 ? Value(static_cast<int>(i)) : Value(wanted[i].as<double>()));
    const Value row = Value::table_of(leaves);
    for (const char* dtype : {"bool", "int", "int64", "double", "float"}) {
      calls.call("xarray", {code.quoted_call(dtype), row});
      calls.call("xarray", {code.quoted_call(dtype), Value::table_of({row, row, row})});
    }
  }
  for (const char* dtype : {"bool", "int", "int64", "double"})
    calls.call("xarray", {code.quoted_call(dtype, {integer(0), integer(5)})});
}

// ---- Functions of arrays

void call_of_one(DigestedCalls& calls) {
  const Names functions = of_one();
  std::vector<Kind> kinds = numeric_kinds;
  kinds.push_back(Kind::boolean);
  for_inputs(kinds, [&](Kind kind, const Extents& extents, Content content) {
    Operand operand(calls.ctx(), fixed_array(kind, extents, content));
    for (const std::string& function : functions) calls.call(function, {operand.value()});
    for (const std::string& function : with_rank)
      for (const int rank : {0, static_cast<int>(size_of(extents) / 2), -1})
        calls.call(function, {operand.value(), Value(rank)});
    if (is_integer(kind) || kind == Kind::boolean) return;
    calls.call("xhistogram", {operand.value(), Value(37)});
    if (extents.size() == 2) calls.call("xnorm", {operand.value()});
  });
  for_inputs(numeric_kinds, [&](Kind kind, const Extents& extents, Content content) {
    Operand operand(calls.ctx(), fixed_array(kind, extents, content));
    if (extents.size() >= 2) calls.call("xtrace", {operand.value()});
    if (is_long(extents)) return;
    calls.call("xshuffle", {operand.value()});
    if (kind != Kind::float32) calls.add("xshuffle", operand.value());
  });
}

void call_of_small_counts(DigestedCalls& calls) {
  for (const Kind kind : integer_kinds)
    for (const Extents& extents : shapes()) {
      Numbers x;
      for (std::size_t i = 0; i < size_of(extents); ++i) x.push_back(i * 7919 % 103);
      // Without elements there is no largest one, and the length overflows.
      if (!x.empty()) calls.call("xbincount", {to_host(calls.ctx(), TestArray(kind, extents, x))});
    }
}

/// Ascending edges, all within and around the random elements.
TestArray edges(Kind kind, std::size_t count) {
  Numbers x;
  for (std::size_t i = 0; i < count; ++i)
    x.push_back((static_cast<double>(i) - static_cast<double>(count) / 2) * (is_integer(kind) ? 3 : 0.37));
  return TestArray(kind, {count}, x);
}

void call_with_edges(DigestedCalls& calls) {
  for_inputs(floating_kinds, [&](Kind kind, const Extents& extents, Content content) {
    if (is_long(extents)) return;
    Operand operand(calls.ctx(), fixed_array(kind, extents, content));
    for (const Kind of_edges : numeric_kinds)
      for (const std::size_t count : {0, 1, 5, 64}) {
        Operand edge_operand(calls.ctx(), edges(of_edges, count));
        calls.call("xdigitize", {operand.value(), edge_operand.value()});
        if (count == 5) calls.call("xhistogram_bin_edges", {operand.value(), edge_operand.value()});
      }
  });
}

void call_extremes_of_pairs(DigestedCalls& calls) {
  const auto call_both = [&](Kind kind, const Extents& a, const Extents& b, Content content) {
    Operand left(calls.ctx(), fixed_array(kind, a, content)), right(calls.ctx(), fixed_array(kind, b, content, 2));
    for (const char* function : {"xminimum", "xmaximum"}) calls.call(function, {left.value(), right.value()});
  };
  for_inputs(numeric_kinds,
             [&](Kind kind, const Extents& extents, Content content) { call_both(kind, extents, extents, content); });
  for (const Kind kind : numeric_kinds)
    for (const Content content : all_contents)
      for (const auto& [a, b] : broadcast_shapes()) call_both(kind, a, b, content);
}

// ---- Products that the module computes itself: those of integers, and of two kinds

const std::vector<std::pair<Extents, Extents>> factors = {{{0}, {0}},          {{1}, {1}},           {{7}, {7}},
                                                          {{69}, {69}},        {{300}, {300}},       {{}, {5}},
                                                          {{3, 4}, {4}},       {{4}, {4, 3}},        {{3, 4}, {4, 5}},
                                                          {{9, 33}, {33, 17}}, {{17, 65}, {65, 70}}, {{4, 1}, {1, 6}},
                                                          {{2, 3, 4}, {4, 2}}, {{3, 4}, {2, 4, 5}},  {{5, 3}, {4, 3}}};

void call_products(DigestedCalls& calls) {
  for (const Kind first : numeric_kinds)
    for (const Kind second : numeric_kinds)
      for (const auto& [a, b] : factors)
        for (const Content content : all_contents) {
          Operand left(calls.ctx(), fixed_array(first, a, content)),
              right(calls.ctx(), fixed_array(second, b, content, 2));
          const bool is_own = first != second || is_integer(first);
          for (const char* function : {"xdot", "xvdot", "xouter"})
            if (is_own) calls.call(function, {left.value(), right.value()});
          // Every element times every other.
          if (size_of(a) * size_of(b) < 20'000) calls.call("xkron", {left.value(), right.value()});
        }
}

/// The C library computes sine and its kin of larger numbers.
TestArray within_circles(const TestArray& array) {
  Numbers x;
  for (std::size_t i = 0; i < array.size(); ++i)
    if (array.kind() == Kind::float64)
      x.push_back(std::abs(array[i].as<double>()) <= 1e5 ? array[i].as<double>() : 0.5);
    else
      x.push_back(array[i].as<std::int64_t>() % 100'000);
  return TestArray(array.kind(), array.extents(), x);
}

/// Floats are left out: their functions are the C library's.
void call_with_fused_products(DigestedCalls& calls) {
  const Names others = without(functions_of_fused_products(), {circular, {"xlogspace"}});
  for_inputs({Kind::float64, Kind::int32, Kind::int64}, [&](Kind kind, const Extents& extents, Content content) {
    const TestArray array = fixed_array(kind, extents, content);
    Operand operand(calls.ctx(), array), small(calls.ctx(), within_circles(array));
    for (const std::string& function : others) calls.call(function, {operand.value()});
    for (const std::string& function : circular) calls.call(function, {small.value()});
  });
  // The C library computes powers beyond 10^290.
  for (const std::size_t n : lengths()) {
    const int length = static_cast<int>(n);
    calls.call("xlogspace", {Value(0), Value(9), Value(length)});
    calls.call("xlogspace", {Value(std::int64_t{-3}), Value(18), Value(length)});
    for (const double stop : {1.0, 0.1, -3.7, 290.0})
      calls.call("xlogspace", {Value(-289.3), Value(stop), Value(length)});
  }
}

/// What the stubs answer.
void call_stubs(DigestedCalls& calls) {
  for (const std::string& function : stubs())
    for (const Kind kind : numeric_kinds) {
      Operand operand(calls.ctx(), fixed_array(kind, {3, 3}, Content::few));
      calls.call(function, std::vector<Value>(3, operand.value()));
    }
}

}  // namespace

const std::vector<LeftOut>& functions_left_out() {
  static const char* const library = "BLAS and LAPACK compute it, which choose code for the processor, too";
  static const char* const c_library = "the C library computes it, which chooses code for the processor, too";
  static const std::vector<LeftOut> all = {
      {"xcholesky", library}, {"xqr", library},          {"xsvd", library},      {"xeig", library},
      {"xeigvals", library},  {"xeigh", library},        {"xeigvalsh", library}, {"xcond", library},
      {"xdet", library},      {"xmatrix_rank", library}, {"xslogdet", library},  {"xinv", library},
      {"xpinv", library},     {"xsolve", library},       {"xlstsq", library},    {"xtgamma", c_library},
      {"xerf", c_library},    {"xlgamma", c_library},    {"xrandn", c_library}};
  return all;
}

const std::vector<std::string>& functions_of_fused_products() {
  static const Names all = {"xexp", "xexpm1", "xlog",  "xlog1p", "xcbrt", "xsin",
                            "xcos", "xtan",   "xsinh", "xcosh",  "xtanh", "xlogspace"};
  return all;
}

void call_functions(DigestedCalls& calls) {
  call_filled(calls);
  call_ranged(calls);
  call_xarray(calls);
  call_of_one(calls);
  call_of_small_counts(calls);
  call_with_edges(calls);
  call_extremes_of_pairs(calls);
  call_products(calls);
  call_stubs(calls);
  if (fuses_products()) call_with_fused_products(calls);
}

}  // namespace arrayfold::test
