// linalg/library_products_test.cpp: the products are the library's, to the bit, in every pair of kinds

#include "algebra.hpp"
#include "reference.hpp"

namespace arrayfold::test {
namespace {

class LibraryProducts : public OverPairs<AlgebraTest> {
 protected:
  /// Calls the function and hands both operands to the library: the two results are equal.
  void compare(const char* name, const Extents& left, const Extents& right) {
    const TestArray a = drawn(first(), left, seed_++), b = drawn(second(), right, seed_++);
    const TestArray found = array(first(), name, {made(a), made(b)});
    const TestArray expected = library_product(name, a, b);
    EXPECT_EQ(found, expected) << name << expected.extents().size();
  }

  std::size_t extent() { return 1 + engine_() % 40; }

 private:
  unsigned seed_ = 1;
  std::mt19937 engine_{7};
};
INSTANTIATE_TEST_SUITE_P(Kinds, LibraryProducts, ::testing::ValuesIn(pairs_of(numeric_kinds, numeric_kinds)),
                         PairName());

TEST_P(LibraryProducts, XdotOfVectorsAndMatrices_IsTheLibrarys) {
  for (int turn = 0; turn < 30; ++turn) {
    const std::size_t m = extent(), k = extent(), n = extent();
    compare("xdot", {k}, {k});
    compare("xdot", {m, k}, {k});
    compare("xdot", {k}, {k, n});
    compare("xdot", {m, k}, {k, n});
  }
  for (const std::size_t n : {1u, 100u}) {
    compare("xdot", {n}, {n});
    compare("xdot", {n, n}, {n});
    compare("xdot", {n}, {n, n});
    compare("xdot", {n, n}, {n, n});
    compare("xdot", {1, n}, {n, 1});
    compare("xdot", {n, 1}, {1, n});
    compare("xdot", {1, n}, {n});
    compare("xdot", {n}, {n, 1});
    compare("xdot", {n, 1}, {1});
    compare("xdot", {1}, {1, n});
  }
  compare("xdot", {1000}, {1000});
}

TEST_P(LibraryProducts, XdotOfMoreDimensions_IsTheLibrarys) {
  compare("xdot", {2, 3, 4}, {4});
  compare("xdot", {4}, {2, 4, 3});
  compare("xdot", {2, 3, 4}, {4, 5});
  compare("xdot", {3, 4}, {2, 4, 5});
  compare("xdot", {2, 3, 4}, {5, 4, 2});
  compare("xdot", {2, 3, 1}, {5, 1, 2});
  compare("xdot", {2, 1, 3, 30}, {3, 30, 1});
  compare("xdot", {2, 2, 2, 2, 2, 2}, {2, 2, 2});
  compare("xdot", {}, {3, 4});
  compare("xdot", {3, 4, 2}, {});
}

TEST_P(LibraryProducts, XdotWithEveryNumberOfRowsLeftOver_IsTheLibrarys) {
  for (std::size_t rows = 1; rows <= 9; ++rows) {
    compare("xdot", {rows, 3}, {3, 5});
    compare("xdot", {rows, 3}, {2, 3, 5});
  }
}

TEST_P(LibraryProducts, XvdotXouterAndXkron_AreTheLibrarys) {
  for (int turn = 0; turn < 30; ++turn) {
    const std::size_t m = extent(), n = extent();
    compare("xvdot", {m}, {m + n});
    compare("xvdot", {m, 3}, {m, n});
    compare("xouter", {m}, {n});
    compare("xouter", {m, 2}, {n, 3});
    compare("xkron", {m % 7 + 1, n % 7 + 1}, {n % 5 + 1, m % 5 + 1});
  }
  compare("xvdot", {1000}, {1000});
  compare("xouter", {100}, {100});
  compare("xkron", {10, 10}, {10, 10});
  compare("xkron", {1, 10}, {10, 1});
  // More elements than are multiplied at a time.
  compare("xouter", {600}, {3});
  compare("xkron", {2, 600}, {2, 3});
}

// ---- Integers beside a triple loop

class IntegerProducts : public LibraryProducts {
 protected:
  static TestArray any(Kind kind, const Extents& extents, std::mt19937_64& engine) {
    std::vector<std::int64_t> drawn(size_of(extents));
    for (auto& x : drawn) x = static_cast<std::int64_t>(engine());
    return TestArray(kind, extents, drawn);
  }
  void expect_triple_loop(std::size_t m, std::size_t k, std::size_t n, std::mt19937_64& engine);
};
INSTANTIATE_TEST_SUITE_P(Kinds, IntegerProducts, ::testing::ValuesIn(pairs_of(integer_kinds, integer_kinds)),
                         PairName());

/// The wrapping sums, in 64 bits where one of the kinds has them.
std::int64_t wrapping_sum(const std::vector<std::int64_t>& a, const std::vector<std::int64_t>& b, std::size_t i,
                          std::size_t j, std::size_t k, std::size_t n) {
  std::uint64_t sum = 0;
  for (std::size_t l = 0; l < k; ++l)
    sum += static_cast<std::uint64_t>(a[i * k + l]) * static_cast<std::uint64_t>(b[l * n + j]);
  return static_cast<std::int64_t>(sum);
}

void IntegerProducts::expect_triple_loop(std::size_t m, std::size_t k, std::size_t n, std::mt19937_64& engine) {
  const TestArray left = any(first(), {m, k}, engine), right = any(second(), {k, n}, engine);
  const auto a = left.converted(Kind::int64).as<std::int64_t>(), b = right.converted(Kind::int64).as<std::int64_t>();
  // The low half of a sum in 64 bits is the sum in 32 bits.
  std::vector<std::int64_t> sums;
  for (std::size_t i = 0; i < m; ++i)
    for (std::size_t j = 0; j < n; ++j) sums.push_back(wrapping_sum(a, b, i, j, k, n));
  EXPECT_EQ(array(first(), "xdot", {made(left), made(right)}), TestArray(first(), {m, n}, sums)) << m << k << n;
}

TEST_P(IntegerProducts, AreTheWrappingTripleLoop) {
  std::mt19937_64 engine(17);
  for (int turn = 0; turn < 60; ++turn) expect_triple_loop(extent(), extent(), turn % 7 == 0 ? 1 : extent(), engine);
}

TEST_P(IntegerProducts, WithEveryNumberOfRowsLeftOver_AreTheWrappingTripleLoop) {
  std::mt19937_64 engine(18);
  for (std::size_t m = 1; m <= 13; ++m)
    for (const std::size_t k : {1u, 2u, 5u})
      for (const std::size_t n : {1u, 3u, 4u, 9u}) expect_triple_loop(m, k, n, engine);
}

}  // namespace
}  // namespace arrayfold::test
