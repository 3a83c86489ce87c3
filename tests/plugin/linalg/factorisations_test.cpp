// linalg/factorisations_test.cpp: xcholesky, xqr and xsvd

#include "algebra.hpp"

namespace arrayfold::test {
namespace {

template <class Kind>
class Factorisations : public AlgebraTest {
 protected:
  Value of(const Extents& extents, const Reals& numbers) { return made_of<Kind>(extents, numbers); }
  /// The numbers as the kind has them.
  static Reals rounded(Reals numbers) {
    for (double& x : numbers) x = static_cast<typename Kind::element>(x);
    return numbers;
  }
  std::vector<Contents<double>> arrays(const std::string& name, const Value& operand) {
    std::vector<Contents<double>> found;
    for (const Value& value : table(name, {operand})) found.push_back(contents_of<Kind>(value));
    return found;
  }
  /// What a result may lack of a product of n terms of magnitude `size`.
  static double tolerance(std::size_t n, double size) {
    return 8 * static_cast<double>(n + 1) * rounding_of<Kind> * size;
  }
};
TYPED_TEST_SUITE(Factorisations, RealKinds, KindNames);

constexpr std::pair<std::size_t, std::size_t> sizes[] = {{1, 1}, {1, 4},  {4, 1},  {2, 3},  {3, 2},
                                                         {5, 5}, {17, 9}, {9, 17}, {40, 33}};

// ---- xcholesky

TYPED_TEST(Factorisations, XcholeskyGivesTheLowerFactor) {
  const auto factor = this->template array<TypeParam>("xcholesky", {this->of({2, 2}, {4, 2, 2, 5})});
  EXPECT_EQ(factor, (Contents<double>{{2, 2}, {2, 0, 1, 2}}));
  EXPECT_EQ(this->template array<TypeParam>("xcholesky", {this->of({1, 1}, {9})}), (Contents<double>{{1, 1}, {3}}));
}

TYPED_TEST(Factorisations, XcholeskyTimesItsTranspose_IsTheMatrix) {
  for (const std::size_t n : {1u, 2u, 3u, 8u, 33u, 100u}) {
    const Reals a = this->rounded(positive_definite(n, 5));
    const auto factor = this->template array<TypeParam>("xcholesky", {this->of({n, n}, a)});
    EXPECT_EQ(factor.extents, (Extents{n, n}));
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = i + 1; j < n; ++j) EXPECT_TRUE(same(factor.elements[i * n + j], 0.0));
    const Reals product = multiplied(factor.elements, transposed(factor.elements, n, n), n, n, n);
    EXPECT_LE(distance(product, a), this->tolerance(n, 4.0 * static_cast<double>(n))) << n;
  }
}

TYPED_TEST(Factorisations, XcholeskyReadsTheLowerTriangleAlone) {
  for (const std::size_t n : {2u, 3u, 20u, 70u}) {
    const Reals a = positive_definite(n, 6);
    EXPECT_EQ(this->template array<TypeParam>("xcholesky", {this->of({n, n}, with_nonsense_above(a, n))}),
              this->template array<TypeParam>("xcholesky", {this->of({n, n}, a)}));
  }
}

TYPED_TEST(Factorisations, XcholeskyOfNothing_IsNothing) {
  EXPECT_EQ(this->template array<TypeParam>("xcholesky", {this->of({0, 0}, {})}), (Contents<double>{{0, 0}, {}}));
}

// ---- xqr

TYPED_TEST(Factorisations, XqrIsTheReducedForm) {
  for (const auto& [rows, columns] : sizes) {
    const std::size_t k = std::min(rows, columns);
    const Reals a = this->rounded(random_reals(rows * columns, 7));
    const auto found = this->arrays("xqr", this->of({rows, columns}, a));
    ASSERT_EQ(found.size(), 2u);
    const auto &q = found[0], &r = found[1];
    EXPECT_EQ(q.extents, (Extents{rows, k}));
    EXPECT_EQ(r.extents, (Extents{k, columns}));
    EXPECT_LE(distance(multiplied(q.elements, r.elements, rows, k, columns), a), this->tolerance(k, 10)) << rows;
    EXPECT_LE(distance(multiplied(transposed(q.elements, rows, k), q.elements, k, rows, k), identity(k)),
              this->tolerance(rows, 1));
    for (std::size_t i = 0; i < k; ++i)
      for (std::size_t j = 0; j < std::min(i, columns); ++j) EXPECT_TRUE(same(r.elements[i * columns + j], 0.0));
  }
}

TYPED_TEST(Factorisations, XqrWithoutElements_KeepsItsShapes) {
  for (const auto& [rows, columns] : {std::pair<std::size_t, std::size_t>{0, 0}, {0, 3}, {3, 0}}) {
    const auto found = this->arrays("xqr", this->of({rows, columns}, {}));
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].extents, (Extents{rows, 0}));
    EXPECT_EQ(found[1].extents, (Extents{0, columns}));
  }
}

// ---- xsvd

TYPED_TEST(Factorisations, Required_XsvdGivesFullMatrices) {
  for (const auto& [rows, columns] : sizes) {
    const std::size_t k = std::min(rows, columns);
    const Reals a = this->rounded(random_reals(rows * columns, 8));
    const auto found = this->arrays("xsvd", this->of({rows, columns}, a));
    ASSERT_EQ(found.size(), 3u);
    const auto &u = found[0], &s = found[1], &vt = found[2];
    EXPECT_EQ(u.extents, (Extents{rows, rows}));
    EXPECT_EQ(s.extents, (Extents{k}));
    EXPECT_EQ(vt.extents, (Extents{columns, columns}));
    EXPECT_TRUE(std::is_sorted(s.elements.rbegin(), s.elements.rend()));
    EXPECT_GE(s.elements.back(), 0);
    Reals diagonal(rows * columns);
    for (std::size_t i = 0; i < k; ++i) diagonal[i * columns + i] = s.elements[i];
    const Reals us = multiplied(u.elements, diagonal, rows, rows, columns);
    EXPECT_LE(distance(multiplied(us, vt.elements, rows, columns, columns), a), this->tolerance(k, 12)) << rows;
    EXPECT_LE(distance(multiplied(transposed(u.elements, rows, rows), u.elements, rows, rows, rows), identity(rows)),
              this->tolerance(rows, 1));
    EXPECT_LE(distance(multiplied(vt.elements, transposed(vt.elements, columns, columns), columns, columns, columns),
                       identity(columns)),
              this->tolerance(columns, 1));
  }
}

TYPED_TEST(Factorisations, XsvdOfADiagonal_HasItsMagnitudes) {
  const auto found = this->arrays("xsvd", this->of({2, 2}, {3, 0, 0, -4}));
  EXPECT_LE(distance(found[1].elements, {4, 3}), 4 * rounding_of<TypeParam>);
}

TYPED_TEST(Factorisations, XsvdWithoutElements_HasIdentitiesAndNoValue) {
  for (const auto& [rows, columns] : {std::pair<std::size_t, std::size_t>{0, 0}, {0, 3}, {3, 0}}) {
    const auto found = this->arrays("xsvd", this->of({rows, columns}, {}));
    ASSERT_EQ(found.size(), 3u);
    EXPECT_EQ(found[0], (Contents<double>{{rows, rows}, identity(rows)}));
    EXPECT_EQ(found[1], (Contents<double>{{0}, {}}));
    EXPECT_EQ(found[2], (Contents<double>{{columns, columns}, identity(columns)}));
  }
}

TYPED_TEST(Factorisations, XsvdOfNaNOrInfinities_IsNaNThroughout) {
  for (const double bad : {not_a_number, infinity, -infinity})
    for (const auto& [rows, columns] : sizes)
      for (const std::size_t place : {std::size_t{0}, rows * columns - 1}) {
        Reals a = random_reals(rows * columns, 9);
        a[place] = bad;
        const auto found = this->arrays("xsvd", this->of({rows, columns}, a));
        ASSERT_EQ(found.size(), 3u);
        const auto nans = [](const Extents& extents) {
          return Contents<double>{extents, Reals(size_of(extents), not_a_number)};
        };
        EXPECT_EQ(found[0], nans({rows, rows}));
        EXPECT_EQ(found[1], nans({std::min(rows, columns)}));
        EXPECT_EQ(found[2], nans({columns, columns}));
      }
}

}  // namespace
}  // namespace arrayfold::test
