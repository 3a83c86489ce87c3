// linalg/solvers_test.cpp: xinv, xpinv, xsolve and xlstsq

#include <tuple>

#include "algebra.hpp"

namespace arrayfold::test {
namespace {

class Solvers : public OverKinds<AlgebraTest> {
 protected:
  Value of(const Extents& extents, const Doubles& numbers) { return made(kind(), extents, numbers); }
  Contents result(const std::string& name, const std::vector<Value>& args) { return doubles_of(kind(), name, args); }

  struct LeastSquares {
    Contents solution;
    Contents residuals;
    double rank;
    Contents singular_values;
  };
  LeastSquares least_squares(const Value& a, const Value& b) {
    const auto values = table("xlstsq", {a, b});
    EXPECT_EQ(values.size(), 4u);
    const auto rank = contents_of(values.at(2), kind());
    EXPECT_EQ(rank.extents, Extents{});
    return {contents_of(values[0], kind()), contents_of(values[1], kind()), rank.elements.at(0),
            contents_of(values.at(3), kind())};
  }
  LeastSquares least_squares(const Extents& a, const Doubles& matrix, const Extents& b, const Doubles& rhs) {
    return least_squares(of(a, matrix), of(b, rhs));
  }
};
INSTANTIATE_TEST_SUITE_P(Kinds, Solvers, ::testing::ValuesIn(floating_kinds), KindName());

/// Far from singular: random, with a strong diagonal.
Doubles regular(std::size_t n, unsigned seed) {
  Doubles a = random_doubles(n * n, seed);
  for (std::size_t i = 0; i < n; ++i) a[i * (n + 1)] += 3 * std::sqrt(static_cast<double>(n));
  return a;
}

// ---- xinv

TEST_P(Solvers, XinvOfTheIdentity_IsTheIdentity) {
  // But for the sign of zeros.
  const auto expect_inverse = [&](std::size_t n, const Doubles& matrix, const Doubles& inverse) {
    const auto found = result("xinv", {of({n, n}, matrix)});
    EXPECT_EQ(found.extents, (Extents{n, n}));
    EXPECT_EQ(found.elements, inverse);
  };
  for (const std::size_t n : {0u, 1u, 3u, 20u}) expect_inverse(n, identity(n), identity(n));
  expect_inverse(2, {2, 0, 0, 4}, {0.5, 0, 0, 0.25});
  expect_inverse(2, {1, 1, 0, 1}, {1, -1, 0, 1});
}

TEST_P(Solvers, XinvTimesTheMatrix_IsTheIdentity) {
  for (const std::size_t n : {1u, 2u, 5u, 16u, 33u, 100u}) {
    const Doubles a = rounded(kind(), regular(n, 31));
    const auto inverse = result("xinv", {of({n, n}, a)});
    EXPECT_EQ(inverse.extents, (Extents{n, n}));
    EXPECT_LE(distance(multiplied(inverse.elements, a, n, n, n), identity(n)),
              20 * static_cast<double>(n) * rounding_of(kind()))
        << n;
  }
}

// ---- xpinv

TEST_P(Solvers, XpinvHasTheTransposedShape_AndTheFourProperties) {
  for (const auto& [m, n] : {std::pair<std::size_t, std::size_t>{2, 3}, {3, 2}, {1, 1}, {1, 5}, {9, 4}, {20, 33}}) {
    const Doubles a = rounded(kind(), random_doubles(m * n, 32));
    const auto pseudo = result("xpinv", {of({m, n}, a)});
    EXPECT_EQ(pseudo.extents, (Extents{n, m}));
    const Doubles ap = multiplied(a, pseudo.elements, m, n, m), pa = multiplied(pseudo.elements, a, n, m, n);
    const double tolerance = 60 * static_cast<double>(m + n) * rounding_of(kind());
    EXPECT_LE(distance(multiplied(ap, a, m, m, n), a), tolerance * 3);
    EXPECT_LE(distance(multiplied(pa, pseudo.elements, n, n, m), pseudo.elements), tolerance * 3);
    EXPECT_LE(distance(ap, transposed(ap, m, m)), tolerance);
    EXPECT_LE(distance(pa, transposed(pa, n, n)), tolerance);
  }
}

TEST_P(Solvers, XpinvOfZeros_IsZeroInTheTransposedShape) {
  const auto found = result("xpinv", {of({2, 3}, Doubles(6, 0))});
  EXPECT_EQ(found.extents, (Extents{3, 2}));
  EXPECT_EQ(distance(found.elements, Doubles(6, 0)), 0);
}

TEST_P(Solvers, XpinvOfNothing_IsNothing) {
  EXPECT_EQ(result("xpinv", {of({0, 3}, {})}), (Contents{{3, 0}, {}}));
  EXPECT_EQ(result("xpinv", {of({3, 0}, {})}), (Contents{{0, 3}, {}}));
  EXPECT_EQ(result("xpinv", {of({0, 0}, {})}), (Contents{{0, 0}, {}}));
}

TEST_P(Solvers, XpinvOfNaNOrInfinities_IsNaNThroughout) {
  for (const double bad : {not_a_number, infinity, -infinity})
    for (const std::size_t place : {0u, 5u, 11u}) {
      Doubles a = random_doubles(12, 33);
      a[place] = bad;
      EXPECT_EQ(result("xpinv", {of({4, 3}, a)}), (Contents{{3, 4}, Doubles(12, not_a_number)}));
    }
}

TEST_P(Solvers, XpinvCutsSingularValuesOff_At1e15thOfTheLargest) {
  const double below = 0.5e-15, above = 2e-15;
  const auto cut = result("xpinv", {of({2, 2}, {1, 0, 0, below})});
  const auto kept = result("xpinv", {of({2, 2}, {1, 0, 0, above})});
  EXPECT_EQ(cut.elements[3], 0);
  EXPECT_NEAR(kept.elements[3], 1 / above, 10 * rounding_of(kind()) / above);
}

// ---- xsolve

TEST_P(Solvers, XsolveKeepsTheDimensionsOfTheRightHandSides) {
  const Value a = of({2, 2}, {2, 0, 0, 4});
  EXPECT_EQ(result("xsolve", {a, of({2}, {2, 8})}), (Contents{{2}, {1, 2}}));
  EXPECT_EQ(result("xsolve", {a, of({2, 1}, {2, 8})}), (Contents{{2, 1}, {1, 2}}));
  EXPECT_EQ(result("xsolve", {a, of({2, 3}, {2, 4, 6, 8, 12, 16})}), (Contents{{2, 3}, {1, 2, 3, 2, 3, 4}}));
  EXPECT_EQ(result("xsolve", {a, of({2, 0}, {})}), (Contents{{2, 0}, {}}));
  EXPECT_EQ(result("xsolve", {of({1, 1}, {2}), of({1}, {6})}), (Contents{{1}, {3}}));
}

TEST_P(Solvers, XsolveTimesTheMatrix_GivesTheRightHandSides) {
  for (const std::size_t n : {1u, 2u, 5u, 16u, 33u, 100u})
    for (const std::size_t rhs : {1u, 3u, 40u}) {
      const Doubles a = rounded(kind(), regular(n, 34)), b = rounded(kind(), random_doubles(n * rhs, 35));
      const auto solved = result("xsolve", {of({n, n}, a), of({n, rhs}, b)});
      EXPECT_EQ(solved.extents, (Extents{n, rhs}));
      EXPECT_LE(distance(multiplied(a, solved.elements, n, n, rhs), b),
                30 * static_cast<double>(n) * rounding_of(kind()))
          << n << ' ' << rhs;
    }
}

TEST_P(Solvers, RightHandSidesLongerThanTheMatrix_KeepTheirRest) {
  const Value a = of({2, 2}, {2, 0, 0, 4});
  EXPECT_EQ(result("xsolve", {a, of({4}, {2, 8, 5, 6})}), (Contents{{4}, {1, 2, 5, 6}}));
  EXPECT_EQ(result("xsolve", {a, of({3, 2}, {2, 4, 8, 16, 5, 6})}), (Contents{{3, 2}, {1, 2, 2, 4, 5, 6}}));
  EXPECT_EQ(result("xsolve", {of({0, 0}, {}), of({2}, {5, 6})}), (Contents{{2}, {5, 6}}));
  EXPECT_EQ(result("xsolve", {of({0, 0}, {}), of({0, 3}, {})}), (Contents{{0, 3}, {}}));
  EXPECT_EQ(result("xsolve", {of({0, 0}, {}), of({0}, {})}), (Contents{{0}, {}}));
}

TEST_P(Solvers, RightHandSidesOfThreeDimensions_AreColumnsOfTheirLast) {
  // The number of right-hand sides is the last extent; what lies before it, by columns, is one of them.
  const Value a = of({2, 2}, {2, 0, 0, 4});
  EXPECT_EQ(result("xsolve", {a, of({2, 1, 2}, {2, 4, 8, 16})}), (Contents{{2, 1, 2}, {1, 2, 2, 4}}));
  EXPECT_EQ(result("xsolve", {a, of({2, 2, 1}, {2, 20, 8, 80})}), (Contents{{2, 2, 1}, {1, 20, 2, 80}}));
}

// ---- xlstsq

TEST_P(Solvers, XlstsqOfMoreRowsThanColumns_HasResiduals) {
  // The line through (0, 1), (1, 3), (2, 4): 7/6 + 3/2 x, whose squares add up to 1/6.
  const auto found = least_squares({3, 2}, {1, 0, 1, 1, 1, 2}, {3}, {1, 3, 4});
  EXPECT_EQ(found.solution.extents, Extents{2});
  EXPECT_LE(distance(found.solution.elements, {7.0 / 6, 1.5}), 20 * rounding_of(kind()));
  EXPECT_EQ(found.residuals.extents, Extents{1});
  EXPECT_NEAR(found.residuals.elements[0], 1.0 / 6, 40 * rounding_of(kind()));
  EXPECT_EQ(found.rank, 2);
  EXPECT_EQ(found.singular_values.extents, Extents{2});
  EXPECT_LE(distance(found.singular_values.elements, {2.6762432933, 0.9152723646}), 1e-6);
}

TEST_P(Solvers, XlstsqOfSeveralRightHandSides_SolvesEach) {
  const auto found = least_squares({3, 2}, {1, 0, 1, 1, 1, 2}, {3, 2}, {1, 2, 3, 4, 4, 6});
  EXPECT_EQ(found.solution.extents, (Extents{2, 2}));
  EXPECT_LE(distance(found.solution.elements, {7.0 / 6, 2, 1.5, 2}), 30 * rounding_of(kind()));
  EXPECT_EQ(found.residuals.extents, Extents{2});
  EXPECT_LE(distance(found.residuals.elements, {1.0 / 6, 0}), 40 * rounding_of(kind()));
}

TEST_P(Solvers, XlstsqShapes_FollowTheOperands) {
  const std::tuple<Extents, Extents, Extents> shapes[] = {
      {{3, 2}, {3}, {2}},       {{3, 2}, {3, 1}, {2, 1}}, {{3, 2}, {3, 4}, {2, 4}}, {{2, 3}, {2}, {3}},
      {{2, 3}, {2, 1}, {3, 1}}, {{1, 1}, {1}, {1}},       {{1, 1}, {1, 1}, {1, 1}}, {{4, 1}, {4}, {1}},
      {{4, 1}, {4, 2}, {1, 2}}, {{1, 4}, {1}, {4}},       {{1, 4}, {1, 1}, {4, 1}}};
  for (const auto& [a, b, solution] : shapes) {
    const auto found = least_squares(a, random_doubles(size_of(a), 41), b, random_doubles(size_of(b), 42));
    EXPECT_EQ(found.solution.extents, solution);
    EXPECT_EQ(found.singular_values.extents, Extents{std::min(a[0], a[1])});
    EXPECT_EQ(found.rank, static_cast<double>(std::min(a[0], a[1])));
    EXPECT_EQ(found.residuals.extents, a[0] > a[1] ? Extents{b.size() == 1 ? 1 : b[1]} : Extents{0});
  }
}

TEST_P(Solvers, XlstsqWithoutFullRankOrMoreRows_HasNoResiduals) {
  EXPECT_EQ(least_squares({2, 3}, {1, 0, 0, 0, 1, 0}, {2}, {1, 2}).residuals.extents, Extents{0});
  EXPECT_EQ(least_squares({2, 2}, {1, 0, 0, 1}, {2}, {1, 2}).residuals.extents, Extents{0});
  const auto deficient = least_squares({3, 2}, {1, 2, 2, 4, 3, 6}, {3}, {1, 2, 4});
  EXPECT_EQ(deficient.residuals.extents, Extents{0});
  EXPECT_EQ(deficient.rank, 1);
}

TEST_P(Solvers, XlstsqOfTooFewRows_IsTheShortestSolution) {
  const auto found = least_squares({1, 2}, {3, 4}, {1}, {25});
  EXPECT_LE(distance(found.solution.elements, {3, 4}), 20 * rounding_of(kind()));
}

TEST_P(Solvers, XlstsqLeavesARestThatIsOrthogonal) {
  for (const auto& [m, n] : {std::pair<std::size_t, std::size_t>{5, 3}, {33, 17}, {100, 40}}) {
    const Doubles a = rounded(kind(), random_doubles(m * n, 43)), b = rounded(kind(), random_doubles(m, 44));
    const auto found = least_squares({m, n}, a, {m}, b);
    Doubles rest = multiplied(a, found.solution.elements, m, n, 1);
    double squares = 0;
    for (std::size_t i = 0; i < m; ++i) rest[i] -= b[i], squares += rest[i] * rest[i];
    EXPECT_LE(distance(multiplied(transposed(a, m, n), rest, n, m, 1), Doubles(n, 0)),
              20 * static_cast<double>(m) * rounding_of(kind()));
    EXPECT_NEAR(found.residuals.elements.at(0), squares, 100 * rounding_of(kind()) * squares);
  }
}

TEST_P(Solvers, XlstsqWithoutElements_IsZeroOfRankZero) {
  const std::tuple<Extents, Extents, Extents, std::size_t> shapes[] = {
      {{0, 3}, {0}, {3}, 0},       {{3, 0}, {3}, {0}, 0},       {{0, 0}, {0}, {0}, 0},      {{0, 3}, {0, 2}, {3, 2}, 0},
      {{3, 2}, {3, 0}, {2, 0}, 2}, {{3, 0}, {3, 2}, {0, 2}, 0}, {{0, 3}, {0, 0}, {3, 0}, 0}};
  for (const auto& [a, b, solution, values] : shapes) {
    const auto found = least_squares(a, Doubles(size_of(a), 1), b, Doubles(size_of(b), 1));
    EXPECT_EQ(found.solution, (Contents{solution, Doubles(size_of(solution))}));
    EXPECT_EQ(found.residuals, (Contents{{0}, {}}));
    EXPECT_EQ(found.rank, 0);
    EXPECT_EQ(found.singular_values, (Contents{{values}, Doubles(values)}));
  }
}

TEST_P(Solvers, XlstsqOfNaNOrInfinitiesInTheFirst_IsNaNOfRankZero) {
  for (const double bad : {not_a_number, infinity, -infinity}) {
    Doubles a = random_doubles(12, 45);
    a[7] = bad;
    const auto found = least_squares({4, 3}, a, {4, 2}, Doubles(8, 1));
    EXPECT_EQ(found.solution, (Contents{{3, 2}, Doubles(6, not_a_number)}));
    EXPECT_EQ(found.residuals, (Contents{{0}, {}}));
    EXPECT_EQ(found.rank, 0);
    EXPECT_EQ(found.singular_values, (Contents{{3}, Doubles(3, not_a_number)}));
  }
}

class MixedLeastSquares : public AlgebraTest {};

TEST_F(MixedLeastSquares, Required_TheFirstOperandDecidesThePrecision) {
  const Doubles matrix = random_doubles(20, 46), rhs = random_doubles(5, 47);
  const Value a = doubles({5, 4}, matrix), b = doubles({5}, rhs);
  const Value float_a = made(Kind::float32, {5, 4}, matrix), float_b = made(Kind::float32, {5}, rhs);
  const auto compare = [&](const std::vector<Value>& mixed, const std::vector<Value>& plain, Kind kind) {
    for (std::size_t key = 0; key < 4; ++key)
      EXPECT_EQ(contents_of(mixed.at(key), kind), contents_of(plain.at(key), kind)) << key;
  };
  compare(table("xlstsq", {float_a, b}), table("xlstsq", {float_a, float_b}), Kind::float32);
  compare(table("xlstsq", {a, float_b}), table("xlstsq", {a, doubles({5}, rounded(Kind::float32, rhs))}),
          Kind::float64);
}

}  // namespace
}  // namespace arrayfold::test
