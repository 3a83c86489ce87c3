// linalg/library_matrices_test.cpp: factors, eigenvalues, scalars, inverses and solutions are the library's, to the bit

#include "algebra.hpp"
#include "reference.hpp"
#include "support/captured_output.hpp"

namespace arrayfold::test {
namespace {

constexpr std::size_t sizes[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
                                 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 100};

class LibraryMatrices : public OverKinds<AlgebraTest> {
 protected:
  /// Every size once as it is, once with three columns more and once with three rows more.
  template <class Visit>
  static void for_matrices(Visit visit) {
    for (const std::size_t n : sizes) {
      visit(drawn(kind(), {n, n}, 1));
      visit(drawn(kind(), {n, n + 3}, 2));
      visit(drawn(kind(), {n + 3, n}, 3));
    }
  }
  /// Squares: random, and symmetric ones with positive eigenvalues.
  template <class Visit>
  static void for_squares(Visit visit) {
    for (const std::size_t n : sizes) {
      visit(drawn(kind(), {n, n}, 4));
      visit(definite(n, 5));
    }
  }
  static TestArray definite(std::size_t n, unsigned seed) {
    return TestArray(kind(), {n, n}, positive_definite(n, seed));
  }

  /// The array that a function gives, or the values of its table, are the parts of the library's result.
  void expect_array(const char* name, const TestArray& matrix) {
    EXPECT_EQ(plain(array(kind(), name, {made(matrix)})), plain(library_parts(name, matrix).at(0)))
        << name << ::testing::PrintToString(matrix.extents());
  }
  void expect_table(const char* name, const std::vector<Value>& args, const std::vector<TestArray>& expected) {
    const auto values = table(name, args);
    ASSERT_EQ(values.size(), expected.size()) << name;
    for (std::size_t key = 0; key < values.size(); ++key)
      EXPECT_EQ(plain(result_of(values[key], kind())), plain(expected[key])) << name << key;
  }
  void expect_table(const char* name, const TestArray& matrix) {
    expect_table(name, {made(matrix)}, library_parts(name, matrix));
  }
  static TestArray plain(const TestArray& array) { return array.with_one_nan(); }
};
INSTANTIATE_TEST_SUITE_P(Kinds, LibraryMatrices, ::testing::ValuesIn(floating_kinds), KindName());

TEST_P(LibraryMatrices, Factors_AreTheLibrarys) {
  for_matrices([&](const TestArray& matrix) {
    expect_table("xqr", matrix);
    expect_table("xsvd", matrix);
  });
}

// Matrices are transposed in squares of 16: the last of them has one row or column alone.
TEST_P(LibraryMatrices, OfARowOrColumnBeyondWholeSquares_AreTheLibrarys) {
  for (const std::size_t n : {17u, 33u, 49u, 65u}) {
    for (const Extents& extents : {Extents{n, n}, {n, 16}, {16, n}, {n, 5}, {5, n}, {1, n}, {n, 1}, {n, 33}, {33, n}}) {
      const TestArray matrix = drawn(kind(), extents, 13);
      for (const char* name : {"xqr", "xsvd"}) expect_table(name, matrix);
      expect_array("xpinv", matrix);
      expect_array("xmatrix_rank", matrix);
      const TestArray rhs = drawn(kind(), {extents[0], 17}, 14);
      expect_table("xlstsq", {made(matrix), made(rhs)}, library_parts("xlstsq", matrix, rhs));
    }
    for (const char* name : {"xcholesky", "xeigvalsh", "xinv", "xdet"}) expect_array(name, definite(n, 15));
    expect_table("xeigh", definite(n, 15));
    for (const std::size_t columns : {1u, 15u, 16u, 17u, 33u, 49u}) {
      const TestArray matrix = definite(n, 16), rhs = drawn(kind(), {n, columns}, 17);
      EXPECT_EQ(plain(array(kind(), "xsolve", {made(matrix), made(rhs)})),
                plain(library_parts("xsolve", matrix, rhs).at(0)))
          << n << ' ' << columns;
    }
  }
}

TEST_P(LibraryMatrices, XcholeskyAndEigenvalues_AreTheLibrarys) {
  for (const std::size_t n : sizes) expect_array("xcholesky", definite(n, 6));
  for_squares([&](const TestArray& matrix) {
    expect_table("xeigh", matrix);
    expect_array("xeigvalsh", matrix);
  });
}

TEST_P(LibraryMatrices, ScalarsOfSquares_AreTheLibrarys) {
  for_squares([&](const TestArray& matrix) {
    expect_array("xdet", matrix);
    const auto expected = library_parts("xslogdet", matrix);
    const auto values = table("xslogdet", {made(matrix)});
    ASSERT_EQ(values.size(), 2u);
    for (std::size_t key = 0; key < 2; ++key)
      EXPECT_TRUE(same(load<double>(values[key].record().payload), expected.at(key).as<double>()[0])) << key;
  });
}

TEST_P(LibraryMatrices, ScalarsOfMatrices_AreTheLibrarys) {
  for_matrices([&](const TestArray& matrix) {
    expect_array("xmatrix_rank", matrix);
    expect_array("xtrace", matrix);
    // The library squares by `pow`, which rounds some squares the other way.
    const double norm = library_parts("xnorm", matrix).at(0).as<double>()[0];
    const double apart = kind() == Kind::float64 ? 1e-15 * norm : rounding_of(kind()) / 2 * norm;
    EXPECT_NEAR(scalar(kind(), "xnorm", {made(matrix)}).real, norm, apart);
    expect_array("xnorm", matrix.with_extents({matrix.size()}));
  });
}

TEST_P(LibraryMatrices, RanksOfProducts_AreTheLibrarys) {
  for (const std::size_t n : {5u, 20u, 33u})
    for (std::size_t inner = 1; inner < n; ++inner) {
      const Doubles product = multiplied(random_doubles(n * inner, 8), random_doubles(inner * n, 9), n, inner, n);
      expect_array("xmatrix_rank", TestArray(kind(), {n, n}, product));
    }
}

TEST_P(LibraryMatrices, XtraceOfMoreDimensions_IsTheLibrarys) {
  for (const Extents& extents : {Extents{3, 3, 4}, {5, 2, 3}, {2, 30, 2, 2}})
    expect_array("xtrace", drawn(kind(), extents, 10));
}

TEST_P(LibraryMatrices, Inverses_AreTheLibrarys) {
  for_squares([&](const TestArray& matrix) { expect_array("xinv", matrix); });
  for_matrices([&](const TestArray& matrix) { expect_array("xpinv", matrix); });
}

TEST_P(LibraryMatrices, Solutions_AreTheLibrarys) {
  for_squares([&](const TestArray& matrix) {
    const std::size_t n = matrix.extents()[0];
    for (const Extents& shape : {Extents{n}, {n, 1}, {n, 5}, {n + 2, 3}}) {
      const TestArray rhs = drawn(kind(), shape, 11);
      EXPECT_EQ(plain(array(kind(), "xsolve", {made(matrix), made(rhs)})),
                plain(library_parts("xsolve", matrix, rhs).at(0)));
    }
  });
}

TEST_P(LibraryMatrices, LeastSquares_AreTheLibrarys) {
  for_matrices([&](const TestArray& matrix) {
    for (const std::size_t columns : {0u, 1u, 5u}) {
      const Extents& extents = matrix.extents();
      const Extents shape = columns == 0 ? Extents{extents[0]} : Extents{extents[0], columns};
      const TestArray rhs = drawn(kind(), shape, 12);
      auto expected = library_parts("xlstsq", matrix, rhs);
      // required: a solution has the dimensions of its right-hand sides; the library drops those of 1.
      Extents of_solution = shape;
      of_solution[0] = extents[1];
      expected.at(0) = expected.at(0).with_extents(of_solution);
      expect_table("xlstsq", {made(matrix), made(rhs)}, expected);
    }
  });
}

// ---- The other way round: what the library prints is heard

TEST(LibraryErrors, AreWrittenToStandardOutput) {
  CapturedOutput output;
  const TestArray square(Kind::float64, {2, 2}, {2, 0, 0, 4}), rhs(Kind::float64, {1}, {1});
  EXPECT_THROW(library_parts("xsolve", square, rhs), std::runtime_error);
  EXPECT_NE(output.text(), "") << "the test of silence would not hear this library";
}

}  // namespace
}  // namespace arrayfold::test
