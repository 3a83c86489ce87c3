// linalg/eigen_test.cpp: xeig, xeigvals, xeigh and xeigvalsh

#include "algebra.hpp"

namespace arrayfold::test {
namespace {

class Eigenproblems : public OverKinds<AlgebraTest> {
 protected:
  Value of(const Extents& extents, const Doubles& numbers) { return made(kind(), extents, numbers); }
};
INSTANTIATE_TEST_SUITE_P(Kinds, Eigenproblems, ::testing::ValuesIn(floating_kinds), KindName());

TEST_P(Eigenproblems, Required_XeigGivesAnEmptyTable) {
  for (const Doubles& elements :
       {Doubles{2, 0, 0, 3}, {0, -1, 1, 0}, {1, 1, 0, 1}, {0, 0, 0, 0}, {1e-30, 1e30, 0, 1}}) {
    const auto values = table("xeig", {of({2, 2}, elements)});
    EXPECT_TRUE(values.empty());
  }
  for (const std::size_t n : {0u, 1u, 5u, 30u})
    EXPECT_TRUE(table("xeig", {of({n, n}, random_doubles(n * n, 3))}).empty()) << n;
}

TEST_P(Eigenproblems, Required_XeigvalsLeavesTheResultAlone) {
  for (const std::size_t n : {0u, 1u, 2u, 5u, 30u}) {
    const Answer answer = call("xeigvals", {of({n, n}, random_doubles(n * n, 3))});
    expect_no_result(answer, 1, "xeigvals");
    EXPECT_EQ(answer.operations, (Words{"AnyCheck 0", "GetAny 0"}));
    EXPECT_EQ(HVM_AsInt(const_cast<HostValue*>(&answer.result.record())), sentinel);
  }
}

TEST_P(Eigenproblems, XeighOfTheIdentity_HasOnes) {
  const auto values = table("xeigh", {of({3, 3}, identity(3))});
  ASSERT_EQ(values.size(), 2u);
  EXPECT_EQ(contents_of(values[0], kind()), (Contents{{3}, {1, 1, 1}}));
  EXPECT_EQ(contents_of(values[1], kind()).extents, (Extents{3, 3}));
}

TEST_P(Eigenproblems, XeighPutsTheMatrixTogetherAgain) {
  for (const std::size_t n : {1u, 2u, 3u, 7u, 26u, 40u, 100u}) {
    const Doubles half = random_doubles(n * n, 11);
    Doubles a(n * n);
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = 0; j < n; ++j) a[i * n + j] = half[i * n + j] + half[j * n + i];
    a = rounded(kind(), a);
    const auto values = table("xeigh", {of({n, n}, a)});
    const auto lambda = contents_of(values.at(0), kind()), vectors = contents_of(values.at(1), kind());
    ASSERT_EQ(lambda.extents, Extents{n});
    ASSERT_EQ(vectors.extents, (Extents{n, n}));
    EXPECT_TRUE(std::is_sorted(lambda.elements.begin(), lambda.elements.end())) << n;
    Doubles scaled = vectors.elements;  // the vectors are the columns
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = 0; j < n; ++j) scaled[i * n + j] *= lambda.elements[j];
    const Doubles turned = transposed(vectors.elements, n, n);
    const double tolerance = 20 * static_cast<double>(n) * rounding_of(kind()) * 3;
    EXPECT_LE(distance(multiplied(scaled, turned, n, n, n), a), tolerance) << n;
    EXPECT_LE(distance(multiplied(turned, vectors.elements, n, n, n), identity(n)), tolerance) << n;
  }
}

TEST_P(Eigenproblems, XeigvalshGivesOneArrayOfTheSameValues) {
  for (const std::size_t n : {1u, 2u, 5u, 40u}) {
    const Value operand = of({n, n}, positive_definite(n, 13));
    const auto alone = doubles_of(kind(), "xeigvalsh", {operand});
    const auto beside = contents_of(table("xeigh", {operand}).at(0), kind());
    EXPECT_EQ(alone.extents, Extents{n});
    EXPECT_TRUE(std::is_sorted(alone.elements.begin(), alone.elements.end()));
    EXPECT_LE(distance(alone.elements, beside.elements),
              20 * static_cast<double>(n) * rounding_of(kind()) * alone.elements.back());
  }
}

TEST_P(Eigenproblems, TheLowerTriangleAloneIsRead) {
  for (const std::size_t n : {2u, 3u, 10u, 40u}) {
    const Doubles a = positive_definite(n, 14);
    const Value whole = of({n, n}, a), below = of({n, n}, with_nonsense_above(a, n));
    EXPECT_EQ(doubles_of(kind(), "xeigvalsh", {below}), doubles_of(kind(), "xeigvalsh", {whole}));
    const auto of_below = table("xeigh", {below}), of_whole = table("xeigh", {whole});
    for (std::size_t key = 0; key < 2; ++key)
      EXPECT_EQ(contents_of(of_below.at(key), kind()), contents_of(of_whole.at(key), kind())) << n;
  }
}

TEST_P(Eigenproblems, Required_AMatrixThatIsNotSymmetric_IsReadAsOneThatIs) {
  // 5 and 3 of [[4, 1], [1, 4]], whatever stands above.
  const auto values = doubles_of(kind(), "xeigvalsh", {of({2, 2}, {4, -77, 1, 4})});
  EXPECT_LE(distance(values.elements, {3, 5}), 10 * rounding_of(kind()));
}

TEST_P(Eigenproblems, OfNothing_IsNothing) {
  EXPECT_EQ(doubles_of(kind(), "xeigvalsh", {of({0, 0}, {})}), (Contents{{0}, {}}));
  const auto values = table("xeigh", {of({0, 0}, {})});
  ASSERT_EQ(values.size(), 2u);
  EXPECT_EQ(contents_of(values[0], kind()), (Contents{{0}, {}}));
  EXPECT_EQ(contents_of(values[1], kind()), (Contents{{0, 0}, {}}));
}

}  // namespace
}  // namespace arrayfold::test
