// bench/linear_algebra.cpp: products, factorisations, inverses, solvers, and scalars of a matrix
//
// n is the length of a vector, or the number of rows of a square matrix.

#include <stdexcept>
#include <string>

#include "arrays.hpp"
#include "families.hpp"
#include "module.hpp"

namespace arrayfold::bench {
namespace {

const std::vector<int> sides{4, 32, 256, 1024};
const std::vector<int> small_sides{4, 32, 256};

std::vector<std::size_t> length(int n) { return {static_cast<std::size_t>(n)}; }
std::vector<std::size_t> square(int n) { return std::vector<std::size_t>(2, static_cast<std::size_t>(n)); }

std::vector<Value> one_vector(int n) { return {normal_doubles(length(n))}; }
std::vector<Value> two_vectors(int n) { return {normal_doubles(length(n), 1), normal_doubles(length(n), 2)}; }
std::vector<Value> two_matrices(int n) { return {normal_doubles(square(n), 1), normal_doubles(square(n), 2)}; }
std::vector<Value> two_int_matrices(int n) { return {small_ints(square(n), 1), small_ints(square(n), 2)}; }
std::vector<Value> ints_and_doubles(int n) { return {small_ints(square(n), 1), normal_doubles(square(n), 2)}; }
std::vector<Value> matrix_and_vector(int n) { return {normal_doubles(square(n), 1), normal_doubles(length(n), 2)}; }
std::vector<Value> matrix_and_small_one(int n) { return {normal_doubles(square(n), 1), normal_doubles(square(4), 2)}; }
std::vector<Value> one_matrix(int n) { return {dominant_square(static_cast<std::size_t>(n))}; }
std::vector<Value> system(int n) {
  return {dominant_square(static_cast<std::size_t>(n)), normal_doubles(length(n), 2)};
}

/// xcond inverts its argument and then throws, for every matrix.
void time_throwing(benchmark::State& state, std::vector<Value>& arguments, EntryFunction entry) {
  const HostContext ctx = context();
  HostValue result = hvm::nil_record();
  benchmark::IterationCount thrown = 0;
  for (auto _ : state) {
    try {
      entry(ctx, hvm::records_of(arguments), 1, &result);
    } catch (const std::runtime_error&) {
      ++thrown;
    }
  }
  if (thrown != state.iterations()) state.SkipWithError("the call threw nothing");
}

void add(const std::string& label, const std::string& function, const std::vector<int>& sizes,
         const RecordsOf& arguments) {
  add_call("linear_algebra/" + label, function, sizes, arguments);
}

}  // namespace

void add_linear_algebra() {
  add("dot_vectors", "xdot", four_sizes, two_vectors);
  add("vdot", "xvdot", four_sizes, two_vectors);
  add("norm_vector", "xnorm", four_sizes, one_vector);
  add("dot_matrices", "xdot", sides, two_matrices);
  add("dot_matrix_vector", "xdot", sides, matrix_and_vector);
  add("dot_ints", "xdot", small_sides, two_int_matrices);
  add("dot_mixed", "xdot", small_sides, ints_and_doubles);
  add("outer", "xouter", small_sides, two_vectors);
  add("kron", "xkron", small_sides, matrix_and_small_one);
  for (const std::string name :
       {"cholesky", "qr", "svd", "eigh", "eigvalsh", "det", "slogdet", "matrix_rank", "inv", "pinv", "norm", "trace"})
    add(name, "x" + name, sides, one_matrix);
  for (const std::string name : {"eig", "eigvals"}) add(name, "x" + name, small_sides, one_matrix);
  add_case("linear_algebra/cond", small_sides, one_matrix,
           [xcond = entry_named("xcond")](auto& state, auto& arguments) { time_throwing(state, arguments, xcond); });
  for (const std::string name : {"solve", "lstsq"}) add(name, "x" + name, sides, system);
}

}  // namespace arrayfold::bench
