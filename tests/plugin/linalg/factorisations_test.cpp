// linalg/factorisations_test.cpp: xcholesky, xqr and xsvd

#include "algebra.hpp"

namespace arrayfold::test {
namespace {

class Factorisations : public OverKinds<AlgebraTest> {
 protected:
  Value of(const Extents& extents, const Doubles& numbers) { return made(kind(), extents, numbers); }
  std::vector<Contents> arrays(const std::string& name, const Value& operand) {
    std::vector<Contents> found;
    for (const Value& value : table(name, {operand})) found.push_back(contents_of(value, kind()));
    return found;
  }
  /// What a result may lack of a product of n terms of magnitude `size`.
  static double tolerance(std::size_t n, double size) {
    return 8 * static_cast<double>(n + 1) * rounding_of(kind()) * size;
  }
};
INSTANTIATE_TEST_SUITE_P(Kinds, Factorisations, ::testing::ValuesIn(floating_kinds), KindName());

constexpr std::pair<std::size_t, std::size_t> sizes[] = {{1, 1}, {1, 4},  {4, 1},  {2, 3},  {3, 2},
                                                         {5, 5}, {17, 9}, {9, 17}, {40, 33}};

// ---- xcholesky

TEST_P(Factorisations, XcholeskyGivesTheLowerFactor) {
  const auto factor = doubles_of(kind(), "xcholesky", {of({2, 2}, {4, 2, 2, 5})});
  EXPECT_EQ(factor, (Contents{{2, 2}, {2, 0, 1, 2}}));
  EXPECT_EQ(doubles_of(kind(), "xcholesky", {of({1, 1}, {9})}), (Contents{{1, 1}, {3}}));
}

TEST_P(Factorisations, XcholeskyTimesItsTranspose_IsTheMatrix) {
  for (const std::size_t n : {1u, 2u, 3u, 8u, 33u, 100u}) {
    const Doubles a = rounded(kind(), positive_definite(n, 5));
    const auto factor = doubles_of(kind(), "xcholesky", {of({n, n}, a)});
    EXPECT_EQ(factor.extents, (Extents{n, n}));
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = i + 1; j < n; ++j) EXPECT_TRUE(same(factor.elements[i * n + j], 0.0));
    const Doubles product = multiplied(factor.elements, transposed(factor.elements, n, n), n, n, n);
    EXPECT_LE(distance(product, a), tolerance(n, 4.0 * static_cast<double>(n))) << n;
  }
}

TEST_P(Factorisations, XcholeskyReadsTheLowerTriangleAlone) {
  for (const std::size_t n : {2u, 3u, 20u, 70u}) {
    const Doubles a = positive_definite(n, 6);
    EXPECT_EQ(doubles_of(kind(), "xcholesky", {of({n, n}, with_nonsense_above(a, n))}),
              doubles_of(kind(), "xcholesky", {of({n, n}, a)}));
  }
}

TEST_P(Factorisations, XcholeskyOfNothing_IsNothing) {
  EXPECT_EQ(doubles_of(kind(), "xcholesky", {of({0, 0}, {})}), (Contents{{0, 0}, {}}));
}

// ---- xqr

TEST_P(Factorisations, XqrIsTheReducedForm) {
  for (const auto& [rows, columns] : sizes) {
    const std::size_t k = std::min(rows, columns);
    const Doubles a = rounded(kind(), random_doubles(rows * columns, 7));
    const auto found = arrays("xqr", of({rows, columns}, a));
    ASSERT_EQ(found.size(), 2u);
    const auto &q = found[0], &r = found[1];
    EXPECT_EQ(q.extents, (Extents{rows, k}));
    EXPECT_EQ(r.extents, (Extents{k, columns}));
    EXPECT_LE(distance(multiplied(q.elements, r.elements, rows, k, columns), a), tolerance(k, 10)) << rows;
    EXPECT_LE(distance(multiplied(transposed(q.elements, rows, k), q.elements, k, rows, k), identity(k)),
              tolerance(rows, 1));
    for (std::size_t i = 0; i < k; ++i)
      for (std::size_t j = 0; j < std::min(i, columns); ++j) EXPECT_TRUE(same(r.elements[i * columns + j], 0.0));
  }
}

TEST_P(Factorisations, XqrWithoutElements_KeepsItsShapes) {
  for (const auto& [rows, columns] : {std::pair<std::size_t, std::size_t>{0, 0}, {0, 3}, {3, 0}}) {
    const auto found = arrays("xqr", of({rows, columns}, {}));
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].extents, (Extents{rows, 0}));
    EXPECT_EQ(found[1].extents, (Extents{0, columns}));
  }
}

// ---- xsvd

TEST_P(Factorisations, Required_XsvdGivesFullMatrices) {
  for (const auto& [rows, columns] : sizes) {
    const std::size_t k = std::min(rows, columns);
    const Doubles a = rounded(kind(), random_doubles(rows * columns, 8));
    const auto found = arrays("xsvd", of({rows, columns}, a));
    ASSERT_EQ(found.size(), 3u);
    const auto &u = found[0], &s = found[1], &vt = found[2];
    EXPECT_EQ(u.extents, (Extents{rows, rows}));
    EXPECT_EQ(s.extents, (Extents{k}));
    EXPECT_EQ(vt.extents, (Extents{columns, columns}));
    EXPECT_TRUE(std::is_sorted(s.elements.rbegin(), s.elements.rend()));
    EXPECT_GE(s.elements.back(), 0);
    Doubles diagonal(rows * columns);
    for (std::size_t i = 0; i < k; ++i) diagonal[i * columns + i] = s.elements[i];
    const Doubles us = multiplied(u.elements, diagonal, rows, rows, columns);
    EXPECT_LE(distance(multiplied(us, vt.elements, rows, columns, columns), a), tolerance(k, 12)) << rows;
    EXPECT_LE(distance(multiplied(transposed(u.elements, rows, rows), u.elements, rows, rows, rows), identity(rows)),
              tolerance(rows, 1));
    EXPECT_LE(distance(multiplied(vt.elements, transposed(vt.elements, columns, columns), columns, columns, columns),
                       identity(columns)),
              tolerance(columns, 1));
  }
}

TEST_P(Factorisations, XsvdOfADiagonal_HasItsMagnitudes) {
  const auto found = arrays("xsvd", of({2, 2}, {3, 0, 0, -4}));
  EXPECT_LE(distance(found[1].elements, {4, 3}), 4 * rounding_of(kind()));
}

TEST_P(Factorisations, XsvdWithoutElements_HasIdentitiesAndNoValue) {
  for (const auto& [rows, columns] : {std::pair<std::size_t, std::size_t>{0, 0}, {0, 3}, {3, 0}}) {
    const auto found = arrays("xsvd", of({rows, columns}, {}));
    ASSERT_EQ(found.size(), 3u);
    EXPECT_EQ(found[0], (Contents{{rows, rows}, identity(rows)}));
    EXPECT_EQ(found[1], (Contents{{0}, {}}));
    EXPECT_EQ(found[2], (Contents{{columns, columns}, identity(columns)}));
  }
}

TEST_P(Factorisations, XsvdOfNaNOrInfinities_IsNaNThroughout) {
  for (const double bad : {not_a_number, infinity, -infinity})
    for (const auto& [rows, columns] : sizes)
      for (const std::size_t place : {std::size_t{0}, rows * columns - 1}) {
        Doubles a = random_doubles(rows * columns, 9);
        a[place] = bad;
        const auto found = arrays("xsvd", of({rows, columns}, a));
        ASSERT_EQ(found.size(), 3u);
        const auto nans = [](const Extents& extents) {
          return Contents{extents, Doubles(size_of(extents), not_a_number)};
        };
        EXPECT_EQ(found[0], nans({rows, rows}));
        EXPECT_EQ(found[1], nans({std::min(rows, columns)}));
        EXPECT_EQ(found[2], nans({columns, columns}));
      }
}

}  // namespace
}  // namespace arrayfold::test
