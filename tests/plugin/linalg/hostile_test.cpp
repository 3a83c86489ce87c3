// linalg/hostile_test.cpp: operands of every shape and value: each call returns soon, regularly or with a known
// message, and writes nothing to standard output

#include <unistd.h>

#include <chrono>

#include "algebra.hpp"
#include "support/captured_output.hpp"

namespace arrayfold::test {
namespace {

const Names all_functions = functions_of("linalg");

constexpr const char* known_endings[] = {
    "0",
    "1",
    shape_message,
    square_message,
    unsolved_message,
    "runtime_error: Dot: shape mismatch.",
    "runtime_error: Cholesky decomposition failed.",
    "runtime_error: SVD decomposition failed.",
    "runtime_error: Eigenvalue calculation did not converge.",
    "runtime_error: Failed to compute eigenvalue 4.",
    "runtime_error: Eigenvalue computation did not converge.",
    "runtime_error: Norm 0 not implemented!",
    "runtime_error: Norm not implemented!",
    "runtime_error: Singular matrix not invertible (getrf).",
    "runtime_error: Expected 1- or 2D expression for A.",
    "runtime_error: Shape of 'b' for lstsq does not match.",
};

class Hostile : public AlgebraTest {
 protected:
  enum class MayEnd { as_known, without_memory };

  ~Hostile() override {
    alarm(0);
    EXPECT_EQ(output_.text(), "") << "something was written to standard output";
    EXPECT_LT(longest_, 5.0) << "seconds for " << slowest_;
    EXPECT_GT(calls_, 0);
  }

  /// One call. One that does not come back ends the process by its alarm.
  std::string tried(const std::string& name, const std::vector<Value>& args, MayEnd may_end = MayEnd::as_known) {
    using Clock = std::chrono::steady_clock;
    alarm(30);
    const auto before = Clock::now();
    const std::string how = ending(name, args);
    const double seconds = std::chrono::duration<double>(Clock::now() - before).count();
    if (seconds > longest_) longest_ = seconds, slowest_ = name;
    ++calls_;
    const bool known = std::find(std::begin(known_endings), std::end(known_endings), how) != std::end(known_endings);
    EXPECT_TRUE(known || (may_end == MayEnd::without_memory && how == "bad_alloc")) << name << " ends with " << how;
    return how;
  }

  void try_alone(const Value& operand, MayEnd may_end = MayEnd::as_known) {
    for (const std::string& name : all_functions) tried(name, {operand, operand}, may_end);
  }

 private:
  CapturedOutput output_;
  double longest_ = 0;
  std::string slowest_;
  int calls_ = 0;
};

TEST(CapturedOutputs, HoldWhatIsWrittenThroughAndBelowTheBuffers) {
  CapturedOutput output;
  std::printf("above, ");
  std::fflush(stdout);
  EXPECT_EQ(write(1, "below", 5), 5);
  EXPECT_EQ(output.text(), "above, below");
}

/// Shapes of rank 0 to 9 with small extents, 0 and 1 among them in every place.
std::vector<Extents> shapes() {
  std::vector<Extents> made = {{}, {0}, {1}, {2}, {3}, {7}};
  for (const std::size_t rows : {0u, 1u, 2u, 3u})
    for (const std::size_t columns : {0u, 1u, 2u, 3u}) made.push_back({rows, columns});
  for (std::size_t rank = 3; rank <= 9; ++rank) {
    made.push_back(Extents(rank, 1));
    made.push_back(Extents(rank, 2));
    for (const std::size_t place : {std::size_t{0}, rank - 2, rank - 1}) {
      Extents extents(rank, 2);
      extents[place] = 0;
      made.push_back(extents);
      extents[place] = 1;
      made.push_back(extents);
      extents[place] = 3;
      made.push_back(extents);
    }
    // No element, though the first and the last extent have room.
    Extents hollow(rank, 1);
    hollow[0] = 2;
    hollow[1] = 0;
    made.push_back(hollow);
  }
  return made;
}

TEST_F(Hostile, EveryShapeAlone_OfEveryKind_EndsAsKnown) {
  for (const Extents& extents : shapes()) {
    const std::size_t size = size_of(extents);
    const Doubles numbers = random_doubles(size, 1);
    try_alone(doubles(extents, numbers));
    try_alone(floats(extents, numbers));
    try_alone(ints(extents, Numbers(size, 3)));
    try_alone(longs(extents, Numbers(size, -3)));
  }
}

TEST_F(Hostile, EveryPairOfShapes_EndsAsKnown) {
  for (const Extents& left : shapes())
    for (const Extents& right : shapes()) {
      // Two arrays of 2^9 elements are enough for any product.
      const Value a = doubles(left, random_doubles(size_of(left), 1)),
                  b = doubles(right, random_doubles(size_of(right), 2));
      for (const std::string& name : of_two) tried(name, {a, b});
    }
}

TEST_F(Hostile, EveryPairOfShapes_OfFloatsAndIntegers_EndsAsKnown) {
  for (const Extents& left : shapes())
    for (const Extents& right : shapes()) {
      if (left.size() > 4 || right.size() > 4) continue;
      const Doubles numbers = random_doubles(size_of(left), 1), others = random_doubles(size_of(right), 2);
      const Value a = floats(left, numbers), b = floats(right, others);
      const Value whole = ints(right, Numbers(others.size(), 2));
      for (const std::string& name : of_two) {
        tried(name, {a, b});
        tried(name, {a, whole});
        tried(name, {whole, a});
      }
    }
}

TEST_F(Hostile, XvdotOfStridesThatWouldWrap_Fails) {
  // 6 * 7870742 * 409891 * 7623851 is 4 in 64 bits.
  Value four = doubles({4}, {1, 2, 3, 4});
  ASSERT_EQ(method(four, "reshape", {Value(6), Value(7870742), Value(409891), Value(7623851)}).returned, 1);
  EXPECT_EQ(tried("xvdot", {doubles({4}, {1, 2, 3, 4}), four}), "0");
}

TEST_F(Hostile, MatricesOfMoreRowsThanLapackCounts_WithoutElements_EndAsKnown) {
  const auto product = [&](const Extents& left, const Extents& right) {
    Answer answer = call("xkron", {doubles(left, {}), doubles(right, {})});
    EXPECT_EQ(answer.returned, 1);
    return answer.result;
  };
  const Value tall = product({2147483647, 0}, {2, 0}), wide = product({0, 2147483647}, {0, 2});
  for (const Value& matrix : {tall, wide}) {
    try_alone(matrix, MayEnd::without_memory);
    EXPECT_EQ(tried("xqr", {matrix}), "1");
  }
  Value solution = call("xsolve", {doubles({2, 2}, identity(2)), tall}).result;
  EXPECT_EQ(shape(solution), (std::vector<std::int64_t>{4294967294, 0}));
}

/// Matrices that LAPACK handles badly.
std::vector<Doubles> bad_matrices(std::size_t n) {
  const Doubles random = random_doubles(n * n, 3);
  std::vector<Doubles> made = {Doubles(n * n, 0), Doubles(n * n, 1), Doubles(n * n, not_a_number),
                               Doubles(n * n, infinity), Doubles(n * n, -infinity)};
  for (const double value : {not_a_number, infinity, -infinity, 1e300, -1e300, 1e-300, 5e-324, 0.0})
    for (const std::size_t place : {std::size_t{0}, n * n / 2, n * n - 1}) {
      made.push_back(random);
      made.back()[place] = value;
      made.push_back(identity(n));
      made.back()[place] = value;
    }
  for (const double scale : {1e300, 1e-300, 1e-310, 5e-324, 1e155, 1e-155}) {
    made.push_back(random);
    for (double& x : made.back()) x *= scale;
  }
  Doubles mixed = random, half = random, nilpotent(n * n);
  for (std::size_t i = 0; i < n * n; ++i) mixed[i] *= i % 2 == 0 ? 1e300 : 1e-300;
  for (std::size_t i = 0; i < n * n; i += 2) half[i] = i % 4 == 0 ? infinity : not_a_number;
  for (std::size_t i = 0; i + 1 < n; ++i) nilpotent[i * n + i + 1] = 1;
  made.insert(made.end(), {mixed, half, nilpotent});
  return made;
}

TEST_F(Hostile, BadMatrices_EndAsKnown) {
  for (const std::size_t n : {1u, 2u, 3u, 4u, 10u, 33u})
    for (const Doubles& elements : bad_matrices(n)) {
      const Value matrix = doubles({n, n}, elements);
      try_alone(matrix);
      try_alone(floats({n, n}, elements));
      const Value good = doubles({n, n}, positive_definite(n, 4)), row = doubles({n}, Doubles(n, 1));
      for (const std::string& name : of_two)
        for (const Value& other : {good, row}) {
          tried(name, {matrix, other});
          tried(name, {other, matrix});
        }
    }
}

TEST_F(Hostile, BadMatricesThatAreNotSquare_EndAsKnown) {
  for (const auto& [rows, columns] : {std::pair<std::size_t, std::size_t>{3, 5}, {5, 3}, {1, 6}, {6, 1}, {40, 7}}) {
    const std::size_t size = rows * columns, n = std::max(rows, columns);
    for (Doubles elements : bad_matrices(n)) {
      elements.resize(size);
      const Value matrix = doubles({rows, columns}, elements);
      for (const std::string& name : of_any_matrix) tried(name, {matrix});
      tried("xnorm", {matrix});
      tried("xlstsq", {matrix, ones({rows})});
      tried("xlstsq", {doubles({rows, columns}, random_doubles(size, 5)), matrix});
      tried("xlstsq", {floats({rows, columns}, elements), matrix});
    }
  }
}

TEST_F(Hostile, LargeMatricesOfInfinitiesAndNaN_EndAsKnown) {
  const std::size_t n = 150;
  for (const double bad : {infinity, not_a_number})
    for (const bool throughout : {false, true}) {
      Doubles elements = throughout ? Doubles(n * n, bad) : positive_definite(n, 6);
      elements[n] = bad;
      const Value matrix = doubles({n, n}, elements), in_32_bits = floats({n, n}, elements);
      for (const std::string& name : all_functions) {
        if (name == "xkron") continue;  // of two such: four gigabytes
        tried(name, {matrix, matrix});
        tried(name, {in_32_bits, in_32_bits});
      }
    }
}

TEST_F(Hostile, ExtentsBeyondTheStorage_EndAsKnown) {
  int out_of_memory = 0;
  const std::pair<int, int> extents[] = {{-2, -3}, {-1, -6}, {-6, -1}};
  for (const auto& [first, second] : extents) {
    const Value wrong = with_wrong_shape(first, second), row = ones({2});
    for (const std::string& name : all_functions)
      for (const std::vector<Value>& args : {std::vector<Value>{wrong, wrong}, {wrong, row}, {row, wrong}})
        out_of_memory += tried(name, args, MayEnd::without_memory) == "bad_alloc";
  }
  EXPECT_GT(out_of_memory, 30);
}

}  // namespace
}  // namespace arrayfold::test
