// linalg/solvers_test.cpp: xinv, xpinv, xsolve and xlstsq

#include <tuple>

#include "algebra.hpp"

namespace arrayfold::test {
namespace {

template <class Kind>
class Solvers : public AlgebraTest {
 protected:
  Value of(const Extents& extents, const Reals& numbers) { return made_of<Kind>(extents, numbers); }
  static Reals rounded(Reals numbers) {
    for (double& x : numbers) x = static_cast<typename Kind::element>(x);
    return numbers;
  }
  Contents<double> result(const std::string& name, const std::vector<Value>& args) { return array<Kind>(name, args); }

  struct LeastSquares {
    Contents<double> solution;
    Contents<double> residuals;
    double rank;
    Contents<double> singular_values;
  };
  LeastSquares least_squares(const Value& a, const Value& b) {
    const auto values = table("xlstsq", {a, b});
    EXPECT_EQ(values.size(), 4u);
    const auto rank = contents_of<Kind>(values.at(2));
    EXPECT_EQ(rank.extents, Extents{});
    return {contents_of<Kind>(values[0]), contents_of<Kind>(values[1]), rank.elements.at(0),
            contents_of<Kind>(values.at(3))};
  }
  LeastSquares least_squares(const Extents& a, const Reals& matrix, const Extents& b, const Reals& sides) {
    return least_squares(of(a, matrix), of(b, sides));
  }
};
TYPED_TEST_SUITE(Solvers, RealKinds, KindNames);

/// Far from singular: random, with a strong diagonal.
Reals regular(std::size_t n, unsigned seed) {
  Reals a = random_reals(n * n, seed);
  for (std::size_t i = 0; i < n; ++i) a[i * (n + 1)] += 3 * std::sqrt(static_cast<double>(n));
  return a;
}

// ---- xinv

TYPED_TEST(Solvers, XinvOfTheIdentity_IsTheIdentity) {
  // But for the sign of zeros.
  const auto expect_inverse = [&](std::size_t n, const Reals& matrix, const Reals& inverse) {
    const auto found = this->result("xinv", {this->of({n, n}, matrix)});
    EXPECT_EQ(found.extents, (Extents{n, n}));
    EXPECT_EQ(found.elements, inverse);
  };
  for (const std::size_t n : {0u, 1u, 3u, 20u}) expect_inverse(n, identity(n), identity(n));
  expect_inverse(2, {2, 0, 0, 4}, {0.5, 0, 0, 0.25});
  expect_inverse(2, {1, 1, 0, 1}, {1, -1, 0, 1});
}

TYPED_TEST(Solvers, XinvTimesTheMatrix_IsTheIdentity) {
  for (const std::size_t n : {1u, 2u, 5u, 16u, 33u, 100u}) {
    const Reals a = this->rounded(regular(n, 31));
    const auto inverse = this->result("xinv", {this->of({n, n}, a)});
    EXPECT_EQ(inverse.extents, (Extents{n, n}));
    EXPECT_LE(distance(multiplied(inverse.elements, a, n, n, n), identity(n)),
              20 * static_cast<double>(n) * rounding_of<TypeParam>)
        << n;
  }
}

// ---- xpinv

TYPED_TEST(Solvers, XpinvHasTheTransposedShape_AndTheFourProperties) {
  for (const auto& [m, n] : {std::pair<std::size_t, std::size_t>{2, 3}, {3, 2}, {1, 1}, {1, 5}, {9, 4}, {20, 33}}) {
    const Reals a = this->rounded(random_reals(m * n, 32));
    const auto pseudo = this->result("xpinv", {this->of({m, n}, a)});
    EXPECT_EQ(pseudo.extents, (Extents{n, m}));
    const Reals ap = multiplied(a, pseudo.elements, m, n, m), pa = multiplied(pseudo.elements, a, n, m, n);
    const double tolerance = 60 * static_cast<double>(m + n) * rounding_of<TypeParam>;
    EXPECT_LE(distance(multiplied(ap, a, m, m, n), a), tolerance * 3);
    EXPECT_LE(distance(multiplied(pa, pseudo.elements, n, n, m), pseudo.elements), tolerance * 3);
    EXPECT_LE(distance(ap, transposed(ap, m, m)), tolerance);
    EXPECT_LE(distance(pa, transposed(pa, n, n)), tolerance);
  }
}

TYPED_TEST(Solvers, XpinvOfZeros_IsZeroInTheTransposedShape) {
  const auto found = this->result("xpinv", {this->of({2, 3}, Reals(6, 0))});
  EXPECT_EQ(found.extents, (Extents{3, 2}));
  EXPECT_EQ(distance(found.elements, Reals(6, 0)), 0);
}

TYPED_TEST(Solvers, XpinvOfNothing_IsNothing) {
  EXPECT_EQ(this->result("xpinv", {this->of({0, 3}, {})}), (Contents<double>{{3, 0}, {}}));
  EXPECT_EQ(this->result("xpinv", {this->of({3, 0}, {})}), (Contents<double>{{0, 3}, {}}));
  EXPECT_EQ(this->result("xpinv", {this->of({0, 0}, {})}), (Contents<double>{{0, 0}, {}}));
}

TYPED_TEST(Solvers, XpinvOfNaNOrInfinities_IsNaNThroughout) {
  for (const double bad : {not_a_number, infinity, -infinity})
    for (const std::size_t place : {0u, 5u, 11u}) {
      Reals a = random_reals(12, 33);
      a[place] = bad;
      EXPECT_EQ(this->result("xpinv", {this->of({4, 3}, a)}), (Contents<double>{{3, 4}, Reals(12, not_a_number)}));
    }
}

TYPED_TEST(Solvers, XpinvCutsSingularValuesOff_At1e15thOfTheLargest) {
  const double below = 0.5e-15, above = 2e-15;
  const auto cut = this->result("xpinv", {this->of({2, 2}, {1, 0, 0, below})});
  const auto kept = this->result("xpinv", {this->of({2, 2}, {1, 0, 0, above})});
  EXPECT_EQ(cut.elements[3], 0);
  EXPECT_NEAR(kept.elements[3], 1 / above, 10 * rounding_of<TypeParam> / above);
}

// ---- xsolve

TYPED_TEST(Solvers, XsolveKeepsTheDimensionsOfTheSides) {
  const Value a = this->of({2, 2}, {2, 0, 0, 4});
  EXPECT_EQ(this->result("xsolve", {a, this->of({2}, {2, 8})}), (Contents<double>{{2}, {1, 2}}));
  EXPECT_EQ(this->result("xsolve", {a, this->of({2, 1}, {2, 8})}), (Contents<double>{{2, 1}, {1, 2}}));
  EXPECT_EQ(this->result("xsolve", {a, this->of({2, 3}, {2, 4, 6, 8, 12, 16})}),
            (Contents<double>{{2, 3}, {1, 2, 3, 2, 3, 4}}));
  EXPECT_EQ(this->result("xsolve", {a, this->of({2, 0}, {})}), (Contents<double>{{2, 0}, {}}));
  EXPECT_EQ(this->result("xsolve", {this->of({1, 1}, {2}), this->of({1}, {6})}), (Contents<double>{{1}, {3}}));
}

TYPED_TEST(Solvers, XsolveTimesTheMatrix_GivesTheSides) {
  for (const std::size_t n : {1u, 2u, 5u, 16u, 33u, 100u})
    for (const std::size_t sides : {1u, 3u, 40u}) {
      const Reals a = this->rounded(regular(n, 34)), b = this->rounded(random_reals(n * sides, 35));
      const auto solved = this->result("xsolve", {this->of({n, n}, a), this->of({n, sides}, b)});
      EXPECT_EQ(solved.extents, (Extents{n, sides}));
      EXPECT_LE(distance(multiplied(a, solved.elements, n, n, sides), b),
                30 * static_cast<double>(n) * rounding_of<TypeParam>)
          << n << ' ' << sides;
    }
}

TYPED_TEST(Solvers, SidesLongerThanTheMatrix_KeepTheirRest) {
  const Value a = this->of({2, 2}, {2, 0, 0, 4});
  EXPECT_EQ(this->result("xsolve", {a, this->of({4}, {2, 8, 5, 6})}), (Contents<double>{{4}, {1, 2, 5, 6}}));
  EXPECT_EQ(this->result("xsolve", {a, this->of({3, 2}, {2, 4, 8, 16, 5, 6})}),
            (Contents<double>{{3, 2}, {1, 2, 2, 4, 5, 6}}));
  EXPECT_EQ(this->result("xsolve", {this->of({0, 0}, {}), this->of({2}, {5, 6})}), (Contents<double>{{2}, {5, 6}}));
  EXPECT_EQ(this->result("xsolve", {this->of({0, 0}, {}), this->of({0, 3}, {})}), (Contents<double>{{0, 3}, {}}));
  EXPECT_EQ(this->result("xsolve", {this->of({0, 0}, {}), this->of({0}, {})}), (Contents<double>{{0}, {}}));
}

TYPED_TEST(Solvers, SidesOfThreeDimensions_AreColumnsOfTheirLast) {
  // The number of sides is the last extent; what lies before it, by columns, is one side.
  const Value a = this->of({2, 2}, {2, 0, 0, 4});
  EXPECT_EQ(this->result("xsolve", {a, this->of({2, 1, 2}, {2, 4, 8, 16})}),
            (Contents<double>{{2, 1, 2}, {1, 2, 2, 4}}));
  EXPECT_EQ(this->result("xsolve", {a, this->of({2, 2, 1}, {2, 20, 8, 80})}),
            (Contents<double>{{2, 2, 1}, {1, 20, 2, 80}}));
}

// ---- xlstsq

TYPED_TEST(Solvers, XlstsqOfMoreRowsThanColumns_HasResiduals) {
  // The line through (0, 1), (1, 3), (2, 4): 7/6 + 3/2 x, whose squares add up to 1/6.
  const auto found = this->least_squares({3, 2}, {1, 0, 1, 1, 1, 2}, {3}, {1, 3, 4});
  EXPECT_EQ(found.solution.extents, Extents{2});
  EXPECT_LE(distance(found.solution.elements, {7.0 / 6, 1.5}), 20 * rounding_of<TypeParam>);
  EXPECT_EQ(found.residuals.extents, Extents{1});
  EXPECT_NEAR(found.residuals.elements[0], 1.0 / 6, 40 * rounding_of<TypeParam>);
  EXPECT_EQ(found.rank, 2);
  EXPECT_EQ(found.singular_values.extents, Extents{2});
  EXPECT_LE(distance(found.singular_values.elements, {2.6762432933, 0.9152723646}), 1e-6);
}

TYPED_TEST(Solvers, XlstsqOfSeveralSides_SolvesEach) {
  const auto found = this->least_squares({3, 2}, {1, 0, 1, 1, 1, 2}, {3, 2}, {1, 2, 3, 4, 4, 6});
  EXPECT_EQ(found.solution.extents, (Extents{2, 2}));
  EXPECT_LE(distance(found.solution.elements, {7.0 / 6, 2, 1.5, 2}), 30 * rounding_of<TypeParam>);
  EXPECT_EQ(found.residuals.extents, Extents{2});
  EXPECT_LE(distance(found.residuals.elements, {1.0 / 6, 0}), 40 * rounding_of<TypeParam>);
}

TYPED_TEST(Solvers, XlstsqShapes_FollowTheOperands) {
  const std::tuple<Extents, Extents, Extents> shapes[] = {
      {{3, 2}, {3}, {2}},       {{3, 2}, {3, 1}, {2, 1}}, {{3, 2}, {3, 4}, {2, 4}}, {{2, 3}, {2}, {3}},
      {{2, 3}, {2, 1}, {3, 1}}, {{1, 1}, {1}, {1}},       {{1, 1}, {1, 1}, {1, 1}}, {{4, 1}, {4}, {1}},
      {{4, 1}, {4, 2}, {1, 2}}, {{1, 4}, {1}, {4}},       {{1, 4}, {1, 1}, {4, 1}}};
  for (const auto& [a, b, solution] : shapes) {
    const auto found = this->least_squares(a, random_reals(size_of(a), 41), b, random_reals(size_of(b), 42));
    EXPECT_EQ(found.solution.extents, solution);
    EXPECT_EQ(found.singular_values.extents, Extents{std::min(a[0], a[1])});
    EXPECT_EQ(found.rank, static_cast<double>(std::min(a[0], a[1])));
    EXPECT_EQ(found.residuals.extents, a[0] > a[1] ? Extents{b.size() == 1 ? 1 : b[1]} : Extents{0});
  }
}

TYPED_TEST(Solvers, XlstsqWithoutFullRankOrMoreRows_HasNoResiduals) {
  EXPECT_EQ(this->least_squares({2, 3}, {1, 0, 0, 0, 1, 0}, {2}, {1, 2}).residuals.extents, Extents{0});
  EXPECT_EQ(this->least_squares({2, 2}, {1, 0, 0, 1}, {2}, {1, 2}).residuals.extents, Extents{0});
  const auto deficient = this->least_squares({3, 2}, {1, 2, 2, 4, 3, 6}, {3}, {1, 2, 4});
  EXPECT_EQ(deficient.residuals.extents, Extents{0});
  EXPECT_EQ(deficient.rank, 1);
}

TYPED_TEST(Solvers, XlstsqOfTooFewRows_IsTheShortestSolution) {
  const auto found = this->least_squares({1, 2}, {3, 4}, {1}, {25});
  EXPECT_LE(distance(found.solution.elements, {3, 4}), 20 * rounding_of<TypeParam>);
}

TYPED_TEST(Solvers, XlstsqLeavesARestThatIsOrthogonal) {
  for (const auto& [m, n] : {std::pair<std::size_t, std::size_t>{5, 3}, {33, 17}, {100, 40}}) {
    const Reals a = this->rounded(random_reals(m * n, 43)), b = this->rounded(random_reals(m, 44));
    const auto found = this->least_squares({m, n}, a, {m}, b);
    Reals rest = multiplied(a, found.solution.elements, m, n, 1);
    double squares = 0;
    for (std::size_t i = 0; i < m; ++i) rest[i] -= b[i], squares += rest[i] * rest[i];
    EXPECT_LE(distance(multiplied(transposed(a, m, n), rest, n, m, 1), Reals(n, 0)),
              20 * static_cast<double>(m) * rounding_of<TypeParam>);
    EXPECT_NEAR(found.residuals.elements.at(0), squares, 100 * rounding_of<TypeParam> * squares);
  }
}

TYPED_TEST(Solvers, XlstsqWithoutElements_IsZeroOfRankZero) {
  const std::tuple<Extents, Extents, Extents, std::size_t> shapes[] = {
      {{0, 3}, {0}, {3}, 0},       {{3, 0}, {3}, {0}, 0},       {{0, 0}, {0}, {0}, 0},      {{0, 3}, {0, 2}, {3, 2}, 0},
      {{3, 2}, {3, 0}, {2, 0}, 2}, {{3, 0}, {3, 2}, {0, 2}, 0}, {{0, 3}, {0, 0}, {3, 0}, 0}};
  for (const auto& [a, b, solution, values] : shapes) {
    const auto found = this->least_squares(a, Reals(size_of(a), 1), b, Reals(size_of(b), 1));
    EXPECT_EQ(found.solution, (Contents<double>{solution, Reals(size_of(solution))}));
    EXPECT_EQ(found.residuals, (Contents<double>{{0}, {}}));
    EXPECT_EQ(found.rank, 0);
    EXPECT_EQ(found.singular_values, (Contents<double>{{values}, Reals(values)}));
  }
}

TYPED_TEST(Solvers, XlstsqOfNaNOrInfinitiesInTheFirst_IsNaNOfRankZero) {
  for (const double bad : {not_a_number, infinity, -infinity}) {
    Reals a = random_reals(12, 45);
    a[7] = bad;
    const auto found = this->least_squares({4, 3}, a, {4, 2}, Reals(8, 1));
    EXPECT_EQ(found.solution, (Contents<double>{{3, 2}, Reals(6, not_a_number)}));
    EXPECT_EQ(found.residuals, (Contents<double>{{0}, {}}));
    EXPECT_EQ(found.rank, 0);
    EXPECT_EQ(found.singular_values, (Contents<double>{{3}, Reals(3, not_a_number)}));
  }
}

class MixedLeastSquares : public AlgebraTest {};

TEST_F(MixedLeastSquares, Required_TheFirstOperandDecidesThePrecision) {
  const Reals matrix = random_reals(20, 46), sides = random_reals(5, 47);
  const Value a = doubles({5, 4}, matrix), b = doubles({5}, sides);
  const Value float_a = made_of<XTFloat>({5, 4}, matrix), float_b = made_of<XTFloat>({5}, sides);
  Reals rounded = sides;
  for (double& x : rounded) x = static_cast<float>(x);
  const auto compare = [&](const std::vector<Value>& mixed, const std::vector<Value>& plain, auto kind) {
    using Kind = decltype(kind);
    for (std::size_t key = 0; key < 4; ++key)
      EXPECT_EQ(contents_of<Kind>(mixed.at(key)), contents_of<Kind>(plain.at(key))) << key;
  };
  compare(table("xlstsq", {float_a, b}), table("xlstsq", {float_a, float_b}), XTFloat{});
  compare(table("xlstsq", {a, float_b}), table("xlstsq", {a, doubles({5}, rounded)}), XTDouble{});
}

}  // namespace
}  // namespace arrayfold::test
