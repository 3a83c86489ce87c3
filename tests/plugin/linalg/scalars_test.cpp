// linalg/scalars_test.cpp: xnorm, xdet, xmatrix_rank, xslogdet and xtrace

#include "algebra.hpp"

namespace arrayfold::test {
namespace {

class Scalars : public OverKinds<AlgebraTest> {
 protected:
  Value of(const Extents& extents, const Doubles& numbers) { return made(kind(), extents, numbers); }
  double number(const std::string& name, const Extents& extents, const Doubles& numbers) {
    return scalar(kind(), name, {of(extents, numbers)}).real;
  }

  struct LogDeterminant {
    double sign;
    double logarithm;
  };
  LogDeterminant log_determinant(const Extents& extents, const Doubles& numbers) {
    const auto values = table("xslogdet", {of(extents, numbers)});
    EXPECT_EQ(values.size(), 2u);
    for (const Value& value : values) EXPECT_EQ(value.tag(), Value(0.5).tag());
    return {load<double>(values.at(0).record().payload), load<double>(values.at(1).record().payload)};
  }
};
INSTANTIATE_TEST_SUITE_P(Kinds, Scalars, ::testing::ValuesIn(floating_kinds), KindName());

// ---- xnorm

TEST_P(Scalars, XnormOfVectorsAndMatrices_IsTheEuclideanNorm) {
  EXPECT_EQ(number("xnorm", {2}, {3, 4}), 5);
  EXPECT_EQ(number("xnorm", {2, 2}, {3, 0, 0, 4}), 5);
  EXPECT_EQ(number("xnorm", {2, 2}, {1, 1, 1, 1}), 2);
  EXPECT_EQ(number("xnorm", {1}, {-3}), 3);
  EXPECT_EQ(number("xnorm", {1, 1}, {-3}), 3);
  EXPECT_EQ(number("xnorm", {3, 1}, {2, -1, 2}), 3);
  EXPECT_EQ(number("xnorm", {1, 3}, {2, -1, 2}), 3);
}

TEST_P(Scalars, XnormWithoutElements_IsZero) {
  for (const Extents& extents : {Extents{0}, {0, 3}, {3, 0}, {0, 0}}) EXPECT_EQ(number("xnorm", extents, {}), 0);
}

TEST_P(Scalars, XnormOfAMatrix_IsTheRootOfTheSumOfSquares) {
  for (const std::size_t n : {1u, 2u, 7u, 33u, 64u, 200u}) {
    const Doubles a = random_doubles(n * (n + 1), 21);
    long double squares = 0;
    for (const double x : rounded(kind(), a)) squares += static_cast<long double>(x) * x;
    const auto exact = static_cast<double>(std::sqrt(squares));
    // A square goes through an addition for each place in its row and for each row; the root halves the error.
    const double additions = static_cast<double>(2 * n + 1) * rounding_of(Kind::float64) / 4;
    EXPECT_NEAR(number("xnorm", {n, n + 1}, a), exact, (additions + rounding_of(kind())) * exact) << n;
  }
}

TEST_P(Scalars, XnormOfNaNAndInfinities_IsNaNOrInfinite) {
  for (const Extents& extents : {Extents{4}, {2, 2}}) {
    EXPECT_TRUE(std::isnan(number("xnorm", extents, {1, not_a_number, 2, 3})));
    EXPECT_EQ(number("xnorm", extents, {1, -infinity, 2, 3}), infinity);
  }
}

class XnormOfDoubles : public AlgebraTest {
 protected:
  double norm(const Extents& extents, const Doubles& numbers) {
    return scalar(Kind::float64, "xnorm", {doubles(extents, numbers)}).real;
  }
};

TEST_F(XnormOfDoubles, AVectorIsScaled_AMatrixIsNot) {
  EXPECT_NEAR(norm({2}, {3e300, 4e300}), 5e300, 1e286);
  EXPECT_EQ(norm({1, 2}, {3e300, 4e300}), infinity);
  EXPECT_NEAR(norm({2}, {3e-300, 4e-300}), 5e-300, 1e-314);
  EXPECT_EQ(norm({2, 1}, {3e-300, 4e-300}), 0);
}

// ---- xdet and xslogdet

TEST_P(Scalars, XdetOfSmallMatrices_IsExact) {
  EXPECT_NEAR(number("xdet", {2, 2}, {1, 2, 3, 4}), -2, 4 * rounding_of(kind()));
  EXPECT_EQ(number("xdet", {2, 2}, {0, 1, 1, 0}), -1);
  EXPECT_EQ(number("xdet", {3, 3}, {0, 1, 0, 0, 0, 1, 1, 0, 0}), 1);  // two exchanges
  EXPECT_EQ(number("xdet", {1, 1}, {-7}), -7);
  EXPECT_EQ(number("xdet", {0, 0}, {}), 1);
  EXPECT_EQ(number("xdet", {3, 3}, {2, 0, 0, 0, 3, 0, 0, 0, -4}), -24);
}

TEST_P(Scalars, Required_XdetOfASingularMatrix_IsZero) {
  EXPECT_EQ(number("xdet", {2, 2}, {1, 2, 2, 4}), 0);
  EXPECT_EQ(number("xdet", {3, 3}, Doubles(9, 0)), 0);
  EXPECT_EQ(number("xdet", {2, 2}, {0, 0, 1, 1}), 0);
}

TEST_P(Scalars, Required_XslogdetOfASingularMatrix_IsZeroAndMinusInfinity) {
  for (const Doubles& elements : {Doubles{1, 2, 2, 4}, {0, 0, 0, 0}, {0, 0, 1, 1}}) {
    const auto found = log_determinant({2, 2}, elements);
    EXPECT_TRUE(same(found.sign, 0.0));
    EXPECT_EQ(found.logarithm, -infinity);
  }
}

TEST_P(Scalars, XslogdetOfSmallMatrices_IsSignAndLogarithm) {
  const auto exchanged = log_determinant({2, 2}, {0, 1, 1, 0});
  EXPECT_EQ(exchanged.sign, -1);
  EXPECT_TRUE(same(exchanged.logarithm, 0.0));
  const auto nothing = log_determinant({0, 0}, {});
  EXPECT_EQ(nothing.sign, 1);
  EXPECT_EQ(nothing.logarithm, 0);
  const auto negative = log_determinant({2, 2}, {-2, 0, 0, 3});
  EXPECT_EQ(negative.sign, -1);
  EXPECT_NEAR(negative.logarithm, std::log(6.0), 4 * rounding_of(kind()));
  EXPECT_EQ(log_determinant({2, 2}, {-2, 0, 0, -3}).sign, 1);
  EXPECT_EQ(log_determinant({3, 3}, {0, 1, 0, 0, 0, 1, 1, 0, 0}).sign, 1);
}

TEST_P(Scalars, XdetAndXslogdet_AgreeAboutRandomMatrices) {
  int negative = 0;
  for (unsigned seed = 0; seed < 40; ++seed) {
    const std::size_t n = 1 + seed % 9;
    const Doubles a = random_doubles(n * n, seed);
    const double det = number("xdet", {n, n}, a);
    const auto found = log_determinant({n, n}, a);
    negative += det < 0;
    EXPECT_EQ(found.sign, det < 0 ? -1 : 1) << seed;
    EXPECT_NEAR(found.sign * std::exp(found.logarithm), det, 200 * rounding_of(kind()) * std::abs(det)) << seed;
  }
  EXPECT_GT(negative, 8);
  EXPECT_LT(negative, 32);
}

TEST_P(Scalars, XdetOverflowsWhereXslogdetDoesNot) {
  const std::size_t n = 400;
  Doubles diagonal = identity(n);
  for (double& x : diagonal) x *= -10;
  EXPECT_EQ(number("xdet", {n, n}, diagonal), infinity);
  const auto found = log_determinant({n, n}, diagonal);
  EXPECT_EQ(found.sign, 1);
  // The logarithms are added up in the element's type.
  double sum = 0;
  float sum_in_32_bits = 0;
  for (std::size_t i = 0; i < n; ++i) sum += std::log(10.0), sum_in_32_bits += std::log(10.0f);
  EXPECT_EQ(found.logarithm, kind() == Kind::float64 ? sum : static_cast<double>(sum_in_32_bits));
}

TEST_P(Scalars, XdetIsMultipliedInTheElementsType) {
  const Doubles diagonal = {0.1, 0, 0, 0, 0.7, 0, 0, 0, 0.3};
  const double expected =
      kind() == Kind::float64 ? 1.0 * 0.1 * 0.7 * 0.3 : static_cast<double>(1.f * 0.1f * 0.7f * 0.3f);
  EXPECT_TRUE(same(number("xdet", {3, 3}, diagonal), expected));
}

TEST_P(Scalars, XdetAndXslogdetOfNaN_AreNaN) {
  const Doubles nans(9, not_a_number);
  EXPECT_TRUE(std::isnan(number("xdet", {3, 3}, nans)));
  const auto found = log_determinant({3, 3}, nans);
  EXPECT_TRUE(std::isnan(found.logarithm) || found.logarithm == -infinity);
}

// ---- xmatrix_rank

TEST_P(Scalars, Required_TheRankIsADouble) {
  EXPECT_EQ(number("xmatrix_rank", {2, 2}, {1, 2, 2, 4}), 1);
  EXPECT_EQ(number("xmatrix_rank", {2, 3}, {1, 0, 0, 0, 1, 0}), 2);
  EXPECT_EQ(number("xmatrix_rank", {3, 2}, {1, 0, 0, 1, 1, 1}), 2);
  EXPECT_EQ(number("xmatrix_rank", {3, 3}, Doubles(9, 0)), 0);
  EXPECT_EQ(number("xmatrix_rank", {1, 1}, {5}), 1);
  EXPECT_EQ(number("xmatrix_rank", {20, 20}, identity(20)), 20);
}

TEST_P(Scalars, TheToleranceIsTheExtentTimesTheLargestValueTimesTheRounding) {
  const double rounding = rounding_of(kind());
  // Three rows and columns, the largest value 1: three roundings are not above, four are.
  EXPECT_EQ(number("xmatrix_rank", {3, 3}, {1, 0, 0, 0, 3 * rounding, 0, 0, 0, 0}), 1);
  EXPECT_EQ(number("xmatrix_rank", {3, 3}, {1, 0, 0, 0, 4 * rounding, 0, 0, 0, 0}), 2);
  // The larger extent counts.
  EXPECT_EQ(number("xmatrix_rank", {2, 5}, {1, 0, 0, 0, 0, 0, 4 * rounding, 0, 0, 0}), 1);
  EXPECT_EQ(number("xmatrix_rank", {2, 5}, {1, 0, 0, 0, 0, 0, 6 * rounding, 0, 0, 0}), 2);
  EXPECT_EQ(number("xmatrix_rank", {5, 2}, {1, 0, 0, 4 * rounding, 0, 0, 0, 0, 0, 0}), 1);
  EXPECT_EQ(number("xmatrix_rank", {5, 2}, {1, 0, 0, 6 * rounding, 0, 0, 0, 0, 0, 0}), 2);
}

TEST_P(Scalars, OfProducts_TheRankIsTheInnerExtent) {
  for (const std::size_t inner : {1u, 3u, 7u}) {
    const Doubles product = multiplied(random_doubles(12 * inner, 4), random_doubles(inner * 9, 5), 12, inner, 9);
    EXPECT_EQ(number("xmatrix_rank", {12, 9}, product), static_cast<double>(inner));
  }
}

TEST_P(Scalars, OfNothingNaNOrInfinities_TheRankIsZero) {
  for (const Extents& extents : {Extents{0, 0}, {0, 3}, {3, 0}}) EXPECT_EQ(number("xmatrix_rank", extents, {}), 0);
  for (const double bad : {not_a_number, infinity, -infinity})
    for (const std::size_t n : {1u, 2u, 3u, 10u}) {
      Doubles a = identity(n);
      a[n * n - 1] = bad;
      EXPECT_EQ(number("xmatrix_rank", {n, n}, a), 0) << bad;
    }
}

// ---- xtrace

class Traces : public OverKinds<AlgebraTest> {
 protected:
  TestArray trace(const Extents& extents, const Numbers& numbers) {
    return array(kind(), "xtrace", {made(kind(), extents, numbers)});
  }
  static TestArray result(const Extents& extents, const Numbers& numbers) {
    return TestArray(result_kind(kind()), extents, numbers);
  }
};
INSTANTIATE_TEST_SUITE_P(Kinds, Traces, ::testing::ValuesIn(numeric_kinds), KindName());

TEST_P(Traces, AreSumsAlongTheDiagonal_InTheirKind) {
  EXPECT_EQ(trace({2, 2}, {1, 2, 3, 4}), result({}, {5}));
  EXPECT_EQ(trace({2, 3}, {1, 2, 3, 4, 5, 6}), result({}, {6}));
  EXPECT_EQ(trace({3, 2}, {1, 2, 3, 4, 5, 6}), result({}, {5}));
  EXPECT_EQ(trace({1, 1}, {-7}), result({}, {-7}));
  EXPECT_EQ(trace({1, 3}, {4, 5, 6}), result({}, {4}));
  EXPECT_EQ(trace({0, 0}, {}), result({}, {0}));
  EXPECT_EQ(trace({0, 3}, {}), result({}, {0}));
}

TEST_P(Traces, OfMoreDimensions_LeaveTheLaterOnes) {
  EXPECT_EQ(trace({2, 2, 2}, {1, 2, 3, 4, 5, 6, 7, 8}), result({2}, {8, 10}));
  EXPECT_EQ(trace({1, 2, 3}, {1, 2, 3, 4, 5, 6}), result({3}, {1, 2, 3}));
  EXPECT_EQ(trace({2, 1, 1, 2, 1, 1}, {1, 2, 3, 4}), result({1, 2, 1, 1}, {1, 2}));
  EXPECT_EQ(trace({0, 2, 2}, {}), result({2}, {0, 0}));
  EXPECT_EQ(trace({2, 2, 0}, {}), result({0}, {}));
}

TEST_P(Traces, Required_BelowTwoDimensions_AreHandledWithoutAValue) {
  for (const Extents& extents : {Extents{}, {0}, {1}, {4}}) {
    const Answer answer = call("xtrace", {made(kind(), extents, Doubles(size_of(extents)))});
    expect_no_result(answer, 1, "xtrace");
    EXPECT_EQ(answer.operations, (Words{"AnyCheck 0", "GetAny 0"}));
  }
}

TEST_P(Traces, OfEveryRank_AddAlongTheFirstTwo) {
  const Extents shapes[] = {{2, 3, 4},       {3, 2, 5},          {1, 4, 3},          {4, 4, 1},
                            {2, 2, 3, 4},    {3, 5, 1, 2},       {5, 3, 2, 1},       {2, 3, 2, 3, 2},
                            {4, 2, 1, 3, 1}, {2, 2, 2, 2, 2, 2}, {3, 2, 1, 2, 3, 4}, {2, 4, 3, 1, 2, 1}};
  for (const Extents& extents : shapes) {
    Numbers numbers;
    for (std::size_t i = 0; i < size_of(extents); ++i) numbers.push_back(static_cast<int>(i * i % 1009) - 300);
    const Extents rest(extents.begin() + 2, extents.end());
    std::vector<std::int64_t> sums(size_of(rest));
    for (std::size_t i = 0; i < std::min(extents[0], extents[1]); ++i)
      for (std::size_t place = 0; place < sums.size(); ++place)
        sums[place] += numbers[(i * extents[1] + i) * sums.size() + place].integer;
    EXPECT_EQ(trace(extents, numbers), result(rest, sums));
  }
}

class TraceSums : public AlgebraTest {};

TEST_F(TraceSums, Required_SumsOfInt64_AreHandedOverInDouble) {
  constexpr std::int64_t large = (std::int64_t{1} << 53) + 1;
  EXPECT_EQ(scalar(Kind::int64, "xtrace", {made(Kind::int64, {1, 1}, {large})}), large - 1);
  constexpr std::int64_t top = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(scalar(Kind::int64, "xtrace", {made(Kind::int64, {1, 1}, {top})}),
            std::numeric_limits<std::int64_t>::min());
}

TEST_F(TraceSums, IntegersWrapInTheirWidth) {
  constexpr std::int32_t top = std::numeric_limits<std::int32_t>::max();
  EXPECT_EQ(scalar(Kind::int32, "xtrace", {made(Kind::int32, {2, 2}, {top, 0, 0, 1})}),
            std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(scalar(Kind::int32, "xtrace", {made(Kind::int32, {2, 2}, {top, 0, 0, 0})}), top);
}

TEST_F(TraceSums, FloatsAreAddedIn32Bits) {
  const auto sum = scalar(Kind::float32, "xtrace", {made(Kind::float32, {3, 3}, {16777216, 0, 0, 0, 1, 0, 0, 0, 1})});
  EXPECT_EQ(sum, 16777216);
}

}  // namespace
}  // namespace arrayfold::test
