// linalg/words_test.cpp: every word that a call can end with, to the byte, and which comes first

#include "algebra.hpp"

namespace arrayfold::test {
namespace {

template <class Kind>
class Endings : public AlgebraTest {
 protected:
  using T = typename Kind::element;

  Value filled(const Extents& extents, double value = 1) {
    return made<Kind>(extents, std::vector<T>(size_of(extents), static_cast<T>(value)));
  }
  Value of(const Extents& extents, const Reals& numbers) { return made_of<Kind>(extents, numbers); }
  /// Six elements under other extents, as `reshape` can leave them.
  Value claiming_extents(const Extents& extents) {
    const Value six = filled({6});
    // No method: the host knows none of the float kind.
    const_cast<Shape&>(container_of<Kind>(six)->shape()) = Shape(extents.begin(), extents.end());
    return six;
  }
  Value regular() { return of({2, 2}, {2, 1, 1, 3}); }
  Value singular() { return of({2, 2}, {1, 2, 2, 4}); }
};

TYPED_TEST_SUITE(Endings, RealKinds, KindNames);

// ---- Shapes

TYPED_TEST(Endings, SquaresAreRequired) {
  for (const char* name : of_squares)
    for (const Extents& extents : {Extents{2, 3}, {3, 2}, {1, 2}, {0, 1}, {1, 0}, {2, 2, 3}, {2, 3, 2}, {1, 1, 1, 0}})
      EXPECT_EQ(this->ending(name, {this->filled(extents)}), square_words) << name;
}

TYPED_TEST(Endings, FewerThanTwoDimensions_AreNotSquare) {
  for (const char* name : of_squares)
    for (const Extents& extents : {Extents{}, {0}, {1}, {2}, {4}})
      EXPECT_EQ(this->ending(name, {this->filled(extents)}), square_words) << name << extents.size();
}

TYPED_TEST(Endings, MoreThanTwoDimensions_AreNoMatrix) {
  for (const char* name : of_squares)
    for (const Extents& extents : {Extents{3, 2, 2}, {1, 1, 1}, {0, 0, 0}, {2, 1, 3, 3}, {1, 1, 1, 1, 1, 1}})
      EXPECT_EQ(this->ending(name, {this->filled(extents)}), shape_words) << name << extents.size();
}

TYPED_TEST(Endings, AnyOtherNumberOfDimensionsThanTwo_IsNoMatrix) {
  for (const char* name : of_any_matrix)
    for (const Extents& extents : {Extents{}, {0}, {1}, {3}, {2, 2, 2}, {1, 1, 1}, {0, 0, 0}, {1, 1, 1, 1, 1, 1}})
      EXPECT_EQ(this->ending(name, {this->filled(extents)}), shape_words) << name << extents.size();
}

TYPED_TEST(Endings, ExtentsBeyondTheStorage_AreOutOfMemory) {
  constexpr std::size_t far = std::size_t{0} - 6;
  const Value square = this->claiming_extents({far, far}), wide = this->claiming_extents({2, 4}),
              tall = this->claiming_extents({far, 1});
  for (const char* name : of_one_matrix) {
    const bool needs_square = std::count(std::begin(of_squares), std::end(of_squares), std::string(name)) != 0;
    EXPECT_EQ(this->ending(name, {square}), "bad_alloc") << name;
    EXPECT_EQ(this->ending(name, {wide}), needs_square ? square_words : "bad_alloc") << name;
    EXPECT_EQ(this->ending(name, {tall}), needs_square ? square_words : "bad_alloc") << name;
  }
}

// ---- Factorisations and eigenvalues

TYPED_TEST(Endings, OfXcholesky_WhenNotPositiveDefinite) {
  constexpr char failed[] = "runtime_error: Cholesky decomposition failed.";
  EXPECT_EQ(this->ending("xcholesky", {this->of({2, 2}, {1, 2, 2, 1})}), failed);
  EXPECT_EQ(this->ending("xcholesky", {this->of({2, 2}, {0, 0, 0, 0})}), failed);
  EXPECT_EQ(this->ending("xcholesky", {this->of({1, 1}, {-1})}), failed);
  EXPECT_EQ(this->ending("xcholesky", {this->of({1, 1}, {0})}), failed);
}

TYPED_TEST(Endings, OfXeigAndXeigvals_OnNaNAndInfinities) {
  for (const double bad : {not_a_number, infinity, -infinity})
    for (const std::size_t n : {1u, 2u, 3u, 10u}) {
      Reals elements = positive_definite(n, 1);
      elements[n * n - 1] = bad;
      EXPECT_EQ(this->ending("xeig", {this->of({n, n}, elements)}),
                "runtime_error: Eigenvalue calculation did not converge.");
      EXPECT_EQ(this->ending("xeigvals", {this->of({n, n}, elements)}),
                "runtime_error: Failed to compute eigenvalue 4.");
    }
}

TYPED_TEST(Endings, OfXeighAndXeigvalsh_WhenTheRoutineGivesUp) {
  // Whether a matrix of NaN makes it give up is the routine's affair; the words are not.
  for (const char* name : {"xeigh", "xeigvalsh"})
    for (const double bad : {not_a_number, infinity, -infinity})
      for (const std::size_t n : {2u, 3u, 10u, 40u}) {
        const std::string ending = this->ending(name, {this->filled({n, n}, bad)});
        EXPECT_TRUE(ending == "1" || ending == "runtime_error: Eigenvalue computation did not converge.") << ending;
      }
}

// ---- Scalars

TYPED_TEST(Endings, OfXnorm_OfOtherThanVectorsAndMatrices) {
  for (const Extents& extents : {Extents{}, {2, 2, 2}, {0, 0, 0}, {1, 1, 1}, {1, 1, 1, 1, 1, 1}})
    EXPECT_EQ(this->ending("xnorm", {this->filled(extents)}), "runtime_error: Norm not implemented!");
}

TYPED_TEST(Endings, Required_XcondNeverSucceeds) {
  constexpr char no_norm[] = "runtime_error: Norm 0 not implemented!";
  EXPECT_EQ(this->ending("xcond", {this->regular()}), no_norm);
  EXPECT_EQ(this->ending("xcond", {this->of({1, 1}, {2})}), no_norm);
  EXPECT_EQ(this->ending("xcond", {this->filled({0, 0})}), no_norm);
  EXPECT_EQ(this->ending("xcond", {this->singular()}), "runtime_error: Singular matrix not invertible (getrf).");
  EXPECT_EQ(this->ending("xcond", {this->filled({3, 3}, 0)}), "runtime_error: Singular matrix not invertible (getrf).");
  EXPECT_EQ(this->ending("xcond", {this->filled({2, 3})}), square_words);
  EXPECT_EQ(this->ending("xcond", {this->filled({2})}), square_words);
}

// ---- Inverses and solvers

TYPED_TEST(Endings, OfXinv_OfSingularMatrices) {
  constexpr char singular[] = "runtime_error: Singular matrix not invertible (getrf).";
  EXPECT_EQ(this->ending("xinv", {this->singular()}), singular);
  EXPECT_EQ(this->ending("xinv", {this->filled({1, 1}, 0)}), singular);
  EXPECT_EQ(this->ending("xinv", {this->filled({7, 7}, 0)}), singular);
}

TYPED_TEST(Endings, OfXsolve_TestTheFirstOperandAlone) {
  for (const Extents& extents : {Extents{2, 3}, {3, 2}, {}, {2}, {2, 2, 3}})
    for (const Extents& sides : {Extents{2}, {}, {2, 3}, {5, 5, 5}, {0}})
      EXPECT_EQ(this->ending("xsolve", {this->filled(extents), this->filled(sides)}), square_words);
  for (const Extents& extents : {Extents{2, 2, 2}, {0, 0, 0}, {1, 1, 1, 1, 1}})
    EXPECT_EQ(this->ending("xsolve", {this->filled(extents), this->filled({2})}), shape_words);
}

TYPED_TEST(Endings, OfXsolve_WithoutASolution) {
  EXPECT_EQ(this->ending("xsolve", {this->singular(), this->filled({2})}), unsolved_words);
  EXPECT_EQ(this->ending("xsolve", {this->filled({3, 3}, 0), this->filled({3, 2})}), unsolved_words);
  for (const Extents& sides :
       {Extents{}, {0}, {1}, {1, 2}, {0, 2}, {1, 1, 5}, {1, 1, 1}, {0, 2, 2}, {2, 0, 1}, {2, 0, 1, 1}})
    EXPECT_EQ(this->ending("xsolve", {this->regular(), this->filled(sides)}), unsolved_words) << sides.size();
  EXPECT_EQ(this->ending("xsolve", {this->filled({0, 0}), this->filled({})}), unsolved_words);
}

TYPED_TEST(Endings, Required_XlstsqBlamesTheFirstOperandForTheDimensionsOfTheSecond) {
  constexpr char dimensions[] = "runtime_error: Expected 1- or 2D expression for A.";
  for (const Extents& sides : {Extents{2, 1, 1}, {5, 5, 5}, {0, 0, 0}, {2, 1, 1, 1, 1, 1}})
    EXPECT_EQ(this->ending("xlstsq", {this->regular(), this->filled(sides)}), dimensions);
}

TYPED_TEST(Endings, OfXlstsq_WhenTheFirstExtentsDiffer) {
  constexpr char shape[] = "runtime_error: Shape of 'b' for lstsq does not match.";
  for (const Extents& sides : {Extents{3}, {1}, {0}, {3, 2}, {1, 2}, {0, 2}, {}})
    EXPECT_EQ(this->ending("xlstsq", {this->regular(), this->filled(sides)}), shape) << sides.size();
  EXPECT_EQ(this->ending("xlstsq", {this->filled({3, 2}), this->filled({2})}), shape);
  EXPECT_EQ(this->ending("xlstsq", {this->filled({0, 2}), this->filled({2})}), shape);
}

TYPED_TEST(Endings, OfXlstsq_TheFirstOperandComesFirst) {
  for (const Extents& extents : {Extents{}, {2}, {2, 2, 2}, {0}})
    for (const Extents& sides : {Extents{2}, {2, 1, 1}, {7}, {}})
      EXPECT_EQ(this->ending("xlstsq", {this->filled(extents), this->filled(sides)}), shape_words);
}

TYPED_TEST(Endings, SecondOperandsBeyondTheirStorage_AreOutOfMemory) {
  const Value claims = this->claiming_extents({2, 4});
  EXPECT_EQ(this->ending("xsolve", {this->regular(), claims}), "bad_alloc");
  EXPECT_EQ(this->ending("xlstsq", {this->regular(), claims}), "bad_alloc");
  EXPECT_EQ(this->ending("xlstsq", {this->of({1, 2}, {1, 1}), claims}),
            "runtime_error: Shape of 'b' for lstsq does not match.");
}

// ---- Products

class ProductWords : public AlgebraTest {};

TEST_F(ProductWords, OfXdot_InAllPairsOfKinds) {
  constexpr char mismatch[] = "runtime_error: Dot: shape mismatch.";
  const std::pair<Extents, Extents> shapes[] = {{{2}, {3}},       {{3}, {2}},    {{2}, {3, 2}}, {{2, 3}, {2}},
                                                {{2, 3}, {2, 3}}, {{2, 2}, {0}}, {{0}, {1}},    {{2, 2, 3}, {2}},
                                                {{3}, {3, 2, 3}}, {{1}, {2}},    {{2}, {1}},    {{1, 1}, {2, 1}}};
  for (const auto& [left, right] : shapes) {
    const std::size_t m = size_of(left), n = size_of(right);
    const Value first[] = {made<XTInt>(left, std::vector<std::int32_t>(m, 1)),
                           made<XTInt64>(left, std::vector<std::int64_t>(m, 1)),
                           made<XTFloat>(left, std::vector<float>(m, 1)), made<XTDouble>(left, Reals(m, 1))};
    const Value second[] = {made<XTInt>(right, std::vector<std::int32_t>(n, 1)),
                            made<XTInt64>(right, std::vector<std::int64_t>(n, 1)),
                            made<XTFloat>(right, std::vector<float>(n, 1)), made<XTDouble>(right, Reals(n, 1))};
    for (const Value& a : first)
      for (const Value& b : second) EXPECT_EQ(ending("xdot", {a, b}), mismatch) << left.size() << right.size();
  }
}

TEST_F(ProductWords, ExtentsBeyondTheStorage_AreOutOfMemory) {
  const Value claims = claiming(-2, -3), number = doubles({}, {2}), row = ones({3});
  for (const char* name : {"xdot", "xouter", "xkron"}) {
    EXPECT_EQ(ending(name, {claims, row}), "bad_alloc") << name;
    EXPECT_EQ(ending(name, {row, claims}), "bad_alloc") << name;
    EXPECT_EQ(ending(name, {claims, number}), "bad_alloc") << name;
    EXPECT_EQ(ending(name, {number, claims}), "bad_alloc") << name;
    EXPECT_EQ(ending(name, {claims, claims}), "bad_alloc") << name;
  }
}

TEST_F(ProductWords, ExtentsBeyondTheStorage_AreRefusedByXvdotOnlyWhereItWouldWalkThere) {
  EXPECT_EQ(ending("xvdot", {claiming(-2, -3), ones({3})}), "0");
  EXPECT_EQ(ending("xvdot", {claiming(-6, -1), claiming(-6, -1)}), "0");
  EXPECT_EQ(ending("xvdot", {ones({1}), claiming(-2, -3)}), "1");  // one element of the second
}

TEST_F(ProductWords, ExtentsOverAnEmptyStorage_AreOutOfMemory) {
  // 65536 to the fourth wraps to 0.
  Value nothing = doubles({0}, {});
  ASSERT_EQ(method(nothing, "reshape", {Value(65536), Value(65536), Value(65536), Value(65536)}).returned, 1);
  for (const char* name : {"xdot", "xouter", "xkron"}) {
    EXPECT_EQ(ending(name, {nothing, nothing}), "bad_alloc") << name;
    EXPECT_EQ(ending(name, {nothing, ones({1})}), "bad_alloc") << name;
    EXPECT_EQ(ending(name, {ones({}), nothing}), "bad_alloc") << name;
  }
  expect_nothing(call("xvdot", {nothing, nothing}), 0, "xvdot");
  EXPECT_EQ(ending("xtrace", {nothing}), "bad_alloc");
}

TEST_F(ProductWords, ProductsTooLargeForAnyMemory_AreOutOfMemory) {
  constexpr std::size_t many = 2147483647;
  const Value tall = made<XTInt>({many, 0}, {}), wide = made<XTInt>({0, many}, {});
  EXPECT_EQ(ending("xdot", {tall, wide}), "bad_alloc");
  EXPECT_EQ(ending("xouter", {tall, tall}), "bad_alloc");
  EXPECT_EQ(ending("xdot", {doubles({many, many, many, 0}, {}), doubles({0}, {})}), "bad_alloc");
  EXPECT_EQ((array<XTInt>("xkron", {tall, tall})), (Contents<std::int32_t>{{many * many, 0}, {}}));
}

}  // namespace
}  // namespace arrayfold::test
