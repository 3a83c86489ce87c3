// linalg/messages_test.cpp: every message that a call can end with, to the byte, and which comes first

#include "algebra.hpp"

namespace arrayfold::test {
namespace {

class Endings : public OverKinds<AlgebraTest> {
 protected:
  Value filled(const Extents& extents, double value = 1) {
    return made(kind(), extents, Numbers(size_of(extents), value));
  }
  Value of(const Extents& extents, const Doubles& numbers) { return made(kind(), extents, numbers); }
  /// Six elements under a shape whose product is not six, as `reshape` can leave them.
  Value with_wrong_shape(const Extents& extents) {
    const Value six = filled({6});
    set_extents(six, extents);  // no method: the host knows none of the float kind
    return six;
  }
  Value regular() { return of({2, 2}, {2, 1, 1, 3}); }
  Value singular() { return of({2, 2}, {1, 2, 2, 4}); }
};

INSTANTIATE_TEST_SUITE_P(Kinds, Endings, ::testing::ValuesIn(floating_kinds), KindName());

// ---- Shapes

TEST_P(Endings, SquaresAreRequired) {
  for (const std::string& name : of_squares)
    for (const Extents& extents : {Extents{2, 3}, {3, 2}, {1, 2}, {0, 1}, {1, 0}, {2, 2, 3}, {2, 3, 2}, {1, 1, 1, 0}})
      EXPECT_EQ(ending(name, {filled(extents)}), square_message) << name;
}

TEST_P(Endings, FewerThanTwoDimensions_AreNotSquare) {
  for (const std::string& name : of_squares)
    for (const Extents& extents : {Extents{}, {0}, {1}, {2}, {4}})
      EXPECT_EQ(ending(name, {filled(extents)}), square_message) << name << extents.size();
}

TEST_P(Endings, MoreThanTwoDimensions_AreNoMatrix) {
  for (const std::string& name : of_squares)
    for (const Extents& extents : {Extents{3, 2, 2}, {1, 1, 1}, {0, 0, 0}, {2, 1, 3, 3}, {1, 1, 1, 1, 1, 1}})
      EXPECT_EQ(ending(name, {filled(extents)}), shape_message) << name << extents.size();
}

TEST_P(Endings, AnyOtherNumberOfDimensionsThanTwo_IsNoMatrix) {
  for (const std::string& name : of_any_matrix)
    for (const Extents& extents : {Extents{}, {0}, {1}, {3}, {2, 2, 2}, {1, 1, 1}, {0, 0, 0}, {1, 1, 1, 1, 1, 1}})
      EXPECT_EQ(ending(name, {filled(extents)}), shape_message) << name << extents.size();
}

TEST_P(Endings, ExtentsBeyondTheStorage_AreOutOfMemory) {
  constexpr std::size_t far = std::size_t{0} - 6;
  const Value square = with_wrong_shape({far, far}), wide = with_wrong_shape({2, 4}), tall = with_wrong_shape({far, 1});
  for (const std::string& name : of_one_matrix) {
    const bool needs_square = contains(of_squares, name);
    EXPECT_EQ(ending(name, {square}), "bad_alloc") << name;
    EXPECT_EQ(ending(name, {wide}), needs_square ? square_message : "bad_alloc") << name;
    EXPECT_EQ(ending(name, {tall}), needs_square ? square_message : "bad_alloc") << name;
  }
}

// ---- Factorisations and eigenvalues

TEST_P(Endings, OfXcholesky_WhenNotPositiveDefinite_AreItsMessage) {
  constexpr char failed[] = "runtime_error: Cholesky decomposition failed.";
  EXPECT_EQ(ending("xcholesky", {of({2, 2}, {1, 2, 2, 1})}), failed);
  EXPECT_EQ(ending("xcholesky", {of({2, 2}, {0, 0, 0, 0})}), failed);
  EXPECT_EQ(ending("xcholesky", {of({1, 1}, {-1})}), failed);
  EXPECT_EQ(ending("xcholesky", {of({1, 1}, {0})}), failed);
}

TEST_P(Endings, OfXeigAndXeigvals_OnNaNAndInfinities_AreTheirMessages) {
  for (const double bad : {not_a_number, infinity, -infinity})
    for (const std::size_t n : {1u, 2u, 3u, 10u}) {
      Doubles elements = positive_definite(n, 1);
      elements[n * n - 1] = bad;
      EXPECT_EQ(ending("xeig", {of({n, n}, elements)}), "runtime_error: Eigenvalue calculation did not converge.");
      EXPECT_EQ(ending("xeigvals", {of({n, n}, elements)}), "runtime_error: Failed to compute eigenvalue 4.");
    }
}

TEST_P(Endings, OfXeighAndXeigvalsh_WhenLapackGivesUp_AreKnown) {
  // LAPACK decides whether it gives up on a matrix of NaN; the message is fixed.
  for (const char* name : {"xeigh", "xeigvalsh"})
    for (const double bad : {not_a_number, infinity, -infinity})
      for (const std::size_t n : {2u, 3u, 10u, 40u}) {
        const std::string how = ending(name, {filled({n, n}, bad)});
        EXPECT_TRUE(how == "1" || how == "runtime_error: Eigenvalue computation did not converge.") << how;
      }
}

// ---- Scalars

TEST_P(Endings, OfXnorm_OfOtherThanVectorsAndMatrices_AreItsMessage) {
  for (const Extents& extents : {Extents{}, {2, 2, 2}, {0, 0, 0}, {1, 1, 1}, {1, 1, 1, 1, 1, 1}})
    EXPECT_EQ(ending("xnorm", {filled(extents)}), "runtime_error: Norm not implemented!");
}

TEST_P(Endings, Required_XcondNeverSucceeds) {
  constexpr char no_norm[] = "runtime_error: Norm 0 not implemented!";
  EXPECT_EQ(ending("xcond", {regular()}), no_norm);
  EXPECT_EQ(ending("xcond", {of({1, 1}, {2})}), no_norm);
  EXPECT_EQ(ending("xcond", {filled({0, 0})}), no_norm);
  EXPECT_EQ(ending("xcond", {singular()}), "runtime_error: Singular matrix not invertible (getrf).");
  EXPECT_EQ(ending("xcond", {filled({3, 3}, 0)}), "runtime_error: Singular matrix not invertible (getrf).");
  EXPECT_EQ(ending("xcond", {filled({2, 3})}), square_message);
  EXPECT_EQ(ending("xcond", {filled({2})}), square_message);
}

// ---- Inverses and solvers

TEST_P(Endings, OfXinv_OfSingularMatrices_AreItsMessage) {
  constexpr char message[] = "runtime_error: Singular matrix not invertible (getrf).";
  EXPECT_EQ(ending("xinv", {singular()}), message);
  EXPECT_EQ(ending("xinv", {filled({1, 1}, 0)}), message);
  EXPECT_EQ(ending("xinv", {filled({7, 7}, 0)}), message);
}

TEST_P(Endings, OfXsolve_TestTheFirstOperandAlone) {
  for (const Extents& extents : {Extents{2, 3}, {3, 2}, {}, {2}, {2, 2, 3}})
    for (const Extents& rhs : {Extents{2}, {}, {2, 3}, {5, 5, 5}, {0}})
      EXPECT_EQ(ending("xsolve", {filled(extents), filled(rhs)}), square_message);
  for (const Extents& extents : {Extents{2, 2, 2}, {0, 0, 0}, {1, 1, 1, 1, 1}})
    EXPECT_EQ(ending("xsolve", {filled(extents), filled({2})}), shape_message);
}

TEST_P(Endings, OfXsolve_WithoutASolution_AreItsMessage) {
  EXPECT_EQ(ending("xsolve", {singular(), filled({2})}), unsolved_message);
  EXPECT_EQ(ending("xsolve", {filled({3, 3}, 0), filled({3, 2})}), unsolved_message);
  for (const Extents& rhs :
       {Extents{}, {0}, {1}, {1, 2}, {0, 2}, {1, 1, 5}, {1, 1, 1}, {0, 2, 2}, {2, 0, 1}, {2, 0, 1, 1}})
    EXPECT_EQ(ending("xsolve", {regular(), filled(rhs)}), unsolved_message) << rhs.size();
  EXPECT_EQ(ending("xsolve", {filled({0, 0}), filled({})}), unsolved_message);
}

TEST_P(Endings, Required_XlstsqBlamesTheFirstOperandForTheDimensionsOfTheSecond) {
  constexpr char dimensions[] = "runtime_error: Expected 1- or 2D expression for A.";
  for (const Extents& rhs : {Extents{2, 1, 1}, {5, 5, 5}, {0, 0, 0}, {2, 1, 1, 1, 1, 1}})
    EXPECT_EQ(ending("xlstsq", {regular(), filled(rhs)}), dimensions);
}

TEST_P(Endings, OfXlstsq_WhenTheFirstExtentsDiffer_AreItsMessage) {
  constexpr char shape[] = "runtime_error: Shape of 'b' for lstsq does not match.";
  for (const Extents& rhs : {Extents{3}, {1}, {0}, {3, 2}, {1, 2}, {0, 2}, {}})
    EXPECT_EQ(ending("xlstsq", {regular(), filled(rhs)}), shape) << rhs.size();
  EXPECT_EQ(ending("xlstsq", {filled({3, 2}), filled({2})}), shape);
  EXPECT_EQ(ending("xlstsq", {filled({0, 2}), filled({2})}), shape);
}

TEST_P(Endings, OfXlstsq_TheFirstOperandComesFirst) {
  for (const Extents& extents : {Extents{}, {2}, {2, 2, 2}, {0}})
    for (const Extents& rhs : {Extents{2}, {2, 1, 1}, {7}, {}})
      EXPECT_EQ(ending("xlstsq", {filled(extents), filled(rhs)}), shape_message);
}

TEST_P(Endings, SecondOperandsBeyondTheirStorage_AreOutOfMemory) {
  const Value wrong = with_wrong_shape({2, 4});
  EXPECT_EQ(ending("xsolve", {regular(), wrong}), "bad_alloc");
  EXPECT_EQ(ending("xlstsq", {regular(), wrong}), "bad_alloc");
  EXPECT_EQ(ending("xlstsq", {of({1, 2}, {1, 1}), wrong}), "runtime_error: Shape of 'b' for lstsq does not match.");
}

// ---- Products

class ProductMessages : public AlgebraTest {};

TEST_F(ProductMessages, OfXdot_InAllPairsOfKinds_AreItsMessage) {
  constexpr char mismatch[] = "runtime_error: Dot: shape mismatch.";
  const std::pair<Extents, Extents> shapes[] = {{{2}, {3}},       {{3}, {2}},    {{2}, {3, 2}}, {{2, 3}, {2}},
                                                {{2, 3}, {2, 3}}, {{2, 2}, {0}}, {{0}, {1}},    {{2, 2, 3}, {2}},
                                                {{3}, {3, 2, 3}}, {{1}, {2}},    {{2}, {1}},    {{1, 1}, {2, 1}}};
  for (const auto& [left, right] : shapes) {
    const Numbers first(size_of(left), 1), second(size_of(right), 1);
    for (const KindPair& pair : pairs_of(numeric_kinds, numeric_kinds))
      EXPECT_EQ(ending("xdot", {made(pair.first, left, first), made(pair.second, right, second)}), mismatch)
          << pair << left.size() << right.size();
  }
}

TEST_F(ProductMessages, ExtentsBeyondTheStorage_AreOutOfMemory) {
  const Value wrong = with_wrong_shape(-2, -3), number = doubles({}, {2}), row = ones({3});
  for (const char* name : {"xdot", "xouter", "xkron"}) {
    EXPECT_EQ(ending(name, {wrong, row}), "bad_alloc") << name;
    EXPECT_EQ(ending(name, {row, wrong}), "bad_alloc") << name;
    EXPECT_EQ(ending(name, {wrong, number}), "bad_alloc") << name;
    EXPECT_EQ(ending(name, {number, wrong}), "bad_alloc") << name;
    EXPECT_EQ(ending(name, {wrong, wrong}), "bad_alloc") << name;
  }
}

TEST_F(ProductMessages, ExtentsBeyondTheStorage_FailInXvdotOnlyWhereItWouldReadThere) {
  EXPECT_EQ(ending("xvdot", {with_wrong_shape(-2, -3), ones({3})}), "0");
  EXPECT_EQ(ending("xvdot", {with_wrong_shape(-6, -1), with_wrong_shape(-6, -1)}), "0");
  EXPECT_EQ(ending("xvdot", {ones({1}), with_wrong_shape(-2, -3)}), "1");  // one element of the second
}

TEST_F(ProductMessages, ExtentsOverAnEmptyStorage_AreOutOfMemory) {
  // 65536 to the fourth wraps to 0.
  Value nothing = doubles({0}, {});
  ASSERT_EQ(method(nothing, "reshape", {Value(65536), Value(65536), Value(65536), Value(65536)}).returned, 1);
  for (const char* name : {"xdot", "xouter", "xkron"}) {
    EXPECT_EQ(ending(name, {nothing, nothing}), "bad_alloc") << name;
    EXPECT_EQ(ending(name, {nothing, ones({1})}), "bad_alloc") << name;
    EXPECT_EQ(ending(name, {ones({}), nothing}), "bad_alloc") << name;
  }
  expect_no_result(call("xvdot", {nothing, nothing}), 0, "xvdot");
  EXPECT_EQ(ending("xtrace", {nothing}), "bad_alloc");
}

TEST_F(ProductMessages, ProductsTooLargeForAnyMemory_AreOutOfMemory) {
  constexpr std::size_t many = 2147483647;
  const Value tall = made(Kind::int32, {many, 0}, {}), wide = made(Kind::int32, {0, many}, {});
  EXPECT_EQ(ending("xdot", {tall, wide}), "bad_alloc");
  EXPECT_EQ(ending("xouter", {tall, tall}), "bad_alloc");
  EXPECT_EQ(ending("xdot", {doubles({many, many, many, 0}, {}), doubles({0}, {})}), "bad_alloc");
  EXPECT_EQ(array(Kind::int32, "xkron", {tall, tall}), TestArray(Kind::int32, {many * many, 0}, {}));
}

}  // namespace
}  // namespace arrayfold::test
