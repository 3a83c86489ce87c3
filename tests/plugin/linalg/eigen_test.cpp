// linalg/eigen_test.cpp: xeig, xeigvals, xeigh and xeigvalsh

#include "algebra.hpp"

namespace arrayfold::test {
namespace {

template <class Kind>
class Eigenproblems : public AlgebraTest {
 protected:
  Value of(const Extents& extents, const Reals& numbers) { return made_of<Kind>(extents, numbers); }
  static Reals rounded(Reals numbers) {
    for (double& x : numbers) x = static_cast<typename Kind::element>(x);
    return numbers;
  }
};
TYPED_TEST_SUITE(Eigenproblems, RealKinds, KindNames);

TYPED_TEST(Eigenproblems, Required_XeigGivesAnEmptyTable) {
  for (const Reals& elements : {Reals{2, 0, 0, 3}, {0, -1, 1, 0}, {1, 1, 0, 1}, {0, 0, 0, 0}, {1e-30, 1e30, 0, 1}}) {
    const auto values = this->table("xeig", {this->of({2, 2}, elements)});
    EXPECT_TRUE(values.empty());
  }
  for (const std::size_t n : {0u, 1u, 5u, 30u})
    EXPECT_TRUE(this->table("xeig", {this->of({n, n}, random_reals(n * n, 3))}).empty()) << n;
}

TYPED_TEST(Eigenproblems, Required_XeigvalsLeavesTheResultAlone) {
  for (const std::size_t n : {0u, 1u, 2u, 5u, 30u}) {
    const Answer answer = this->call("xeigvals", {this->of({n, n}, random_reals(n * n, 3))});
    this->expect_nothing(answer, 1, "xeigvals");
    EXPECT_EQ(answer.operations, (Words{"AnyCheck 0", "GetAny 0"}));
    EXPECT_EQ(HVM_AsInt(const_cast<HostValue*>(&answer.result.record())), this->sentinel);
  }
}

TYPED_TEST(Eigenproblems, XeighOfTheIdentity_HasOnes) {
  const auto values = this->table("xeigh", {this->of({3, 3}, identity(3))});
  ASSERT_EQ(values.size(), 2u);
  EXPECT_EQ(contents_of<TypeParam>(values[0]), (Contents<double>{{3}, {1, 1, 1}}));
  EXPECT_EQ(contents_of<TypeParam>(values[1]).extents, (Extents{3, 3}));
}

TYPED_TEST(Eigenproblems, XeighPutsTheMatrixTogetherAgain) {
  for (const std::size_t n : {1u, 2u, 3u, 7u, 26u, 40u, 100u}) {
    const Reals half = random_reals(n * n, 11);
    Reals a(n * n);
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = 0; j < n; ++j) a[i * n + j] = half[i * n + j] + half[j * n + i];
    a = this->rounded(a);
    const auto values = this->table("xeigh", {this->of({n, n}, a)});
    const auto lambda = contents_of<TypeParam>(values.at(0)), vectors = contents_of<TypeParam>(values.at(1));
    ASSERT_EQ(lambda.extents, Extents{n});
    ASSERT_EQ(vectors.extents, (Extents{n, n}));
    EXPECT_TRUE(std::is_sorted(lambda.elements.begin(), lambda.elements.end())) << n;
    Reals scaled = vectors.elements;  // the vectors are the columns
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = 0; j < n; ++j) scaled[i * n + j] *= lambda.elements[j];
    const Reals turned = transposed(vectors.elements, n, n);
    const double tolerance = 20 * static_cast<double>(n) * rounding_of<TypeParam> * 3;
    EXPECT_LE(distance(multiplied(scaled, turned, n, n, n), a), tolerance) << n;
    EXPECT_LE(distance(multiplied(turned, vectors.elements, n, n, n), identity(n)), tolerance) << n;
  }
}

TYPED_TEST(Eigenproblems, XeigvalshGivesOneArrayOfTheSameValues) {
  for (const std::size_t n : {1u, 2u, 5u, 40u}) {
    const Value operand = this->of({n, n}, positive_definite(n, 13));
    const auto alone = this->template array<TypeParam>("xeigvalsh", {operand});
    const auto beside = contents_of<TypeParam>(this->table("xeigh", {operand}).at(0));
    EXPECT_EQ(alone.extents, Extents{n});
    EXPECT_TRUE(std::is_sorted(alone.elements.begin(), alone.elements.end()));
    EXPECT_LE(distance(alone.elements, beside.elements),
              20 * static_cast<double>(n) * rounding_of<TypeParam> * alone.elements.back());
  }
}

TYPED_TEST(Eigenproblems, TheLowerTriangleAloneIsRead) {
  for (const std::size_t n : {2u, 3u, 10u, 40u}) {
    const Reals a = positive_definite(n, 14);
    const Value whole = this->of({n, n}, a), below = this->of({n, n}, with_nonsense_above(a, n));
    EXPECT_EQ(this->template array<TypeParam>("xeigvalsh", {below}),
              this->template array<TypeParam>("xeigvalsh", {whole}));
    const auto of_below = this->table("xeigh", {below}), of_whole = this->table("xeigh", {whole});
    for (std::size_t key = 0; key < 2; ++key)
      EXPECT_EQ(contents_of<TypeParam>(of_below.at(key)), contents_of<TypeParam>(of_whole.at(key))) << n;
  }
}

TYPED_TEST(Eigenproblems, Required_AMatrixThatIsNotSymmetric_IsReadAsOneThatIs) {
  // 5 and 3 of [[4, 1], [1, 4]], whatever stands above.
  const auto values = this->template array<TypeParam>("xeigvalsh", {this->of({2, 2}, {4, -77, 1, 4})});
  EXPECT_LE(distance(values.elements, {3, 5}), 10 * rounding_of<TypeParam>);
}

TYPED_TEST(Eigenproblems, OfNothing_IsNothing) {
  EXPECT_EQ(this->template array<TypeParam>("xeigvalsh", {this->of({0, 0}, {})}), (Contents<double>{{0}, {}}));
  const auto values = this->table("xeigh", {this->of({0, 0}, {})});
  ASSERT_EQ(values.size(), 2u);
  EXPECT_EQ(contents_of<TypeParam>(values[0]), (Contents<double>{{0}, {}}));
  EXPECT_EQ(contents_of<TypeParam>(values[1]), (Contents<double>{{0, 0}, {}}));
}

}  // namespace
}  // namespace arrayfold::test
